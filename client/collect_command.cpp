// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdint>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "client/collection_progress.h"
#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "sharestatus/semaphore_format.h"
#include "view/published_status.h"

namespace client {
namespace {

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
    return view::lastWritten() != written && (status.result == kComplete || status.result == kNoList);
}

/// The mark that an interrupted collection has left keeps others from starting.
void expectNoMark(const PublishedStatus& status)
{
    if (view::blockedUntil(status).value_or(0) > std::time(nullptr)) {
        throw Failure(kNoData,
                      std::string("a collection was interrupted, and its mark keeps others "
                                  "from starting for two hours; root can remove ") +
                          sharestatus::kSemaphoreFile);
    }
}

/// Reads the status again and again, and shows meanwhile how far the collection is.
template <class Condition>
PublishedStatus await(Clock::time_point end, ProgressLine& progress, Condition isSo)
{
    constexpr std::chrono::milliseconds kPause{20};
    while (true) {
        PublishedStatus status = view::readPublishedStatus();
        expectNoMark(status);
        if (isSo(status)) {
            return status;
        }
        if (Clock::now() >= end) {
            throw Failure(kNoAnswer,
                          "the collection has not ended in time; \"vokctl status --wait\" "
                          "waits on");
        }
        progress.show(status);
        std::this_thread::sleep_for(kPause);
    }
}

/// Waits for a status that was begun after the call. One that runs may have begun before, and a
/// start does nothing while it does; so it is awaited first. What is written after that is what is
/// wanted.
void collectAnew(const CollectOptions& options)
{
    // The process of a collection that has ended may be there for a moment yet, so that a start
    // does nothing, too.
    constexpr std::chrono::seconds kPatience{1};
    const auto end = Clock::now() + std::chrono::seconds(options.wait);
    ProgressLine progress;
    await(end, progress, [](const PublishedStatus& status) { return !status.isCollecting; });
    const std::int64_t before = view::lastWritten();
    auto nextStart = Clock::now();
    const PublishedStatus status = await(end, progress, [&](const PublishedStatus& current) {
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
    if (status.result == PublishedStatus::Result::kNoList) {
        throw Failure(kNoData, "the collection could not get the list of shares");
    }
}

void collect(const CollectOptions& options)
{
    if (options.wait == 0) {
        start(options.connection);
        std::cerr << "vokctl: the status service was started, unless it was running already\n";
        return;
    }
    collectAnew(options);
    std::cerr << "vokctl: a new share status was published\n";
}

} // namespace

void buildCollectCommand(CLI::App& command)
{
    const auto options = std::make_shared<CollectOptions>();
    command
        .add_option(
            "--wait", options->wait,
            "Wait at most so long until a status is published that was begun after the call")
        ->type_name("SECONDS");
    addConnectionOptions(command, options->connection);
    command.footer(
        "Examples:\n"
        "  vokctl collect                             start one, and do not wait\n"
        "  vokctl collect --wait 600 && vokctl status\n"
        "\n"
        "While it waits at a terminal it shows which share is being measured. Ends with 5\n"
        "when the time runs out, and with 6 when the collection gets no list of shares or\n"
        "an interrupted one keeps it from starting.");
    command.callback([options] { collect(*options); });
}

} // namespace client
