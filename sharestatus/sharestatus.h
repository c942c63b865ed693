// SPDX-License-Identifier: MIT
//
// sharestatus.h: what the other folders use of the collector. It measures every internal share and
// publishes the result, so that requests for the status are answered without reading the disks.
// Read_Status_file and startPelStatus are declared in the public header.
#pragma once

#include "vokcontrol.h"

#pragma GCC visibility push(default)
extern "C" {

/// Lists the internal shares as a one-line script fragment: return ["name""name"]; without
/// separators between the quoted names and without a newline, or "return [];" and a newline if
/// there are none. Readers split the line at its quotes.
///
/// A share is internal if its location starts with "int". A location line that no name line
/// precedes takes the last name that was not yet listed, or an empty one.
///
/// @param path  the file to write; it is replaced
/// @return the number of shares listed, or -1 if the share script failed or one of the two files
///         could not be opened; the work file then stays
///
/// Runs the share script's tovGetShareList; uses /tmp/share_infoPID.
int share_info(const char* path);

/// Fills a share status buffer: a 10-byte header with the number of records, 16 bits little-endian,
/// at offset 5, then one record per share: 12 bytes as the two operations below fill them, the name
/// (at most 64 bytes), a newline.
///
/// The names come from the first 4095 characters of the list's first line. A name starts at a
/// letter, a digit, "_" or a two-byte UTF-8 character from U+00C0 on, and ends at the next
/// separator. A record takes the first 64 bytes of a longer name; the walk then skips two
/// characters, so that the rest of the name can become a record too.
///
/// @param buffer  all of it is cleared first
/// @param size    its size in bytes; a record is written only if the longest one would fit, so
///                below 87 there are none. A buffer that cannot hold the header is only cleared.
/// @return the number of bytes used (10 if there are no shares), or 0 if there is no list
///
/// Calls share_info; runs one du per share; uses /tmp/pelsts1.tmp for both.
int ParseShareInfo(char* buffer, int size);

/// Measures the space that a share uses and fills bytes 0 to 2 of its record: 16 bits
/// little-endian, then the unit. Up to 1024 KiB it is "K", 1 KiB each; up to 1,000,000 KiB "M",
/// 1,000 KiB each; above that "G", 1,000,000 KiB each; fractions are cut off.
///
/// @param record  at least 3 bytes; not changed on failure
/// @param name    at most 4095 characters, put on the shell line between double quotes, unchanged
/// @return 0, or -1 if du could not be run, its output not be opened, or its output was empty
///
/// Runs du -sk "/share/NAME"; uses /tmp/pelsts1.tmp, and removes it if it could be opened.
int GetUserCapUsage(void* record, const char* name);

/// Takes the last backup's date and state from a share's backup status file and fills bytes 3 to 10
/// (month, day, year as MMDDYYYY) and 11 (one digit) of its record. If there is no file, or its
/// line is too short to hold both, the record is not changed.
///
/// @param record  at least 12 bytes
/// @param name    at most 4095 characters
///
/// Reads /etc/pelconfig/vokcontrol/__bksts/__bkNAME.
void GetUserBkStatus(void* record, const char* name);

} // extern "C"
#pragma GCC visibility pop

namespace sharestatus {

/// Runs the collector program: does one collection.
///
/// @param argumentCount  main's own. With exactly one argument (a start at boot) nothing happens if
///                       a status file exists already; otherwise the collection waits ten seconds
///                       for the appliance to start up.
/// @return the exit code, always 0
int runStatusDaemon(int argumentCount);

} // namespace sharestatus
