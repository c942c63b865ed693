// SPDX-License-Identifier: MIT
//
// The list of internal shares, from the listing of the share script.
#include "sharestatus/sharestatus.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "core/core.h"

namespace {

constexpr std::string_view kNameOpen = "<sharename>";
constexpr std::string_view kNameClose = "</sharename>";
constexpr std::string_view kEmptyName = "ame></sh";
constexpr std::string_view kInternal = "<sharelocation>int";

/// Has the share script write its listing into a file.
bool fetchListing(const char* listing)
{
    core::CommandLine command;
    core::formatBounded(command, "%s tovGetShareList %s", core::kShareScript, listing);
    dbg_trace("share_info sys(%s)", command.data());
    const core::ShellRun run = core::runShellLine(command.data());
    if (!core::succeeded(run) && !core::reapedElsewhere(run)) {
        dbg_trace("share_info: failed system(%s) iRet:%d (error: %s)", command.data(), run.result,
                  std::strerror(run.error));
        return false;
    }
    return true;
}

/// Copies the name from a line that holds a name element; an empty element changes nothing.
void takeName(char* line, std::span<char> name)
{
    if (std::strstr(line, kEmptyName.data()) != nullptr) {
        return;
    }
    const char* open = std::strstr(line, kNameOpen.data());
    *std::strstr(line, kNameClose.data()) = '\0';
    core::formatBounded(name, "%s", open + kNameOpen.size());
}

bool holdsName(const char* line)
{
    return std::strstr(line, kNameClose.data()) != nullptr &&
           std::strstr(line, kNameOpen.data()) != nullptr;
}

/// Writes the fragment for a listing.
/// @return the number of shares written
int writeFragment(FILE* listing, FILE* fragment)
{
    int count = 0;
    std::array<char, core::kCommandSize> name{};
    core::CommandLine line;
    while (core::readLine(listing, line)) {
        if (holdsName(line.data())) {
            takeName(line.data(), name);
        } else if (std::strstr(line.data(), kInternal.data()) != nullptr) {
            std::fprintf(fragment, (count == 0) ? "return [\"%s\"" : "\"%s\"", name.data());
            dbg_trace("share_info() -- found share:%s", name.data());
            name[0] = '\0';
            ++count;
        }
    }
    std::fputs((count > 0) ? "];" : "return [];\n", fragment);
    return count;
}

} // namespace

int share_info(const char* path)
{
    const core::WorkFileName listing = core::workFileName("share_info");
    if (!fetchListing(listing.data())) {
        return -1;
    }

    core::File in = core::openFile(listing.data(), "r");
    int openError = in ? 0 : errno;
    core::File out = core::openFile(path, "w");
    openError = out ? openError : errno;
    if (!in || !out) {
        dbg_trace("share_info() cannot open file: %s or file: %s (error: %s)", listing.data(), path,
                  std::strerror(openError));
        return -1;
    }

    const int count = writeFragment(in.get(), out.get());
    in.reset();
    out.reset();
    std::remove(listing.data());
    dbg_trace("share_info() return from share_info %d", count);
    return count;
}
