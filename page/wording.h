// SPDX-License-Identifier: MIT
//
// wording.h: sizes, times and ages in words.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace page {

/// A size in the units of a share status. The collector counts KiB; from there on it divides by
/// 1000.
struct Space {
    std::uint16_t value;
    char unit; ///< 'K', 'M' or 'G'

    [[nodiscard]] std::uint64_t kibibytes() const;
};

[[nodiscard]] std::string wordSpace(const Space& space);

/// A sum of such sizes, with one decimal where it is small: "1.4 GB".
[[nodiscard]] std::string wordKibibytes(std::uint64_t kibibytes);

/// A part of a whole: "78 %", "under 1 %".
[[nodiscard]] std::string wordPart(std::uint64_t part, std::uint64_t whole);

/// "18 November 2026"
[[nodiscard]] std::string wordDate(std::chrono::year_month_day date);

/// "2026-11-18", for programs
[[nodiscard]] std::string codeDate(std::chrono::year_month_day date);

/// "21 November 2026, 09:33 UTC", local time
[[nodiscard]] std::string wordTime(std::time_t time);

/// How long ago a moment is: "just now", "5 minutes ago", "2 days ago".
[[nodiscard]] std::string wordElapsed(std::time_t then, std::time_t now);

/// How long ago a day is: "today", "yesterday", "3 weeks ago".
[[nodiscard]] std::string wordAge(std::chrono::sys_days then, std::chrono::sys_days today);

/// The day of a moment, local time.
[[nodiscard]] std::chrono::sys_days dayOf(std::time_t time);

/// "1 share", "3 shares"
[[nodiscard]] std::string wordCount(std::uint64_t count, const char* one, const char* many);

} // namespace page
