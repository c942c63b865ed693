// SPDX-License-Identifier: MIT
//
// configuration.h: the settings of service, client and pages, which an administrator can change in
// /etc/vokcontrol.conf. vokcontrol.conf(5) explains each key.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace config {

inline constexpr const char* kDefaultFile = "/etc/vokcontrol.conf";
/// The folders with the appliance's programs.
inline constexpr const char* kDefaultPath =
    "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// The settings, with their defaults. The table in keys.cpp has the section and key of each.
struct Configuration {
    // [service]
    std::string socket = "/run/vokcontrol.sock"; ///< of the service; vokctl and the pages use it
    std::string group = "vokcontrol";
    std::string viewGroup = "vokcontrol-view";
    unsigned timeout = 60;       ///< seconds
    unsigned deadline = 10;      ///< seconds
    unsigned passwordPause = 16; ///< seconds; 0 for none
    std::string path = kDefaultPath;

    // [client]
    unsigned clientTimeout = 90; ///< seconds

    // [pages]
    std::vector<std::string> administrators = {}; ///< accounts of the appliance
    std::vector<std::string> hosts = {}; ///< further names that browsers may call the appliance
    bool trustWebServer = false;         ///< whether REMOTE_USER is the user who is logged in

    // [thresholds]
    unsigned fullWarning = 90;  ///< percent
    unsigned fullCritical = 95; ///< percent, not below fullWarning
    unsigned backupAge = 7;     ///< days
    unsigned stale = 24;        ///< hours

    // [backup]
    std::string goodStates = {};            ///< digits
    std::string failedStates = {};          ///< digits that are not among goodStates
    std::array<std::string, 10> words = {}; ///< the meaning of each state; empty if unknown

    // [notify]
    std::string notifyAccount = {}; ///< whom programs run as; empty for root
    unsigned notifyTimeout = 30;    ///< seconds

    bool operator==(const Configuration&) const = default;
};

/// What is wrong with a file: its name, the number of the line if one is wrong, and a sentence for
/// the administrator. The message never contains a key's value.
class BadConfiguration : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The file's owner or mode lets other accounts change it, so it has not been read.
class UntrustedConfiguration : public BadConfiguration {
  public:
    using BadConfiguration::BadConfiguration;
};

/// Reads a file of at most 64 KiB. Throws BadConfiguration if it cannot be read, is not a plain
/// file, or has a line that is not understood; UntrustedConfiguration if it belongs to neither root
/// nor this process's user, or can be written by other accounts.
/// @param path  if this is the default file and it does not exist, all settings are the defaults;
///              any other file must exist
[[nodiscard]] Configuration read(const std::string& path = kDefaultFile);

} // namespace config
