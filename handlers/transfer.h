// SPDX-License-Identifier: MIT
//
// transfer.h: files that travel whole: what build this is, and the private file, which clients keep
// on the appliance for themselves.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "vers": answers the header "vert" with 1, and /etc/buildinfo.txt as one line, " - " in place of
/// each of its newlines. The line ends at a byte 0xFF, and where the answer would be longer than
/// 4096 bytes: the rest of the file is left out then. Ends with error 0x40000003 when there is no
/// file, 0x40000004 when it is empty or larger than 4085 bytes, 0x40000001 and 0x40000002 when it
/// cannot be opened or closed. Traces the file's size and the answer's.
void cmd_vers(void);

/// "gpvt": answers the header "gprt" with 2, the private file's size as 32 bits little-endian, a
/// newline, and its bytes; zeros in place of those that could not be read. Ends with error
/// 0x70000001 when there is no file, 0x70000002 when it is empty, 0x70000003 when it cannot be
/// opened.
///
/// Reads /etc/pelconfig/vokcontrol/vokcontrol-private.txt. Traces its size and what is sent.
void cmd_gpvt(void);

/// "spvt": replaces the private file. Its parameters are the size as 32 bits little-endian with a
/// newline behind it (a size that holds the byte 0x0A cannot be sent), the file's bytes, and a
/// newline. Answers a bare word: 0, or 0xFF000003 for a malformed size, 0x60000002 for 0;
/// 0x60000004 when fewer bytes have come, 0x60000005 without the newline, 0x60000001, 0x60000003
/// and 0x60000006 when the file cannot be created, written or closed; 0xFF000006 when the former
/// file cannot be removed.
///
/// Runs mv: the former file waits in /tmp/vokcontrol.tmp until the new one is whole, and comes back
/// otherwise. Without a former file, what has come of the new one stays. A process that is killed
/// leaves both files as they are at that moment; vokserve repairs that (service/upload.h). Traces
/// the size, what is written, and what failed.
void cmd_spvt(void);

} // extern "C"
#pragma GCC visibility pop
