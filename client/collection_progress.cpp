// SPDX-License-Identifier: MIT
#include "client/collection_progress.h"

#include <iostream>
#include <unistd.h>

#include "view/processes.h"
#include "view/terminal_text.h"
#include "view/wording.h"

namespace client {
namespace {

constexpr const char* kClearLine = "\r\x1B[K";

/// ", 3 of 8 shares"
std::string formatPlace(const view::Progress& progress)
{
    if (progress.place == 0) {
        return "";
    }
    return ", " + std::to_string(progress.place) + " of " +
           view::formatCount(progress.count, "share", "shares");
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

std::string formatProgress(const view::Progress& progress)
{
    if (progress.share.empty()) {
        return "Collecting" + formatStart(progress.since);
    }
    return "Measuring " + view::makePrintable(progress.share).text + formatPlace(progress) +
           formatStart(progress.since);
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
    const std::string line =
        status.isCollecting ? formatProgress(view::findProgress(collector, status)) : "";
    if (line != shown_) {
        std::cerr << kClearLine << line << std::flush;
        shown_ = line;
    }
}

} // namespace client
