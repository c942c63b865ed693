// SPDX-License-Identifier: MIT
//
// getSystemVar: network settings from the output of the network tools.
#include <array>
#include <cstdio>
#include <string_view>

#include "core/core.h"

namespace core {
namespace {

std::array<char, kValueSize> result;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The tools print addresses with upper-case letters.
bool isUpperHex(char c)
{
    return c >= 'A' && c <= 'F';
}

bool isOfAddress(char c)
{
    return isDigit(c) || isUpperHex(c) || c == '.';
}

bool isOfHardwareAddress(char c)
{
    return isDigit(c) || isUpperHex(c) || c == ':';
}

/// The text that starts DISTANCE characters after the start of a mark.
std::string_view textBehind(std::string_view line, std::string_view mark, std::size_t distance)
{
    const std::size_t at = line.find(mark);
    if (at == std::string_view::npos || at + distance > line.size()) {
        return {};
    }
    return line.substr(at + distance);
}

std::string_view addressText(std::string_view line)
{
    return textBehind(line, "addr:", 5);
}

std::string_view hardwareAddressText(std::string_view line)
{
    return textBehind(line, "HWaddr", 7);
}

std::string_view maskText(std::string_view line)
{
    return textBehind(line, "Mask", 5);
}

/// The second column of a route, after the destination 0.0.0.0.
std::string_view gatewayText(std::string_view line)
{
    constexpr std::size_t kBehindDestination = 8;
    const std::size_t at = line.find_first_of("0123456789", kBehindDestination);
    return (at == std::string_view::npos) ? std::string_view() : line.substr(at);
}

struct NetworkValue {
    int kind;
    const char* commandFormat; ///< takes the output file
    std::string_view (*findText)(std::string_view line);
    bool (*isOfValue)(char c);
};

constexpr auto kNetworkValues = std::to_array<NetworkValue>({
    {1, "ifconfig | grep addr: > %s", addressText, isOfAddress},
    {2, "ifconfig | grep HWaddr > %s", hardwareAddressText, isOfHardwareAddress},
    {4, "route -n | grep '0.0.0.0' | grep 'UG' > %s", gatewayText, isOfAddress},
    {5, "ifconfig | grep Mask: > %s", maskText, isOfAddress},
});

/// Copies the value from the first line of a tool's output into the result.
void readValue(const char* path, const NetworkValue& wanted)
{
    std::array<char, kValueSize> line;
    const File file = openFile(path, "r");
    if (!file || !readLine(file.get(), line)) {
        return;
    }
    std::size_t size = 0;
    for (const char c : wanted.findText(line.data())) {
        if (!wanted.isOfValue(c)) {
            break;
        }
        result[size] = c;
        ++size;
    }
    result[size] = '\0';
}

void askTool(const NetworkValue& wanted)
{
    const WorkFileName output = workFileName("getsetvar");
    std::array<char, 128> command;
    formatBounded(command, wanted.commandFormat, output.data());
    if (runShellLine(command.data()).result >= 0) {
        readValue(output.data(), wanted);
    }
    std::fprintf(stderr, "getSystemVar -- ptr:%s---\n", result.data());
    removeFile(output.data());
}

} // namespace
} // namespace core

const char* getSystemVar(const char* /*ignored*/, int kind)
{
    using namespace core;

    constexpr int kProtocol = 3;
    result[0] = '\0';
    if (kind == kProtocol) {
        formatBounded(result, "dhcp_client");
    }
    for (const NetworkValue& value : kNetworkValues) {
        if (value.kind == kind) {
            askTool(value);
        }
    }
    return result.data();
}
