// SPDX-License-Identifier: MIT
#include "page/process.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace page {
namespace {

namespace fs = std::filesystem;

bool isProcess(const fs::path& path)
{
    return path.filename().string().find_first_not_of("0123456789") == std::string::npos;
}

/// A process that has ended meanwhile has no name.
std::string nameOf(const fs::path& process)
{
    std::ifstream file(process / "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

bool isProcessRunning(std::string_view name)
{
    constexpr std::size_t kLongest = 15;
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", failure)) {
        if (isProcess(entry.path()) && nameOf(entry.path()) == name.substr(0, kLongest)) {
            return true;
        }
    }
    return false;
}

} // namespace page
