// SPDX-License-Identifier: MIT
//
// Starts a collection, and says how far the one is that runs.
#include <chrono>
#include <ctime>
#include <thread>

#include "client/exchange.h"
#include "client/failure.h"
#include "page/log.h"
#include "page/overview_collection.h"
#include "page/pages.h"
#include "text/translation.h"

namespace page {
namespace {

using Clock = std::chrono::steady_clock;
using view::PublishedStatus;

void start(const config::Configuration& settings)
{
    constexpr unsigned kPatience = 10;
    try {
        client::askToDo({.socket = settings.socket, .timeout = kPatience},
                        {cmdsvc::command("sgss")});
    } catch (const client::Failure& failure) {
        log(std::string("no collection can be started: ") + failure.what());
        throw Refusal(kBusy, text::tr("The appliance's service does not answer, so nothing is "
                                      "measured now. Try again in a minute."));
    }
}

/// Whether there is nothing to start, or nothing can be.
bool isSettled(const PublishedStatus& status)
{
    return status.isCollecting || view::blockedUntil(status).value_or(0) > std::time(nullptr);
}

/// Starts a collection unless one runs, and waits until it runs or has ended, so that the page that
/// is shown next has something to show. The process of a collection that has just ended may keep
/// the next one from starting, so it is started again. The appliance starts none while any process
/// looks like one, and does not say so: only nothing happens.
void startAndAwait(const config::Configuration& settings)
{
    constexpr std::chrono::milliseconds kPause{20};
    constexpr std::chrono::seconds kRepeat{1};
    constexpr std::chrono::seconds kPatience{5};
    const std::int64_t before = view::lastWritten();
    const auto end = Clock::now() + kPatience;
    auto nextStart = Clock::now();
    while (view::lastWritten() == before && !isSettled(view::readPublishedStatus())) {
        if (Clock::now() >= end) {
            throw Refusal(kBusy, text::tr("No collection has started. If another process of the "
                                          "appliance has \"pelstatus\" in its command line, it is "
                                          "taken for one."));
        }
        if (Clock::now() >= nextStart) {
            start(settings);
            nextStart = Clock::now() + kRepeat;
        }
        std::this_thread::sleep_for(kPause);
    }
}

Page progressFragment()
{
    const PublishedStatus status = view::readPublishedStatus();
    Page page;
    page.body = collectionState(status, findProgress(status));
    page.isFragment = true;
    return page;
}

} // namespace

Page makeCollection(Visit& visit)
{
    if (!visit.request.isPost()) {
        return progressFragment();
    }
    startAndAwait(visit.settings);
    Page page;
    page.next = readOrder(visit.request.form.value("sort")).query;
    return page;
}

} // namespace page
