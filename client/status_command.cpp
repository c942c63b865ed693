// SPDX-License-Identifier: MIT
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "client/commands.h"
#include "client/failure.h"
#include "client/file_start.h"
#include "client/status_report.h"
#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"

namespace client {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{20};
// The file is blank for a moment while it is rewritten; nobody needs to hear of that.
constexpr std::chrono::milliseconds kRewriteTime{200};

constexpr const char* kAdvice = "Start a collection with \"startapp pelstatus\", then try again.";

struct StatusOptions {
    bool json = false;
    std::optional<unsigned> maxAge;
    unsigned wait = 0;
};

/// A report, or why there is none.
struct Outcome {
    std::optional<StatusReport> report;
    ExitCode code = kGood;
    std::string complaint;
    bool mayPass = false; ///< whether the next look may well find better
};

Outcome complain(ExitCode code, const std::string& complaint)
{
    return {.report = std::nullopt, .code = code, .complaint = complaint};
}

Outcome complainOfDamage()
{
    Outcome outcome = complain(kNoData, std::string("the share status is damaged. ") + kAdvice);
    outcome.mayPass = true;
    return outcome;
}

Outcome complainOfFile(const char* path, int error)
{
    if (error == ENOENT) {
        return complain(kNoData, std::string("no share status has been published yet. ") + kAdvice);
    }
    const std::string reason = std::string("cannot read ") + path + ": " + std::strerror(error);
    if (error == EACCES || error == EPERM) {
        return complain(kNotPermitted, reason + ". Try again as root.");
    }
    return complain(kNoData, reason);
}

bool isCollecting(std::string_view semaphore)
{
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    return sharestatus::decodeSemaphore(semaphore).isBusyAt(now);
}

Outcome judgeAge(Outcome outcome, std::optional<unsigned> maxAge)
{
    const std::time_t age = std::time(nullptr) - outcome.report->published;
    if (!maxAge || age <= static_cast<std::time_t>(*maxAge)) {
        return outcome;
    }
    return complain(kNoData, "the share status is " + std::to_string(age) +
                                 " seconds old, more than --max-age allows. " + kAdvice);
}

/// Looks at the files once.
Outcome readStatus(const StatusOptions& options)
{
    const FileStart mark = readFileStart(sharestatus::kSemaphoreFile, sharestatus::kSemaphoreSize);
    if (mark.error != 0 && mark.error != ENOENT) {
        return complainOfFile(sharestatus::kSemaphoreFile, mark.error);
    }
    const FileStart file = readFileStart(sharestatus::kStatusFile, sharestatus::kMaxImageSize);
    if (file.error != 0) {
        return complainOfFile(sharestatus::kStatusFile, file.error);
    }
    const sharestatus::StatusReading reading = sharestatus::decodeStatus(file.bytes);
    Outcome outcome;
    if (reading.isGood()) {
        outcome.report = readReport(reading.payload);
    }
    if (!outcome.report) {
        return complainOfDamage();
    }
    outcome.report->published = file.modified;
    outcome.report->isCollecting = isCollecting(mark.bytes);
    return judgeAge(std::move(outcome), options.maxAge);
}

/// Looks until there is a report and, when waiting was asked for, no collection is running.
Outcome awaitStatus(const StatusOptions& options)
{
    const auto start = Clock::now();
    const auto end = start + std::chrono::seconds(options.wait);
    while (true) {
        Outcome outcome = readStatus(options);
        const bool isSettled = outcome.report && !outcome.report->isCollecting;
        const auto patience = outcome.mayPass ? std::max(end, start + kRewriteTime) : end;
        if (isSettled || outcome.code == kNotPermitted || Clock::now() >= patience) {
            return outcome;
        }
        std::this_thread::sleep_for(kPause);
    }
}

void runStatus(const StatusOptions& options)
{
    const Outcome outcome = awaitStatus(options);
    if (!outcome.report) {
        throw Failure(outcome.code, outcome.complaint);
    }
    std::cout << (options.json ? renderJson(*outcome.report) : renderTable(*outcome.report));
}

} // namespace

void buildStatusCommand(CLI::App& command)
{
    const auto options = std::make_shared<StatusOptions>();
    command.add_flag("--json", options->json, "Print JSON for programs");
    command
        .add_option("--max-age", options->maxAge,
                    "End with 6 when the status was published longer ago than this")
        ->type_name("SECONDS");
    command
        .add_option("--wait", options->wait,
                    "Wait at most so long for a status and for a running collection to end")
        ->type_name("SECONDS");
    command.footer("Examples:\n"
                   "  vokctl status                  what was last published\n"
                   "  vokctl status --max-age 3600   only if it is less than an hour old\n"
                   "  vokctl status --json           for programs\n"
                   "\n"
                   "STATE is the digit that the backup client reported; \"-\" stands for what is\n"
                   "not known. Ends with 0 when all is well, 4 when the files may not be read, 6\n"
                   "when there is no status, or a damaged or too old one.");
    command.callback([options] { runStatus(*options); });
}

} // namespace client
