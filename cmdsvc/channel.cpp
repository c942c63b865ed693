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

int traceExit(Status status)
{
    return dbg_trace("exiting with error %#.8x", wordOf(status));
}

} // namespace

bool ParameterLine::cutNewline()
{
    const std::size_t size = std::strlen(bytes.data());
    if (size == 0 || bytes[size - 1] != '\n') {
        return false;
    }
    bytes[size - 1] = '\0';
    return true;
}

Status ParameterLine::copyTo(core::Text& copy) const
{
    copy = core::copyText(text());
    return copy ? kGood : kNoMemory;
}

bool Channel::open(int number)
{
    close();
    request_ = RequestReader(fin_buf);
    std::array<char, 64> path;
    core::formatBounded(path, "%s%d", VOK_ANSWER_FILE, number);
    answer_ = core::openFile(path.data(), "w").release();
    fout_buf = answer_;
    return fout_buf != nullptr;
}

void Channel::close()
{
    FILE* opened = std::exchange(answer_, nullptr);
    const bool isOurs = std::exchange(fout_buf, nullptr) == opened;
    if (opened != nullptr && isOurs) {
        std::fclose(opened);
    }
}

ParameterLine Channel::takeLine(const Parameter& parameter)
{
    const std::string_view bytes = request_.takeLine(parameter.room);
    if (bytes.empty()) {
        lastLine_.isMissing = true;
        return lastLine_;
    }
    ParameterLine line;
    bytes.copy(line.bytes.data(), line.bytes.size());
    lastLine_ = line;
    lastLine_.cutNewline();
    return line;
}

FILE* Channel::openFile(const char* path, const char* mode)
{
    // Close first: afterwards errno must say why the next file does not open.
    closeFile();
    file_ = core::openFile(path, mode);
    return file_.get();
}

bool Channel::closeFile()
{
    return !file_ || std::fclose(file_.release()) == 0;
}

std::size_t Channel::write(std::string_view bytes)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), fout_buf);
}

void Channel::writeWord(Status status)
{
    const auto bytes = core::u32Bytes(wordOf(status));
    write({bytes.data(), bytes.size()});
}

HeaderBytes Channel::header(std::uint32_t count) const
{
    return headerBytes(tag(), count);
}

std::size_t Channel::writeHeader(std::uint32_t count)
{
    const HeaderBytes bytes = header(count);
    return write({bytes.data(), bytes.size()});
}

void Channel::endWithError(Status status)
{
    write(kErrorTag);
    writeWord(status);
    finishWithError(status);
}

int Channel::endWithWord(Status status)
{
    writeWord(status);
    return finishWithError(status);
}

void Channel::endWithWordKeepingFile(Status status)
{
    writeWord(status);
    if (file_) {
        std::remove(kWorkFile);
    }
    traceExit(status);
}

/// The end of both common exits, after the code is written.
int Channel::finishWithError(Status status)
{
    closeFile();
    std::remove(kWorkFile);
    return traceExit(status);
}

Channel& channel()
{
    static constinit Channel instance;
    return instance;
}

} // namespace cmdsvc

int SendReturnStatus(std::uint32_t code, const char* name)
{
    using namespace cmdsvc;

    StatusBytes bytes = {};
    core::formatBounded(std::span(bytes).first<kCountOffset + 1>(), "%s ", name);
    core::putU32(std::span(bytes).subspan<kCountOffset, kWordSize>(), code);
    const std::size_t written = channel().write({bytes.data(), bytes.size()});
    return dbg_trace("SendReturnStatus errCode 0x%08X -- fwrite return: %d", code,
                     static_cast<int>(written));
}
