// SPDX-License-Identifier: MIT
//
// service_lock.h: allows one service at a time. The module's work files have fixed names, so two
// services would overwrite each other's answers, even if they listen on different sockets.
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

/// The lock of the service: FOLDER/lock, mode 0600. Only this process holds it, not those that it
/// starts; it is free as soon as the process has ended for any reason. The file stays.
class ServiceLock {
  public:
    /// Takes the lock; makes the folder (mode 0700) if it does not exist. If that fails (only root
    /// can make files in /run), the service runs without a lock, and the log says so.
    /// Throws AnotherService if another process holds the lock.
    explicit ServiceLock(const std::string& folder = kRunFolder);
    ~ServiceLock();
    ServiceLock(const ServiceLock&) = delete;
    ServiceLock& operator=(const ServiceLock&) = delete;

  private:
    int file_;
};

} // namespace service
