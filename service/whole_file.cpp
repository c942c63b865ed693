// SPDX-License-Identifier: MIT
#include "service/whole_file.h"

#include <fstream>
#include <sstream>

namespace service {

std::string readWholeFile(const std::string& path)
{
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    // Unlike an iterator, this throws nothing if the path is a folder.
    bytes << file.rdbuf();
    return bytes.str();
}

} // namespace service
