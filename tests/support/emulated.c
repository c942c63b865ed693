// SPDX-License-Identifier: MIT
//
// emulated.c: a starter in the build folder for each program built for another machine: runs the
// program of its own name under qemu. It is linked statically, as qemu is, so that a library that a
// test preloads is loaded only into the emulated program.
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int main(int count, char** arguments)
{
    // The name of the file itself: a link to it, or argv[0], may have another name.
    char self[PATH_MAX] = "";
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) {
        return 127;
    }
    const char* const name = strrchr(self, '/') + 1;
    char program[PATH_MAX + 32];
    char emulator[PATH_MAX + 32];
    snprintf(program, sizeof program, "/build/target/%s", name);
    // The emulator has the program's name, too, so that the process is found by that name.
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
