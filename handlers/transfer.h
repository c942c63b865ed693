// SPDX-License-Identifier: MIT
//
// transfer.h: commands that send or receive a whole file: the build file, and the private file,
// which clients keep on the appliance for their own use.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "vers": answers the header "vert" with 1, and /etc/buildinfo.txt as one line, with " - " in
/// place of each newline. The line ends at a byte 0xFF or before the answer would exceed 4096
/// bytes; the rest of the file is left out. Ends with error 0x40000003 if there is no file,
/// 0x40000004 if it is empty or larger than 4085 bytes, 0x40000001 or 0x40000002 if it cannot be
/// opened or closed. Traces the file's size and the answer's.
void cmd_vers(void);

/// "gpvt": answers the header "gprt" with 2, the private file's size as 32 bits little-endian, a
/// newline, and its bytes, with zeros in place of bytes that could not be read. Ends with error
/// 0x70000001 if there is no file, 0x70000002 if it is empty, 0x70000003 if it cannot be opened.
///
/// Reads /etc/pelconfig/vokcontrol/vokcontrol-private.txt. Traces its size and the bytes sent.
void cmd_gpvt(void);

/// "spvt": replaces the private file. Its parameters are the size as 32 bits little-endian and a
/// newline (a size that holds the byte 0x0A cannot be sent), the file's bytes, and a newline.
/// Answers a bare word: 0, or 0xFF000003 for a malformed size, 0x60000002 for size 0; 0x60000004 if
/// there are fewer bytes, 0x60000005 if the last newline is missing, 0x60000001, 0x60000003 or
/// 0x60000006 if the file cannot be created, written or closed; 0xFF000006 if the former file
/// cannot be removed.
///
/// Runs mv: moves the former file to /tmp/vokcontrol.tmp until the new one is whole, and back if
/// that fails. If there is no former file, an incomplete new file stays. A process that is killed
/// leaves both files as they are; the service repairs them (service/upload.h). Traces the size, the
/// bytes written, and what failed.
void cmd_spvt(void);

} // extern "C"
#pragma GCC visibility pop
