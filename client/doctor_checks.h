// SPDX-License-Identifier: MIT
//
// doctor_checks.h: the functions of the checks (doctor.h). Each looks at one thing that its row's
// name says; none changes anything.
#pragma once

#include "client/doctor.h"

namespace client {

// doctor_tools.cpp: the programs that shell lines name.

[[nodiscard]] Diagnosis examineSudo(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examinePhp(const Surroundings& surroundings, const Check& check);
/// Whether there is a program with the check's name.
[[nodiscard]] Diagnosis examineProgram(const Surroundings& surroundings, const Check& check);
/// Whether there are the small tools: cat, grep, killall, mv, rm.
[[nodiscard]] Diagnosis examineSmallTools(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examinePelparam(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineDu(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineFdisk(const Surroundings& surroundings, const Check& check);
/// Unneeded unless there are two internal drives.
[[nodiscard]] Diagnosis examineMdadm(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examinePs(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineIfconfig(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineRoute(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineDate(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineWebHook(const Surroundings& surroundings, const Check& check);
/// Asks ra-enabled for a user that there is not.
[[nodiscard]] Diagnosis examineRemoteSwitch(const Surroundings& surroundings, const Check& check);

// doctor_scripts.cpp: the administration scripts in /etc/inc, and their functions.

/// Whether PHP can read the script with the check's name, and whether the functions are named in
/// /etc/inc that the module calls to change something. Those cannot be tried.
[[nodiscard]] Diagnosis examineScript(const Surroundings& surroundings, const Check& check);
// Each asks the function for its answer, and judges its form (doctor_forms.h).
[[nodiscard]] Diagnosis examineShareList(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineUserList(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineDevices(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineLanguage(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineMachineName(const Surroundings& surroundings, const Check& check);

// doctor_service.cpp: the service, what starts it, and what it has published.

[[nodiscard]] Diagnosis examineSettings(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineGroup(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineSocket(const Surroundings& surroundings, const Check& check);
/// Asks the service for its build.
[[nodiscard]] Diagnosis examineService(const Surroundings& surroundings, const Check& check);
/// The units of systemd, or the init script where systemd does not run.
[[nodiscard]] Diagnosis examineUnits(const Surroundings& surroundings, const Check& check);
/// What starts a collection every hour.
[[nodiscard]] Diagnosis examineTimer(const Surroundings& surroundings, const Check& check);
/// The last published status and its age.
[[nodiscard]] Diagnosis examineStatus(const Surroundings& surroundings, const Check& check);
/// A mark that an interrupted collection has left.
[[nodiscard]] Diagnosis examineCollection(const Surroundings& surroundings, const Check& check);

// doctor_files.cpp: folders, files, their modes, and free space.

[[nodiscard]] Diagnosis examineFolders(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineVariables(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineLock(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examinePrivateFile(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineWorkFolder(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineTmp(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineSettingsSpace(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineShareSpace(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineWorkSpace(const Surroundings& surroundings, const Check& check);
[[nodiscard]] Diagnosis examineClock(const Surroundings& surroundings, const Check& check);

// doctor_names.cpp: the names of shares, and accounts.

[[nodiscard]] Diagnosis examineShareNames(const Surroundings& surroundings, const Check& check);
/// Whether a password can match each user's entry in the password file.
[[nodiscard]] Diagnosis examineAccounts(const Surroundings& surroundings, const Check& check);

} // namespace client
