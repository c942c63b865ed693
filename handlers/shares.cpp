// SPDX-License-Identifier: MIT
#include "handlers/shares.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <unistd.h>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"
#include "handlers/name_list.h"
#include "handlers/users.h"
#include "sharestatus/sharestatus.h"

namespace handlers {
namespace {

using cmdsvc::kWorkFile;
using cmdsvc::requestLine;

using Line = std::array<char, 512>;

constexpr const char* kPublicShareVariable = "pel_pubshare_name";
/// What a share is, as it travels.
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

/// Writes the start of the request line as the answer, or as a part of it.
/// @return the number of bytes written
int writeRequestLine(std::size_t offset, std::size_t size)
{
    return static_cast<int>(std::fwrite(&requestLine[offset], 1, size, fout_buf));
}

constexpr NameSearch kShareSearch = {
    .operation = "isShareNameExisted",
    .ignoresCase = true,
    .traceList =
        [](const char* list, const char* needle) {
            dbg_trace("isShareNameExisted() share return:%s -- shareName:%s", list, needle);
        },
    .traceResult = [](int found) { dbg_trace("isShareNameExisted() return: %d", found); },
};

/// Has the share script write its listing into a file, on behalf of a command.
bool fetchListing(const char* command, const char* path)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovGetShareList %s", core::kShareScript, path);
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("%s: system(%s) -- iRet: %d", command, line.data(), run.result);
    return core::succeeded(run);
}

/// Opens a listing in the current-file slot; without one, ends with an error.
FILE* openListing(const char* path)
{
    FILE* listing = cmdsvc::openCurrentFile(path);
    if (listing == nullptr) {
        dbg_trace("cannot open file %s: %s", path, std::strerror(errno));
        std::remove(path);
        cmdsvc::endWithError(cmdsvc::kCannotOpen);
    }
    return listing;
}

// ---- gsp1 -------------------------------------------------------------------------------------

/// Looks through a listing for the last block that holds a name anywhere.
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

/// Reads the share's name into the request line.
bool readShareName()
{
    cmdsvc::readParameterLine();
    cmdsvc::cutNewline();
    dbg_trace("cmd_gspc pShareName: %s", requestLine.data());
    if (!isShareName(requestLine.data())) {
        cmdsvc::endWithWord(cmdsvc::kBadShareName);
        return false;
    }
    return true;
}

std::optional<Property> lookUpProperty(const char* path)
{
    if (!fetchListing("cmd_gsp1", path)) {
        cmdsvc::endWithError(cmdsvc::kCommandFailed);
        return std::nullopt;
    }
    FILE* listing = openListing(path);
    if (listing == nullptr) {
        return std::nullopt;
    }
    const Property property = findProperty(listing, requestLine.data());
    cmdsvc::closeCurrentFile();
    if (std::remove(path) != 0) {
        dbg_trace("cmd_gsp1() cannot remove file %s: %s", path, std::strerror(errno));
        cmdsvc::endWithError(cmdsvc::kCannotRemoveListing);
        return std::nullopt;
    }
    return property;
}

/// Puts an answer's header into the request line, zeros behind it.
void putHeader(std::string_view tag)
{
    requestLine.fill('\0');
    core::formatBounded(requestLine, "%.4s ", tag.data());
    core::putU32(std::span(requestLine).subspan<cmdsvc::kCountOffset, cmdsvc::kWordSize>(), 1);
    requestLine[cmdsvc::kHeaderSize - 1] = '\n';
}

void answerProperty(Property property)
{
    putHeader("gspr");
    requestLine[cmdsvc::kHeaderSize] = static_cast<char>(property);
    requestLine[cmdsvc::kHeaderSize + 1] = '\n';
    const int written = writeRequestLine(0, cmdsvc::kHeaderSize + 2);
    dbg_trace("cmd_gsp1 fwrite: %s - %d - return %d", requestLine.data(),
              static_cast<int>(property), written);
}

// ---- gspc -------------------------------------------------------------------------------------

/// Where the name of a gspc request stands: its length, and then the name.
constexpr std::size_t kLengthOffset = 5;
constexpr std::size_t kNameOffset = kLengthOffset + 1;

/// What is read of a line of the web hook's list and of the user list, the terminator counted.
using ShortLine = std::array<char, 255>;

/// Where the web hook's list has a share.
struct Place {
    bool isFound = true;
    int standing = 0;
};

/// Ends the name in the request line, as its length says.
const char* takeName()
{
    const std::size_t size = core::byteOf(requestLine[kLengthOffset]);
    if (size == '\n') {
        // The line has ended at its length. The rest of it goes where it has always gone, over the
        // length, so that the name is one byte off.
        [[maybe_unused]] const char* const rest = std::fgets(
            &requestLine[kLengthOffset], static_cast<int>(requestLine.size() - kLengthOffset),
            cmdsvc::requestStream());
    }
    requestLine[kNameOffset + size] = '\0';
    return &requestLine[kNameOffset];
}

/// Finds a share in the first line of the web hook's list. A list without any line has every share.
Place findPlace(FILE* list, const char* name)
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

/// Reads as many lines of a list; the last one is left.
bool readLines(FILE* list, ShortLine& line, int count)
{
    for (; count > 0; --count) {
        if (!core::readLine(list, line)) {
            return false;
        }
    }
    return true;
}

void closeWorkFile()
{
    cmdsvc::closeCurrentFile();
    core::removeWorkFile(kWorkFile);
}

/// Asks the web hook for the place of a share.
/// @return nothing when that fails
std::optional<Place> askWebHook(const char* name)
{
    core::CommandLine line;
    core::formatBounded(line, "echo share_info | runwebhooks | grep return > %s", kWorkFile);
    if (core::runShellLine(line.data()).result == -1) {
        return std::nullopt;
    }
    FILE* list = cmdsvc::openCurrentFile(kWorkFile);
    if (list == nullptr) {
        return std::nullopt;
    }
    const Place place = findPlace(list, name);
    closeWorkFile();
    return place;
}

/// Takes the property from the line of the user list that belongs to a place.
/// @return nothing when there is no such line
std::optional<Property> askUserList(int standing)
{
    if (getUsersList(kWorkFile) != 0) {
        return std::nullopt;
    }
    FILE* list = cmdsvc::openCurrentFile(kWorkFile);
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
    closeWorkFile();
    return property;
}

std::optional<Property> askProperty(const char* name)
{
    if (!isShareName(name)) {
        return std::nullopt;
    }
    const std::optional<Place> place = askWebHook(name);
    if (!place) {
        return std::nullopt;
    }
    const Property property = place->isFound ? Property::kPrivate : Property::kNone;
    dbg_trace("cmd_gspc share name: %s -- standing: %d -- share Property: %d", name,
              place->standing, static_cast<int>(property));
    return place->isFound ? askUserList(place->standing) : property;
}

// ---- lsts -------------------------------------------------------------------------------------

/// The text behind an opening tag of "<shareproperty>" that is indented by two; empty where the
/// line is shorter than that.
const char* propertyIn(const char* line)
{
    constexpr std::size_t kTextOffset = 2 + std::string_view("<shareproperty>").size();
    return line + std::min(kTextOffset, std::strlen(line));
}

/// Answers the name and the property of each share whose property line comes right behind its name
/// line.
void reportShares(FILE* listing)
{
    constexpr std::string_view kNameOpen = "<sharename>";
    Line line;
    Line name = {};
    while (core::readLine(listing, line)) {
        if (char* close = std::strstr(line.data(), "</sharename>")) {
            *close = '\0';
            if (const char* open = std::strstr(line.data(), kNameOpen.data())) {
                core::formatBounded(name, "%s", open + kNameOpen.size());
            }
        } else if (char* end = std::strstr(line.data(), "</shareproperty>")) {
            *end = '\0';
            if (name[0] != '\0') {
                std::fprintf(fout_buf, "%s\n%s\n", name.data(), propertyIn(line.data()));
            }
        } else {
            name[0] = '\0';
        }
    }
}

/// Closes the listing and removes it, or ends with an error.
bool dropListing(const char* path)
{
    if (!cmdsvc::closeCurrentFile()) {
        dbg_trace("cannot close file %s: %s", path, std::strerror(errno));
        cmdsvc::endWithError(cmdsvc::kCannotClose);
        return false;
    }
    if (std::remove(path) != 0) {
        // The file that is named is one of former times; the message has been kept.
        dbg_trace("cannot remove file %s: %s", "/etc/pelconfig/vokcontrol/lsts_data_file1",
                  std::strerror(errno));
        cmdsvc::endWithError(cmdsvc::kCannotRemove);
        return false;
    }
    return true;
}

/// Leaves the listing in the work file of the command, or ends with an error.
/// @return the number of internal shares, or a negative number
int fetchShares(const char* path)
{
    if (share_info(path) < 0 || !fetchListing("cmd_lsts", path)) {
        cmdsvc::endWithError(cmdsvc::kCommandFailed);
        return -1;
    }
    const int count = share_info(kWorkFile);
    if (count < 0) {
        dbg_trace("cmd_lsts: number of user: %d", count);
        cmdsvc::endWithError(cmdsvc::kCommandFailed);
    }
    return count;
}

} // namespace
} // namespace handlers

int isShareNameExisted(const char* name)
{
    const core::WorkFileName path = core::workFileName("isShareNameExisted");
    if (share_info(path.data()) < 0) {
        return -1;
    }
    return handlers::searchNameList(path.data(), name, handlers::kShareSearch);
}

void cmd_gps1(void)
{
    using namespace handlers;

    putHeader("gpsr");
    const std::span<char> line = std::span(requestLine).subspan(cmdsvc::kHeaderSize);
    core::formatBounded(line, "%s\n", getvar(kPublicShareVariable));
    const int written = writeRequestLine(0, cmdsvc::kHeaderSize) +
                        writeRequestLine(cmdsvc::kHeaderSize, std::strlen(line.data()));
    dbg_trace("cmd_gps1 fwrite %d: %s", written, requestLine.data());
}

void cmd_gpsn(void)
{
    using namespace handlers;

    constexpr std::string_view kAnswer = "gpsn ";
    core::formatBounded(requestLine, "%s", kAnswer.data());
    getvar(kPublicShareVariable);
    const int written = writeRequestLine(0, kAnswer.size());
    dbg_trace("cmd_gpsn fwrite %d: %s", written, requestLine.data());
}

void cmd_gsp1(void)
{
    using namespace handlers;

    Line path;
    core::formatBounded(path, "%s%d", kWorkFile, ::getpid());
    dbg_trace("get share property enter..%d", 0);
    if (!readShareName()) {
        return;
    }
    const std::optional<Property> property = lookUpProperty(path.data());
    if (property) {
        answerProperty(*property);
    }
}

void cmd_gspc(void)
{
    using namespace handlers;

    const char* name = takeName();
    dbg_trace("cmd_gspc pShareName: %s", name);
    const std::optional<Property> property = askProperty(name);
    if (!property) {
        SendReturnStatus(cmdsvc::kSharePropertyUnknown, "gspc");
        return;
    }
    requestLine.fill('\0');
    core::formatBounded(requestLine, "gspc %c\n", static_cast<int>(*property));
    const int written = writeRequestLine(0, cmdsvc::kHeaderSize);
    dbg_trace("cmd_gspc fwrite: %s - %d - return %d", requestLine.data(),
              static_cast<int>(*property), written);
}

void cmd_lsts(void)
{
    using namespace handlers;

    const core::WorkFileName path = core::workFileName("cmd_lsts");
    const int count = fetchShares(path.data());
    if (count < 0) {
        return;
    }
    cmdsvc::writeHeader("lsst", static_cast<std::uint32_t>(count));
    FILE* listing = openListing(path.data());
    if (listing == nullptr) {
        return;
    }
    reportShares(listing);
    if (dropListing(path.data())) {
        dbg_trace("cmd_lsts return: number of user: %d", count);
    }
}
