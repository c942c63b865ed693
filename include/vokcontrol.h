/* SPDX-License-Identifier: MIT */
/*
 * vokcontrol.h: the public face of the vokcontrol module, for C and C++.
 *
 * Page engines and callers of the command service use these operations; libvokcontrol.so has them
 * and the executable exports them in its dynamic symbol table. The module is single-threaded: no
 * two operations may run at once in one process. Every operation drives the appliance through
 * shell lines and writes trace lines to /tmp/dbg_vokcontrol.txt as it goes.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/*
 * Removes files that belong to root.
 *
 *   path    NUL-terminated, put on the shell line as it stands and unquoted: a blank in it names
 *           two files. The whole line is cut at 511 characters.
 *   result  what system() gave back, unchanged: 0 when rm succeeded, a wait status otherwise,
 *           -1 when the shell could not be started.
 *   runs    sudo rm -f PATH
 *   traces  nothing
 */
int removeFile(const char* path);

/*
 * Reads the share status that the daemon last published.
 *
 *   buffer  4096 bytes. On success the payload stands at its start (a 10-byte header with the
 *           number of records, 16 bits little-endian, at offset 5; then the records). On failure
 *           its content is not meaningful.
 *   result  the payload's length in bytes, 0 to 4096. 0 also stands for every way of having no
 *           data: no file, a length below 1 or above 4097, a file cut short, a wrong checksum.
 *   reads   /etc/pelconfig/vokcontrol/__shrStatus
 *   traces  the file and its length word, the length again, and both checksums; or why the file
 *           could not be opened
 */
int Read_Status_file(char* buffer);

/*
 * Makes sure that the "pelstatus" service runs: looks for it among the processes and starts it
 * when it is not there. Does nothing when the processes cannot be listed.
 *
 *   runs    ps | grep pelstatus> /tmp/startPelStatusPID, then perhaps startapp pelstatus
 *   writes  /tmp/startPelStatusPID (PID: the caller's process id), removed before it returns
 *   traces  that it runs already, how the start went, or what failed
 */
void startPelStatus(void);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif
