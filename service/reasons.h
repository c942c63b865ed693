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
/// whatever the request has started to go on keeps it: who writes more gets an error (EPERM).
class Reasons {
  public:
    static constexpr std::size_t kSize = 4096;

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

    /// Lets nobody write more, and reads what has been written. Without that the file is closed.
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
