// SPDX-License-Identifier: MIT
//
// faults.h: faults of the C library, by name, and what happens right before one of its calls. Each
// lasts as long as its guard:
//
//     const faults::Guard noProcess = faults::failFork();
//
// Without a guard every call does what the C library's does.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace faults {

/// Ends a fault when it goes. An empty one has none to end; it can be given one later.
class [[nodiscard]] Guard {
  public:
    Guard() = default;
    explicit Guard(void (*end)()) : end_(end) {}
    Guard(Guard&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}

    Guard& operator=(Guard&& other) noexcept
    {
        std::swap(end_, other.end_);
        return *this;
    }

    ~Guard()
    {
        if (end_ != nullptr) {
            end_();
        }
    }

  private:
    void (*end_)() = nullptr;
};

// ---- Memory -----------------------------------------------------------------------------------

/// strdup fails with ENOMEM.
/// @param copies  that succeed before
Guard failStrdup(int copies = 0);

/// How many copies are still to succeed.
[[nodiscard]] int copiesLeft();

/// The new that does not throw has no memory.
Guard failNew();

/// delete leaves this in errno.
Guard setErrnoOnDelete(int error);

// ---- Files ------------------------------------------------------------------------------------

/// fclose of this file fails with EBADF; its descriptor is closed all the same.
Guard failFclose(const std::string& path);

/// fwrite to this file writes nothing and fails with ENOSPC.
Guard failFwrite(const std::string& path);

/// Something happens right before remove of this file; once.
Guard beforeRemove(const std::string& path, std::function<void()> action);

/// Something happens right before each pread, which is told its number from 1.
Guard beforePread(std::function<void(int)> action);

// ---- Processes --------------------------------------------------------------------------------

/// fork fails with EAGAIN.
Guard failFork();

/// Something happens right before each fork.
Guard beforeFork(std::function<void()> action);

// ---- Encodings --------------------------------------------------------------------------------

/// iconv_open knows no such encodings.
Guard failIconvOpen();

/// iconv fails with EILSEQ.
Guard failIconv();

/// How many of iconv's converters are open.
[[nodiscard]] int openConverters();

/// What iconv_open was asked for last, as "FROM to TO".
[[nodiscard]] std::string lastConversion();

} // namespace faults
