// SPDX-License-Identifier: MIT
#include "handlers/host.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "core/languages.h"
#include "handlers/handler.h"

namespace handlers {
namespace {

constexpr std::size_t kUnchangedName = 1; ///< a name of at most this size is not set

/// What is to be set.
struct Settings {
    core::Text time;
    core::Text hostName;
    core::Text workGroup;
    core::Text languageCode;
};

// ---- Parameters -------------------------------------------------------------------------------

/// @param label  the parameter's name in the trace
Status takeText(Channel& channel, const Parameter& parameter, const char* label, core::Text& text)
{
    ParameterLine line = channel.takeLine(parameter);
    if (!line.cutNewline()) {
        return kMalformed;
    }
    dbg_trace("%s=%s", label, line.text());
    const Status status = line.copyTo(text);
    const bool isTooLong = parameter.isTooLong(std::strlen(line.text()));
    return (status == kGood && isTooLong) ? parameter.limit.code : status;
}

Status takeLanguage(Channel& channel, core::Text& code)
{
    const Status status =
        takeText(channel, cmdsvc::parameter("host", "language"), "language", code);
    const bool isUnknown = status == kGood && core::findLanguage(code.get()) == nullptr;
    return isUnknown ? kUnknownLanguage : status;
}

Status takeSettings(Channel& channel, Settings& settings)
{
    Status status = takeText(channel, cmdsvc::parameter("host", "time"), "date", settings.time);
    if (status == kGood) {
        status = takeText(channel, cmdsvc::parameter("host", "host name"), "hostname",
                          settings.hostName);
    }
    if (status == kGood) {
        status = takeText(channel, cmdsvc::parameter("host", "work group"), "wgname",
                          settings.workGroup);
    }
    return (status == kGood) ? takeLanguage(channel, settings.languageCode) : status;
}

// ---- Clock ------------------------------------------------------------------------------------

/// A time or a date in the form that the scripts take.
using ClockText = std::array<char, 16>;

/// Some characters of the time line; fewer if it is shorter.
struct Piece {
    int size;
    const char* text;
};

Piece pieceOf(std::string_view time, std::size_t offset, std::size_t size)
{
    const std::string_view piece = time.substr(std::min(offset, time.size()), size);
    return {static_cast<int>(piece.size()), piece.data()};
}

/// Three pieces with a separator between them.
ClockText join(Piece first, char separator, Piece second, Piece third)
{
    ClockText text;
    core::formatBounded(text, "%.*s%c%.*s%c%.*s", first.size, first.text, separator, second.size,
                        second.text, separator, third.size, third.text);
    return text;
}

/// hh:mm:ss of MMDDhhmmYYYY.ss.
ClockText timeOf(std::string_view time)
{
    return join(pieceOf(time, 4, 2), ':', pieceOf(time, 6, 2), pieceOf(time, 13, 2));
}

/// MM/DD/YYYY of the same.
ClockText dateOf(std::string_view time)
{
    return join(pieceOf(time, 0, 2), '/', pieceOf(time, 2, 2), pieceOf(time, 8, 4));
}

Status setClock(const char* time)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovSetUtcSysTime %s", core::kPelScript, timeOf(time).data());
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("cmd_host() system(%s) - iRet: %d -- sys err: %s", line.data(), run.result,
              std::strerror(run.error));
    const int result = setSysVar(dateOf(time).data(), "tovSetSysDate");
    // The trace shows the line of the time, not of the date; its text is part of the interface.
    dbg_trace("cmd_host() system(%s) - iRet: %d", line.data(), result);
    if (result != 0) {
        dbg_trace("cannot save host or work group name: %d", result);
        return kCommandFailed;
    }
    return kGood;
}

// ---- Language and names -----------------------------------------------------------------------

Status setLanguage(const char* code)
{
    if (setvar("language_current", code) < 0) {
        dbg_trace("cannot save host or work group name: %s", "cmd_host()");
        return kCommandFailed;
    }
    const int result = setSysVar(core::findLanguage(code)->name, "tovSetLanguage");
    return (result == 0) ? kGood : kCommandFailed;
}

bool isUnchanged(const char* name)
{
    return std::strlen(name) <= kUnchangedName;
}

Status setHostName(const char* name)
{
    const bool isSet = isUnchanged(name) || (setSysVar(name, "tovSetHostname") == 0 &&
                                             setSysVar(name, "tovSetNmbdSysname") == 0);
    return isSet ? kGood : kNameNotSet;
}

Status setWorkGroup(const char* name)
{
    const bool isSet = isUnchanged(name) || setSysVar(name, "tovSetWorkgroup") == 0;
    return isSet ? kGood : kNameNotSet;
}

Status setStartPage()
{
    constexpr const char* kStartPage = "/real_index.asp";
    if (setvar("http_start_page", kStartPage) < 0) {
        dbg_trace("cannot set var to: %s", kStartPage);
        return kStartPageNotSet;
    }
    return kGood;
}

/// Sets one after the other, up to the first that fails.
Status apply(const Settings& settings)
{
    Status status = setClock(settings.time.get());
    if (status == kGood) {
        status = setLanguage(settings.languageCode.get());
    }
    if (status == kGood) {
        status = setHostName(settings.hostName.get());
    }
    if (status == kGood) {
        status = setWorkGroup(settings.workGroup.get());
    }
    return (status == kGood) ? setStartPage() : status;
}

Status setHost(Channel& channel)
{
    Settings settings;
    const Status status = takeSettings(channel, settings);
    return (status == kGood) ? apply(settings) : status;
}

} // namespace
} // namespace handlers

void cmd_host(void)
{
    cmdsvc::serve(cmdsvc::command("host"), handlers::setHost);
}
