#pragma once
// An output written beside its final name and moved there only when complete,
// so that a failed or killed run never leaves half a file under that name and
// never destroys the previous file of that name before the new one is whole.
//
//     StagedFile staged(path);
//     std::ofstream out(staged.path());
//     ... write, close ...
//     if (!out || !staged.commit()) -> failure (the old file is untouched)
//
// A StagedFile that is not committed removes its temporary.

#include <string>

class StagedFile
{
public:
    explicit StagedFile(const std::string& target);
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    // Where to write: "<target>.tmp-<pid>-<n>", in the folder of the target.
    const std::string& path() const { return _temporary; }
    const std::string& target() const { return _target; }
    // Renames the temporary onto the target; false when that fails (the
    // temporary is then removed).
    bool commit();
    // Removes the temporary; the target stays as it was.
    void discard();

    // The part of a temporary name that follows the target's name.
    static const char* const MP_TEMPORARY_MARK;

private:
    std::string _target;
    std::string _temporary;
    bool _done;
};
