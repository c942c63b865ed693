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
    char program[PATH_MAX + sizeof "/build/target/"];
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) {
        return 127;
    }
    snprintf(program, sizeof program, "/build/target/%s", strrchr(self, '/') + 1);

    char* const start[] = {
        "/build/emulation/qemu", "-L", "/build/emulation", "-0", arguments[0], program};
    const size_t started = sizeof start / sizeof start[0];
    char** const command = calloc(started + (size_t)count, sizeof *command);
    if (command == NULL) {
        return 127;
    }
    memcpy(command, start, sizeof start);
    memcpy(command + started, arguments + 1, (size_t)count * sizeof *command);
    execv(command[0], command);
    fprintf(stderr, "emulated: %s: %s\n", command[0], strerror(errno));
    return 127;
}
