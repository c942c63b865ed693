// SPDX-License-Identifier: MIT
//
// variable_lock.h: a writer of the variable file excludes all others, a reader excludes writers.
#pragma once

namespace core {

/// Holds the lock on the variable file as long as the object exists. If the lock file cannot be
/// opened there is no lock and no waiting.
class VariableLock {
  public:
    enum class Mode {
        kRead, ///< shared; a missing lock file is not created
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
