// SPDX-License-Identifier: MIT
//
// getSysVar, kytegetSysVar, kyteGetVar and setSysVar: values that the system script keeps.
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core/core.h"

namespace core {
namespace {

using Value = std::array<char, kValueSize>;

/// Room for a line with any value from a request.
using ApiLine = std::array<char, kLineSize + 256>;

/// Where the messages of an accessor go.
enum class Audience { kTrace, kComment, kNone };

[[gnu::format(printf, 2, 3)]] void report(Audience audience, const char* format, ...)
{
    std::array<char, kMessageSize> message;
    std::va_list arguments;
    va_start(arguments, format);
    vformatBounded(message, format, arguments);
    va_end(arguments);
    if (audience == Audience::kTrace) {
        dbg_trace("%s", message.data());
    } else if (audience == Audience::kComment) {
        printComment("%s", message.data());
    }
}

/// Takes the text after the last key in a script's output.
void extract(FILE* output, const char* key, Value& value)
{
    std::array<char, kValueSize> line;
    while (readLine(output, line)) {
        const char* found = std::strstr(line.data(), key);
        if (found != nullptr) {
            const char* text = found + std::strlen(key);
            formatBounded(value, "%.*s", static_cast<int>(std::strcspn(text, "<")), text);
        }
    }
}

/// Runs a line whose last word is the name of its output file, and reads that file.
Value ask(const char* command, const char* outputPath, const char* key, Audience audience)
{
    Value value{};
    const ShellRun run = runShellLine(command);
    if (!succeeded(run)) {
        report(audience, "getSysVar failed: %s -- iRet: %d", command, run.result);
        return value;
    }
    report(audience, "getSysVar(): %s -- iRet: %d", command, run.result);

    File output = openFile(outputPath, "r");
    if (!output) {
        report(audience, "getSysVar failed: open file %s -- err: %s", outputPath,
               std::strerror(errno));
        std::remove(outputPath);
        return value;
    }
    extract(output.get(), key, value);
    output.reset();
    std::remove(outputPath);
    report(audience, "getSysVar retBuf:%s", value.data());
    return value;
}

Value askSystemScript(const char* apiFunction, const char* key, Audience audience)
{
    const WorkFileName output = workFileName("getSysVar");
    ApiLine command;
    formatBounded(command, "%s %s %s", kSystemScript, apiFunction, output.data());
    return ask(command.data(), output.data(), key, audience);
}

} // namespace
} // namespace core

const char* getSysVar(const char* key, const char* apiFunction)
{
    static core::Value value;
    value = core::askSystemScript(apiFunction, key, core::Audience::kTrace);
    return value.data();
}

const char* kytegetSysVar(const char* key, const char* apiFunction)
{
    static core::Value value;
    value = core::askSystemScript(apiFunction, key, core::Audience::kNone);
    return value.data();
}

const char* kyteGetVar(const char* command, const char* key)
{
    static core::Value value;
    const core::WorkFileName output = core::workFileName("getSysVar");
    core::ApiLine line;
    core::formatBounded(line, "%s %s", command, output.data());
    value = core::ask(line.data(), output.data(), key, core::Audience::kComment);
    return value.data();
}

int setSysVar(const char* value, const char* apiFunction)
{
    const core::WorkFileName output = core::workFileName("setSysVar");
    core::ApiLine line;
    core::formatBounded(line, "%s %s %s > %s", core::kSystemScript, apiFunction, value,
                        output.data());
    const core::ShellRun run = core::runShellLine(line.data());
    if (!core::succeeded(run)) {
        dbg_trace("setSysVar failed: %s -- iRet: %d", line.data(), run.result);
        return -1;
    }
    dbg_trace("setSysVar(): %s -- iRet: %d", line.data(), run.result);
    std::remove(output.data());
    return 0;
}
