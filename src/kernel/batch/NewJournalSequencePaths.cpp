// The files a sequence reads, and the snapshot folder it replaces.

#include "kernel/batch/NewJournalSequence.h"

#include "JournalSupport.h"
#include "kernel/batch/BatchPaths.h"

void NewJournalSequence::listPaths(BatchPaths& paths) const
{
    const std::string of = " of sequence #" + journal_support::int_text(_index);
    paths.input("NEW_TOPO" + of, _topoFile);
    paths.input("NEW_CL_FILE" + of, _clFile);
    paths.input("ZUL_FILE" + of, _zulFile);
    paths.input("EMAP_FILE" + of, _emapFile);
    paths.input("TECTO_FILE" + of, _tectoFile);
    paths.snapshotLoad("SNAP_LOAD_DIR" + of, _snapLoadDir);
    paths.snapshotSave("SNAP_SAVE_DIR" + of, _snapSaveDir);
}
