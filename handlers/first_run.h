// SPDX-License-Identifier: MIT
//
// first_run.h: the commands that a client sends before it offers to set the appliance up.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "frst": answers the bare word 0 as long as the appliance waits for its first setup, and
/// 0x80000001 if the variable "firsttime" starts with "0". Traces the variable.
void cmd_frst(void);

/// "qlps": answers the header "qlrt" with 2, then two lines: the code of the appliance's language
/// (en, fr, ge, it or sp) and the name that its public share has in that language, at most 64
/// bytes. Ends with error 0xB0000001 if the language cannot be read, 0xB0000002 if it has no code,
/// 0xB0000003 if the variable "default_public_share_name_CODE" is not set.
///
/// Calls getSysVar with "<languag>" and tovGetLanguage. Traces the language, the variable's name,
/// its value, and the name.
void cmd_qlps(void);

} // extern "C"
#pragma GCC visibility pop
