// SPDX-License-Identifier: MIT
//
// backup_status.h: what backup clients report and ask for.
//
// A report is kept as nine characters, the state's first decimal digit and the date as MMDDYYYY;
// the date is zeros where it cannot be read.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "subs": keeps a user's backup state in the variable "__bk" and the name. Its parameters stand in
/// the request's first line: at 5 a length (3 to 66, which nothing but this check looks at), at 7
/// the state, from 8 on the name, of which 64 bytes count. Answers status 0, or 0xFF000003 for
/// another length, 0xC2000003 when date could not be run; status 0xC2000002, and a second answer
/// with 0 behind it, when the variable could not be written.
///
/// Runs date; uses /tmp/vokcontrol.tmp. Calls setvar. Traces the name with the length, the line,
/// and how the writing went.
void cmd_subs(void);

/// "sub1": keeps a user's backup state in the file __bkNAME of /etc/pelconfig/vokcontrol/__bksts/,
/// where the next collection finds it. Its parameters follow the first line: one byte with the
/// state, one that is ignored, and the name up to a newline or a zero byte; newlines and
/// backslashes are dropped. Answers a bare word: 0, or 0xFF000003 for a name of more than 60 bytes,
/// 0xC2000003 when date could not be run, 0xC2000002 when the file could not be written.
///
/// Runs date; uses /tmp/vokcontrol.tmp. Traces the name, the line, and how the writing went.
void cmd_sub1(void);

/// "gub1": answers "gubr ", the number of shares and the internal disk's capacity in GB (16 bits
/// little-endian each), a newline, and the published records as they stand. Without a published
/// status it runs one collection first, and counts the newlines of what that has published; without
/// any record it answers the first 10 bytes alone.
///
/// Calls GetInternalDiskCap and Read_Status_file, and startPelStatus where the status was there;
/// runs pelstatus where it was not. Writes /tmp/bkstart. Traces every byte of the answer but the
/// last.
void cmd_gub1(void);

/// "grst": answers the bare word 0xD0000001 when the number of drives can be asked for, whatever it
/// is, and 0xFF000004 when it cannot.
///
/// Calls GetTovHDDS. Removes /tmp/vokcontrol.tmp. Traces the word.
void cmd_grst(void);

} // extern "C"
#pragma GCC visibility pop
