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

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"

namespace handlers {
namespace {

using cmdsvc::kWorkFile;
using cmdsvc::requestLine;

constexpr const char* kBuildFile = "/etc/buildinfo.txt";
constexpr const char* kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";

constexpr std::int32_t kChunkSize = static_cast<std::int32_t>(core::kLineSize);

bool exists(const char* path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0;
}

/// A file's size, traced; or without the file, that there is none.
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

/// Opens a file for reading in the current-file slot, or ends with an error.
FILE* openOrEnd(const char* path, std::uint32_t code)
{
    FILE* file = cmdsvc::openCurrentFile(path);
    if (file == nullptr) {
        dbg_trace("cannot open file %s: %s", path, std::strerror(errno));
        cmdsvc::endWithError(code);
    }
    return file;
}

/// Closes the current file; traces when that fails.
bool closeTraced(const char* path)
{
    if (cmdsvc::closeCurrentFile()) {
        return true;
    }
    dbg_trace("cannot close file %s: %s", path, std::strerror(errno));
    return false;
}

/// Puts an answer's head into the request line.
void putHead(std::string_view tag, std::uint32_t count)
{
    std::ranges::copy(tag, requestLine.begin());
    requestLine[tag.size()] = ' ';
    core::putU32(std::span(requestLine).subspan<cmdsvc::kCountOffset, cmdsvc::kWordSize>(), count);
    requestLine[cmdsvc::kHeaderSize - 1] = '\n';
}

// ---- vers -------------------------------------------------------------------------------------

/// Opens the build file, or ends with an error.
FILE* openBuild()
{
    constexpr std::int64_t kLargestBuild = core::kLineSize - cmdsvc::kHeaderSize - 1;
    static_assert(kLargestBuild == 4085);
    const std::optional<std::int64_t> size = traceSize(kBuildFile);
    if (!size) {
        cmdsvc::endWithError(cmdsvc::kCannotStatBuild);
        return nullptr;
    }
    if (*size == 0 || *size > kLargestBuild) {
        cmdsvc::endWithError(cmdsvc::kBadBuildSize);
        return nullptr;
    }
    return openOrEnd(kBuildFile, cmdsvc::kCannotOpenBuild);
}

/// Copies the build file behind the head, as one line, as far as there is room for it and a
/// newline.
/// @return the line's end
std::size_t copyBuild(FILE* file)
{
    std::size_t end = cmdsvc::kHeaderSize;
    while (true) {
        const int byte = std::fgetc(file);
        const char character = static_cast<char>(byte);
        const std::string_view text =
            (character == '\n') ? std::string_view(" - ") : std::string_view(&character, 1);
        if (byte == EOF || byte == 0xFF || end + text.size() >= requestLine.size()) {
            return end;
        }
        std::ranges::copy(text, requestLine.begin() + static_cast<std::ptrdiff_t>(end));
        end += text.size();
    }
}

// ---- gpvt -------------------------------------------------------------------------------------

/// Sends the next bytes of the private file, zeros for those that it does not give.
void sendChunk(FILE* file, std::size_t size)
{
    requestLine.fill('\0');
    if (std::fread(requestLine.data(), 1, size, file) < size) {
        dbg_trace("cannot read file %s", kPrivateFile);
    }
    dbg_trace("sending buffer %.*s", static_cast<int>(size), requestLine.data());
    cmdsvc::writeAnswer({requestLine.data(), size});
}

void sendPrivate(FILE* file, std::uint32_t size)
{
    putHead("gprt", 2);
    core::putU32(std::span(requestLine).subspan<cmdsvc::kHeaderSize, cmdsvc::kWordSize>(), size);
    constexpr std::size_t kHeadSize = cmdsvc::kHeaderSize + cmdsvc::kWordSize + 1;
    requestLine[kHeadSize - 1] = '\n';
    cmdsvc::writeAnswer({requestLine.data(), kHeadSize});
    for (std::uint32_t left = size; left > 0;) {
        const std::uint32_t chunk = std::min<std::uint32_t>(left, kChunkSize);
        sendChunk(file, chunk);
        left -= chunk;
    }
}

// ---- spvt -------------------------------------------------------------------------------------
//
// Each step gives back the code that the command ends with, or kGood.

void runMove(const char* from, const char* to)
{
    core::CommandLine line;
    core::formatBounded(line, "mv %s %s", from, to);
    core::runShellLine(line.data());
}

/// Moves the former file out of the new one's way. Where mv fails, the new one is written over it.
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

std::uint32_t dropFormer()
{
    if (exists(kWorkFile) && std::remove(kWorkFile) != 0) {
        dbg_trace("cannot remove file %s: %s", kWorkFile, std::strerror(errno));
        return cmdsvc::kCannotRemove;
    }
    return cmdsvc::kGood;
}

/// Takes the next bytes of the request into the request line.
bool receiveChunk(std::int32_t size)
{
    const std::size_t wanted = (size > 0) ? static_cast<std::size_t>(size) : 0;
    const std::size_t received = std::fread(requestLine.data(), 1, wanted, cmdsvc::requestStream());
    if (size < 0 || received < wanted) {
        dbg_trace("cannot receive %d bytes from file %s", size, "fin_buf");
        return false;
    }
    return true;
}

bool writeChunk(FILE* file, std::int32_t size)
{
    dbg_trace("writing buffer %.*s", size, requestLine.data());
    const auto bytes = static_cast<std::size_t>(size);
    if (std::fwrite(requestLine.data(), 1, bytes, file) < bytes) {
        dbg_trace("cannot write file %s: %s", kPrivateFile, std::strerror(errno));
        return false;
    }
    return true;
}

/// Copies the file's bytes from the request into the new file.
std::uint32_t receiveFile(FILE* file, std::int32_t size)
{
    for (std::int32_t left = size; left != 0;) {
        const std::int32_t chunk = std::min(left, kChunkSize);
        if (!receiveChunk(chunk)) {
            return cmdsvc::kTooLittleSent;
        }
        if (!writeChunk(file, chunk)) {
            return cmdsvc::kCannotWritePrivate;
        }
        left -= chunk;
    }
    return cmdsvc::kGood;
}

std::uint32_t checkEndMark()
{
    if (std::fgetc(cmdsvc::requestStream()) != '\n') {
        dbg_trace("Did not receive a newline after %s !", kPrivateFile);
        return cmdsvc::kNoEndMark;
    }
    return cmdsvc::kGood;
}

/// Makes the new file, its end mark seen.
std::uint32_t makeFile(std::int32_t size)
{
    FILE* file = cmdsvc::openCurrentFile(kPrivateFile, "w+b");
    if (file == nullptr) {
        dbg_trace("cannot open file %s: %s", kPrivateFile, std::strerror(errno));
        return cmdsvc::kCannotCreatePrivate;
    }
    const std::uint32_t code = receiveFile(file, size);
    if (code != cmdsvc::kGood) {
        cmdsvc::closeCurrentFile();
        return code;
    }
    return closeTraced(kPrivateFile) ? checkEndMark() : cmdsvc::kCannotClosePrivate;
}

std::uint32_t replaceFile(std::int32_t size)
{
    keepFormer();
    const std::uint32_t code = makeFile(size);
    if (code != cmdsvc::kGood) {
        restoreFormer();
        return code;
    }
    return dropFormer();
}

std::uint32_t readSize(std::int32_t& size)
{
    cmdsvc::readParameterLine();
    dbg_trace("_spvt: %s", requestLine.data());
    if (requestLine[cmdsvc::kWordSize] != '\n') {
        return cmdsvc::kMalformed;
    }
    size =
        static_cast<std::int32_t>(core::getU32(std::span(requestLine).first<cmdsvc::kWordSize>()));
    dbg_trace("file size = %d", size);
    return (size == 0) ? cmdsvc::kNothingSent : cmdsvc::kGood;
}

} // namespace
} // namespace handlers

void cmd_vers(void)
{
    using namespace handlers;

    putHead("vert", 1);
    FILE* file = openBuild();
    if (file == nullptr) {
        return;
    }
    const std::size_t end = copyBuild(file);
    dbg_trace("end of file: idx=%d", static_cast<int>(end));
    if (!closeTraced(kBuildFile)) {
        cmdsvc::endWithError(cmdsvc::kCannotCloseBuild);
        return;
    }
    requestLine[end] = '\n';
    cmdsvc::writeAnswer({requestLine.data(), end + 1});
}

void cmd_gpvt(void)
{
    using namespace handlers;

    const std::optional<std::int64_t> size = traceSize(kPrivateFile);
    if (!size) {
        cmdsvc::endWithError(cmdsvc::kNoPrivate);
        return;
    }
    if (*size == 0) {
        cmdsvc::endWithError(cmdsvc::kPrivateEmpty);
        return;
    }
    FILE* file = openOrEnd(kPrivateFile, cmdsvc::kCannotOpenPrivate);
    if (file != nullptr) {
        sendPrivate(file, static_cast<std::uint32_t>(*size));
        closeTraced(kPrivateFile);
    }
}

void cmd_spvt(void)
{
    using namespace handlers;

    std::int32_t size = 0;
    std::uint32_t code = readSize(size);
    if (code == cmdsvc::kGood) {
        code = replaceFile(size);
    }
    if (code != cmdsvc::kGood) {
        cmdsvc::endWithWord(code);
        return;
    }
    cmdsvc::writeWord(cmdsvc::kGood);
}
