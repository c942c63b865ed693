// SPDX-License-Identifier: MIT
//
// wording.h: sizes, times and ages in words, in the language of the person who reads them. Only
// what is for programs is the same in every language.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace view {

/// A size in the units of a share status.
struct Space {
    std::uint16_t value;
    char unit; ///< one of sharestatus::kUnits

    [[nodiscard]] std::uint64_t kibibytes() const;
};

/// "604 KB"
[[nodiscard]] std::string formatSpace(const Space& space);

/// A sum of such sizes, with one decimal if it is small: "1.4 GB".
[[nodiscard]] std::string formatKibibytes(std::uint64_t kibibytes);

/// A part of a sum: "312" if it has the unit of the whole, "900 MB" if it has another one.
[[nodiscard]] std::string formatPartOfKibibytes(std::uint64_t part, std::uint64_t whole);

/// A part of a whole: "78 %", "under 1 %".
[[nodiscard]] std::string formatPart(std::uint64_t part, std::uint64_t whole);

/// "18", the day in a date. Some languages write the first of a month in another way.
[[nodiscard]] std::string formatDayOfMonth(std::chrono::day day);

/// "18 November 2026"
[[nodiscard]] std::string formatDate(std::chrono::year_month_day date);

/// "2026-11-18", for programs
[[nodiscard]] std::string formatIsoDate(std::chrono::year_month_day date);

/// A time as strftime() formats it, at most 63 bytes; for programs, or without words.
[[nodiscard]] std::string formatTime(const char* format, const std::tm& time);

/// "21 November 2026, 09:33 UTC", local time
[[nodiscard]] std::string formatTime(std::time_t time);

/// How long ago a moment is: "just now", "5 minutes ago", "2 days ago".
[[nodiscard]] std::string formatElapsed(std::time_t then, std::time_t now);

/// How long ago a day is: "today", "yesterday", "3 weeks ago".
[[nodiscard]] std::string formatAge(std::chrono::sys_days then, std::chrono::sys_days today);

/// The day of a moment, local time.
[[nodiscard]] std::chrono::sys_days dayOf(std::time_t time);

/// A sentence after other ones, or after none.
[[nodiscard]] std::string joinSentences(const std::string& former, const std::string& sentence);

/// "Media, Music, Photos"
[[nodiscard]] std::string formatNames(const std::vector<std::string>& names);

} // namespace view
