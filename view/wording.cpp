// SPDX-License-Identifier: MIT
#include "view/wording.h"

#include <algorithm>
#include <array>

#include "sharestatus/status_format.h"
#include "text/translation.h"

namespace view {
namespace {

using text::fill;
using text::tr;
using text::trc;
using text::trn;

std::string monthName(std::chrono::month month)
{
    const auto names = std::to_array<const char*>(
        {trc("month", "January"), trc("month", "February"), trc("month", "March"),
         trc("month", "April"), trc("month", "May"), trc("month", "June"), trc("month", "July"),
         trc("month", "August"), trc("month", "September"), trc("month", "October"),
         trc("month", "November"), trc("month", "December")});
    return names.at(static_cast<unsigned>(month) - 1);
}

/// A number in its place of a sentence that has a plural.
std::string counted(const char* sentence, std::uint64_t count)
{
    return fill(sentence, {std::to_string(count)});
}

std::string withUnit(const std::string& number, char unit)
{
    switch (unit) {
    case 'K':
        return fill(tr("{} KB"), {number});
    case 'M':
        return fill(tr("{} MB"), {number});
    default:
        return fill(tr("{} GB"), {number});
    }
}

/// The largest unit that a size reaches.
const sharestatus::Unit& unitOf(std::uint64_t kibibytes)
{
    const auto isReached = [least = std::max<std::uint64_t>(kibibytes, 1)](const auto& unit) {
        return least >= unit.kibibytes;
    };
    const auto& units = sharestatus::kUnits;
    return *std::find_if(units.rbegin(), units.rend(), isReached);
}

/// A size in a unit, with one decimal if it is small: "1.4".
std::string numberOf(std::uint64_t kibibytes, const sharestatus::Unit& unit)
{
    const std::uint64_t tenths = kibibytes * 10 / unit.kibibytes;
    std::string number = std::to_string(tenths / 10);
    if (unit.kibibytes > 1 && tenths < 100) {
        number += trc("decimal sign", ".") + std::to_string(tenths % 10);
    }
    return number;
}

std::string daysAgo(std::uint64_t days)
{
    return counted(trn("{} day ago", "{} days ago", days), days);
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
    return withUnit(std::to_string(space.value), space.unit);
}

std::string formatKibibytes(std::uint64_t kibibytes)
{
    const sharestatus::Unit& unit = unitOf(kibibytes);
    return withUnit(numberOf(kibibytes, unit), unit.letter);
}

std::string formatPartOfKibibytes(std::uint64_t part, std::uint64_t whole)
{
    const sharestatus::Unit& unit = unitOf(part);
    return (unit.letter == unitOf(whole).letter) ? numberOf(part, unit) : formatKibibytes(part);
}

std::string formatPart(std::uint64_t part, std::uint64_t whole)
{
    const std::uint64_t percent = (whole == 0) ? 0 : (part * 100 + whole / 2) / whole;
    const bool isSmall = whole > 0 && part > 0 && percent == 0;
    return isSmall ? tr("under 1 %") : counted(tr("{} %"), percent);
}

std::string formatDayOfMonth(std::chrono::day day)
{
    return (day == std::chrono::day(1)) ? trc("first day of a month", "1")
                                        : std::to_string(static_cast<unsigned>(day));
}

std::string formatDate(std::chrono::year_month_day date)
{
    // Translators: 1 is the day, 2 the name of the month, 3 the year, 4 the month's number.
    return fill(trc("date", "{1} {2} {3}"), {formatDayOfMonth(date.day()), monthName(date.month()),
                                             std::to_string(static_cast<int>(date.year())),
                                             std::to_string(static_cast<unsigned>(date.month()))});
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
    // Translators: 1 is a date, 2 a time with its zone, such as "09:33 UTC".
    return fill(trc("date and time", "{1}, {2}"),
                {formatDate(dayOf(time)), formatTime("%H:%M %Z", localTime(time))});
}

std::string formatElapsed(std::time_t then, std::time_t now)
{
    constexpr std::time_t kMinute = 60;
    constexpr std::time_t kHour = 60 * kMinute;
    constexpr std::time_t kDay = 24 * kHour;
    const auto elapsed = static_cast<std::uint64_t>(std::max<std::time_t>(now - then, 0));
    const std::uint64_t minutes = elapsed / kMinute;
    const std::uint64_t hours = elapsed / kHour;
    if (elapsed < kMinute) {
        return tr("just now");
    }
    if (elapsed < kHour) {
        return counted(trn("{} minute ago", "{} minutes ago", minutes), minutes);
    }
    if (elapsed < 2 * kDay) {
        return counted(trn("{} hour ago", "{} hours ago", hours), hours);
    }
    return daysAgo(elapsed / kDay);
}

std::string formatAge(std::chrono::sys_days then, std::chrono::sys_days today)
{
    const auto days = (today - then).count();
    if (days < 0) {
        return tr("in the future");
    }
    if (days < 2) {
        return (days == 0) ? tr("today") : tr("yesterday");
    }
    const auto count = static_cast<std::uint64_t>(days);
    if (count < 14) {
        return daysAgo(count);
    }
    if (count < 60) {
        return counted(trn("{} week ago", "{} weeks ago", count / 7), count / 7);
    }
    if (count < 730) {
        return counted(trn("{} month ago", "{} months ago", count / 30), count / 30);
    }
    return counted(trn("{} year ago", "{} years ago", count / 365), count / 365);
}

std::chrono::sys_days dayOf(std::time_t time)
{
    const std::tm local = localTime(time);
    constexpr int kFirstYear = 1900;
    return std::chrono::year_month_day(std::chrono::year(local.tm_year + kFirstYear),
                                       std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
                                       std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

std::string joinSentences(const std::string& former, const std::string& sentence)
{
    return former.empty() ? sentence : fill(trc("two sentences", "{1} {2}"), {former, sentence});
}

std::string formatNames(const std::vector<std::string>& names)
{
    std::string words;
    for (const std::string& name : names) {
        words += (words.empty() ? "" : trc("between names", ", ")) + name;
    }
    return words;
}

} // namespace view
