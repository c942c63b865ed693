// SPDX-License-Identifier: MIT
#include "core/variable_lock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace core {
namespace {

constexpr const char* kLockFile = "/etc/pelconfig/system_var_lck";
constexpr mode_t kLockFileMode = 0666;

int openLockFile(VariableLock::Mode mode)
{
    return (mode == VariableLock::Mode::kWrite)
               ? ::open(kLockFile, O_WRONLY | O_CREAT | O_CLOEXEC, kLockFileMode)
               : ::open(kLockFile, O_RDONLY | O_CLOEXEC);
}

} // namespace

VariableLock::VariableLock(Mode mode) : descriptor_(openLockFile(mode))
{
    if (descriptor_ < 0) {
        return;
    }
    const int operation = (mode == Mode::kWrite) ? LOCK_EX : LOCK_SH;
    // Waits on after a signal that the process handles.
    while (::flock(descriptor_, operation) != 0 && errno == EINTR) {
    }
}

VariableLock::~VariableLock()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

} // namespace core
