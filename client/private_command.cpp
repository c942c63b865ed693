// SPDX-License-Identifier: MIT
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/output_file.h"
#include "client/subcommands.h"
#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::tr;

struct Options {
    Connection connection;
    std::string path;
};

// ---- get --------------------------------------------------------------------------------------

std::string fetchFile(const Connection& connection)
{
    constexpr std::uint32_t kPartsCount = 2;
    constexpr std::size_t kHeadSize = cmdsvc::kWordSize + 1;
    const Request request = {cmdsvc::command("gpvt")};
    const Answer answer = ask(connection, request);
    if (answer.count != kPartsCount) {
        failUnreadable(request, answer);
    }
    const std::string& body = answer.body;
    if (body.size() < kHeadSize ||
        !body.starts_with(wordBytes(static_cast<std::uint32_t>(body.size() - kHeadSize)) + "\n")) {
        failUnreadable(request, {});
    }
    return body.substr(kHeadSize);
}

void get(const Options& options)
{
    // A target that cannot be written is refused before the file is fetched.
    checkTarget(options.path);
    writeTarget(options.path, fetchFile(options.connection));
}

// ---- put --------------------------------------------------------------------------------------

constexpr std::size_t kLargest = 4070;

[[noreturn]] void refuse(std::uintmax_t size)
{
    throw Failure(kWrongUsage, fill(tr("a private file has 1 to {1} bytes; this one has {2}"),
                                    {std::to_string(kLargest), std::to_string(size)}));
}

/// Reads a file, but not one that is too large to be sent: it may be larger than memory.
std::string readFile(const std::string& path)
{
    if (path == kStandardStream) {
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    // A folder can be opened, too; only reading it fails.
    std::ifstream in(path, std::ios::binary);
    if (in && std::filesystem::is_regular_file(path) &&
        std::filesystem::file_size(path) > kLargest) {
        refuse(std::filesystem::file_size(path));
    }
    std::string content;
    if (in && !std::filesystem::is_directory(path)) {
        content.assign(std::istreambuf_iterator<char>(in), {});
    } else {
        in.setstate(std::ios::failbit);
    }
    if (!in) {
        throw Failure(kWrongUsage, fill(tr("cannot read {}"), {path}));
    }
    return content;
}

void put(const Options& options)
{
    const std::string content = readFile(options.path);
    if (content.empty() || content.size() > kLargest) {
        refuse(content.size());
    }
    const auto size = static_cast<std::uint32_t>(content.size());
    if (wordBytes(size).find('\n') != std::string::npos) {
        throw Failure(kWrongUsage,
                      fill(tr("a file of {} bytes cannot be sent, because its size contains a "
                              "newline byte. Make it longer or shorter."),
                           {std::to_string(content.size())}));
    }
    askToDo(options.connection, {cmdsvc::command("spvt"), {size, content}});
    std::cerr << "vokctl: " << tr("the private file was replaced") << "\n";
}

// ---- Adding them ------------------------------------------------------------------------------

void addTarget(CLI::App& command, Options& options)
{
    command.add_option("FILE", options.path, "The file to write; \"-\" is standard output")
        ->required();
}

void addSource(CLI::App& command, Options& options)
{
    command.add_option("FILE", options.path, "The file to send; \"-\" is standard input")
        ->required();
}

constexpr auto kActions = std::to_array<Action<Options>>({
    {"get", "Fetch the private file", get,
     "Examples:\n"
     "  vokctl private get settings.bin\n"
     "  vokctl private get - | sha256sum\n"
     "\n"
     "An existing file keeps its permissions; only its owner can read a new one.\n"
     "Devices and FIFOs are written directly. Symbolic links and terminals are\n"
     "refused.",
     addTarget},
    {"put", "Replace the private file", put,
     "Examples:\n"
     "  vokctl private put settings.bin\n"
     "\n"
     "A file has 1 to 4070 bytes. Sizes that contain a byte 0x0A (10, 266, 2560 to\n"
     "2815 and so on) cannot be sent.",
     addSource},
});

} // namespace

void buildPrivateCommand(CLI::App& file)
{
    addActions<Options>(file, kActions);
}

} // namespace client
