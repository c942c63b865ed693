// SPDX-License-Identifier: MIT
#include "page/plot_axes.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "sharestatus/status_format.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;
using text::trc;

// ---- Sizes --------------------------------------------------------------------------------------

/// The smallest difference that two labels show: they have one decimal if they are below ten units.
std::uint64_t resolutionAt(std::uint64_t kibibytes)
{
    std::uint64_t unit = 1;
    for (const auto& each : sharestatus::kUnits) {
        if (each.kibibytes <= kibibytes) {
            unit = each.kibibytes;
        }
    }
    return (kibibytes < 10 * unit) ? std::max<std::uint64_t>(unit / 10, 1) : unit;
}

/// 1, 2 or 5 with zeros, at least a number.
std::uint64_t roundStep(std::uint64_t least)
{
    for (std::uint64_t power = 1;; power *= 10) {
        for (const std::uint64_t digit : {1U, 2U, 5U}) {
            if (digit * power >= least) {
                return digit * power;
            }
        }
    }
}

bool areClose(std::uint64_t least, std::uint64_t most)
{
    constexpr std::uint64_t kVisible = 20; // a twentieth of the height
    return least * 2 >= most && (most - least) * kVisible >= most;
}

// ---- Times --------------------------------------------------------------------------------------

struct Calendar {
    int longest;                         ///< for plots of at most so many days
    bool (*hasTick)(year_month_day day); ///< whether there is a tick at a day
    std::string (*label)(year_month_day day, bool isFirst);
};

unsigned monthOf(year_month_day day)
{
    return static_cast<unsigned>(day.month());
}

std::string yearOf(year_month_day day)
{
    return std::to_string(static_cast<int>(day.year()));
}

const char* shortMonth(year_month_day day)
{
    const auto months = std::to_array<const char*>(
        {trc("short month", "Jan"), trc("short month", "Feb"), trc("short month", "Mar"),
         trc("short month", "Apr"), trc("short month", "May"), trc("short month", "Jun"),
         trc("short month", "Jul"), trc("short month", "Aug"), trc("short month", "Sep"),
         trc("short month", "Oct"), trc("short month", "Nov"), trc("short month", "Dec")});
    return months.at(monthOf(day) - 1);
}

std::string labelDay(year_month_day day, bool /*isFirst*/)
{
    return text::fill(trc("day and short month", "{1} {2}"),
                      {view::formatDayOfMonth(day.day()), shortMonth(day)});
}

/// The year is there once, and where it begins.
std::string labelMonth(year_month_day day, bool isFirst)
{
    if (!isFirst && day.month() != std::chrono::January) {
        return shortMonth(day);
    }
    return text::fill(trc("short month and year", "{1} {2}"), {shortMonth(day), yearOf(day)});
}

std::string labelYear(year_month_day day, bool /*isFirst*/)
{
    return yearOf(day);
}

template <int Every> bool isNthDay(year_month_day day)
{
    return sys_days(day).time_since_epoch().count() % Every == 0;
}

bool isMonday(year_month_day day)
{
    return std::chrono::weekday(sys_days(day)) == std::chrono::Monday;
}

template <unsigned Every> bool isNthMonth(year_month_day day)
{
    return day.day() == std::chrono::day(1) && (monthOf(day) - 1) % Every == 0;
}

template <int Every> bool isNthYear(year_month_day day)
{
    return isNthMonth<12>(day) && static_cast<int>(day.year()) % Every == 0;
}

constexpr auto kCalendars = std::to_array<Calendar>({
    {6, isNthDay<1>, labelDay},
    {12, isNthDay<2>, labelDay},
    {45, isMonday, labelDay},
    {200, isNthMonth<1>, labelMonth},
    {400, isNthMonth<2>, labelMonth},
    {800, isNthMonth<4>, labelMonth},
    {6 * 365, isNthYear<1>, labelYear},
    {12 * 365, isNthYear<2>, labelYear},
    {60 * 365, isNthYear<10>, labelYear},
});

std::time_t startOf(year_month_day day)
{
    std::tm time = {};
    time.tm_year = static_cast<int>(day.year()) - 1900;
    time.tm_mon = static_cast<int>(monthOf(day)) - 1;
    time.tm_mday = static_cast<int>(static_cast<unsigned>(day.day()));
    time.tm_isdst = -1;
    return std::mktime(&time);
}

} // namespace

std::vector<std::uint64_t> sizeTicks(std::uint64_t least, std::uint64_t most)
{
    constexpr std::uint64_t kParts = 4;
    const std::uint64_t low = areClose(least, most) ? least : 0;
    const std::uint64_t step =
        roundStep(std::max((most - low + kParts - 1) / kParts, resolutionAt(most)));
    std::vector<std::uint64_t> ticks = {low - low % step};
    do {
        ticks.push_back(ticks.back() + step);
    } while (ticks.back() < most);
    return ticks;
}

std::vector<TimeTick> timeTicks(std::time_t first, std::time_t last)
{
    const sys_days start = view::dayOf(first);
    const sys_days end = view::dayOf(last);
    const auto* calendar = std::ranges::find_if(
        kCalendars, [&](const Calendar& each) { return (end - start).count() <= each.longest; });
    std::vector<TimeTick> ticks;
    if (calendar == kCalendars.end()) {
        return ticks;
    }
    for (sys_days day = start; day <= end; day += std::chrono::days(1)) {
        if (!calendar->hasTick(day)) {
            continue; // Its start costs a look at the time zone.
        }
        const std::time_t time = startOf(day);
        if (time >= first && time <= last) {
            ticks.push_back({time, calendar->label(day, ticks.empty())});
        }
    }
    return ticks;
}

} // namespace page
