// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <charconv>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>

#include "client/commands.h"
#include "client/failure.h"
#include "client/history_report.h"
#include "history/reader.h"
#include "history/store.h"
#include "text/translation.h"
#include "view/capacity.h"
#include "view/published_status.h"

namespace client {
namespace {

using text::fill;
using text::tr;

using history::DatabaseError;
using Kind = DatabaseError::Kind;

struct HistoryOptions {
    std::string share;
    std::chrono::days since{30};
    bool json = false;
    bool csv = false;
    bool remember = false;
};

/// "90d", "12w", "5y". @return why it is none; nothing if it is one
std::string readSince(const std::string& text, std::chrono::days& days)
{
    unsigned number = 0;
    const char* end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    const bool hasUnit = error == std::errc() && next + 1 == end;
    const unsigned unit = !hasUnit       ? 0
                          : *next == 'd' ? 1
                          : *next == 'w' ? 7
                          : *next == 'y' ? 365
                                         : 0;
    if (unit == 0 || number == 0 || number > 36500 / unit) {
        return tr("--since needs a number of days, weeks or years, such as 90d, 12w or 5y.");
    }
    days = std::chrono::days(number * unit);
    return "";
}

// ---- Remembering --------------------------------------------------------------------------------

/// Why the history has stopped, for who can do something about it.
Failure describeStop(const DatabaseError& error)
{
    switch (error.kind()) {
    case Kind::kNoSpace:
        return {kFailed,
                fill(tr("the history has stopped, because its disk is full; everything else goes "
                        "on. Free some space: the next status is remembered again: {}"),
                     {error.what()})};
    case Kind::kNotAllowed:
        return {kNotPermitted, fill(tr("only root can write the history: {}"), {error.what()})};
    default:
        return {kFailed, fill(tr("the status has not been remembered: {}"), {error.what()})};
    }
}

void remember(const view::PublishedStatus& status)
{
    try {
        const auto result =
            history::Store(history::kFile)
                .remember(history::makeEntry(status, view::readCapacity()), std::time(nullptr));
        if (result == history::Remembered::kBegunAnew) {
            std::cerr << "vokctl: "
                      << fill(tr("the history was damaged. The file is now {}, and a new history "
                                 "has begun."),
                              {std::string(history::kFile) + history::kAside})
                      << "\n";
        }
    } catch (const DatabaseError& error) {
        throw describeStop(error);
    }
}

void rememberPublished()
{
    using enum view::PublishedStatus::Result;
    const view::PublishedStatus status = view::readPublishedStatus();
    switch (status.result) {
    case kNone: // What has not been published yet will be.
        break;
    case kDamaged:
        throw Failure(kNoData, tr("the share status is damaged, so it has not been remembered"));
    case kNoList:
    case kComplete:
        remember(status);
        break;
    }
}

// ---- Looking ------------------------------------------------------------------------------------

Failure describeUnread(const DatabaseError& error)
{
    switch (error.kind()) {
    case Kind::kNoDatabase:
        return {kNoData,
                tr("there is no history yet; it begins with the next status that is published")};
    case Kind::kNotAllowed:
        return {kNotPermitted, fill(tr("cannot read {1}: {2}. Try again as root."),
                                    {history::kFile, error.what()})};
    case Kind::kDamaged:
        return {kNoData, tr("the history is damaged; the next status that is published begins a "
                            "new one")};
    default:
        return {kNoData, fill(tr("cannot read {1}: {2}"), {history::kFile, error.what()})};
    }
}

HistoryView viewOf(const HistoryOptions& options)
{
    const view::PublishedStatus status = view::readPublishedStatus();
    const bool isPublished = status.published != 0;
    return {.now = std::time(nullptr),
            .days = options.since,
            .published = isPublished ? std::optional(status.published) : std::nullopt};
}

std::string renderAll(const history::Reader& reader, const HistoryOptions& options)
{
    const HistoryView asked = viewOf(options);
    if (options.csv) {
        return renderHistoryCsv(reader, asked);
    }
    return options.json ? renderHistoryJson(reader, asked) : renderHistory(reader, asked);
}

std::string renderOne(const history::Reader& reader, const HistoryOptions& options)
{
    const auto share = reader.share(options.share);
    if (!share) {
        throw Failure(kNoData, tr("the history has no share of that name"));
    }
    const HistoryView asked = viewOf(options);
    if (options.csv) {
        return renderHistoryCsv(reader, *share, asked);
    }
    return options.json ? renderHistoryJson(reader, *share, asked)
                        : renderHistory(reader, *share, asked);
}

void show(const HistoryOptions& options)
{
    try {
        const history::Reader reader(history::kFile);
        std::cout << (options.share.empty() ? renderAll(reader, options)
                                            : renderOne(reader, options));
    } catch (const DatabaseError& error) {
        throw describeUnread(error);
    }
}

} // namespace

void buildHistoryCommand(CLI::App& command)
{
    const auto options = std::make_shared<HistoryOptions>();
    command.add_option("SHARE", options->share, "Only this share, with its course");
    command
        .add_option_function<std::string>(
            "--since", [options](const std::string& text) { readSince(text, options->since); },
            "How far back: days, weeks or years, such as 90d, 12w or 5y; 30d")
        ->type_name("TIME")
        ->check([options](const std::string& text) {
            std::chrono::days days{};
            return readSince(text, days);
        });
    CLI::Option* json = command.add_flag("--json", options->json, "Print JSON for programs");
    command.add_flag("--csv", options->csv, "Print comma-separated values")->excludes(json);
    command.add_flag("--remember", options->remember,
                     "Show nothing; put the published status into the history, once");
    command.footer(
        "Examples:\n"
        "  vokctl history                      how the disk and all shares have changed\n"
        "  vokctl history Media --since 1y     one share's course\n"
        "  vokctl history Media --since 5y --csv >media.csv\n"
        "\n"
        "A change is not known if the history does not reach so far back, and \"no change\"\n"
        "if it is less than the unit of the sizes. All entries of 30 days are kept, one a\n"
        "day for two years, one a week for ever. Ends with 6 when there is no history, or\n"
        "no such share in it.");
    command.callback([options] { options->remember ? rememberPublished() : show(*options); });
}

} // namespace client
