// SPDX-License-Identifier: MIT
//
// doctor_forms.h: whether an answer of the appliance's has the form that the module reads. Values
// in, values out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/doctor.h"

namespace client {

// Each returns kGood with what the answer says, or kWrong with the first thing that the module
// would misread, and the form that it reads.

/// The share script's list: one element a line, name, property and location in this order.
[[nodiscard]] Diagnosis judgeShareList(std::string_view text);

/// The user script's list: one name a line.
[[nodiscard]] Diagnosis judgeUserList(std::string_view text);
/// The names in it.
[[nodiscard]] std::vector<std::string> usersIn(std::string_view text);

/// The system script's report of disks and printers.
[[nodiscard]] Diagnosis judgeDevices(std::string_view text);

/// The system script's language, which has two readers.
[[nodiscard]] Diagnosis judgeLanguage(std::string_view text);

/// The appliance's name in the Windows network.
[[nodiscard]] Diagnosis judgeMachineName(std::string_view text);

/// The web hook's list of shares.
[[nodiscard]] Diagnosis judgeWebHook(std::string_view text);

/// The number of internal drives, as pelparam prints it.
[[nodiscard]] Diagnosis judgeDriveCount(std::string_view text);
/// That number, if it is one.
[[nodiscard]] std::optional<unsigned> driveCountIn(std::string_view text);

/// What du prints of one folder.
[[nodiscard]] Diagnosis judgeDu(std::string_view text);

/// What fdisk prints of /dev/sda.
[[nodiscard]] Diagnosis judgeFdisk(std::string_view text);

/// What mdadm prints of the mirror.
[[nodiscard]] Diagnosis judgeMdadm(std::string_view text);

/// The list of processes, with every process in it.
[[nodiscard]] Diagnosis judgePs(std::string_view text);

/// The addresses of the network interfaces.
[[nodiscard]] Diagnosis judgeIfconfig(std::string_view text);

/// The routes.
[[nodiscard]] Diagnosis judgeRoute(std::string_view text);

/// The date, month first.
[[nodiscard]] Diagnosis judgeDate(std::string_view text);

} // namespace client
