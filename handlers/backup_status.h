// SPDX-License-Identifier: MIT
//
// backup_status.h: the commands of backup clients.
//
// A report is kept as nine characters: the state's first decimal digit, and the date as MMDDYYYY,
// or zeros if date's output cannot be read.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "subs": keeps a user's backup state in the variable "__bkNAME". Its parameters are in the
/// request's first line: at 5 a length (3 to 66, which is only checked), at 7 the state, from 8 on
/// the name, cut to 64 bytes. Answers status 0, or 0xFF000003 for another length, 0xC2000003 if
/// date could not be run; if the variable could not be written, two answers, status 0xC2000002 and
/// after it status 0.
///
/// Runs date; uses /tmp/vokcontrol.tmp. Calls setvar. Traces the name with the length, the line,
/// and whether the variable was written.
void cmd_subs(void);

/// "sub1": keeps a user's backup state in the file __bkNAME of /etc/pelconfig/vokcontrol/__bksts/,
/// which the next collection reads. Its parameters follow the first line: one byte with the state,
/// one that is ignored, and the name up to a newline or a zero byte; newlines and backslashes are
/// dropped. Answers a bare word: 0, or 0xFF000003 for a name of more than 60 bytes, 0xC2000003 if
/// date could not be run, 0xC2000002 if the file could not be written.
///
/// Runs date; uses /tmp/vokcontrol.tmp. Traces the name, the line, and whether the file was
/// written.
void cmd_sub1(void);

/// "gub1": answers "gubr ", the number of shares and the internal disk's capacity in GB (16 bits
/// little-endian each), a newline, and the published records unchanged. If no status is published
/// it runs one collection first, and the number of shares is the number of newlines in the new
/// payload; if there is no record it answers only the first 10 bytes.
///
/// Calls GetInternalDiskCap and Read_Status_file, and startPelStatus if a status was published;
/// runs pelstatus if not. Writes /tmp/bkstart. Traces every byte of the answer except the last.
void cmd_gub1(void);

/// "grst": answers the bare word 0xD0000001 if the number of drives can be asked for (the number
/// does not matter), and 0xFF000004 if not.
///
/// Calls GetTovHDDS. Removes /tmp/vokcontrol.tmp. Traces the word.
void cmd_grst(void);

} // extern "C"
#pragma GCC visibility pop
