// SPDX-License-Identifier: MIT
#include "handlers/shares.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "handlers/handler.h"
#include "handlers/name_list.h"
#include "handlers/share_listing.h"
#include "sharestatus/sharestatus.h"

namespace handlers {
namespace {

using Line = std::array<char, 512>;

constexpr const char* kPublicShareVariable = "pel_pubshare_name";

constexpr NameSearch kShareSearch = {
    .operation = "isShareNameExisted",
    .ignoresCase = true,
    .traceList =
        [](const char* list, const char* needle) {
            dbg_trace("isShareNameExisted() share return:%s -- shareName:%s", list, needle);
        },
    .traceResult = [](int found) { dbg_trace("isShareNameExisted() return: %d", found); },
};

// ---- gps1, gpsn -------------------------------------------------------------------------------

Status answerPublicShare(Channel& channel)
{
    std::array<char, core::kLineSize> line;
    core::formatBounded(line, "%s\n", getvar(kPublicShareVariable));
    const cmdsvc::HeaderBytes header = channel.header(1);
    const std::size_t written = channel.writeHeader(1) + channel.write(line.data());
    // As a text, the header ends at the first zero byte of the count.
    dbg_trace("cmd_gps1 fwrite %d: %s", static_cast<int>(written), header.data());
    return kGood;
}

Status answerTagAlone(Channel& channel)
{
    getvar(kPublicShareVariable);
    const std::size_t written = channel.write(channel.tag());
    dbg_trace("cmd_gpsn fwrite %d: %s", static_cast<int>(written), channel.tag().data());
    return kGood;
}

// ---- lsts -------------------------------------------------------------------------------------

/// The text after the tag "<shareproperty>" if it is indented by two; empty if the line is shorter
/// than that.
const char* propertyIn(const char* line)
{
    constexpr std::size_t kTextOffset = 2 + std::string_view("<shareproperty>").size();
    return line + std::min(kTextOffset, std::strlen(line));
}

/// Answers the name and the property of each share whose property line directly follows its name
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

Status removeListing(const char* path)
{
    if (std::remove(path) != 0) {
        // The trace names another file than the one removed; its text is part of the interface.
        dbg_trace("cannot remove file %s: %s", "/etc/pelconfig/vokcontrol/lsts_data_file1",
                  std::strerror(errno));
        return kCannotRemove;
    }
    return kGood;
}

Status closeListing(Channel& channel, const char* path)
{
    if (!channel.closeFile()) {
        dbg_trace("cannot close file %s: %s", path, std::strerror(errno));
        return kCannotClose;
    }
    return removeListing(path);
}

/// Writes the listing to a file, and the list of the internal shares to the work file.
/// @param count  takes the number of internal shares
Status fetchShares(const char* path, int& count)
{
    if (share_info(path) < 0 || !fetchShareListing("cmd_lsts", path)) {
        return kCommandFailed;
    }
    count = share_info(kWorkFile);
    if (count < 0) {
        dbg_trace("cmd_lsts: number of user: %d", count);
        return kCommandFailed;
    }
    return kGood;
}

/// An error is written after the lines that are answered already.
Status answerShares(Channel& channel, const char* path, int count)
{
    channel.writeHeader(static_cast<std::uint32_t>(count));
    FILE* listing = openShareListing(channel, path);
    if (listing == nullptr) {
        return kCannotOpen;
    }
    reportShares(listing);
    const Status status = closeListing(channel, path);
    if (status == kGood) {
        dbg_trace("cmd_lsts return: number of user: %d", count);
    }
    return status;
}

Status listShares(Channel& channel)
{
    const core::WorkFileName path = core::workFileName("cmd_lsts");
    int count = 0;
    const Status status = fetchShares(path.data(), count);
    return (status == kGood) ? answerShares(channel, path.data(), count) : status;
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
    cmdsvc::serve(cmdsvc::command("gps1"), handlers::answerPublicShare);
}

void cmd_gpsn(void)
{
    cmdsvc::serve(cmdsvc::command("gpsn"), handlers::answerTagAlone);
}

void cmd_lsts(void)
{
    cmdsvc::serve(cmdsvc::command("lsts"), handlers::listShares);
}
