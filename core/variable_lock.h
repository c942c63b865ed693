// SPDX-License-Identifier: MIT
//
// variable_lock.h: writers of the variable file keep everybody else out, readers only writers.
#pragma once

namespace core {

/// Holds the lock on the variable file for as long as it lives. Where the lock file cannot be
/// opened there is no lock, and nobody waits.
class VariableLock {
  public:
    enum class Mode {
        kRead, ///< shared; the lock file is only used where it exists
        kWrite ///< exclusive; the lock file is created
    };

    explicit VariableLock(Mode mode);
    ~VariableLock();
    VariableLock(const VariableLock&) = delete;
    VariableLock& operator=(const VariableLock&) = delete;

  private:
    int descriptor_;
};

} // namespace core
