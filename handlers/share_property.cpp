// SPDX-License-Identifier: MIT
#include "handlers/share_property.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <unistd.h>

#include "core/bytes.h"
#include "handlers/handler.h"
#include "handlers/share_listing.h"
#include "handlers/users.h"

namespace handlers {
namespace {

using Line = std::array<char, 512>;

/// A share's property, as the byte in the answer.
enum class Property : unsigned char { kPrivate = 1, kPublic = 2, kNone = 3 };

bool contains(const char* line, const char* text)
{
    return std::strstr(line, text) != nullptr;
}

bool isShareName(const char* name)
{
    const std::size_t size = std::strlen(name);
    return size > 0 && size <= cmdsvc::kLongestShareName;
}

// ---- gsp1 -------------------------------------------------------------------------------------

/// The property in the last block of a listing that holds a name anywhere.
Property findProperty(FILE* listing, const char* name)
{
    Property property = Property::kNone;
    bool isInBlock = false;
    Line line;
    while (core::readLine(listing, line)) {
        if (contains(line.data(), name)) {
            dbg_trace("Found share %s", line.data());
            isInBlock = true;
        }
        if (isInBlock && contains(line.data(), "<shareproperty>")) {
            property = contains(line.data(), "public") ? Property::kPublic : Property::kPrivate;
            dbg_trace("Found property %s -- %d", line.data(), static_cast<int>(property));
        }
        if (contains(line.data(), "</shareinfo>")) {
            isInBlock = false;
        }
    }
    return property;
}

Status takeShareName(Channel& channel, ParameterLine& name)
{
    name = channel.takeLine(cmdsvc::parameter("gsp1", "share"));
    name.cutNewline();
    dbg_trace("cmd_gspc pShareName: %s", name.text());
    return isShareName(name.text()) ? kGood : kBadShareName;
}

/// Looks a share's property up in the share script's listing, which it makes and removes.
Status lookUpProperty(Channel& channel, const char* path, const char* name, Property& property)
{
    if (!fetchShareListing("cmd_gsp1", path)) {
        return kCommandFailed;
    }
    FILE* listing = openShareListing(channel, path);
    if (listing == nullptr) {
        return kCannotOpen;
    }
    property = findProperty(listing, name);
    channel.closeFile();
    if (std::remove(path) != 0) {
        dbg_trace("cmd_gsp1() cannot remove file %s: %s", path, std::strerror(errno));
        return kCannotRemoveListing;
    }
    return kGood;
}

void answerProperty(Channel& channel, Property property)
{
    const cmdsvc::HeaderBytes header = channel.header(1);
    const char byte = static_cast<char>(property);
    const std::size_t written =
        channel.writeHeader(1) + channel.write({&byte, 1}) + channel.write("\n");
    // As a text, the header ends at the first zero byte of the count.
    dbg_trace("cmd_gsp1 fwrite: %s - %d - return %d", header.data(), static_cast<int>(property),
              static_cast<int>(written));
}

Status answerListedProperty(Channel& channel)
{
    Line path;
    core::formatBounded(path, "%s%d", kWorkFile, ::getpid());
    dbg_trace("get share property enter..%d", 0);
    ParameterLine name;
    Property property{};
    Status status = takeShareName(channel, name);
    if (status == kGood) {
        status = lookUpProperty(channel, path.data(), name.text(), property);
    }
    if (status == kGood) {
        answerProperty(channel, property);
    }
    return status;
}

// ---- gspc -------------------------------------------------------------------------------------

/// The part that is read of a line of the web hook's list or the user list, with its terminator.
using ShortLine = std::array<char, 255>;

/// A share's position in the web hook's list.
struct ListPlace {
    bool isFound = true;
    int standing = 0;
};

/// A name from the request's first line, where it follows its length. A length of 10 ends that
/// line; the rest of the line then overwrites the length, so that the name starts one byte too
/// late.
using ShareName = std::array<char, 256>;

ShareName takeCountedName(Channel& channel)
{
    constexpr Parameter kShare = cmdsvc::parameter("gspc", "share");
    cmdsvc::RequestReader& request = channel.request();
    const std::size_t size = core::byteOf(request.firstLine()[request.kLengthOffset]);
    const std::string_view text = request.completeFirstLine(kShare).substr(kShare.offset, size);
    ShareName name = {};
    text.copy(name.data(), name.size() - 1);
    return name;
}

/// Finds a share in the first line of the web hook's list. An empty list counts as every share.
ListPlace findPlace(FILE* list, const char* name)
{
    ShortLine line;
    if (!core::readLine(list, line)) {
        return {};
    }
    const char* found = std::strstr(line.data(), name);
    if (found == nullptr) {
        return {.isFound = false};
    }
    const std::string_view before(line.data(), static_cast<std::size_t>(found - line.data()) + 1);
    return {.standing = static_cast<int>(std::ranges::count(before.substr(1), ','))};
}

/// Reads COUNT lines of a list; LINE then holds the last one.
bool readLines(FILE* list, ShortLine& line, int count)
{
    for (; count > 0; --count) {
        if (!core::readLine(list, line)) {
            return false;
        }
    }
    return true;
}

void closeWorkFile(Channel& channel)
{
    channel.closeFile();
    core::removeWorkFile(kWorkFile);
}

/// Asks the web hook for the position of a share.
/// @return nothing if that fails
std::optional<ListPlace> askWebHook(Channel& channel, const char* name)
{
    core::CommandLine line;
    core::formatBounded(line, "echo share_info | runwebhooks | grep return > %s", kWorkFile);
    if (core::runShellLine(line.data()).result == -1) {
        return std::nullopt;
    }
    FILE* list = channel.openFile(kWorkFile);
    if (list == nullptr) {
        return std::nullopt;
    }
    const ListPlace place = findPlace(list, name);
    closeWorkFile(channel);
    return place;
}

/// Takes the property from the line of the user list for a position.
/// @return nothing if there is no such line
std::optional<Property> askUserList(Channel& channel, int standing)
{
    if (getUsersList(kWorkFile) != 0) {
        return std::nullopt;
    }
    FILE* list = channel.openFile(kWorkFile);
    if (list == nullptr) {
        return std::nullopt;
    }
    ShortLine line;
    const bool isRead = readLines(list, line, standing + 2);
    std::optional<Property> property;
    if (isRead) {
        dbg_trace("cmd_gspc %s: ", line.data());
        property = contains(line.data(), "return [\"full") ? Property::kPublic : Property::kPrivate;
    }
    closeWorkFile(channel);
    return property;
}

std::optional<Property> askProperty(Channel& channel, const char* name)
{
    if (!isShareName(name)) {
        return std::nullopt;
    }
    const std::optional<ListPlace> place = askWebHook(channel, name);
    if (!place) {
        return std::nullopt;
    }
    const Property property = place->isFound ? Property::kPrivate : Property::kNone;
    dbg_trace("cmd_gspc share name: %s -- standing: %d -- share Property: %d", name,
              place->standing, static_cast<int>(property));
    return place->isFound ? askUserList(channel, place->standing) : property;
}

Status answerHookedProperty(Channel& channel)
{
    const ShareName name = takeCountedName(channel);
    dbg_trace("cmd_gspc pShareName: %s", name.data());
    const std::optional<Property> property = askProperty(channel, name.data());
    if (!property) {
        return kSharePropertyUnknown;
    }
    std::array<char, cmdsvc::kHeaderSize> answer = {};
    core::formatBounded(answer, "%s%c\n", channel.tag().data(), static_cast<int>(*property));
    const std::size_t written = channel.write({answer.data(), answer.size()});
    dbg_trace("cmd_gspc fwrite: %s - %d - return %d", answer.data(), static_cast<int>(*property),
              static_cast<int>(written));
    return kGood;
}

} // namespace
} // namespace handlers

void cmd_gsp1(void)
{
    cmdsvc::serve(cmdsvc::command("gsp1"), handlers::answerListedProperty);
}

void cmd_gspc(void)
{
    cmdsvc::serve(cmdsvc::command("gspc"), handlers::answerHookedProperty);
}
