// SPDX-License-Identifier: MIT
#include "client/frame.h"

#include <algorithm>

#include "client/failure.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"
#include "text/translation.h"

namespace client {
namespace {

using cmdsvc::Command;
using cmdsvc::Layout;
using cmdsvc::Parameter;

std::string byteOf(std::uint32_t value)
{
    return std::string(1, static_cast<char>(value));
}

/// A value in the first line, after its length.
std::string inFirstLine(const Parameter& parameter, const std::string& value)
{
    constexpr std::size_t kStart = cmdsvc::RequestReader::kLengthOffset + 1;
    checkedLine(value.substr(parameter.offset - kStart));
    return byteOf(static_cast<std::uint32_t>(value.size())) + value + "\n";
}

std::string layOut(const Parameter& parameter, const Value& value)
{
    switch (parameter.layout) {
    case Layout::kLine:
    case Layout::kText:
        return checkedLine(std::get<std::string>(value)) + "\n";
    case Layout::kInFirstLine:
        return inFirstLine(parameter, std::get<std::string>(value));
    case Layout::kNumber:
    case Layout::kNumberLine:
        return wordBytes(std::get<std::uint32_t>(value)) + "\n";
    case Layout::kByte:
        return byteOf(std::get<std::uint32_t>(value));
    case Layout::kRest:
        break;
    }
    return std::get<std::string>(value) + "\n";
}

/// The request before its values. A value in the first line replaces the count.
std::string startOf(const Command& command, std::size_t values)
{
    if (command.parameters.slots.front().layout == Layout::kInFirstLine) {
        return std::string(command.code) + " ";
    }
    const std::size_t count =
        std::clamp<std::size_t>(values, command.count.least, command.count.most);
    return firstLine(command.code, static_cast<std::uint32_t>(count));
}

} // namespace

std::string firstLine(std::string_view code, std::uint32_t count)
{
    return std::string(code) + " " + wordBytes(count) + "\n";
}

std::string wordBytes(std::uint32_t value)
{
    const auto bytes = core::u32Bytes(value);
    return {bytes.begin(), bytes.end()};
}

const std::string& checkedLine(const std::string& text)
{
    if (text.find_first_of(std::string_view("\n\0", 2)) != std::string::npos) {
        throw Failure(kWrongUsage,
                      text::tr("a name or a value cannot contain a newline or a zero byte"));
    }
    return text;
}

std::string makeFrame(const Command& command, const std::vector<Value>& values)
{
    std::string frame = startOf(command, values.size());
    const Parameter* parameter = command.parameters.begin();
    for (const Value& value : values) {
        frame += layOut(*parameter, value);
        ++parameter;
    }
    // Only a byte has no newline yet; the request must end with one.
    return frame.ends_with('\n') ? frame : frame + "\n";
}

} // namespace client
