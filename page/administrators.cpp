// SPDX-License-Identifier: MIT
#include "page/administrators.h"

#include <algorithm>
#include <sstream>

#include "page/private_files.h"

namespace page {

Administrators::Administrators(const config::Configuration& settings)
    : names_(settings.administrators)
{
    // A file that cannot be believed is a failure: it must not look like an appliance without
    // administrators, whose setup anybody may use.
    std::istringstream lines(readPrivateFile(kAdministratorsFile).value_or(""));
    for (std::string name; std::getline(lines, name);) {
        if (!name.empty()) {
            names_.push_back(name);
        }
    }
}

bool Administrators::contains(std::string_view account) const
{
    return std::ranges::find(names_, account) != names_.end();
}

bool Administrators::makeFirst(const config::Configuration& settings, std::string_view account,
                               const std::function<void()>& create)
{
    requirePrivateFolder(kKeptFolder);
    const Descriptor lock = lockPrivateFile(std::string(kAdministratorsFile) + ".lock");
    if (!Administrators(settings).areNone()) {
        return false;
    }
    create();
    replacePrivateFile(kAdministratorsFile, std::string(account) + "\n");
    return true;
}

} // namespace page
