// SPDX-License-Identifier: MIT
//
// processes.h: the processes that run, as /proc shows them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace view {

struct Process {
    int id = 0;
    int parent = 0;
    std::vector<std::string> command; ///< the program and its arguments
};

struct Processes {
    std::vector<Process> all; ///< a process that has ended is none of them, nor is the kernel's
    bool areVisible = false;  ///< whether other users' processes would be seen, too
};

/// Looks at each process in /proc. They come and go while it looks.
[[nodiscard]] Processes listProcesses();

/// Whether a process runs the program of this name, in whatever folder. Of a program that qemu
/// runs, qemu is the first word and the program the second.
[[nodiscard]] bool isProgram(const Process& process, std::string_view name);

} // namespace view
