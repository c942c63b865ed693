// SPDX-License-Identifier: MIT
//
// collector.h: a process that is called like the collector, and does nothing.
#pragma once

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace root {

/// Runs for as long as it lives, or until it is ended.
class IdleCollector {
  public:
    IdleCollector() : process_(::fork())
    {
        if (process_ == 0) {
            ::setpgid(0, 0);
            ::execl("/usr/bin/sh", "vokcollect", "-c", "sleep 1000; :", nullptr);
            ::_exit(1);
        }
        const std::string path = "/proc/" + std::to_string(process_) + "/cmdline";
        for (int tries = 0; tries < 500 && !readFile(path).starts_with("vokcollect"); ++tries) {
            ::usleep(10000);
        }
    }

    ~IdleCollector() { end(); }
    IdleCollector(const IdleCollector&) = delete;
    IdleCollector& operator=(const IdleCollector&) = delete;

    void end()
    {
        if (process_ > 0) {
            ::kill(-process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
        process_ = -1;
    }

  private:
    pid_t process_;
};

} // namespace root
