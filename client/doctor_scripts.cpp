// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <filesystem>
#include <span>
#include <string_view>

#include "client/doctor_checks.h"
#include "client/doctor_forms.h"
#include "client/doctor_program.h"
#include "text/translation.h"
#include "view/file_start.h"

namespace client {
namespace {

using text::fill;
using text::tr;

constexpr const char* kFolder = "/etc/inc";

/// A function that changes something, so it cannot be tried.
struct Setter {
    std::string_view script;
    const char* function;
};

constexpr auto kSetters = std::to_array<Setter>({
    {"api_share.php", "tovAddShare"},
    {"api_share.php", "tovSetUserSharePrivileges"},
    {"api_user.php", "tovAddUser"},
    {"api_system.php", "tovSetSysDate"},
    {"api_system.php", "tovSetLanguage"},
    {"api_system.php", "tovSetHostname"},
    {"api_system.php", "tovSetNmbdSysname"},
    {"api_system.php", "tovSetWorkgroup"},
    {"api_pel.php", "tovSetUtcSysTime"},
});

bool isNamedIn(const std::filesystem::path& file, const char* function)
{
    constexpr std::size_t kMost = std::size_t{1} << 20;
    return view::readFileStart(file.c_str(), kMost).bytes.find(function) != std::string::npos;
}

/// Whether any of the scripts, or of the files that they share, names a function.
bool isNamed(const char* function)
{
    const std::filesystem::directory_iterator folder(kFolder);
    return std::any_of(begin(folder), end(folder), [function](const auto& entry) {
        return entry.is_regular_file() && isNamedIn(entry.path(), function);
    });
}

/// The first of a script's functions that is named nowhere; null if there is none.
const char* findUnnamed(std::string_view script)
{
    const auto* found = std::ranges::find_if(kSetters, [script](const Setter& setter) {
        return setter.script == script && !isNamed(setter.function);
    });
    return (found != kSetters.end()) ? found->function : nullptr;
}

Diagnosis judgeAnswer(const ProgramAnswer& answer, Diagnosis (*judge)(std::string_view text))
{
    return answer.complaint ? *answer.complaint : judge(answer.text);
}

} // namespace

Diagnosis examineScript(const Surroundings& surroundings, const Check& check)
{
    const std::string path = std::string(kFolder) + "/" + check.name;
    if (!std::filesystem::is_regular_file(path)) {
        return wrong(fill(tr("There is no {}."), {path}),
                     tr("install the appliance's administration scripts"));
    }
    const Ended ended = runProgram(surroundings, {"/usr/bin/php", "-l", path});
    if (ended.code != 0) {
        return wrong(fill(tr("PHP cannot read {}."), {path}),
                     fill(tr("see what is wrong: {}"), {"php -l " + path}));
    }
    if (const char* function = findUnnamed(check.name)) {
        return wrong(fill(tr("Nothing in /etc/inc names its function {}."), {function}),
                     tr("add the function; porting.md says what it does"));
    }
    return good(tr("PHP can read it."));
}

Diagnosis examineShareList(const Surroundings& surroundings, const Check& check)
{
    return judgeAnswer(askScript(surroundings, check.after, check.name), judgeShareList);
}

Diagnosis examineUserList(const Surroundings& surroundings, const Check& check)
{
    return judgeAnswer(askScript(surroundings, check.after, check.name), judgeUserList);
}

Diagnosis examineDevices(const Surroundings& surroundings, const Check& check)
{
    return judgeAnswer(askScript(surroundings, check.after, check.name), judgeDevices);
}

Diagnosis examineLanguage(const Surroundings& surroundings, const Check& check)
{
    return judgeAnswer(askScript(surroundings, check.after, check.name), judgeLanguage);
}

Diagnosis examineMachineName(const Surroundings& surroundings, const Check& check)
{
    return judgeAnswer(askScript(surroundings, check.after, check.name), judgeMachineName);
}

} // namespace client
