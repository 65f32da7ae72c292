// Sequences and the journals of a project: the current journal records the
// parameters of the start and of each sequence, and an input journal replays
// such a record sequence by sequence.

#include "gui/Project.h"

#include "gui/iProjectDialogs.h"
#include "interface/iSimulator.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
const char* const JOURNAL_LOOK = "Look at the Message Window for more details.\n";
const char* const CORRUPTED =
    "Journal file seems to be corrupted. Please, look at sample journal files in data directory!";
const char* const NEW_SEQUENCE = "Define a new sequence";
const char* const INPUTS_CHANGED = "Input Maps Changed";
const char* const ITERATIONS = "Number of iterations for this sequence";

bool is_equilibrium_profile(const ParameterGroup& group)
{
    return dynamic_cast<const EquilibriumProfileParameters*>(&group) != nullptr;
}
} // namespace

// ---------------------------------------------------------------------------
// Sequences

bool Project::newSequence()
{
    if (_simulator == nullptr || !_simulator->ready(false))
        return error(std::string("Error: Cannot create new sequence.\n") + JOURNAL_LOOK);
    const int status = _simulator->checkConsistency();
    const std::string text = _simulator->getLastMessage();
    if (status == MP_STATUS_CONSISTENCY_WARNING && _dialogs != nullptr &&
        !_dialogs->askYesNo("Warning!", "Warning:\n" + text + "\n\nContinue anyway ?"))
        return false;
    if (status != MP_STATUS_OK && status != MP_STATUS_CONSISTENCY_WARNING)
        return error("Error:\n" + text);
    _inputsChanged = _zul.changed || _emap.changed || _tecto.changed;
    if ((_zul.changed && !loadZul()) || (_emap.changed && !loadEmap()) || (_tecto.changed && !loadTecto()))
        return false;
    // The record of the sequence holds the parameters it starts with: the
    // kernel leaves the seed and the profile level of the next sequence in
    // the registry when a sequence ends.
    if (!write_pending_record())
        return false;
    if (_simulator->newSequence() != MP_STATUS_OK)
        return error(std::string("Error: Cannot create new sequence.\n") + JOURNAL_LOOK);
    _sequenceStartAge = _simulator->getAge();
    return true;
}

std::string Project::getPendingRecordPath() const
{
    return _path + "/.sequence.jnl";
}

bool Project::write_pending_record()
{
    _outputJournal = std::make_unique<OutputJournalFile>(getPendingRecordPath());
    if (!_outputJournal->initiate())
        return warning("Warning: Unable to initiate the output journal file " + getPendingRecordPath() +
                       " for writing");
    bool good = _outputJournal->addBool(NEW_SEQUENCE, true);
    good = saveParamsInCurrentJnl(true) && good;
    _outputJournal->close();
    return good || error("Cannot write the journal file " + getPendingRecordPath());
}

bool Project::endSequence()
{
    if (_simulator->endSequence() != MP_STATUS_OK)
        return error("Cannot end the sequence:\n" + _simulator->getLastMessage());
    return saveSequenceInCurrentJnl();
}

// ---------------------------------------------------------------------------
// The current journal

bool Project::saveInitSequenceInCurrentJnl()
{
    std::error_code ec;
    if (fs::exists(getJournalPath(), ec))
        copyFile(getJournalPath(), getJournalBackupPath());
    _outputJournal = std::make_unique<OutputJournalFile>(getJournalPath());
    if (!_outputJournal->initiate())
        return warning("Warning: Unable to initiate the output journal file " + getJournalPath() +
                       " for writing");
    _outputJournal->close();
    if (!_outputJournal->open())
        return warning("Warning: Unable to open the output journal file " + getJournalPath() +
                       " for writing");
    const bool good = saveParamsInCurrentJnl(false);
    _outputJournal->close();
    return good || error("Cannot write the journal file " + getJournalPath());
}

bool Project::saveSequenceInCurrentJnl()
{
    const long iterations = static_cast<long>(_simulator->getAge()) - static_cast<long>(_sequenceStartAge);
    if (iterations <= 0)
        return error("Number of iteration for current sequence is negative or null!");
    std::error_code ec;
    // A sequence record needs the record of the start before it.
    if (!fs::exists(getJournalPath(), ec) && !saveInitSequenceInCurrentJnl())
        return false;
    // Without the record of its start, the sequence is told by the
    // parameters in force now.
    if (!fs::exists(getPendingRecordPath(), ec) && !write_pending_record())
        return false;
    std::ifstream pending(getPendingRecordPath(), std::ios::binary);
    const std::string record((std::istreambuf_iterator<char>(pending)), std::istreambuf_iterator<char>());
    pending.close();
    {
        std::ofstream journal(getJournalPath(), std::ios::binary | std::ios::app);
        journal << record;
        if (!journal)
            return warning("Warning: Unable to open the output journal file " + getJournalPath() +
                           " for writing");
    }
    _outputJournal = std::make_unique<OutputJournalFile>(getJournalPath());
    if (!_outputJournal->open())
        return warning("Warning: Unable to open the output journal file " + getJournalPath() +
                       " for writing");
    const bool good = _outputJournal->addInt(ITERATIONS, static_cast<int>(iterations));
    _outputJournal->close();
    fs::remove(getPendingRecordPath(), ec);
    _sequenceStartAge = _simulator->getAge();
    return good || error("Cannot write the journal file " + getJournalPath());
}

bool Project::saveParamsInCurrentJnl(bool sequence)
{
    if (!_outputJournal || !_outputJournal->isOpen())
        return false;
    bool good = true;
    for (const auto& group : _groups->getGroups())
    {
        good = group->saveInJnl(*_outputJournal, sequence) && good;
        if (sequence && is_equilibrium_profile(*group))
            good = _outputJournal->addBool(INPUTS_CHANGED, _inputsChanged) && good;
    }
    return good;
}

// ---------------------------------------------------------------------------
// Reading journals

bool Project::journal_corrupted()
{
    _journalCorrupted = true;
    return warning(CORRUPTED);
}

bool Project::readInitFromJnl(InputJournalFile& journal)
{
    return _groups->readFromJnl(journal, false);
}

bool Project::readSequenceFromJnl(InputJournalFile& journal, int& iterations)
{
    _journalCorrupted = false;
    // The end of the journal, like anything that is not a record's first
    // value, ends the records; a record cut short is a corruption.
    bool record = false;
    if (journal.getBool(record) != 0 || !record)
        return false;
    for (const auto& group : _groups->getGroups())
    {
        if (!group->readFromJnl(journal, true))
            return journal_corrupted();
        bool changed = false;
        if (is_equilibrium_profile(*group) && journal.getBool(changed) != 0)
            return journal_corrupted();
    }
    int count = 0;
    if (journal.getInt(count) != 0)
        return journal_corrupted();
    iterations = count;
    return true;
}

bool Project::loadAllSequenceFromJnl(const std::string& path, int& iterations)
{
    InputJournalFile journal(path);
    if (!journal.open())
        return false;
    if (!readInitFromJnl(journal))
    {
        journal.close();
        return journal_corrupted();
    }
    int count = 0;
    while (readSequenceFromJnl(journal, count))
        iterations = count;
    journal.close();
    return !_journalCorrupted;
}

// ---------------------------------------------------------------------------
// Replay

void Project::setInputJournal(const std::string& path)
{
    _inputJournal.reset();
    _inputJournalPath = path;
    _inputJournalActive = true;
    _sequenceCount = 0;
    _nextSequenceIterations = 0;
}

bool Project::skip_sequences(InputJournalFile& journal, int count)
{
    int iterations = 0;
    for (int k = 0; k < count; ++k)
        if (!readSequenceFromJnl(journal, iterations))
            return false;
    return true;
}

bool Project::readInitFromInputJnl()
{
    // The sequences already run, the one read ahead and not yet run left aside.
    const int done = _nextSequenceIterations > 0 ? _sequenceCount - 1 : _sequenceCount;
    int iterations = 0;
    std::error_code ec;
    if (done > 0 && fs::exists(getJournalPath(), ec) && !loadAllSequenceFromJnl(getJournalPath(), iterations))
    {
        exitFromInputJnl();
        return false;
    }
    _inputJournal = std::make_unique<InputJournalFile>(_inputJournalPath);
    if (!_inputJournal->open() || !readInitFromJnl(*_inputJournal) || !skip_sequences(*_inputJournal, done))
    {
        exitFromInputJnl();
        return journal_corrupted();
    }
    _inputJournalActive = true;
    _sequenceCount = done;
    _nextSequenceIterations = 0;
    return readSequenceFromInputJnl();
}

bool Project::readSequenceFromInputJnl()
{
    int iterations = 0;
    if (_inputJournal && _inputJournal->isOpen() && readSequenceFromJnl(*_inputJournal, iterations) &&
        iterations > 0)
    {
        ++_sequenceCount;
        _nextSequenceIterations = iterations;
        return true;
    }
    exitFromInputJnl();
    return false;
}

void Project::exitFromInputJnl()
{
    if (_inputJournal)
        _inputJournal->close();
    _inputJournalActive = false;
    _nextSequenceIterations = 0;
}

bool Project::turnCurrentJnlIntoInputJnl()
{
    if (!copyFile(getJournalPath(), _inputJournalPath))
        return false;
    copyFile(getJournalPath(), getJournalBackupPath());
    std::error_code ec;
    if (!fs::remove(getJournalPath(), ec))
        warning("Warning: Could not delete the Current Journal File!");
    setInputJournal(_inputJournalPath);
    return true;
}
