// SPDX-License-Identifier: MIT
#include "view/wording.h"

#include <algorithm>
#include <array>

#include "sharestatus/status_format.h"

namespace view {
namespace {

constexpr auto kMonths =
    std::to_array<const char*>({"January", "February", "March", "April", "May", "June", "July",
                                "August", "September", "October", "November", "December"});

std::string ago(std::uint64_t count, const char* one, const char* many)
{
    return formatCount(count, one, many) + " ago";
}

std::string padded(unsigned number, std::size_t size)
{
    std::string digits = std::to_string(number);
    digits.insert(0, size - std::min(size, digits.size()), '0');
    return digits;
}

std::tm localTime(std::time_t time)
{
    std::tm local = {};
    ::localtime_r(&time, &local);
    return local;
}

} // namespace

std::uint64_t Space::kibibytes() const
{
    return std::uint64_t{value} * sharestatus::findUnit(unit)->kibibytes;
}

std::string formatSpace(const Space& space)
{
    return std::to_string(space.value) + " " + space.unit + "B";
}

std::string formatKibibytes(std::uint64_t kibibytes)
{
    const auto isReached = [least = std::max<std::uint64_t>(kibibytes, 1)](const auto& unit) {
        return least >= unit.kibibytes;
    };
    const auto& units = sharestatus::kUnits;
    const auto unit = *std::find_if(units.rbegin(), units.rend(), isReached);
    const std::uint64_t tenths = kibibytes * 10 / unit.kibibytes;
    std::string words = std::to_string(tenths / 10);
    if (unit.kibibytes > 1 && tenths < 100) {
        words += "." + std::to_string(tenths % 10);
    }
    return words + " " + unit.letter + "B";
}

std::string formatPart(std::uint64_t part, std::uint64_t whole)
{
    if (whole == 0 || part == 0) {
        return "0 %";
    }
    const std::uint64_t percent = (part * 100 + whole / 2) / whole;
    return (percent == 0) ? "under 1 %" : std::to_string(percent) + " %";
}

std::string formatDate(std::chrono::year_month_day date)
{
    std::string words = std::to_string(static_cast<unsigned>(date.day()));
    words += ' ';
    words += kMonths.at(static_cast<unsigned>(date.month()) - 1);
    words += ' ';
    words += std::to_string(static_cast<int>(date.year()));
    return words;
}

std::string formatIsoDate(std::chrono::year_month_day date)
{
    return padded(static_cast<unsigned>(static_cast<int>(date.year())), 4) + "-" +
           padded(static_cast<unsigned>(date.month()), 2) + "-" +
           padded(static_cast<unsigned>(date.day()), 2);
}

std::string formatTime(const char* format, const std::tm& time)
{
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), format, &time);
    return {text.data(), size};
}

std::string formatTime(std::time_t time)
{
    return formatDate(dayOf(time)) + formatTime(", %H:%M %Z", localTime(time));
}

std::string formatElapsed(std::time_t then, std::time_t now)
{
    constexpr std::time_t kMinute = 60;
    constexpr std::time_t kHour = 60 * kMinute;
    constexpr std::time_t kDay = 24 * kHour;
    const auto elapsed = static_cast<std::uint64_t>(std::max<std::time_t>(now - then, 0));
    if (elapsed < kMinute) {
        return "just now";
    }
    if (elapsed < kHour) {
        return ago(elapsed / kMinute, "minute", "minutes");
    }
    if (elapsed < 2 * kDay) {
        return ago(elapsed / kHour, "hour", "hours");
    }
    return ago(elapsed / kDay, "day", "days");
}

std::string formatAge(std::chrono::sys_days then, std::chrono::sys_days today)
{
    const auto days = (today - then).count();
    if (days < 0) {
        return "in the future";
    }
    if (days < 2) {
        return (days == 0) ? "today" : "yesterday";
    }
    const auto count = static_cast<std::uint64_t>(days);
    if (count < 14) {
        return ago(count, "day", "days");
    }
    if (count < 60) {
        return ago(count / 7, "week", "weeks");
    }
    if (count < 730) {
        return ago(count / 30, "month", "months");
    }
    return ago(count / 365, "year", "years");
}

std::chrono::sys_days dayOf(std::time_t time)
{
    const std::tm local = localTime(time);
    constexpr int kFirstYear = 1900;
    return std::chrono::year_month_day(std::chrono::year(local.tm_year + kFirstYear),
                                       std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
                                       std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

std::string formatCount(std::uint64_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace view
