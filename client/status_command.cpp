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
#include "client/status_report.h"
#include "sharestatus/semaphore_format.h"
#include "sharestatus/status_format.h"

namespace client {
namespace {

using view::PublishedStatus;
using Clock = std::chrono::steady_clock;

constexpr const char* kAdvice = "Start a collection with \"startapp pelstatus\", then try again.";

struct StatusOptions {
    bool json = false;
    std::optional<unsigned> maxAge;
    unsigned wait = 0;
};

/// Why there is nothing to show; kGood if there is.
struct Complaint {
    ExitCode code = kGood;
    std::string words;
};

Complaint complainOfFile(const char* path, int error)
{
    if (error == ENOENT) {
        return {kNoData, std::string("no share status has been published yet. ") + kAdvice};
    }
    const std::string reason = std::string("cannot read ") + path + ": " + std::strerror(error);
    if (error == EACCES || error == EPERM) {
        return {kNotPermitted, reason + ". Try again as root."};
    }
    return {kNoData, reason};
}

Complaint judgeAge(std::time_t published, std::optional<unsigned> maxAge)
{
    const std::time_t age = std::time(nullptr) - published;
    if (!maxAge || age <= static_cast<std::time_t>(*maxAge)) {
        return {};
    }
    return {kNoData, "the share status is " + std::to_string(age) +
                         " seconds old, more than --max-age allows. " + kAdvice};
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
        return {kNoData, std::string("the share status is damaged. ") + kAdvice};
    }
    return judgeAge(status.published, options.maxAge);
}

/// Reads until there is a status and, if waiting was asked for, no collection is running.
PublishedStatus awaitStatus(const StatusOptions& options)
{
    constexpr std::chrono::milliseconds kPause{20};
    const auto end = Clock::now() + std::chrono::seconds(options.wait);
    while (true) {
        PublishedStatus status = view::readPublishedStatus();
        const Complaint complaint = judge(status, options);
        const bool isFinal = complaint.code == kGood && !status.isCollecting;
        if (isFinal || complaint.code == kNotPermitted || Clock::now() >= end) {
            if (complaint.code != kGood) {
                throw Failure(complaint.code, complaint.words);
            }
            return status;
        }
        std::this_thread::sleep_for(kPause);
    }
}

void runStatus(const StatusOptions& options)
{
    const PublishedStatus status = awaitStatus(options);
    std::cout << (options.json ? renderJson(status) : renderTable(status));
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
