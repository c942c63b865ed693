// SPDX-License-Identifier: MIT
//
// processes.h: the running processes, from /proc.
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
    std::vector<Process> all; ///< without processes that have ended, and without the kernel's own
    bool areVisible = false;  ///< whether other users' processes are included
};

/// Reads each process in /proc. Processes may begin and end meanwhile.
[[nodiscard]] Processes listProcesses();

/// Whether a process runs the program of this name, in any folder. If qemu runs the program, qemu
/// is the first word and the program the second.
[[nodiscard]] bool isProgram(const Process& process, std::string_view name);

} // namespace view
