// SPDX-License-Identifier: MIT
//
// reasons.h: what the programs of a request write to standard error. It says why something has
// failed, which no status code can: it is logged, and handed to the client beside the answer.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace service {

/// A file in memory that a request's process has as its standard error. It never grows, because
/// whatever the request has started to go on keeps it: who writes more than there is room for gets
/// an error (EPERM). The room is so large that a talkative program does not get there: some end
/// when they cannot write, and the request would have another answer because of a warning.
class Reasons {
  public:
    static constexpr std::size_t kSize = 4096; ///< so much of what is written is kept
    static constexpr std::size_t kRoom = std::size_t{1} << 20;

    /// No file, and nothing written.
    Reasons() = default;
    /// A file; none if memory or descriptors are missing.
    [[nodiscard]] static Reasons make();
    ~Reasons();
    Reasons(Reasons&& other) noexcept;
    Reasons& operator=(Reasons&& other) noexcept;
    Reasons(const Reasons&) = delete;
    Reasons& operator=(const Reasons&) = delete;

    /// The file's descriptor, or -1.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Reads the start of what has been written, and takes a file that holds no more than this and
    /// that nobody can change; none if nothing was written. What still has the former file may go
    /// on writing there.
    void seal();

    /// What had been written by then.
    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    void close();

    int descriptor_ = -1;
    std::string text_;
};

/// What was written, for the log: one line of little more than 400 bytes, with "\n" between its
/// lines, and each other control character, backslash and byte beyond ASCII as "\xhh". What the
/// request's parameters hold, which may be a password, becomes "[...]": a parameter, each word of
/// it, and a start of at least six bytes, because programs escape values and cut them. What has
/// less than three bytes stays.
/// @param request  the whole request
[[nodiscard]] std::string describeReasons(std::string_view text, std::string_view request);

/// Sends the start of an answer, and with it the file. A client that does not ask for descriptors
/// receives the same bytes as without.
/// @return how many bytes were sent; 0 if the answer has to be sent without the file
[[nodiscard]] std::size_t sendWith(const Reasons& reasons, int socket, std::string_view answer);

} // namespace service
