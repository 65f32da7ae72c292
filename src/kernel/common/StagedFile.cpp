#include "kernel/common/StagedFile.h"

#include <filesystem>
#include <system_error>

#include <unistd.h>

const char* const StagedFile::MP_TEMPORARY_MARK = ".tmp-";

namespace
{
// Distinct temporaries for the outputs open at once in one process, and for
// two processes writing beside the same target.
std::string temporary_name(const std::string& target)
{
    static unsigned long counter = 0;
    return target + StagedFile::MP_TEMPORARY_MARK + std::to_string(static_cast<long>(::getpid())) + "-" +
           std::to_string(++counter);
}
} // namespace

StagedFile::StagedFile(const std::string& target)
    : _target(target), _temporary(temporary_name(target)), _done(false)
{
}

StagedFile::~StagedFile()
{
    discard();
}

bool StagedFile::commit()
{
    if (_done)
        return false;
    _done = true;
    std::error_code code;
    std::filesystem::rename(_temporary, _target, code);
    if (!code)
        return true;
    std::filesystem::remove(_temporary, code);
    return false;
}

void StagedFile::discard()
{
    if (_done)
        return;
    _done = true;
    std::error_code code;
    std::filesystem::remove(_temporary, code);
}
