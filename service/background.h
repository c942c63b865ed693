// SPDX-License-Identifier: MIT
//
// background.h: a service that goes on after the program that started it, as init scripts expect.
#pragma once

#include <optional>
#include <string>

namespace service {

/// Two processes: a new one that serves, and the first one, which waits until the new one serves.
class Background {
  public:
    Background() = default;
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Forks. Returns nothing in the new process, which has a session of its own. The first process
    /// waits until the new one is ready or ends; there this returns its exit code: 0, or that of
    /// the new process (1 if a signal ended it). Throws std::system_error if it cannot fork.
    /// To be called before anything that a forked process does not have: locks, event loops.
    [[nodiscard]] std::optional<int> enter();

    /// Ends the process that waits. Standard input and output are /dev/null from now on, and
    /// standard error, too, unless it is a log. Does nothing if enter() was not called.
    void ready(bool isLogged);

  private:
    int notice_ = -1;
};

/// A file with the number of this process on one line; it is removed with this object. Throws
/// std::system_error if the file cannot be written. A link at the path is not followed. An empty
/// path means no file.
class PidFile {
  public:
    explicit PidFile(const std::string& path);
    ~PidFile();
    PidFile(const PidFile&) = delete;
    PidFile& operator=(const PidFile&) = delete;

  private:
    std::string path_;
};

/// From now on, what this process and those that it starts write to standard error is appended to a
/// file. A new file has the mode 0640. Throws std::system_error if it cannot be opened.
void logTo(const std::string& path);

} // namespace service
