// SPDX-License-Identifier: MIT
//
// shares.h: the commands that name the appliance's shares.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Whether a share of this name exists; letters of both cases count as the same.
///
/// @return 1 or 0; -1 if the search failed; callers must not take that for 0
///
/// Calls share_info on /tmp/isShareNameExistedPID, and removes that file unless it could not be
/// made or opened. Traces the list's size, the list with the name (both in upper case), and the
/// result.
int isShareNameExisted(const char* name);

/// "gps1": answers the header "gpsr" with 1, and the name of the public share as a line. The name
/// is the variable "pel_pubshare_name"; the line is empty if it is not set. Traces the answer.
void cmd_gps1(void);

/// "gpsn": an older form of gps1 that does not answer the name: answers "gpsn " and nothing else,
/// although it reads the variable. Traces the answer.
void cmd_gpsn(void);

/// "lsts": answers the header "lsst" with the number of internal shares, then for each share of the
/// listing, external ones too, two lines: its name and its property. Ends with error 0xFF000004 if
/// the share script fails, and after the header with 0xFF000007, 0xFF000008 or 0xFF000006 if its
/// listing cannot be opened, closed or removed.
///
/// Calls share_info twice and runs the share script's tovGetShareList; uses /tmp/cmd_lstsPID, and
/// leaves the list of internal shares in /tmp/vokcontrol.tmp. Traces the line run and the number.
void cmd_lsts(void);

} // extern "C"
#pragma GCC visibility pop
