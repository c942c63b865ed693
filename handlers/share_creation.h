// SPDX-License-Identifier: MIT
//
// share_creation.h: creates shares, and gives users access to them.
//
// Names are put on the share script's line between single quotes, unchanged.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Has the share script create a share.
///
/// @param property  "public" or "private"
/// @return 0, or -1 if the script failed
///
/// Runs the share script's tovAddShare. Traces both arguments, the line, and how it failed.
int create_shar(const char* share, const char* property);

/// Gives a user full access to a share.
///
/// @return 0, or -1 if the script failed
///
/// Runs the share script's tovSetUserSharePrivileges. Traces the line and its result.
int setUserPrivilege(const char* user, const char* share);

/// "pshr": creates a public share, and answers a bare word: 0, or 0xFF000003 for a line without its
/// newline, 0x20000003 for a name of more than 64 characters, 0x20000001 for one that is taken or
/// reserved, 0xFF000004 if the script or the search for the name failed, 0xFF000001 if there is no
/// memory.
///
/// Its parameters are the lines "guest" and the share's name, although the frame's count is 3. If
/// the first line is not "guest", it is the name, without its last character.
///
/// Calls isShareNameExisted, isNameAllowed and create_shar. Traces the name.
void cmd_pshr(void);

/// "shar": creates a private share for a user, who gets full access to it. Its parameters are the
/// lines of the user's and the share's name; the frame's count is 3, but a third line is never
/// read. Answers like pshr, and 0x20000006 for a user who does not exist or whose name is reserved.
/// If the search for the user failed, the user counts as existing. If the user could not be given
/// access, the share stays.
///
/// Calls isUserExisted, isShareNameExisted, isNameAllowed, create_shar and setUserPrivilege. Traces
/// both names, and why one is refused.
void cmd_shar(void);

} // extern "C"
#pragma GCC visibility pop
