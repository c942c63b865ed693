// SPDX-License-Identifier: MIT
//
// emulated.c: stands in the build folder under the name of each program built for another machine,
// and runs that program under qemu. It is linked statically, as qemu is, so that what a test
// preloads is loaded into the emulated program alone.
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int main(int count, char** arguments)
{
    // The name of the file itself: links to it, and what the caller says, may be others.
    char self[PATH_MAX] = "";
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) {
        return 127;
    }
    const char* const name = strrchr(self, '/') + 1;
    char program[PATH_MAX + 32];
    char emulator[PATH_MAX + 32];
    snprintf(program, sizeof program, "/build/target/%s", name);
    // Of the program's name, too: by that name it is found among the processes.
    snprintf(emulator, sizeof emulator, "/build/emulation/bin/%s", name);

    char* const start[] = {arguments[0], "-L", "/build/emulation", "-0", arguments[0], program};
    const size_t started = sizeof start / sizeof start[0];
    char** const command = calloc(started + (size_t)count, sizeof *command);
    if (command == NULL) {
        return 127;
    }
    memcpy(command, start, sizeof start);
    memcpy(command + started, arguments + 1, (size_t)count * sizeof *command);
    execv(emulator, command);
    fprintf(stderr, "emulated: %s: %s\n", emulator, strerror(errno));
    return 127;
}
