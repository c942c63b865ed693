// SPDX-License-Identifier: MIT
//
// getvar and setvar: the appliance's variables.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "core/core.h"
#include "core/languages.h"
#include "core/variable_line.h"
#include "core/variable_lock.h"

namespace core {
namespace {

constexpr const char* kVariableFile = "/etc/pelconfig/system_var";
constexpr const char* kNewFile = "/etc/pelconfig/system_var_tmp";
constexpr const char* kBackupFile = "/etc/pelconfig/system_var_bak";

constexpr mode_t kModeBits = 07777;

std::array<char, kValueSize> result;

// ---- Reading ----------------------------------------------------------------------------------

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

/// Variables that are asked of the appliance at that moment instead of read from the file.
constexpr auto kLiveValues = std::to_array<LiveValue>({
    {"lan_ipaddr", [] { return getSystemVar("", 1); }},
    {"lan_hwaddr", [] { return getSystemVar("", 2); }},
    {"lan_proto", [] { return getSystemVar("", 3); }},
    {"lan_gateway", [] { return getSystemVar("", 4); }},
    {"lan_netmask", [] { return getSystemVar("", 5); }},
    {"machine_name", [] { return kytegetSysVar("<nmbdSysname>", "tovGetNmbdSysname"); }},
    {"pel_language", languageDigit},
    {"build_version", getBuildInfo},
});

void setResult(std::string_view value)
{
    // The name may point into the result, so the result is written only now.
    value.copy(result.data(), result.size() - 1);
    result[value.size()] = '\0';
}

void readStoredValue(const char* name)
{
    const VariableLock lock(VariableLock::Mode::kRead);
    const File file = openFile(kVariableFile, "r");
    if (!file) {
        printComment("getvar() - getsetvar failed open file: %s, syserr: %s", kVariableFile,
                     std::strerror(errno));
        setResult("");
        return;
    }
    VariableFileReader reader(file.get());
    while (reader.next()) {
        const auto line = reader.line();
        const auto value = line ? valueOf(*line, name) : std::nullopt;
        if (value) {
            setResult(*value);
            return;
        }
    }
    setResult("");
}

// ---- Writing ----------------------------------------------------------------------------------

/// Copies the variables, and changes or adds one of them.
/// @return whether all of them could be read
bool copyWith(FILE* from, FILE* to, const char* name, const char* value)
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
    return std::ferror(from) == 0;
}

/// Makes the file that replaces an old one. It has the old one's owner and mode before anything is
/// written, as far as this process may set them. A copy that could not be removed may be a link to
/// the old file, so it is never truncated.
File createLike(FILE* old)
{
    constexpr mode_t kOwnersOnly = 0600;
    const int made = ::open(kNewFile, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnersOnly);
    if (made < 0) {
        return nullptr;
    }
    struct stat status = {};
    if (::fstat(::fileno(old), &status) == 0) {
        // The owner first: changing it may take bits of the mode away.
        [[maybe_unused]] const int owned = ::fchown(made, status.st_uid, status.st_gid);
        ::fchmod(made, status.st_mode & kModeBits);
    }
    File file(::fdopen(made, "w"));
    if (!file) {
        ::close(made);
    }
    return file;
}

/// Closes a file that has been written.
/// @return whether everything was written
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

    const auto* live = std::ranges::find(kLiveValues, std::string_view(name), &LiveValue::name);
    if (live != kLiveValues.end()) {
        setResult(live->answer());
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
    File newFile = oldFile ? createLike(oldFile.get()) : nullptr;
    if (!newFile) {
        return -1;
    }
    if (!copyWith(oldFile.get(), newFile.get(), name, value)) {
        return -1;
    }
    oldFile.reset();

    // Link the old version to the backup's name before its own name is taken away; the new version
    // keeps the copy's name, too. The links are not checked, but a copy that is cut short must not
    // become the file.
    ::unlink(kBackupFile);
    [[maybe_unused]] const int backedUp = ::link(kVariableFile, kBackupFile);
    if (!finish(std::move(newFile))) {
        return -1;
    }
    ::unlink(kVariableFile);
    [[maybe_unused]] const int published = ::link(kNewFile, kVariableFile);
    return 0;
}
