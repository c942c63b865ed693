// SPDX-License-Identifier: MIT
#include "client/collection_progress.h"

#include <array>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include "tests/support/collector.h"

namespace {

using client::formatProgress;
using client::ProgressLine;
using view::PublishedStatus;

/// A status while a collection runs.
PublishedStatus status()
{
    PublishedStatus status;
    status.isCollecting = true;
    status.collectingSince = 1795253583; // 09:33:03
    return status;
}

constexpr std::time_t kStart = 1795253583; // 09:33:03

TEST(CollectionProgress, isTheShareItsPlaceAndTheStart)
{
    EXPECT_EQ(formatProgress({.since = kStart, .share = "Media", .place = 2, .count = 3}),
              "Measuring Media, share 2 of 3, since 09:33:03");
    EXPECT_EQ(formatProgress({.since = kStart, .share = "a\x1B", .place = 1, .count = 1}),
              "Measuring a\\u{1b}, share 1 of 1, since 09:33:03");
}

TEST(CollectionProgress, leavesOutWhatIsNotKnown)
{
    EXPECT_EQ(formatProgress({.since = kStart, .share = "New"}), "Measuring New, since 09:33:03");
    EXPECT_EQ(formatProgress({.since = kStart}), "Collecting, since 09:33:03");
    EXPECT_EQ(formatProgress({.share = "New"}), "Measuring New");
    EXPECT_EQ(formatProgress({}), "Collecting");
}

/// What a line of progress writes to standard error, a terminal or not.
template <class Function> std::string shown(bool isTerminal, Function use)
{
    int reader = -1;
    int writer = -1;
    std::array<int, 2> pipe{};
    if (isTerminal) {
        EXPECT_EQ(::openpty(&reader, &writer, nullptr, nullptr, nullptr), 0);
    } else {
        EXPECT_EQ(::pipe(pipe.data()), 0);
        reader = pipe[0];
        writer = pipe[1];
    }
    const int before = ::dup(STDERR_FILENO);
    ::dup2(writer, STDERR_FILENO);
    use();
    ::dup2(before, STDERR_FILENO);
    EXPECT_EQ(::write(writer, "$", 1), 1);
    // A terminal hands over what has arrived by then, so read up to the mark.
    std::string text;
    for (char byte = '\0'; byte != '$' && ::read(reader, &byte, 1) == 1;) {
        text += byte;
    }
    for (const int each : {reader, writer, before}) {
        ::close(each);
    }
    return text;
}

TEST(CollectionProgress, isWrittenOnceAndClearedAtTheEnd)
{
    const std::string text = shown(true, [] {
        ProgressLine line;
        line.show(status());
        line.show(status());
    });
    EXPECT_EQ(text, "\r\x1B[KCollecting, since 09:33:03\r\x1B[K$");
}

TEST(CollectionProgress, isNotWrittenWithoutACollectionOrATerminal)
{
    EXPECT_EQ(shown(true,
                    [] {
                        ProgressLine line;
                        line.show({});
                    }),
              "$");
    EXPECT_EQ(shown(false,
                    [] {
                        ProgressLine line;
                        line.show(status());
                    }),
              "$");
}

} // namespace
