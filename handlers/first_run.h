// SPDX-License-Identifier: MIT
//
// first_run.h: what a client asks before it offers to set the appliance up.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "frst": answers the bare word 0 as long as the appliance waits for its first setup, and
/// 0x80000001 when the variable "firsttime" starts with "0". Traces the variable.
void cmd_frst(void);

/// "qlps": answers the header "qlrt" with 2, then two lines: the code of the appliance's language
/// (en, fr, ge, it or sp) and the name that its public share has in that language, at most 64
/// bytes. Ends with error 0xB0000001 when the language cannot be found out, 0xB0000002 when it has
/// no code, 0xB0000003 when the variable "default_public_share_name_" and the code is not set.
///
/// Calls getSysVar with "<languag>" and tovGetLanguage. Traces the language, the variable's name,
/// its value, and the name.
void cmd_qlps(void);

} // extern "C"
#pragma GCC visibility pop
