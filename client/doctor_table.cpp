// SPDX-License-Identifier: MIT
//
// The table of all checks.
#include <array>

#include "client/doctor_checks.h"

namespace client {
namespace {

// clang-format off
constexpr auto kChecks = std::to_array<Check>({
    // name               root   after               what it does
    {"settings",          false, nullptr,            examineSettings},
    // What shell lines start with.
    {"sudo",              true,  nullptr,            examineSudo},
    {"php",               true,  "sudo",             examinePhp},
    // The administration scripts.
    {"api_share.php",     true,  "php",              examineScript},
    {"api_user.php",      true,  "php",              examineScript},
    {"api_system.php",    true,  "php",              examineScript},
    {"api_pel.php",       true,  "php",              examineScript},
    {"tovGetShareList",   true,  "api_share.php",    examineShareList},
    {"tovGetUsers",       true,  "api_user.php",     examineUserList},
    {"tovGetSystemStatus", true, "api_system.php",   examineDevices},
    {"tovGetLanguage",    true,  "api_system.php",   examineLanguage},
    {"tovGetNmbdSysname", true,  "api_system.php",   examineMachineName},
    {"runwebhooks",       true,  nullptr,            examineWebHook},
    // Programs of the appliance.
    {"startapp",          false, nullptr,            examineProgram},
    {"pelstatus",         false, nullptr,            examineProgram},
    {"pelparam",          true,  "sudo",             examinePelparam},
    {"/usr/bin/ra-enabled", true, nullptr,           examineRemoteSwitch},
    {"/usr/bin/ractl",    false, nullptr,            examineProgram},
    {"/usr/sbin/tidewaved", false, nullptr,          examineProgram},
    // Tools of the system.
    {"du",                false, nullptr,            examineDu},
    {"fdisk",             true,  nullptr,            examineFdisk},
    {"mdadm",             true,  "pelparam",         examineMdadm},
    {"ps",                false, nullptr,            examinePs},
    {"ifconfig",          false, nullptr,            examineIfconfig},
    {"route",             false, nullptr,            examineRoute},
    {"date",              false, nullptr,            examineDate},
    {"tools",             false, nullptr,            examineSmallTools},
    // The service.
    {"group",             false, nullptr,            examineGroup},
    {"socket",            false, "settings",         examineSocket},
    {"vokserve",          false, "socket",           examineService},
    {"units",             false, nullptr,            examineUnits},
    {"timer",             false, "units",            examineTimer},
    {"publication",           false, nullptr,            examineStatus},
    {"collection",        false, nullptr,            examineCollection},
    // Files.
    {"folders",           false, nullptr,            examineFolders},
    {"variables",         false, "folders",          examineVariables},
    {"lock",              false, "folders",          examineLock},
    {"private-file",      false, "folders",          examinePrivateFile},
    {"work-folder",       false, nullptr,            examineWorkFolder},
    {"tmp",               false, nullptr,            examineTmp},
    {"settings-space",    false, "folders",          examineSettingsSpace},
    {"share-space",       false, nullptr,            examineShareSpace},
    {"work-space",        false, nullptr,            examineWorkSpace},
    {"clock",             false, nullptr,            examineClock},
    // What the appliance holds.
    {"share-names",       false, "publication",           examineShareNames},
    {"accounts",          true,  "tovGetUsers",      examineAccounts},
});
// clang-format on

} // namespace

std::span<const Check> checks()
{
    return kChecks;
}

} // namespace client
