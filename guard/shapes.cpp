// SPDX-License-Identifier: MIT
#include "guard/shapes.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "guard/values.h"

namespace guard {
namespace {

// clang-format off
constexpr auto kShapes = std::to_array<Shape>({
    // core
    {"removing a file",          R"(sudo rm -f {/files})"},
    {"asking for a setting",     R"(sudo /usr/bin/php /etc/inc/api_system.php {_function} /tmp/getSysVar{#process})"},
    {"storing a setting",        R"(sudo /usr/bin/php /etc/inc/api_system.php {_function} {=value} > /tmp/setSysVar{#process})"},
    {"asking for an address",    R"(ifconfig | grep addr: > /tmp/getsetvar{#process})"},
    {"asking for an address",    R"(ifconfig | grep HWaddr > /tmp/getsetvar{#process})"},
    {"asking for an address",    R"(ifconfig | grep Mask: > /tmp/getsetvar{#process})"},
    {"asking for a gateway",     R"(route -n | grep '0.0.0.0' | grep 'UG' > /tmp/getsetvar{#process})"},
    // sharestatus
    {"listing shares",           R"(sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList /tmp/share_info{#process})"},
    {"measuring a share",        R"(du -sk "/share/{"share}" > /tmp/pelsts1.tmp)"},
    {"looking for pelstatus",    R"(ps | grep pelstatus> /tmp/startPelStatus{#process})"},
    {"starting pelstatus",       R"(startapp pelstatus)"},
    // handlers
    {"listing shares",           R"(sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList /tmp/cmd_lsts{#process})"},
    {"listing shares",           R"(sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList /tmp/vokcontrol.tmp{#process})"},
    {"asking the web hook",      R"(echo share_info | runwebhooks | grep return > /tmp/vokcontrol.tmp)"},
    {"creating a share",         R"(sudo /usr/bin/php /etc/inc/api_share.php tovAddShare '{'share}' '{'property}')"},
    {"permitting a share",       R"(sudo /usr/bin/php /etc/inc/api_share.php tovSetUserSharePrivileges '{'user}' '{'share}' full)"},
    {"creating a user",          R"(sudo /usr/bin/php /etc/inc/api_user.php tovAddUser '{'user}' '{'password}')"},
    {"listing users",            R"(sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers /tmp/vokcontrol.tmp{#process})"},
    {"listing users",            R"(cat /tmp/vokcontrol.tmp{#process} | grep username >  /tmp/vokcontrol.tmp{#process})"},
    {"listing users",            R"(sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers isUserExisted{#process})"},
    {"listing users",            R"(cat isUserExisted{#process} | grep username >  isUserExisted{#process})"},
    {"setting the clock",        R"(sudo /usr/bin/php /etc/inc/api_pel.php tovSetUtcSysTime {=time})"},
    {"asking for the date",      R"(date +%m%d%Y > /tmp/vokcontrol.tmp)"},
    {"measuring a share",        R"(du -sk "/share/{"share}" > /tmp/vokcontrol2.tmp)"},
    {"measuring the first disk", R"(fdisk -lu /dev/sda | grep /dev/sda: > /tmp/vokcontrol2.tmp)"},
    {"measuring the mirror",     R"(mdadm --detail /dev/md0 | grep GiB > /tmp/vokcontrol2.tmp)"},
    {"counting drives",          R"(sudo pelparam -d > /tmp/GetTovHDDS{#process})"},
    {"collecting",               R"(pelstatus)"},
    {"moving a private file",    R"(mv /etc/pelconfig/vokcontrol/vokcontrol-private.txt /tmp/vokcontrol.tmp)"},
    {"moving a private file",    R"(mv /tmp/vokcontrol.tmp /etc/pelconfig/vokcontrol/vokcontrol-private.txt)"},
    {"asking for remote access", R"(/usr/bin/ra-enabled get "{"user}")"},
    {"ending remote access",     R"(/usr/bin/ra-enabled set "{"user}" off)"},
    // pagehelpers
    {"asking for devices",       R"(sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus /tmp/getInternalHDDDev{#process})"},
    {"asking for devices",       R"(sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus /tmp/getDriveInfos{#process})"},
    {"counting drives",          R"(sudo pelparam -d > /tmp/printTovHDDs{#process})"},
    {"looking for tidewaved",    R"(sudo ps | grep tidewave > /tmp/tideWaveFunc{#process})"},
    {"starting tidewaved",       R"(sudo /usr/sbin/tidewaved -n 3)"},
    {"ending tidewaved",         R"(sudo killall tidewaved)"},
});
// clang-format on

// ---- Places -----------------------------------------------------------------------------------

/// One place of a shape.
struct Place {
    char sign;
    std::string_view name;
};

/// The values that a place may hold.
struct Kind {
    char sign;
    char quote; ///< around the place; 0 for none
    std::size_t least;
    bool (*isOf)(char c);
    bool (*mayBe)(std::string_view value);
};

constexpr bool isAnything(std::string_view /*value*/)
{
    return true;
}

constexpr bool isNoOption(std::string_view words)
{
    return !words.starts_with('-');
}

/// Every word starts with "/", so none is an option.
constexpr bool arePaths(std::string_view words)
{
    bool startsWord = true;
    for (const char c : words) {
        if (startsWord && c != '/' && c != ' ') {
            return false;
        }
        startsWord = c == ' ';
    }
    return true;
}

constexpr auto kKinds = std::to_array<Kind>({
    {'"', '"', 0, isInertInDoubleQuotes, isAnything},
    {'\'', '\'', 0, isInertInSingleQuotes, isAnything},
    {'#', 0, 1, isDigit, isAnything},
    {'_', 0, 1, isOfIdentifier, isAnything},
    {'=', 0, 0, isOfWords, isNoOption},
    {'/', 0, 1, isOfWords, arePaths},
});

constexpr const Kind* kindOf(char sign)
{
    return std::ranges::find(kKinds, sign, &Kind::sign);
}

// ---- A shape, piece by piece ------------------------------------------------------------------

/// Takes a place from the start of the words.
constexpr Place takePlace(std::string_view& words)
{
    const Place place{words[1], words.substr(2, words.find('}') - 2)};
    words.remove_prefix(words.find('}') + 1);
    return place;
}

/// Every place is of a known kind, and is between that kind's quotes.
constexpr bool isWellFormed(const Shape& shape)
{
    char quote = 0;
    for (std::string_view words = shape.words; !words.empty();) {
        const char c = words[0];
        if (c == '{') {
            const Kind* kind = kindOf(takePlace(words).sign);
            if (kind == kKinds.end() || kind->quote != quote) {
                return false;
            }
            continue;
        }
        if (c == '"' || c == '\'') {
            quote = (quote == c) ? '\0' : c;
        }
        words.remove_prefix(1);
    }
    return quote == 0;
}
static_assert(std::ranges::all_of(kShapes, isWellFormed));

/// Takes a value from the start of a line: all characters that its kind allows, without a last
/// blank if the shape's next character is a blank.
std::string_view takeValue(std::string_view& line, const Kind& kind, std::string_view next)
{
    std::size_t size = 0;
    while (size < line.size() && kind.isOf(line[size])) {
        ++size;
    }
    if (size > 0 && line[size - 1] == ' ' && next.starts_with(' ')) {
        --size;
    }
    const std::string_view value = line.substr(0, size);
    line.remove_prefix(size);
    return value;
}

// ---- A line against a shape -------------------------------------------------------------------

/// How far a line follows a shape.
struct Progress {
    bool isWhole = false;
    std::size_t left = 0;                 ///< characters of the shape not reached
    std::string_view place = "its words"; ///< the last one
};

Progress follow(std::string_view words, std::string_view line)
{
    Progress progress;
    while (!words.empty()) {
        progress.left = words.size();
        if (words[0] == '{') {
            const Place place = takePlace(words);
            const Kind& kind = *kindOf(place.sign);
            const std::string_view value = takeValue(line, kind, words);
            progress.place = place.name;
            if (value.size() < kind.least || !kind.mayBe(value)) {
                return progress;
            }
        } else if (!line.empty() && line[0] == words[0]) {
            words.remove_prefix(1);
            line.remove_prefix(1);
        } else {
            return progress;
        }
    }
    progress.left = 0;
    progress.isWhole = line.empty();
    return progress;
}

} // namespace

std::span<const Shape> shapes()
{
    return kShapes;
}

Verdict judge(std::string_view line)
{
    Verdict nearest{false, "an unknown one", "its words"};
    std::size_t furthest = 0;
    for (const Shape& shape : kShapes) {
        const Progress progress = follow(shape.words, line);
        if (progress.isWhole) {
            return {true, shape.operation, ""};
        }
        const std::size_t reached = shape.words.size() - progress.left;
        // A line with another first word is not near this shape.
        if (reached > furthest && reached > shape.words.find(' ')) {
            furthest = reached;
            nearest = {false, shape.operation, progress.place};
        }
    }
    return nearest;
}

} // namespace guard
