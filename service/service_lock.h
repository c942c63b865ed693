// SPDX-License-Identifier: MIT
//
// service_lock.h: one service at a time. The module's work files have fixed names, so two services
// would spoil each other's answers, whatever sockets they listen on.
#pragma once

#include <stdexcept>
#include <string>

#include "service/upload.h"

namespace service {

/// Another service runs. Its message says which process it is and what to do about it.
class AnotherService : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The lock of the one service that runs: FOLDER/lock, mode 0600. It is held by this process alone,
/// not by what it starts, and is free as soon as the process has ended, however that came. The file
/// stays.
class ServiceLock {
  public:
    /// Takes the lock; makes the folder (mode 0700) if there is none yet. If that cannot be done (a
    /// service that is tried without root's rights has no place in /run), the service runs without
    /// a lock, and the log says so.
    /// Throws AnotherService if another process holds the lock.
    explicit ServiceLock(const std::string& folder = kRunFolder);
    ~ServiceLock();
    ServiceLock(const ServiceLock&) = delete;
    ServiceLock& operator=(const ServiceLock&) = delete;

  private:
    int file_;
};

} // namespace service
