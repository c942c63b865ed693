// SPDX-License-Identifier: MIT
//
// configuration.h: what an administrator can settle in /etc/vokcontrol.conf, for service, client
// and pages. vokcontrol.conf(5) tells what each key means.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace config {

inline constexpr const char* kDefaultFile = "/etc/vokcontrol.conf";
/// Where the appliance's programs are looked for.
inline constexpr const char* kDefaultPath =
    "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/// The settings, each with the value that it has unless the file says otherwise. The table in
/// keys.cpp says where in the file each of them stands.
struct Configuration {
    // [service]
    std::string socket = "/run/vokcontrol.sock"; ///< where the service listens, and vokctl asks
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
    bool trustWebServer = false;         ///< whether REMOTE_USER says who asks

    // [thresholds]
    unsigned fullWarning = 90;  ///< percent
    unsigned fullCritical = 95; ///< percent, not below fullWarning
    unsigned backupAge = 7;     ///< days
    unsigned stale = 24;        ///< hours

    // [backup]
    std::string goodStates = {};            ///< digits
    std::string failedStates = {};          ///< digits, none of them among the good ones
    std::array<std::string, 10> words = {}; ///< of each state; empty if nobody has explained it

    // [notify]
    std::string notifyAccount = {}; ///< whom programs run as; empty for root
    unsigned notifyTimeout = 30;    ///< seconds

    bool operator==(const Configuration&) const = default;
};

/// What is wrong with a file: its name, the number of the line if one is to blame, and a sentence
/// for the administrator. It holds no value of any key.
class BadConfiguration : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads a file of at most 64 KiB. Throws BadConfiguration if it cannot be read, is no plain file,
/// does not belong to root or to this process's own user, can be written by anybody else, or holds
/// a line that is not understood.
/// @param path  the default file may be missing, which leaves everything at its default; any other
///              has been named by somebody, and must be there
[[nodiscard]] Configuration read(const std::string& path = kDefaultFile);

} // namespace config
