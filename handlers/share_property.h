// SPDX-License-Identifier: MIT
//
// share_property.h: what a share is: private or public.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "gsp1": answers the header "gspr" with 1, then one byte and a newline: 1 for a private share, 2
/// for a public one, 3 for none. Its parameter is a line, the share's name.
///
/// The name may stand anywhere in a line of the listing, so that of every share whose block holds
/// it the last one counts. Ends with the bare word 0xC1000003 for a name that is empty or longer
/// than 64 characters, and with error 0xFF000004 when the share script fails, 0xFF000007 and
/// 0xC1000001 when its listing cannot be opened or removed.
///
/// Runs the share script's tovGetShareList; uses /tmp/vokcontrol.tmpPID. Traces the name, the line
/// run, each line found, and the answer.
void cmd_gsp1(void);

/// "gspc": answers "gspc ", a byte as in gsp1, a newline and three zeros. Its parameter stands in
/// the request's first line: one byte with the name's length, then the name.
///
/// The share's place in the web hook's list decides which line of the user list tells the property.
/// As the user list has one line, a share that is found ends with status 0xF0000001, unless that
/// line is longer than 254 characters. So do a name that is empty or longer than 64 characters and
/// every failure. For a length of 10, which is a newline, the name loses its first character and
/// takes the one behind it.
///
/// Runs runwebhooks, and calls getUsersList; uses /tmp/vokcontrol.tmp. Traces the name, the place,
/// the line of the user list, and the answer.
void cmd_gspc(void);

} // extern "C"
#pragma GCC visibility pop
