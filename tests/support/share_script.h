// SPDX-License-Identifier: MIT
//
// share_script.h: the share script's listing of all shares, and the calls that fetch it.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "tests/support/root.h"

namespace share_script {

/// Sizes of names that are looked up, up to the largest.
inline constexpr auto kNameSizes = std::to_array<std::size_t>({1, 10, 31, 32, 33, 48, 63, 64});

/// The trace of a failure with a file.
inline std::string problem(const std::string& what, const std::string& path, const std::string& why)
{
    return root::trace(what + " " + path + ": " + why);
}

inline std::string listingLine(const std::string& path)
{
    return "sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList " + path;
}

inline std::string nameLine(const std::string& name)
{
    return "  <sharename>" + name + "</sharename>\n";
}

inline std::string propertyLine(const std::string& property)
{
    return "  <shareproperty>" + property + "</shareproperty>\n";
}

inline std::string block(const std::string& name, const std::string& property,
                         const std::string& location = "internal")
{
    return "  <shareinfo>\n" + nameLine(name) + propertyLine(property) + "  <sharelocation>" +
           location + "</sharelocation>\n  </shareinfo>\n";
}

} // namespace share_script
