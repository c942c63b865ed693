// SPDX-License-Identifier: MIT
#include "page/appliance_name.h"

#include <array>
#include <unistd.h>

#include "page/log.h"
#include "page/private_files.h"
#include "page/script.h"
#include "vokcontrol.h"

namespace page {
namespace {

std::string pathIn(const std::string& folder)
{
    return folder + "/name";
}

void keepName(const std::string& folder, const std::string& name)
{
    requirePrivateFolder(folder);
    const std::string path = pathIn(folder);
    if (readPrivateFile(path) != name) {
        const Descriptor lock = lockPrivateFile(path + ".lock");
        replacePrivateFile(path, name);
    }
}

std::string hostName()
{
    std::array<char, 256> name{};
    // A longer name is cut, and may lack its zero.
    const bool isRead = ::gethostname(name.data(), name.size() - 1) == 0;
    return isRead ? name.data() : "";
}

} // namespace

std::string askApplianceName(const std::string& folder)
{
    Script unused;
    std::string name = unused.run([] { return std::string(::getvar("machine_name")); });
    try {
        keepName(folder, name);
    } catch (const std::exception& failure) {
        // The page that asks has its name.
        log(failure.what());
    }
    return name;
}

std::string lastApplianceName(const std::string& folder)
{
    try {
        return readPrivateFile(pathIn(folder)).value_or(hostName());
    } catch (const std::exception& failure) {
        log(failure.what());
        return hostName();
    }
}

} // namespace page
