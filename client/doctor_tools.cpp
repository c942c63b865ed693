// SPDX-License-Identifier: MIT
#include <array>

#include "client/doctor_checks.h"
#include "client/doctor_forms.h"
#include "client/doctor_program.h"
#include "text/translation.h"
#include "view/wording.h"

namespace client {
namespace {

using text::fill;
using text::tr;

using Words = std::vector<std::string>;
using Judge = Diagnosis (*)(std::string_view text);

/// Asks a program, and judges what it prints.
Diagnosis judgeOutput(const Surroundings& surroundings, const Words& words, Judge judge)
{
    const ProgramAnswer answer = askProgram(surroundings, words);
    return answer.complaint ? *answer.complaint : judge(answer.text);
}

ProgramAnswer askPelparam(const Surroundings& surroundings)
{
    return askProgram(surroundings, {"sudo", "pelparam", "-d"});
}

} // namespace

Diagnosis examineSudo(const Surroundings& surroundings, const Check& /*check*/)
{
    const ProgramAnswer answer = askProgram(surroundings, {"sudo", "true"});
    return answer.complaint ? *answer.complaint : good(tr("It runs programs."));
}

Diagnosis examinePhp(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"sudo", "/usr/bin/php", "-v"}, [](std::string_view text) {
        return text.starts_with("PHP ")
                   ? good(fill(tr("{} answers."), {text.substr(0, text.find(' ', 4))}))
                   : wrong(tr("/usr/bin/php is not PHP."),
                           tr("install the package php-cli, or link its program to "
                              "/usr/bin/php"));
    });
}

Diagnosis examineProgram(const Surroundings& surroundings, const Check& check)
{
    const std::optional<std::string> path = findProgram(surroundings, check.name);
    if (path) {
        return good(fill(tr("Its path is {}."), {*path}));
    }
    return (check.name[0] == '/')
               ? wrong(tr("There is no such program."), tr("install it there"))
               : wrong(fill(tr("There is no program {1} in {2}."),
                            {check.name, surroundings.settings.path}),
                       fill(tr("install it, or set path in {}"), {surroundings.settingsFile}));
}

Diagnosis examineSmallTools(const Surroundings& surroundings, const Check& /*check*/)
{
    std::vector<std::string> missing;
    for (const char* name : {"cat", "grep", "killall", "mv", "rm"}) {
        if (!findProgram(surroundings, name)) {
            missing.emplace_back(name);
        }
    }
    return missing.empty()
               ? good(tr("There are cat, grep, killall, mv and rm."))
               : wrong(fill(tr("These are missing in {1}: {2}."),
                            {surroundings.settings.path, view::formatNames(missing)}),
                       fill(tr("install them, or set path in {}"), {surroundings.settingsFile}));
}

Diagnosis examinePelparam(const Surroundings& surroundings, const Check& /*check*/)
{
    const ProgramAnswer answer = askPelparam(surroundings);
    return answer.complaint ? *answer.complaint : judgeDriveCount(answer.text);
}

Diagnosis examineDu(const Surroundings& surroundings, const Check& /*check*/)
{
    // To measure the shares would take too long.
    return judgeOutput(surroundings, {"du", "-sk", "/dev/null"}, judgeDu);
}

Diagnosis examineFdisk(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"fdisk", "-lu", "/dev/sda"}, judgeFdisk);
}

Diagnosis examineMdadm(const Surroundings& surroundings, const Check& /*check*/)
{
    constexpr unsigned kDrivesOfMirror = 2;
    const std::optional<unsigned> drives = driveCountIn(askPelparam(surroundings).text);
    if (drives != kDrivesOfMirror) {
        return unneeded(tr("Not needed: the appliance does not have two internal drives."));
    }
    return judgeOutput(surroundings, {"mdadm", "--detail", "/dev/md0"}, judgeMdadm);
}

Diagnosis examinePs(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"ps"}, judgePs);
}

Diagnosis examineIfconfig(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"ifconfig"}, judgeIfconfig);
}

Diagnosis examineRoute(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"route", "-n"}, judgeRoute);
}

Diagnosis examineDate(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"date", "+%m%d%Y"}, judgeDate);
}

Diagnosis examineWebHook(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"sh", "-c", "echo share_info | runwebhooks"}, judgeWebHook);
}

Diagnosis examineRemoteSwitch(const Surroundings& surroundings, const Check& check)
{
    constexpr int kNoSuchUser = 2;
    // No account can have this name, as it is no single line.
    const Ended ended = runProgram(surroundings, {check.name, "get", "no\nuser"});
    if (!findProgram(surroundings, check.name)) {
        return wrong(tr("There is no such program."), tr("install it there"));
    }
    return (ended.code == kNoSuchUser)
               ? good(tr("It answers."))
               : wrong(fill(tr("For a user that does not exist it ended with {}."),
                            {std::to_string(ended.code)}),
                       tr("have it end with 0 for on, 1 for off, 2 for an unknown user"));
}

} // namespace client
