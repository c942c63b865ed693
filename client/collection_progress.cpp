// SPDX-License-Identifier: MIT
#include "client/collection_progress.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

#include "view/processes.h"
#include "view/terminal_text.h"
#include "view/wording.h"

namespace client {
namespace {

constexpr const char* kClearLine = "\r\x1B[K";

/// ", 3 of 8 shares"
std::string formatPlace(const std::string& share, const std::vector<view::ShareRow>& shares)
{
    const auto row = std::ranges::find(shares, share, &view::ShareRow::name);
    if (row == shares.end()) {
        return "";
    }
    return ", " + std::to_string(row - shares.begin() + 1) + " of " +
           view::formatCount(shares.size(), "share", "shares");
}

std::string formatStart(std::optional<std::time_t> since)
{
    if (!since) {
        return "";
    }
    std::tm local = {};
    ::localtime_r(&*since, &local);
    return view::formatTime(", since %H:%M:%S", local);
}

} // namespace

std::string formatProgress(const view::Collector& collector, const view::PublishedStatus& status)
{
    if (collector.share.empty()) {
        return "Collecting" + formatStart(status.collectingSince);
    }
    return "Measuring " + view::makePrintable(collector.share).text +
           formatPlace(collector.share, status.shares) + formatStart(status.collectingSince);
}

ProgressLine::ProgressLine() : isTerminal_(::isatty(STDERR_FILENO) != 0) {}

ProgressLine::~ProgressLine()
{
    if (!shown_.empty()) {
        std::cerr << kClearLine << std::flush;
    }
}

void ProgressLine::show(const view::PublishedStatus& status)
{
    if (!isTerminal_) {
        return;
    }
    const view::Collector collector = view::findCollector(view::listProcesses());
    const std::string line = status.isCollecting ? formatProgress(collector, status) : "";
    if (line != shown_) {
        std::cerr << kClearLine << line << std::flush;
        shown_ = line;
    }
}

} // namespace client
