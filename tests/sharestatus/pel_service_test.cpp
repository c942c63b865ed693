// SPDX-License-Identifier: MIT
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;
using root::trace;

class PelStatus : public root::Test {
  protected:
    const std::string listing = root::workFile("startPelStatus");
    const std::string search = "ps | grep pelstatus> " + listing;
    const std::string start = "startapp pelstatus";
    const std::string started = trace("startPelStatus() start pelstatus return: 0 -- sys "
                                      "ret:Success");

    void SetUp() override
    {
        root::Test::SetUp();
        root::stub("startapp", "echo \"$@\" >/tmp/started");
    }

    static void listProcesses(const std::string& processes)
    {
        root::writeFile("/stubs/processes", processes);
        root::stub("ps", "cat /stubs/processes");
    }

    void expectStart(const std::string& processes)
    {
        watch::restart();
        std::filesystem::remove("/tmp/started");
        listProcesses(processes);
        startPelStatus();
        EXPECT_EQ(watch::calls(), (Lines{search, start, started})) << processes;
        EXPECT_EQ(root::readFile("/tmp/started"), "pelstatus\n");
        EXPECT_FALSE(root::exists(listing));
    }

    void expectNoStart(const std::string& processes)
    {
        watch::restart();
        listProcesses(processes);
        startPelStatus();
        EXPECT_EQ(watch::calls(),
                  (Lines{search, trace("startPelStatus() pelstatus already started  ")}))
            << processes;
        EXPECT_FALSE(root::exists("/tmp/started"));
        EXPECT_FALSE(root::exists(listing));
    }
};

TEST_F(PelStatus, runningCollectorIsNotStartedAgain)
{
    expectNoStart("  12 root  pelstatus\n");
    expectNoStart("  1 root init\n  12 root  /usr/bin/pelstatus --x\n");
    expectNoStart("   9 root grep pelstatus\n  12 root  pelstatus\n");
}

TEST_F(PelStatus, searchItselfIsNoCollector)
{
    expectStart("   9 root grep pelstatus\n");
    expectStart("   8 root sh -c ps | grep pelstatus> /tmp/x\n   9 root grep pelstatus\n");
}

TEST_F(PelStatus, similarNamesAreNotTheSearch)
{
    expectNoStart("  12 root  pelstatus --green\n");
    expectNoStart("  12 root  pelstatus --report\n");
}

TEST_F(PelStatus, listingIsRemovedAfterItsResultIsTraced)
{
    listProcesses("  12 root  pelstatus\n");
    std::string atTheTrace;
    watch::after("echo \"startPelStatus() pelstatus already",
                 [&] { atTheTrace = root::readFile(listing); });
    startPelStatus();
    EXPECT_EQ(atTheTrace, "  12 root  pelstatus\n");
    EXPECT_FALSE(root::exists(listing));
}

TEST_F(PelStatus, listingIsRemovedBeforeTheCollectorIsStarted)
{
    bool isThere = true;
    bool isOpenAtTheStart = true;
    watch::after(start, [&] {
        isThere = root::exists(listing);
        isOpenAtTheStart = root::isOpen(listing);
    });
    listProcesses("   9 root grep pelstatus\n");
    startPelStatus();
    EXPECT_FALSE(isThere);
    EXPECT_FALSE(isOpenAtTheStart);
}

TEST_F(PelStatus, unreadableListingIsTracedAndRemovedBeforeTheCollectorIsStarted)
{
    bool isThereAtTheTrace = false;
    bool isThereAtTheStart = true;
    watch::after("ps",
                 [this] { std::filesystem::permissions(listing, std::filesystem::perms(0)); });
    watch::after("echo \"startPelStatus() failed open",
                 [&] { isThereAtTheTrace = root::exists(listing); });
    watch::after(start, [&] { isThereAtTheStart = root::exists(listing); });
    listProcesses("  12 root  pelstatus\n");
    startPelStatus();
    EXPECT_TRUE(isThereAtTheTrace);
    EXPECT_FALSE(isThereAtTheStart);
}

TEST_F(PelStatus, processesWithoutTheSearchAreAFailure)
{
    listProcesses("  1 root init\n");
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search, trace("startPelStatus() failed system(" + search +
                                                   ") -- syserr:Success")}));
    EXPECT_TRUE(root::exists(listing)) << "the listing stays";
}

TEST_F(PelStatus, shellThatCannotStartIsAFailure)
{
    watch::answer("ps", -1, EAGAIN);
    startPelStatus();
    EXPECT_EQ(watch::calls(),
              (Lines{search, trace("startPelStatus() failed system(" + search +
                                   ") -- syserr:Resource temporarily unavailable")}));
}

TEST_F(PelStatus, searchReapedElsewhereIsAFailure)
{
    listProcesses("  12 root  pelstatus\n");
    std::signal(SIGCHLD, SIG_IGN);
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search, trace("startPelStatus() failed system(" + search +
                                                   ") -- syserr:No child processes")}));
}

TEST_F(PelStatus, missingListingIsTracedAndTheCollectorStarted)
{
    listProcesses("  12 root  pelstatus\n");
    watch::after("ps", [this] { std::filesystem::remove(listing); });
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search,
                                     trace("startPelStatus() failed open file: " + listing +
                                           " at No such file or directory"),
                                     start, started}));
}

TEST_F(PelStatus, unreadableListingIsTracedAndRemovedAndTheCollectorStarted)
{
    listProcesses("  12 root  pelstatus\n");
    watch::after("ps",
                 [this] { std::filesystem::permissions(listing, std::filesystem::perms(0)); });
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search,
                                     trace("startPelStatus() failed open file: " + listing +
                                           " at Permission denied"),
                                     start, started}));
    EXPECT_FALSE(root::exists(listing));
}

TEST_F(PelStatus, startThatFailsIsTracedWithItsResult)
{
    listProcesses("   9 root grep pelstatus\n");
    root::stub("startapp", "exit 4");
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search, start,
                                     trace("startPelStatus() start pelstatus return: 1024 -- sys "
                                           "ret:Success")}));
}

TEST_F(PelStatus, missingStartappIsTracedWithItsResult)
{
    listProcesses("   9 root grep pelstatus\n");
    std::filesystem::remove("/stubs/startapp");
    startPelStatus();
    EXPECT_EQ(watch::calls().back(),
              trace("startPelStatus() start pelstatus return: 32512 -- sys ret:Success"));
}

TEST_F(PelStatus, startThatCannotRunIsTracedWithItsReason)
{
    listProcesses("   9 root grep pelstatus\n");
    watch::answer("startapp", -1, ENOMEM);
    startPelStatus();
    EXPECT_EQ(
        watch::calls().back(),
        trace("startPelStatus() start pelstatus return: -1 -- sys ret:Cannot allocate memory"));
}

TEST_F(PelStatus, longLinesAreJudgedPieceByPiece)
{
    // Pieces have 511 characters: "pelstatus" is in the first, the search's name in the second.
    expectNoStart("pelstatus" + std::string(511 - 9, ' ') + "grep\n");
    expectStart("pelstatus" + std::string(511 - 9 - 4, ' ') + "grep\n");
    expectStart("pelstatu" + std::string(0, ' ') + "\n" + std::string(503, ' ') +
                "pelstatus grep\n");
    expectStart(std::string(511 - 4, ' ') + "pelstatus\n" + "grep pelstatus\n");
    expectStart(std::string(511 - 1, ' ') + "pelstatus\n");
    expectStart(std::string(511 - 8, ' ') + "pelstatus\n");
}

TEST_F(PelStatus, realProcessListingShowsOnlyTheSearch)
{
    startPelStatus();
    EXPECT_EQ(watch::calls(), (Lines{search, start, started}));
}

} // namespace
