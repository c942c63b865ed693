// SPDX-License-Identifier: MIT
#include "handlers/first_run.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "core/languages.h"
#include "handlers/handler.h"

namespace handlers {
namespace {

/// @return the code of the first language whose name is a part of the script's answer, or null
const char* codeOf(const char* answer)
{
    for (const core::Language* language : core::kShareNameLanguages) {
        if (std::strstr(answer, language->name) != nullptr) {
            return language->code;
        }
    }
    return nullptr;
}

// Language, variable and value are traced with the same words.
void traceLanguage(const char* text)
{
    dbg_trace("cmd_qlps pel_language= %s", text);
}

/// Finds the code of the appliance's language.
Status findCode(const char*& code)
{
    std::array<char, core::kValueSize> language;
    core::formatBounded(language, "%s", getSysVar("<languag>", "tovGetLanguage"));
    traceLanguage(language.data());
    if (language[0] == '\0') {
        return kNoLanguage;
    }
    code = codeOf(language.data());
    return (code != nullptr) ? kGood : kLanguageWithoutCode;
}

using ShareName = std::array<char, cmdsvc::kLongestShareName + 1>;

/// Finds the public share's name in a language.
Status findShareName(const char* code, ShareName& name)
{
    std::array<char, 64> variable;
    core::formatBounded(variable, "default_public_share_name_%s", code);
    traceLanguage(variable.data());
    const char* value = getvar(variable.data());
    traceLanguage(value);
    if (value[0] == '\0') {
        return kNoPublicShareName;
    }
    core::formatBounded(name, "%s", value);
    return kGood;
}

Status answerLanguageAndShare(Channel& channel)
{
    const char* code = nullptr;
    ShareName name;
    Status status = findCode(code);
    if (status == kGood) {
        status = findShareName(code, name);
    }
    if (status != kGood) {
        return status;
    }
    dbg_trace("pubsharename = %s", name.data());
    channel.writeHeader(2);
    std::fprintf(fout_buf, "%s\n%s\n", code, name.data());
    return kGood;
}

Status answerSetup(Channel& /*channel*/)
{
    std::array<char, 40> marker;
    core::formatBounded(marker, "%s", getvar("firsttime"));
    dbg_trace("cmd_frst() return : %s", marker.data());
    return (marker[0] == '0') ? kSetupDone : kGood;
}

} // namespace
} // namespace handlers

void cmd_frst(void)
{
    cmdsvc::serve(cmdsvc::command("frst"), handlers::answerSetup);
}

void cmd_qlps(void)
{
    cmdsvc::serve(cmdsvc::command("qlps"), handlers::answerLanguageAndShare);
}
