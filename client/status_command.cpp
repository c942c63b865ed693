// SPDX-License-Identifier: MIT
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>

#include "client/commands.h"
#include "client/failure.h"
#include "client/status_report.h"
#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"
#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trn;

using view::PublishedStatus;
using Clock = std::chrono::steady_clock;

struct StatusOptions {
    std::string file = config::kDefaultFile;
    bool json = false;
    bool watch = false;
    std::optional<unsigned> maxAge;
    unsigned wait = 0;
};

/// Why there is nothing to show; kGood if there is a status.
struct Complaint {
    ExitCode code = kGood;
    std::string words;
};

Complaint complainOfFile(const char* path, int error)
{
    if (error == ENOENT) {
        return {kNoData, tr("no share status has been published yet. Start a collection with "
                            "\"vokctl collect\", then try again.")};
    }
    if (error == EACCES || error == EPERM) {
        return {kNotPermitted,
                fill(tr("cannot read {1}: {2}. Try again as root."), {path, std::strerror(error)})};
    }
    return {kNoData, fill(tr("cannot read {1}: {2}"), {path, std::strerror(error)})};
}

Complaint judgeAge(std::time_t published, std::optional<unsigned> maxAge)
{
    const std::time_t age = std::time(nullptr) - published;
    if (!maxAge || age <= static_cast<std::time_t>(*maxAge)) {
        return {};
    }
    return {kNoData,
            fill(trn("the share status is {} second old, more than --max-age allows. Start "
                     "a collection with \"vokctl collect\", then try again.",
                     "the share status is {} seconds old, more than --max-age allows. "
                     "Start a collection with \"vokctl collect\", then try again.",
                     static_cast<std::uint64_t>(age)),
                 {std::to_string(age)})};
}

Complaint judge(const PublishedStatus& status, const StatusOptions& options)
{
    if (status.semaphoreError != 0) {
        return complainOfFile(sharestatus::kSemaphoreFile, status.semaphoreError);
    }
    if (status.error != 0) {
        return complainOfFile(sharestatus::kStatusFile, status.error);
    }
    if (status.result == PublishedStatus::Result::kDamaged) {
        return {kNoData, tr("the share status is damaged. Start a collection with \"vokctl "
                            "collect\", then try again.")};
    }
    return judgeAge(status.published, options.maxAge);
}

/// Why --wait has to go on; kGood if it is over.
Complaint judgeWaitedFor(const PublishedStatus& status, const StatusOptions& options)
{
    Complaint complaint = judge(status, options);
    if (options.wait > 0 && complaint.code == kGood && status.isCollecting) {
        complaint = {kNoAnswer,
                     tr("the collection is still running. Wait longer, or see without --wait "
                        "what was last published.")};
    }
    return complaint;
}

/// With --wait, reads until there is a status and no collection runs; otherwise reads once.
PublishedStatus awaitStatus(const StatusOptions& options)
{
    constexpr std::chrono::milliseconds kPause{20};
    const auto end = Clock::now() + std::chrono::seconds(options.wait);
    while (true) {
        PublishedStatus status = view::readPublishedStatus();
        const Complaint complaint = judgeWaitedFor(status, options);
        if (complaint.code == kGood) {
            return status;
        }
        if (complaint.code == kNotPermitted || Clock::now() >= end) {
            const bool isLate = options.wait > 0 && complaint.code != kNotPermitted;
            throw Failure(isLate ? kNoAnswer : complaint.code, complaint.words);
        }
        std::this_thread::sleep_for(kPause);
    }
}

/// A text that overwrites the last one: each line is cleared to its end, and then the rest.
std::string redraw(const std::string& text)
{
    std::string out = "\x1B[H";
    for (const char c : text) {
        out += (c == '\n') ? "\x1B[K\n" : std::string(1, c);
    }
    return out + "\x1B[J";
}

/// The output of --watch at this moment.
std::string renderNow(const StatusOptions& options, const config::Configuration& configuration)
{
    const view::Situation situation = view::readSituation();
    const Complaint complaint = judge(situation.status, options);
    return (complaint.code == kGood) ? renderTable(situation, configuration)
                                     : complaint.words + "\n";
}

[[noreturn]] void watch(const StatusOptions& options)
{
    constexpr std::chrono::seconds kPause{1};
    if (::isatty(STDOUT_FILENO) == 0) {
        throw Failure(kWrongUsage, tr("--watch needs a terminal as standard output"));
    }
    const config::Configuration configuration = config::read(options.file);
    std::cout << "\x1B[2J";
    while (std::cout << redraw(renderNow(options, configuration)) << std::flush) {
        std::this_thread::sleep_for(kPause);
    }
    throw Failure(kFailed, tr("cannot write to standard output"));
}

void runStatus(const StatusOptions& options)
{
    if (options.watch) {
        watch(options);
    }
    const config::Configuration configuration = config::read(options.file);
    const view::Situation situation = view::readSituation(awaitStatus(options));
    std::cout << (options.json ? renderJson(situation, configuration)
                               : renderTable(situation, configuration));
    if (situation.status.result == PublishedStatus::Result::kNoList) {
        throw Failure(kNoData, tr("the last collection could not get the list of shares"));
    }
}

} // namespace

void buildStatusCommand(CLI::App& command)
{
    const auto options = std::make_shared<StatusOptions>();
    CLI::Option* json = command.add_flag("--json", options->json, "Print JSON for programs");
    command
        .add_option("--max-age", options->maxAge,
                    "End with 6 if the status was published longer ago than this")
        ->type_name("SECONDS");
    command
        .add_option("--wait", options->wait,
                    "Wait at most this long for a status and for the end of a collection")
        ->type_name("SECONDS");
    command.add_flag("--watch", options->watch, "Show it again each second, until you end it")
        ->excludes(json);
    command.add_option("--config", options->file, "The file with the settings")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl status                  what was last published\n"
        "  vokctl status --max-age 3600   only if it is less than an hour old\n"
        "  vokctl status --watch          as it changes\n"
        "  vokctl status --json           for programs\n"
        "\n"
        "STATE is the digit that the backup client reported, with its word from the\n"
        "settings; \"-\" means not known. What needs attention is at the end. Ends with 0 if\n"
        "there is a status, 4 if you may not read the files, 5 if the time of --wait runs\n"
        "out, 6 if there is no status, or if it is damaged or too old.");
    command.callback([options] { runStatus(*options); });
}

} // namespace client
