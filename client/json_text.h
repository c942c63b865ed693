// SPDX-License-Identifier: MIT
//
// json_text.h: JSON as every command prints it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace client {

/// Keeps the order in which members were added.
using Json = nlohmann::ordered_json;

/// Indented by two, only ASCII, with a newline at the end. Bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] inline std::string renderJson(const Json& json)
{
    return json.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

} // namespace client
