// SPDX-License-Identifier: MIT
#include "guard/log.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <unistd.h>

#include "guard/guard.h"

namespace guard {
namespace {

int log = STDERR_FILENO;

/// A line of the log, cut to the size of its buffer.
class Line {
  public:
    Line& operator<<(std::string_view text)
    {
        const std::size_t size = std::min(text.size(), text_.size() - size_);
        std::copy_n(text.begin(), size, text_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += size;
        return *this;
    }
    [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

  private:
    std::array<char, 256> text_;
    std::size_t size_ = 0;
};

} // namespace

void logTo(int descriptor)
{
    log = descriptor;
}

void logRefusal(const Verdict& verdict)
{
    Line line;
    line << ::program_invocation_short_name << ": a shell line was refused: " << verdict.operation
         << ", " << verdict.place << "\n";
    [[maybe_unused]] const ssize_t written = ::write(log, line.text().data(), line.text().size());
}

} // namespace guard
