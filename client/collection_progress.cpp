// SPDX-License-Identifier: MIT
#include "client/collection_progress.h"

#include <iostream>
#include <unistd.h>

#include "text/translation.h"
#include "view/processes.h"
#include "view/terminal_text.h"
#include "view/wording.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trc;

constexpr const char* kClearLine = "\r\x1B[K";

std::string formatStart(std::time_t since)
{
    std::tm local = {};
    ::localtime_r(&since, &local);
    return view::formatTime("%H:%M:%S", local);
}

/// Without the time of the start.
std::string formatPlace(const view::Progress& progress)
{
    const std::string share = view::makePrintable(progress.share).text;
    if (share.empty()) {
        return tr("Collecting");
    }
    if (progress.place == 0) {
        return fill(tr("Measuring {}"), {share});
    }
    return fill(tr("Measuring {1}, share {2} of {3}"),
                {share, std::to_string(progress.place), std::to_string(progress.count)});
}

} // namespace

std::string formatProgress(const view::Progress& progress)
{
    const std::string place = formatPlace(progress);
    return progress.since ? fill(trc("what is done, and since when", "{1}, since {2}"),
                                 {place, formatStart(*progress.since)})
                          : place;
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
