// SPDX-License-Identifier: MIT
#include <array>

#include "client/doctor_checks.h"
#include "client/doctor_forms.h"
#include "client/doctor_program.h"

namespace client {
namespace {

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
    return answer.complaint ? *answer.complaint : good("It runs programs.");
}

Diagnosis examinePhp(const Surroundings& surroundings, const Check& /*check*/)
{
    return judgeOutput(surroundings, {"sudo", "/usr/bin/php", "-v"}, [](std::string_view text) {
        return text.starts_with("PHP ")
                   ? good("It is " + std::string(text.substr(0, text.find(' ', 4))) + ".")
                   : wrong("/usr/bin/php is not PHP.",
                           "install the package php-cli, or link its program to /usr/bin/php");
    });
}

Diagnosis examineProgram(const Surroundings& surroundings, const Check& check)
{
    const std::optional<std::string> path = findProgram(surroundings, check.name);
    if (path) {
        return good("It is " + *path + ".");
    }
    return (check.name[0] == '/')
               ? wrong("There is no such program.", "install it there")
               : wrong(std::string("There is no program ") + check.name + " in " +
                           surroundings.settings.path + ".",
                       "install it, or set path in " + surroundings.settingsFile);
}

Diagnosis examineSmallTools(const Surroundings& surroundings, const Check& /*check*/)
{
    std::string missing;
    for (const char* name : {"cat", "grep", "killall", "mv", "rm"}) {
        if (!findProgram(surroundings, name)) {
            missing += (missing.empty() ? "" : ", ") + std::string(name);
        }
    }
    return missing.empty()
               ? good("There are cat, grep, killall, mv and rm.")
               : wrong("These are missing in " + surroundings.settings.path + ": " + missing + ".",
                       "install them, or set path in " + surroundings.settingsFile);
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
        return unneeded("Not needed: there are not two internal drives.");
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
        return wrong("There is no such program.", "install it there");
    }
    return (ended.code == kNoSuchUser)
               ? good("It answers.")
               : wrong("For a user that there is not it ended with " + std::to_string(ended.code) +
                           ".",
                       "have it end with 0 for on, 1 for off, 2 for an unknown user");
}

} // namespace client
