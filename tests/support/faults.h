// SPDX-License-Identifier: MIT
//
// faults.h: makes calls of the C library fail, or runs an action right before one. Each lasts as
// long as its guard:
//
//     const faults::Guard noProcess = faults::failFork();
//
// Without a guard every call does the same as in the C library.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace faults {

/// Ends a fault in its destructor. An empty guard has no fault; it can get one later.
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
/// @param copies  the number of copies that succeed before
Guard failStrdup(int copies = 0);

/// How many copies will still succeed.
[[nodiscard]] int copiesLeft();

/// new(std::nothrow) returns null.
Guard failNew();

/// delete sets errno to this.
Guard setErrnoOnDelete(int error);

// ---- Files ------------------------------------------------------------------------------------

/// fclose of this file fails with EBADF, but closes its descriptor.
Guard failFclose(const std::string& path);

/// fwrite to this file writes nothing and fails with ENOSPC.
Guard failFwrite(const std::string& path);

/// Runs an action once, right before remove() of this file.
Guard beforeRemove(const std::string& path, std::function<void()> action);

/// Runs an action right before each pread, with the call's number from 1 on.
Guard beforePread(std::function<void(int)> action);

// ---- Processes --------------------------------------------------------------------------------

/// fork fails with EAGAIN.
Guard failFork();

/// Runs an action right before each fork.
Guard beforeFork(std::function<void()> action);

// ---- Encodings --------------------------------------------------------------------------------

/// iconv_open fails with EINVAL.
Guard failIconvOpen();

/// iconv fails with EILSEQ.
Guard failIconv();

/// How many of iconv's converters are open.
[[nodiscard]] int openConverters();

/// The encodings of the last iconv_open, as "FROM to TO".
[[nodiscard]] std::string lastConversion();

} // namespace faults
