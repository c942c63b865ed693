// SPDX-License-Identifier: MIT
#include "handlers/first_run.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/core.h"
#include "core/languages.h"

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

// All three traces of qlps have the same words.
void traceLanguage(const char* text)
{
    dbg_trace("cmd_qlps pel_language= %s", text);
}

/// The code of the appliance's language; ends with an error where it has none.
const char* findCode()
{
    std::array<char, core::kValueSize> language;
    core::formatBounded(language, "%s", getSysVar("<languag>", "tovGetLanguage"));
    traceLanguage(language.data());
    if (language[0] == '\0') {
        cmdsvc::endWithError(cmdsvc::kNoLanguage);
        return nullptr;
    }
    const char* code = codeOf(language.data());
    if (code == nullptr) {
        cmdsvc::endWithError(cmdsvc::kLanguageWithoutCode);
    }
    return code;
}

/// The public share's name in a language; ends with an error where it has none.
const char* findShareName(const char* code)
{
    std::array<char, 64> variable;
    core::formatBounded(variable, "default_public_share_name_%s", code);
    traceLanguage(variable.data());
    const char* name = getvar(variable.data());
    traceLanguage(name);
    if (name[0] == '\0') {
        cmdsvc::endWithError(cmdsvc::kNoPublicShareName);
        return nullptr;
    }
    return name;
}

} // namespace
} // namespace handlers

void cmd_frst(void)
{
    std::array<char, 40> marker;
    core::formatBounded(marker, "%s", getvar("firsttime"));
    dbg_trace("cmd_frst() return : %s", marker.data());
    if (marker[0] == '0') {
        cmdsvc::endWithWord(cmdsvc::kSetupDone);
        return;
    }
    cmdsvc::writeWord(cmdsvc::kGood);
}

void cmd_qlps(void)
{
    using namespace handlers;

    const char* code = findCode();
    const char* value = (code != nullptr) ? findShareName(code) : nullptr;
    if (value == nullptr) {
        return;
    }
    std::array<char, cmdsvc::kLongestShareName + 1> name;
    core::formatBounded(name, "%s", value);
    dbg_trace("pubsharename = %s", name.data());
    cmdsvc::writeHeader("qlrt", 2);
    std::fprintf(fout_buf, "%s\n%s\n", code, name.data());
}
