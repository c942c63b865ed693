// SPDX-License-Identifier: MIT
//
// getvar and setvar: the appliance's variables.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <unistd.h>

#include "core/core.h"
#include "core/variable_line.h"
#include "core/variable_lock.h"

namespace core {
namespace {

constexpr const char* kVariableFile = "/etc/pelconfig/system_var";
constexpr const char* kNewFile = "/etc/pelconfig/system_var_tmp";
constexpr const char* kBackupFile = "/etc/pelconfig/system_var_bak";

std::array<char, kValueSize> result;

// ---- Reading ----------------------------------------------------------------------------------

struct Language {
    const char* name;
    const char* digit;
};

/// Tested in this order, each as a part of the answer: so traditional Chinese counts as Chinese.
constexpr std::array<Language, 7> kLanguages = {{
    {"english", "1"},
    {"french", "2"},
    {"german", "3"},
    {"spanish", "4"},
    {"italian", "5"},
    {"chinese", "6"},
    {"traditional_chinese", "7"},
}};

const char* languageDigit()
{
    const char* answer = kytegetSysVar("<language>", "tovGetLanguage");
    for (const Language& language : kLanguages) {
        if (std::strstr(answer, language.name) != nullptr) {
            return language.digit;
        }
    }
    return kLanguages.front().digit;
}

struct LiveValue {
    std::string_view name;
    const char* (*answer)();
};

/// What the appliance says at that moment, instead of the file.
constexpr std::array<LiveValue, 8> kLiveValues = {{
    {"lan_ipaddr", [] { return getSystemVar("", 1); }},
    {"lan_hwaddr", [] { return getSystemVar("", 2); }},
    {"lan_proto", [] { return getSystemVar("", 3); }},
    {"lan_gateway", [] { return getSystemVar("", 4); }},
    {"lan_netmask", [] { return getSystemVar("", 5); }},
    {"machine_name", [] { return kytegetSysVar("<nmbdSysname>", "tovGetNmbdSysname"); }},
    {"pel_language", languageDigit},
    {"build_version", getBuildInfo},
}};

void readStoredValue(const char* name)
{
    const VariableLock lock(VariableLock::Mode::kRead);
    const File file = openFile(kVariableFile, "r");
    if (!file) {
        printComment("getvar() - getsetvar failed open file: %s, syserr: %s", kVariableFile,
                     std::strerror(errno));
        return;
    }
    VariableFileReader reader(file.get());
    while (reader.next()) {
        const auto line = reader.line();
        const auto value = line ? valueOf(*line, name) : std::nullopt;
        if (value) {
            value->copy(result.data(), result.size() - 1);
            result[value->size()] = '\0';
            return;
        }
    }
}

// ---- Writing ----------------------------------------------------------------------------------

/// Copies the variables with one of them changed or added.
void copyWith(FILE* from, FILE* to, const char* name, const char* value)
{
    bool isReplaced = false;
    VariableFileReader reader(from);
    while (reader.next()) {
        const auto line = reader.line();
        if (line && valueOf(*line, name)) {
            std::fprintf(to, "%s=%s\n", name, value);
            isReplaced = true;
        } else {
            std::fwrite(reader.piece().data(), 1, reader.piece().size(), to);
        }
    }
    if (!isReplaced) {
        std::fprintf(to, "%s%s=%s\n", reader.endsWithinLine() ? "\n" : "", name, value);
    }
}

/// Ends the writing of a file.
/// @return whether all of it has arrived
bool finish(File file)
{
    const bool isWritten = std::ferror(file.get()) == 0;
    return std::fclose(file.release()) == 0 && isWritten;
}

} // namespace
} // namespace core

const char* getvar(const char* name)
{
    using namespace core;

    result[0] = '\0';
    const auto* live = std::ranges::find(kLiveValues, std::string_view(name), &LiveValue::name);
    if (live != kLiveValues.end()) {
        formatBounded(result, "%s", live->answer());
    } else {
        readStoredValue(name);
    }
    return result.data();
}

int setvar(const char* name, const char* value)
{
    using namespace core;

    const VariableLock lock(VariableLock::Mode::kWrite);
    ::unlink(kNewFile);
    File oldFile = openFile(kVariableFile, "r");
    File newFile = oldFile ? openFile(kNewFile, "w") : nullptr;
    if (!newFile) {
        return -1;
    }
    copyWith(oldFile.get(), newFile.get(), name, value);
    oldFile.reset();

    // Both versions keep a link of their own at every moment, whatever happens in between. Whether
    // a link succeeds does not matter, but a copy that is cut short must not become the file.
    ::unlink(kBackupFile);
    [[maybe_unused]] const int backedUp = ::link(kVariableFile, kBackupFile);
    if (!finish(std::move(newFile))) {
        return -1;
    }
    ::unlink(kVariableFile);
    [[maybe_unused]] const int published = ::link(kNewFile, kVariableFile);
    return 0;
}
