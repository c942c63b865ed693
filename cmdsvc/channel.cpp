// SPDX-License-Identifier: MIT
#include "cmdsvc/channel.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <span>
#include <utility>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"

namespace cmdsvc {
namespace {

/// What a line of a request takes at most, its terminator counted; the request line's last byte
/// stays a zero.
constexpr int kLongestLine = core::kLineSize - 1;

core::File input;

/// What fout_buf points to, as long as nobody else has set it.
FILE* answer = nullptr;
core::File slot;

std::array<char, kWordSize> wordBytes(std::uint32_t word)
{
    std::array<char, kWordSize> bytes;
    core::putU32(bytes, word);
    return bytes;
}

int traceExit(std::uint32_t code)
{
    return dbg_trace("exiting with error %#.8x", code);
}

/// How both common exits end, once the code is written.
int finishWithError(std::uint32_t code)
{
    closeCurrentFile();
    std::remove(kWorkFile);
    return traceExit(code);
}

} // namespace

std::array<char, core::kLineSize> requestLine;

FILE* requestStream()
{
    return input.get();
}

void readParameterLine()
{
    // Not core::readLine: at the end of the request the line must stay as it is.
    [[maybe_unused]] const char* const line =
        std::fgets(requestLine.data(), kLongestLine, input.get());
}

bool cutNewline(char* text)
{
    const std::size_t size = std::strlen(text);
    if (size == 0 || text[size - 1] != '\n') {
        return false;
    }
    text[size - 1] = '\0';
    return true;
}

FILE* openCurrentFile(const char* path, const char* mode)
{
    // First: this close must not change the errno that says why the next file does not open.
    closeCurrentFile();
    slot = core::openFile(path, mode);
    return slot.get();
}

FILE* currentFile()
{
    return slot.get();
}

bool closeCurrentFile()
{
    return !slot || std::fclose(slot.release()) == 0;
}

void writeAnswer(std::string_view bytes)
{
    std::fwrite(bytes.data(), 1, bytes.size(), fout_buf);
}

void writeWord(std::uint32_t code)
{
    const auto bytes = wordBytes(code);
    writeAnswer({bytes.data(), bytes.size()});
}

void writeHeader(std::string_view tag, std::uint32_t count)
{
    writeAnswer(tag);
    writeAnswer(" ");
    writeWord(count);
    writeAnswer("\n");
}

void endWithError(std::uint32_t code)
{
    writeAnswer(kErrorTag);
    writeWord(code);
    finishWithError(code);
}

int endWithWord(std::uint32_t code)
{
    writeWord(code);
    return finishWithError(code);
}

void endWithWordKeepingFile(std::uint32_t code)
{
    writeWord(code);
    if (slot) {
        std::remove(kWorkFile);
    }
    traceExit(code);
}

bool openChannel(int number)
{
    closeAnswer();
    input.reset(::fmemopen(fin_buf, sizeof fin_buf, "r"));
    std::array<char, 64> path;
    core::formatBounded(path, "%s%d", VOK_ANSWER_FILE, number);
    answer = core::openFile(path.data(), "w").release();
    fout_buf = answer;
    return input && fout_buf != nullptr;
}

void readRequestLine()
{
    // A line that is shorter than the one before must not show that one's bytes.
    requestLine.fill('\0');
    core::readLine(input.get(), std::span(requestLine).first<kLongestLine>());
}

void closeAnswer()
{
    FILE* opened = std::exchange(answer, nullptr);
    const bool isOurs = std::exchange(fout_buf, nullptr) == opened;
    if (opened != nullptr && isOurs) {
        std::fclose(opened);
    }
}

} // namespace cmdsvc

int SendReturnStatus(std::uint32_t code, const char* name)
{
    using namespace cmdsvc;

    requestLine.fill('\0');
    core::formatBounded(std::span(requestLine).first<kCountOffset + 1>(), "%s ", name);
    core::putU32(std::span(requestLine).subspan<kCountOffset, kWordSize>(), code);
    const std::size_t written = std::fwrite(requestLine.data(), 1, kHeaderSize, fout_buf);
    return dbg_trace("SendReturnStatus errCode 0x%08X -- fwrite return: %d", code,
                     static_cast<int>(written));
}
