// SPDX-License-Identifier: MIT
#include "handlers/transfer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <sys/stat.h>

#include "core/bytes.h"
#include "handlers/handler.h"

namespace handlers {
namespace {

constexpr const char* kBuildFile = "/etc/buildinfo.txt";
constexpr const char* kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";

bool exists(const char* path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0;
}

/// A file's size. Traces it, or that there is no file.
std::optional<std::int64_t> traceSize(const char* path)
{
    struct stat status = {};
    if (::stat(path, &status) != 0) {
        dbg_trace("cannot stat file %s", path);
        return std::nullopt;
    }
    dbg_trace("file %s size = %d bytes", path, static_cast<int>(status.st_size));
    return status.st_size;
}

/// Opens a file for reading in the current-file slot.
/// @param otherwise  the status if it cannot be opened
Status openTraced(Channel& channel, const char* path, Status otherwise, FILE*& file)
{
    file = channel.openFile(path);
    if (file == nullptr) {
        dbg_trace("cannot open file %s: %s", path, std::strerror(errno));
        return otherwise;
    }
    return kGood;
}

/// Closes the slot's file; traces a failure.
bool closeTraced(Channel& channel, const char* path)
{
    if (channel.closeFile()) {
        return true;
    }
    dbg_trace("cannot close file %s: %s", path, std::strerror(errno));
    return false;
}

// ---- vers -------------------------------------------------------------------------------------

/// The build file as one line. The longest answer has 4096 bytes, header and newline included.
struct BuildLine {
    std::array<char, core::kLineSize - cmdsvc::kHeaderSize> bytes = {};
    std::size_t size = 0;
};

Status openBuild(Channel& channel, FILE*& file)
{
    constexpr std::int64_t kLargestBuild = std::tuple_size_v<decltype(BuildLine::bytes)> - 1;
    static_assert(kLargestBuild == 4085);
    const std::optional<std::int64_t> size = traceSize(kBuildFile);
    if (!size) {
        return kCannotStatBuild;
    }
    if (*size == 0 || *size > kLargestBuild) {
        return kBadBuildSize;
    }
    return openTraced(channel, kBuildFile, kCannotOpenBuild, file);
}

/// Reads the build file as one line, cut so that a newline still fits.
void readBuild(FILE* file, BuildLine& line)
{
    while (true) {
        const int byte = std::fgetc(file);
        const char character = static_cast<char>(byte);
        const std::string_view text =
            (character == '\n') ? std::string_view(" - ") : std::string_view(&character, 1);
        if (byte == EOF || byte == 0xFF || line.size + text.size() >= line.bytes.size()) {
            return;
        }
        text.copy(&line.bytes[line.size], text.size());
        line.size += text.size();
    }
}

Status answerBuild(Channel& channel)
{
    FILE* file = nullptr;
    const Status status = openBuild(channel, file);
    if (status != kGood) {
        return status;
    }
    BuildLine line;
    readBuild(file, line);
    dbg_trace("end of file: idx=%d", static_cast<int>(cmdsvc::kHeaderSize + line.size));
    if (!closeTraced(channel, kBuildFile)) {
        return kCannotCloseBuild;
    }
    line.bytes[line.size] = '\n';
    channel.writeHeader(1);
    channel.write({line.bytes.data(), line.size + 1});
    return kGood;
}

// ---- gpvt -------------------------------------------------------------------------------------

/// A piece of the private file.
using Chunk = std::array<char, core::kLineSize>;

/// Sends the next bytes of the private file, zeros for bytes that cannot be read.
void sendChunk(Channel& channel, FILE* file, std::size_t size)
{
    Chunk chunk = {};
    if (std::fread(chunk.data(), 1, size, file) < size) {
        dbg_trace("cannot read file %s", kPrivateFile);
    }
    dbg_trace("sending buffer %.*s", static_cast<int>(size), chunk.data());
    channel.write({chunk.data(), size});
}

void sendPrivate(Channel& channel, FILE* file, std::uint32_t size)
{
    channel.writeHeader(2);
    const auto word = core::u32Bytes(size);
    channel.write({word.data(), word.size()});
    channel.write("\n");
    for (std::uint32_t left = size; left > 0;) {
        const std::uint32_t chunk = std::min<std::uint32_t>(left, std::tuple_size_v<Chunk>);
        sendChunk(channel, file, chunk);
        left -= chunk;
    }
}

Status fetchPrivate(Channel& channel)
{
    const std::optional<std::int64_t> size = traceSize(kPrivateFile);
    if (!size) {
        return kNoPrivate;
    }
    if (*size == 0) {
        return kPrivateEmpty;
    }
    FILE* file = nullptr;
    const Status status = openTraced(channel, kPrivateFile, kCannotOpenPrivate, file);
    if (status == kGood) {
        sendPrivate(channel, file, static_cast<std::uint32_t>(*size));
        closeTraced(channel, kPrivateFile);
    }
    return status;
}

// ---- spvt -------------------------------------------------------------------------------------

void runMove(const char* from, const char* to)
{
    core::CommandLine line;
    core::formatBounded(line, "mv %s %s", from, to);
    core::runShellLine(line.data());
}

/// Moves the former file away. If mv fails, the new file is written over it.
void keepFormer()
{
    if (exists(kPrivateFile)) {
        dbg_trace("file %s already exists --> temporarily saving it as %s", kPrivateFile,
                  kWorkFile);
        runMove(kPrivateFile, kWorkFile);
    }
}

void restoreFormer()
{
    runMove(kWorkFile, kPrivateFile);
}

Status dropFormer()
{
    if (exists(kWorkFile) && std::remove(kWorkFile) != 0) {
        dbg_trace("cannot remove file %s: %s", kWorkFile, std::strerror(errno));
        return kCannotRemove;
    }
    return kGood;
}

/// Writes the next bytes of the request into the new file.
Status writeContent(FILE* file, std::string_view content)
{
    dbg_trace("writing buffer %.*s", static_cast<int>(content.size()), content.data());
    if (std::fwrite(content.data(), 1, content.size(), file) < content.size()) {
        dbg_trace("cannot write file %s: %s", kPrivateFile, std::strerror(errno));
        return kCannotWritePrivate;
    }
    return kGood;
}

/// Copies the file's bytes from the request into the new file, in pieces of a buffer's size. A
/// request has one buffer's size, so a second piece is never complete.
Status receiveFile(Channel& channel, FILE* file, std::int32_t size)
{
    constexpr auto kPiece = static_cast<std::int32_t>(VOK_REQUEST_SIZE);
    for (std::int32_t left = size; left != 0;) {
        const std::int32_t piece = std::min(left, kPiece);
        const auto wanted = static_cast<std::size_t>(std::max(piece, 0));
        const std::string_view content = channel.request().takeBytes(wanted);
        if (piece < 0 || content.size() < wanted) {
            dbg_trace("cannot receive %d bytes from file %s", piece, "fin_buf");
            return kTooLittleSent;
        }
        const Status status = writeContent(file, content);
        if (status != kGood) {
            return status;
        }
        left -= piece;
    }
    return kGood;
}

Status checkEndMark(Channel& channel)
{
    if (channel.request().takeBytes(1) != "\n") {
        dbg_trace("Did not receive a newline after %s !", kPrivateFile);
        return kNoEndMark;
    }
    return kGood;
}

/// Writes the new file, and checks the newline after its bytes.
Status makeFile(Channel& channel, std::int32_t size)
{
    FILE* file = channel.openFile(kPrivateFile, "w+b");
    if (file == nullptr) {
        dbg_trace("cannot open file %s: %s", kPrivateFile, std::strerror(errno));
        return kCannotCreatePrivate;
    }
    const Status status = receiveFile(channel, file, size);
    if (status != kGood) {
        channel.closeFile();
        return status;
    }
    return closeTraced(channel, kPrivateFile) ? checkEndMark(channel) : kCannotClosePrivate;
}

Status replaceFile(Channel& channel, std::int32_t size)
{
    keepFormer();
    const Status status = makeFile(channel, size);
    if (status != kGood) {
        restoreFormer();
        return status;
    }
    return dropFormer();
}

Status takeSize(Channel& channel, std::int32_t& size)
{
    const ParameterLine line = channel.takeLine(cmdsvc::parameter("spvt", "size"));
    dbg_trace("_spvt: %s", line.text());
    if (line.bytes[cmdsvc::kWordSize] != '\n') {
        return kMalformed;
    }
    size =
        static_cast<std::int32_t>(core::getU32(std::span(line.bytes).first<cmdsvc::kWordSize>()));
    dbg_trace("file size = %d", size);
    return (size == 0) ? kNothingSent : kGood;
}

Status keepPrivate(Channel& channel)
{
    std::int32_t size = 0;
    const Status status = takeSize(channel, size);
    return (status == kGood) ? replaceFile(channel, size) : status;
}

} // namespace
} // namespace handlers

void cmd_vers(void)
{
    cmdsvc::serve(cmdsvc::command("vers"), handlers::answerBuild);
}

void cmd_gpvt(void)
{
    cmdsvc::serve(cmdsvc::command("gpvt"), handlers::fetchPrivate);
}

void cmd_spvt(void)
{
    cmdsvc::serve(cmdsvc::command("spvt"), handlers::keepPrivate);
}
