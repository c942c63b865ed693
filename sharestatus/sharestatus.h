// SPDX-License-Identifier: MIT
//
// sharestatus.h: what the other folders use of the share status service. It measures every internal
// share and publishes the result, so that status questions are answered without walking the disks.
// Read_Status_file and startPelStatus, which belong here too, stand in the public header.
#pragma once

#include "vokcontrol.h"

#pragma GCC visibility push(default)
extern "C" {

/// Lists the internal shares as a one-line script fragment: return ["name""name"]; with the quoted
/// names back to back and no newline, or "return [];" and a newline when there is none. Readers
/// split the line on its quotes.
///
/// A share is internal when its location starts with "int". A location line without a name of its
/// own takes the last name that was not yet listed, or an empty one.
///
/// @param path  the file to write; it is replaced
/// @return the number of shares listed, or -1 when the share script failed or one of the two files
///         could not be opened; the work file then stays behind
///
/// Runs the share script's tovGetShareList; uses /tmp/share_infoPID.
int share_info(const char* path);

/// Fills a share status buffer: a 10-byte header with the number of records, 16 bits little-endian,
/// at offset 5, then one record a share: 12 bytes as the two operations below fill them, the name
/// (at most 64 bytes), a newline.
///
/// The names come from the list's first line, of which 4095 characters count. A name starts at a
/// letter, a digit, "_" or a two-byte UTF-8 character from U+00C0 on, and runs to the next
/// separator. Of a longer name the record takes 64 bytes and the walk goes on two characters
/// further, so that the rest of it can become a record too.
///
/// @param buffer  all of it is cleared first
/// @param size    its size in bytes; a record is only begun where the longest one still fits, so
///                below 87 there are none. A buffer that cannot hold the header is only cleared.
/// @return the number of bytes used (10 when there are no shares), or 0 when there is no list
///
/// Calls share_info; runs one du a share; uses /tmp/pelsts1.tmp for both.
int ParseShareInfo(char* buffer, int size);

/// Measures the space that a share uses and fills bytes 0 to 2 of its record: 16 bits
/// little-endian, then the unit. Up to 1024 KiB count in "K"; up to 1000000 KiB in "M", a thousand
/// KiB each; beyond that in "G", a million KiB each; fractions are dropped.
///
/// @param record  at least 3 bytes; left alone on failure
/// @param name    at most 4095 characters, put on the shell line between double quotes as it stands
/// @return 0, or -1 when du could not be run, its output not be opened, or nothing stood in it
///
/// Runs du -sk "/share/NAME"; uses /tmp/pelsts1.tmp, and removes it once it could be opened.
int GetUserCapUsage(void* record, const char* name);

/// Takes the last backup's date and state from a share's backup status file and fills bytes 3 to 10
/// (month, day, year as MMDDYYYY) and 11 (one digit) of its record. Without the file, or when its
/// line is too short to hold both, the record is left alone.
///
/// @param record  at least 12 bytes
/// @param name    at most 4095 characters
///
/// Reads /etc/pelconfig/vokcontrol/__bksts/__bkNAME.
void GetUserBkStatus(void* record, const char* name);

} // extern "C"
#pragma GCC visibility pop

namespace sharestatus {

/// The daemon, from the start of the program to its end: one collection, then it is done.
///
/// @param argumentCount  main's own. With exactly one argument (a start at boot) nothing happens
///                       when a status file exists already; otherwise the collection waits ten
///                       seconds for the appliance to come up.
/// @return the exit code, always 0
int runStatusDaemon(int argumentCount);

} // namespace sharestatus
