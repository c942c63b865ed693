// SPDX-License-Identifier: MIT
//
// host.h: what the appliance is called, and its clock and language.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "host": sets the clock, the language, and the appliance's names. Its parameters are four lines:
///
///   the time, MMDDhhmmYYYY.ss, of which characters are taken by their places
///   the host name and the work group, at most 32 bytes each; none or one leaves it as it is
///   the language: en, fr, ge, sp, it, sc or tc
///
/// Answers a bare word: 0, or 0xFF000003 for a line without its newline, 0x50000003 and 0x50000004
/// for a name that is too long, 0x50000006 for another language; nothing is changed then.
/// 0xFF000004 when the date or the language could not be set, 0x50000005 a name, 0x50000001 the
/// start page; what has been set by then stays. 0xFF000001 without memory, before anything is set.
/// Whether the time could be set is only traced.
///
/// Runs the pel script's tovSetUtcSysTime; calls setSysVar with tovSetSysDate, tovSetLanguage,
/// tovSetHostname, tovSetNmbdSysname and tovSetWorkgroup, and setvar for "language_current" and
/// "http_start_page". Traces the lines, the line run for the time, the date's result, and what
/// failed.
void cmd_host(void);

} // extern "C"
#pragma GCC visibility pop
