// SPDX-License-Identifier: MIT
//
// share_property.h: whether a share is private or public.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "gsp1": answers the header "gspr" with 1, then one byte and a newline: 1 for a private share, 2
/// for a public one, 3 if no property is found. Its parameter is a line, the share's name.
///
/// The name is found anywhere in a line of the listing; if several shares' blocks hold it, the last
/// one counts. Ends with the bare word 0xC1000003 for a name that is empty or longer than 64
/// characters, and with error 0xFF000004 if the share script fails, 0xFF000007 or 0xC1000001 if its
/// listing cannot be opened or removed.
///
/// Runs the share script's tovGetShareList; uses /tmp/vokcontrol.tmpPID. Traces the name, the line
/// run, each line found, and the answer.
void cmd_gsp1(void);

/// "gspc": answers "gspc ", a byte as in gsp1, a newline and three zeros. Its parameter is in the
/// request's first line: one byte with the name's length, then the name.
///
/// The share's position in the web hook's list is the number of the line in the user list that
/// holds the property. But the user list has one line, so for a share in the web hook's list the
/// command ends with status 0xF0000001, unless that line is longer than 254 characters. It also
/// ends so for a name that is empty or longer than 64 characters, and on every failure. If the
/// length is 10, which is a newline, the name begins and ends one character later.
///
/// Runs runwebhooks, and calls getUsersList; uses /tmp/vokcontrol.tmp. Traces the name, the
/// position, the line of the user list, and the answer.
void cmd_gspc(void);

} // extern "C"
#pragma GCC visibility pop
