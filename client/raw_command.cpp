// SPDX-License-Identifier: MIT
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "client/answer.h"
#include "client/commands.h"
#include "client/connection_options.h"
#include "client/failure.h"
#include "client/frame.h"
#include "cmdsvc/request_reader.h"
#include "view/terminal_text.h"

namespace client {
namespace {

struct RawOptions {
    Connection connection;
    std::string code;
    std::uint32_t count = 0;
    std::vector<std::string> lines;
    std::string hex;
    std::string framePath;
};

/// Reads pairs of hexadecimal digits; blanks are ignored.
std::string readHex(const std::string& text)
{
    std::string digits = text;
    std::erase(digits, ' ');
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw CLI::ValidationError("--hex", "takes pairs of hexadecimal digits, such as \"0aff\"");
    }
    if (digits.size() % 2 != 0) {
        throw CLI::ValidationError("--hex", "has half a byte at its end");
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

std::string readFrame(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    // At most one byte more than a request may have: then it is refused for its size.
    std::string frame(VOK_REQUEST_SIZE + 1, '\0');
    file.read(frame.data(), static_cast<std::streamsize>(frame.size()));
    if (!file.is_open() || file.bad()) {
        throw CLI::ValidationError("--frame", "cannot read " + path);
    }
    frame.resize(static_cast<std::size_t>(file.gcount()));
    return frame;
}

std::string buildFrame(const RawOptions& options)
{
    if (!options.framePath.empty()) {
        return readFrame(options.framePath);
    }
    if (options.code.size() != cmdsvc::kCodeSize) {
        throw CLI::ValidationError("CODE",
                                   "takes four characters, such as \"lstu\" (or use --frame)");
    }
    std::string frame = firstLine(options.code, options.count);
    for (const std::string& line : options.lines) {
        frame += line + "\n";
    }
    return frame + readHex(options.hex);
}

/// Describes an answer to a frame, if this client knows the command.
std::string tellAnswer(std::string_view frame, std::string_view bytes)
{
    const cmdsvc::Command* command = cmdsvc::findCommand(cmdsvc::codeOf(frame));
    if (command != nullptr) {
        return "Read as " + describeAnswer(*command, readAnswer(*command, bytes));
    }
    if (const std::optional<cmdsvc::Status> status = readServiceStatus(bytes)) {
        return "Read as " + describeServiceStatus(*status);
    }
    const std::string code = view::makePrintable(frame.substr(0, cmdsvc::kCodeSize)).text;
    return "Not read: this client does not know the command \"" + code + "\"" +
           (bytes.empty() ? "; the answer is empty" : "");
}

void sendRaw(const RawOptions& options)
{
    const std::string frame = buildFrame(options);
    const Reply reply = sendRequest(options.connection, frame);
    if (reply.code != kGood) {
        throw Failure(reply.code, reply.complaint);
    }
    std::cout << hexdump(reply.bytes) << tellAnswer(frame, reply.bytes) << "\n";
}

} // namespace

void buildRawCommand(CLI::App& raw)
{
    const auto options = std::make_shared<RawOptions>();
    CLI::Option* code = raw.add_option("CODE", options->code, "The command, four characters");
    CLI::Option* count =
        raw.add_option("--count", options->count, "The parameter count (default: 0)");
    CLI::Option* line =
        raw.add_option("--line", options->lines, "A parameter line; can be given several times")
            ->type_name("TEXT")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->allow_extra_args(false);
    CLI::Option* hex = raw.add_option("--hex", options->hex, "Bytes after the parameter lines")
                           ->type_name("BYTES");
    raw.add_option("--frame", options->framePath, "Send only the bytes of this file")
        ->type_name("FILE")
        ->excludes(code)
        ->excludes(count)
        ->excludes(line)
        ->excludes(hex);
    addConnectionOptions(raw, options->connection);
    raw.footer("Examples:\n"
               "  vokctl raw lstu                             the users\n"
               "  vokctl raw gsp1 --count 1 --line Documents  a command with a parameter line\n"
               "  vokctl raw sub1 --count 2 --hex '01 00'     bytes that are not text\n"
               "  vokctl raw --frame request.bin              a whole request from a file\n"
               "\n"
               "Ends with 0 if there is an answer, even if it is an error.");
    raw.callback([options] { sendRaw(*options); });
}

} // namespace client
