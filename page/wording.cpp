// SPDX-License-Identifier: MIT
#include "page/wording.h"

#include <array>

namespace page {
namespace {

constexpr std::uint64_t kThousand = 1000;

constexpr auto kMonths =
    std::to_array<const char*>({"January", "February", "March", "April", "May", "June", "July",
                                "August", "September", "October", "November", "December"});

std::string ago(std::uint64_t count, const char* one, const char* many)
{
    return wordCount(count, one, many) + " ago";
}

std::string padded(unsigned number, std::size_t size)
{
    std::string digits = std::to_string(number);
    digits.insert(0, size - std::min(size, digits.size()), '0');
    return digits;
}

std::string formatTime(const char* format, std::time_t time)
{
    std::tm local = {};
    ::localtime_r(&time, &local);
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), format, &local);
    return {text.data(), size};
}

std::chrono::year_month_day dateOf(std::chrono::sys_days day)
{
    return {day};
}

} // namespace

std::uint64_t Space::kibibytes() const
{
    std::uint64_t factor = 1;
    if (unit == 'M') {
        factor = kThousand;
    } else if (unit == 'G') {
        factor = kThousand * kThousand;
    }
    return value * factor;
}

std::string wordSpace(const Space& space)
{
    std::string words = std::to_string(space.value);
    words += ' ';
    words += space.unit;
    words += 'B';
    return words;
}

std::string wordKibibytes(std::uint64_t kibibytes)
{
    constexpr auto kUnits = std::to_array<const char*>({" KB", " MB", " GB"});
    std::size_t unit = 0;
    std::uint64_t tenths = kibibytes * 10;
    while (tenths >= kThousand * 10 && unit + 1 < kUnits.size()) {
        tenths /= kThousand;
        ++unit;
    }
    std::string words = std::to_string(tenths / 10);
    if (unit > 0 && tenths < 100) {
        words += '.';
        words += std::to_string(tenths % 10);
    }
    return words + kUnits[unit];
}

std::string wordPart(std::uint64_t part, std::uint64_t whole)
{
    if (whole == 0 || part == 0) {
        return "0 %";
    }
    const std::uint64_t percent = (part * 100 + whole / 2) / whole;
    return (percent == 0) ? "under 1 %" : std::to_string(percent) + " %";
}

std::string wordDate(std::chrono::year_month_day date)
{
    std::string words = std::to_string(static_cast<unsigned>(date.day()));
    words += ' ';
    words += kMonths.at(static_cast<unsigned>(date.month()) - 1);
    words += ' ';
    words += std::to_string(static_cast<int>(date.year()));
    return words;
}

std::string codeDate(std::chrono::year_month_day date)
{
    return padded(static_cast<unsigned>(static_cast<int>(date.year())), 4) + "-" +
           padded(static_cast<unsigned>(date.month()), 2) + "-" +
           padded(static_cast<unsigned>(date.day()), 2);
}

std::string wordTime(std::time_t time)
{
    return wordDate(dateOf(dayOf(time))) + formatTime(", %H:%M %Z", time);
}

std::string wordElapsed(std::time_t then, std::time_t now)
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

std::string wordAge(std::chrono::sys_days then, std::chrono::sys_days today)
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
    std::tm local = {};
    ::localtime_r(&time, &local);
    constexpr int kFirstYear = 1900;
    return std::chrono::year_month_day(std::chrono::year(local.tm_year + kFirstYear),
                                       std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
                                       std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

std::string wordCount(std::uint64_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

} // namespace page
