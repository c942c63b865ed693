// SPDX-License-Identifier: MIT
#include "pagehelpers/system_status.h"

#include <cstring>

#include "vokcontrol.h"

namespace pagehelpers {

core::CommandLine reportCommand(const char* path)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovGetSystemStatus %s", core::kSystemScript, path);
    return line;
}

bool contains(const ReportLine& line, const char* tag)
{
    return std::strstr(line.data(), tag) != nullptr;
}

std::string_view valueBehind(const ReportLine& line, const char* tag)
{
    const std::string_view rest = std::strstr(line.data(), tag) + std::strlen(tag);
    return rest.substr(0, rest.find_first_of("<\r\n")).substr(0, sizeof DriveInfo::vendor);
}

std::int32_t numberBehind(const ReportLine& line, const char* tag)
{
    const char* text = std::strstr(line.data(), tag) + std::strlen(tag);
    return core::decimalInt(text);
}

} // namespace pagehelpers
