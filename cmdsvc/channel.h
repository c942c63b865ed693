// SPDX-License-Identifier: MIT
//
// channel.h: the object that a command handler works with: the request, the answer, and the
// current-file slot. A process runs one request at a time, so it has one channel.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "cmdsvc/commands.h"
#include "cmdsvc/request_reader.h"
#include "core/core.h"

#pragma GCC visibility push(default)
extern "C" {

/// Answers with a status frame of 10 bytes: the command's name, a blank, the code, a zero byte.
///
/// @param name  four characters
/// @return what system() returned for the trace
int SendReturnStatus(std::uint32_t code, const char* name);

} // extern "C"
#pragma GCC visibility pop

namespace cmdsvc {

/// Handlers' work file: the output of a shell line, or a list that a handler reads while it
/// answers.
inline constexpr const char* kWorkFile = "/tmp/vokcontrol.tmp";

/// A parameter line as it was sent, with its newline and zeros after it.
struct ParameterLine {
    std::array<char, core::kLineSize> bytes = {};
    bool isMissing = false; ///< nothing was left of the request

    [[nodiscard]] const char* text() const { return bytes.data(); }

    /// Cuts the newline at the text's end.
    /// @return false if there is no newline: the line is cut, or holds a zero byte
    bool cutNewline();

    /// Copies the text.
    /// @return kNoMemory if there is none for it, with errno set
    Status copyTo(core::Text& copy) const;
};

class Channel {
  public:
    /// Opens the request in fin_buf and a new answer file. Closes the previous request's answer if
    /// its exit left that open.
    /// @return false if the answer file cannot be opened
    [[nodiscard]] bool open(int number);

    /// Ends the answer.
    void close();

    /// Sets the command that is carried out; its row has the tag of its answer.
    void begin(const Command& command) { command_ = &command; }

    // ---- The request --------------------------------------------------------------------------

    /// The part of the request that has not been taken yet.
    [[nodiscard]] RequestReader& request() { return request_; }

    /// Takes a parameter line. If nothing is left, returns the previous line without its newline.
    [[nodiscard]] ParameterLine takeLine(const Parameter& parameter);

    // ---- The current-file slot ----------------------------------------------------------------
    //
    // The one file that a handler reads while it answers, so that an error exit can close it.

    /// Closes the slot's file, if there is one, then opens a file in the slot.
    /// @return the file, or null with errno set by this open
    FILE* openFile(const char* path, const char* mode = "r");

    /// Closes the slot's file and clears the slot, so that a second close does nothing.
    /// @return false if the close failed, with errno set
    bool closeFile();

    // ---- The answer ---------------------------------------------------------------------------

    /// @return how many bytes were written
    std::size_t write(std::string_view bytes);

    /// A status code as a bare word.
    void writeWord(Status status);

    /// The header of the command's answer: tag, blank, count and newline; lines follow it.
    /// @return how many bytes were written
    std::size_t writeHeader(std::uint32_t count);

    /// The same bytes, for a handler that writes more bytes with them.
    [[nodiscard]] HeaderBytes header(std::uint32_t count) const;

    /// The tag of the command's answer, four letters and a blank; its own bytes follow it.
    [[nodiscard]] std::string_view tag() const { return command_->answer.tag; }

    // ---- Error exits --------------------------------------------------------------------------

    /// The handlers' common error exit: answers "erro " and the code, closes the slot, removes the
    /// work file, traces the code.
    void endWithError(Status status);

    /// The same as endWithError, with the code as a bare word.
    /// @return what system() returned for the trace
    int endWithWord(Status status);

    /// Like endWithWord, for the commands of remote access and passwords: the work file is only
    /// removed if the slot holds a file, and that stays open.
    void endWithWordKeepingFile(Status status);

  private:
    int finishWithError(Status status);

    const Command* command_ = nullptr;
    RequestReader request_;
    ParameterLine lastLine_;
    core::File file_;
    /// The file that fout_buf points to, unless other code has set fout_buf.
    FILE* answer_ = nullptr;
};

/// The channel of this process.
[[nodiscard]] Channel& channel();

} // namespace cmdsvc
