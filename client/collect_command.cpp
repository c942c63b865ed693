// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdint>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "client/collection_progress.h"
#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "sharestatus/semaphore_format.h"
#include "text/translation.h"
#include "view/published_status.h"

namespace client {
namespace {

using text::fill;
using text::tr;

using view::PublishedStatus;
using Clock = std::chrono::steady_clock;

struct CollectOptions {
    Connection connection;
    unsigned wait = 0;
};

void start(const Connection& connection)
{
    askToDo(connection, {cmdsvc::command("sgss")});
}

// ---- Waiting ----------------------------------------------------------------------------------

/// Whether a status can be read that was written after another one.
bool isPublishedSince(const PublishedStatus& status, std::int64_t written)
{
    using enum PublishedStatus::Result;
    return view::lastWritten() != written &&
           (status.result == kComplete || status.result == kNoList);
}

/// Fails if the mark of an interrupted collection prevents a new one.
void expectNoMark(const PublishedStatus& status)
{
    if (view::blockedUntil(status).value_or(0) > std::time(nullptr)) {
        throw Failure(kNoData,
                      fill(tr("a collection was interrupted, and its mark keeps others from "
                              "starting for two hours; root can remove {}"),
                           {sharestatus::kSemaphoreFile}));
    }
}

/// @param hasBegun  whether a collection has been seen since the call
[[noreturn]] void failLate(bool hasBegun)
{
    throw Failure(kNoAnswer,
                  hasBegun ? tr("the collection has not ended in time; to wait longer: \"vokctl "
                                "status --wait SECONDS\"")
                           : tr("no collection has begun; another process with \"pelstatus\" in "
                                "its command line is taken for one, see \"ps\""));
}

/// Reads the status repeatedly, and shows meanwhile how far the collection is.
/// @return the first status for which the condition holds; nothing if the time runs out before
template <class Condition>
std::optional<PublishedStatus> await(Clock::time_point end, ProgressLine& progress, Condition isSo)
{
    constexpr std::chrono::milliseconds kPause{20};
    while (true) {
        PublishedStatus status = view::readPublishedStatus();
        expectNoMark(status);
        if (isSo(status)) {
            return status;
        }
        if (Clock::now() >= end) {
            return std::nullopt;
        }
        progress.show(status);
        std::this_thread::sleep_for(kPause);
    }
}

/// Waits for the status of a collection that began after the call. If a collection runs already, a
/// start does nothing; so this waits for its end first, and then starts another one.
void collectAnew(const CollectOptions& options)
{
    // The process of a collection may run for a moment after its end; until then a start does
    // nothing, too.
    constexpr std::chrono::seconds kPatience{1};
    const auto end = Clock::now() + std::chrono::seconds(options.wait);
    ProgressLine progress;
    if (!await(end, progress, [](const PublishedStatus& status) { return !status.isCollecting; })) {
        failLate(true);
    }
    bool hasBegun = false;
    const std::int64_t before = view::lastWritten();
    auto nextStart = Clock::now();
    const auto status = await(end, progress, [&](const PublishedStatus& current) {
        // What cannot be seen may have begun, too.
        hasBegun = hasBegun || current.isCollecting || current.semaphoreError != 0;
        if (!current.isCollecting && isPublishedSince(current, before)) {
            return true;
        }
        const auto now = Clock::now();
        if (!current.isCollecting && now >= nextStart && now < end) {
            start(options.connection);
            nextStart = Clock::now() + kPatience;
        }
        return false;
    });
    if (!status) {
        failLate(hasBegun);
    }
    if (status->result == PublishedStatus::Result::kNoList) {
        throw Failure(kNoData, tr("the collection could not get the list of shares"));
    }
}

void collect(const CollectOptions& options)
{
    if (options.wait == 0) {
        start(options.connection);
        std::cerr << "vokctl: " << tr("a collection was started, unless one was running already")
                  << "\n";
        return;
    }
    collectAnew(options);
    std::cerr << "vokctl: " << tr("a new share status was published") << "\n";
}

} // namespace

void buildCollectCommand(CLI::App& command)
{
    const auto options = std::make_shared<CollectOptions>();
    command
        .add_option("--wait", options->wait,
                    "Wait at most this long until a collection begun after the call is published")
        ->type_name("SECONDS");
    addConnectionOptions(command, options->connection);
    command.footer("Examples:\n"
                   "  vokctl collect                             start one, and do not wait\n"
                   "  vokctl collect --wait 600 && vokctl status\n"
                   "\n"
                   "On a terminal it shows which share is being measured. Ends with 5 if the time\n"
                   "runs out, and with 6 if the collection gets no list of shares, or if an\n"
                   "interrupted collection prevents it.");
    command.callback([options] { collect(*options); });
}

} // namespace client
