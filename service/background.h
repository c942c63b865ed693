// SPDX-License-Identifier: MIT
//
// background.h: a service that whoever starts it does not wait for, as init scripts want it.
#pragma once

#include <optional>
#include <string>

namespace service {

/// A process of the service's own, and the one that started it, which waits until that serves.
class Background {
  public:
    Background() = default;
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Forks. The new process, in a session of its own, gets nothing. The one that was there waits
    /// until the new one is ready or ends, and gets what it has to end with: 0, or what the new one
    /// ended with (1 if a signal ended it). Throws std::system_error if there can be no new
    /// process. Comes before whatever belongs to one process alone: locks, event loops.
    [[nodiscard]] std::optional<int> enter();

    /// Whoever waits ends. Standard input and output are /dev/null from now on, and standard error,
    /// too, unless that is a log. Does nothing in a process that has not entered the background.
    void ready(bool isLogged);

  private:
    int notice_ = -1;
};

/// The number of this process in a file, on a line of its own, for as long as it runs. Throws
/// std::system_error if the file cannot be written. A link in its place is not followed. An empty
/// path is no file.
class PidFile {
  public:
    explicit PidFile(const std::string& path);
    ~PidFile();
    PidFile(const PidFile&) = delete;
    PidFile& operator=(const PidFile&) = delete;

  private:
    std::string path_;
};

/// Appends to a file what this process, and what it starts, writes to standard error from now on. A
/// new file has the mode 0640. Throws std::system_error if it cannot be opened.
void logTo(const std::string& path);

} // namespace service
