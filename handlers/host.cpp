// SPDX-License-Identifier: MIT
#include "handlers/host.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/core.h"
#include "core/languages.h"

namespace handlers {
namespace {

using cmdsvc::requestLine;

constexpr std::size_t kLongestName = 32;
constexpr std::size_t kUnchangedName = 1; ///< a name of at most this size leaves the old one

/// What is to be set.
struct Settings {
    core::Text time;
    core::Text hostName;
    core::Text workGroup;
    core::Text languageCode;
};

// Each step gives back the code that the command ends with, or kGood.

// ---- Parameters -------------------------------------------------------------------------------

std::uint32_t readParameter(const char* label, core::Text& text)
{
    cmdsvc::readParameterLine();
    if (!cmdsvc::cutNewline()) {
        return cmdsvc::kMalformed;
    }
    dbg_trace("%s=%s", label, requestLine.data());
    text = core::copyText(requestLine.data());
    return text ? cmdsvc::kGood : cmdsvc::kNoMemory;
}

/// @param tooLong  the code for a name that is too long
std::uint32_t readName(const char* label, core::Text& name, std::uint32_t tooLong)
{
    const std::uint32_t code = readParameter(label, name);
    if (code != cmdsvc::kGood) {
        return code;
    }
    return (std::strlen(name.get()) > kLongestName) ? tooLong : cmdsvc::kGood;
}

std::uint32_t readLanguage(core::Text& language)
{
    const std::uint32_t code = readParameter("language", language);
    if (code != cmdsvc::kGood) {
        return code;
    }
    return (core::findLanguage(language.get()) == nullptr) ? cmdsvc::kUnknownLanguage
                                                           : cmdsvc::kGood;
}

std::uint32_t readSettings(Settings& settings)
{
    std::uint32_t code = readParameter("date", settings.time);
    if (code == cmdsvc::kGood) {
        code = readName("hostname", settings.hostName, cmdsvc::kHostNameTooLong);
    }
    if (code == cmdsvc::kGood) {
        code = readName("wgname", settings.workGroup, cmdsvc::kWorkGroupTooLong);
    }
    return (code == cmdsvc::kGood) ? readLanguage(settings.languageCode) : code;
}

// ---- Clock ------------------------------------------------------------------------------------

/// A time or a date as the scripts take it.
using ClockText = std::array<char, 16>;

/// Some characters of the time line; fewer where it is shorter.
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

std::uint32_t setClock(const char* time)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovSetUtcSysTime %s", core::kPelScript, timeOf(time).data());
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("cmd_host() system(%s) - iRet: %d -- sys err: %s", line.data(), run.result,
              std::strerror(run.error));
    const int result = setSysVar(dateOf(time).data(), "tovSetSysDate");
    // The line is still the time's; the trace has always shown it.
    dbg_trace("cmd_host() system(%s) - iRet: %d", line.data(), result);
    if (result != 0) {
        dbg_trace("cannot save host or work group name: %d", result);
        return cmdsvc::kCommandFailed;
    }
    return cmdsvc::kGood;
}

// ---- Language and names -----------------------------------------------------------------------

std::uint32_t setLanguage(const char* code)
{
    if (setvar("language_current", code) < 0) {
        dbg_trace("cannot save host or work group name: %s", "cmd_host()");
        return cmdsvc::kCommandFailed;
    }
    const int result = setSysVar(core::findLanguage(code)->name, "tovSetLanguage");
    return (result == 0) ? cmdsvc::kGood : cmdsvc::kCommandFailed;
}

bool isUnchanged(const char* name)
{
    return std::strlen(name) <= kUnchangedName;
}

std::uint32_t setHostName(const char* name)
{
    const bool isSet = isUnchanged(name) || (setSysVar(name, "tovSetHostname") == 0 &&
                                             setSysVar(name, "tovSetNmbdSysname") == 0);
    return isSet ? cmdsvc::kGood : cmdsvc::kNameNotSet;
}

std::uint32_t setWorkGroup(const char* name)
{
    const bool isSet = isUnchanged(name) || setSysVar(name, "tovSetWorkgroup") == 0;
    return isSet ? cmdsvc::kGood : cmdsvc::kNameNotSet;
}

std::uint32_t setStartPage()
{
    constexpr const char* kStartPage = "/real_index.asp";
    if (setvar("http_start_page", kStartPage) < 0) {
        dbg_trace("cannot set var to: %s", kStartPage);
        return cmdsvc::kStartPageNotSet;
    }
    return cmdsvc::kGood;
}

/// Sets one thing after the other, up to the first that fails.
std::uint32_t apply(const Settings& settings)
{
    std::uint32_t code = setClock(settings.time.get());
    if (code == cmdsvc::kGood) {
        code = setLanguage(settings.languageCode.get());
    }
    if (code == cmdsvc::kGood) {
        code = setHostName(settings.hostName.get());
    }
    if (code == cmdsvc::kGood) {
        code = setWorkGroup(settings.workGroup.get());
    }
    return (code == cmdsvc::kGood) ? setStartPage() : code;
}

} // namespace
} // namespace handlers

void cmd_host(void)
{
    using namespace handlers;

    Settings settings;
    std::uint32_t code = readSettings(settings);
    if (code == cmdsvc::kGood) {
        code = apply(settings);
    }
    if (code != cmdsvc::kGood) {
        cmdsvc::endWithWord(code);
        return;
    }
    cmdsvc::writeWord(cmdsvc::kGood);
}
