// SPDX-License-Identifier: MIT
//
// host.h: the appliance's names, clock and language.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "host": sets the clock, the language, and the appliance's names. Its parameters are four lines:
///
///   the time, MMDDhhmmYYYY.ss; its parts are taken by their offsets
///   the host name and the work group, at most 32 bytes each; 0 or 1 byte changes nothing
///   the language: en, fr, ge, sp, it, sc or tc
///
/// Answers a bare word: 0; or, with nothing changed, 0xFF000003 for a line without its newline,
/// 0x50000003 or 0x50000004 for a name that is too long, 0x50000006 for another language,
/// 0xFF000001 if there is no memory. 0xFF000004 if the date or the language could not be set,
/// 0x50000005 if a name could not, 0x50000001 if the start page could not; what was set before
/// stays. Whether the time could be set is only traced.
///
/// Runs the pel script's tovSetUtcSysTime; calls setSysVar with tovSetSysDate, tovSetLanguage,
/// tovSetHostname, tovSetNmbdSysname and tovSetWorkgroup, and setvar for "language_current" and
/// "http_start_page". Traces the lines, the line run for the time, the date's result, and what
/// failed.
void cmd_host(void);

} // extern "C"
#pragma GCC visibility pop
