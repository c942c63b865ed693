// SPDX-License-Identifier: MIT
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

const std::string kDaemon = "/usr/sbin/tidewaved";
const std::string kStart = "sudo /usr/sbin/tidewaved -n 3";
const std::string kStop = "sudo killall tidewaved";

std::string comment(const std::string& message)
{
    return "//<!-- " + message + "-->\n";
}

class SyncDaemon : public root::Test {
  protected:
    const std::string found = root::workFile("tideWaveFunc");
    const std::string search = "sudo ps | grep tidewave > " + found;
    const std::string removal = "sudo rm -f " + found;

    void SetUp() override
    {
        root::Test::SetUp();
        stubProcesses("");
        stubDaemon("exit 0");
    }

    void TearDown() override
    {
        fs::remove(kDaemon);
        root::Test::TearDown();
    }

    static void stubProcesses(const std::string& listing)
    {
        root::writeFile("/stubs/processes", listing);
        root::stub("ps", "cat /stubs/processes");
    }

    static void stubDaemon(const std::string& script)
    {
        root::writeFile(kDaemon, "#!/usr/bin/sh\n" + script + "\n");
        fs::permissions(kDaemon, fs::perms(0755));
    }

    static std::string told(const std::string& line, const std::string& result,
                            const std::string& on = "1")
    {
        return comment("tideWaveFunc(" + on + "),cmd: " + line + ", iRet: " + result);
    }

    /// Switches, and compares result, output and calls.
    void expect(std::uint32_t on, int result, const std::string& output, const Lines& calls)
    {
        testing::internal::CaptureStdout();
        EXPECT_EQ(tideWaveFunc(on), result);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), output);
        EXPECT_EQ(watch::calls(), calls);
        EXPECT_FALSE(root::exists(found));
    }

    /// Switches on with these processes, and compares whether the daemon is started.
    void expectStarted(const std::string& listing, const std::string& searchResult = "0")
    {
        watch::restart();
        stubProcesses(listing);
        expect(1, 0,
               told(search, searchResult + ", sysErr: Success") +
                   told(kStart, "0, sysErr: Success"),
               {search, removal, kStart});
    }

    void expectLeftAlone(const std::string& listing)
    {
        watch::restart();
        stubProcesses(listing);
        expect(1, 0, told(search, "0, sysErr: Success"), {search, removal});
    }
};

TEST_F(SyncDaemon, isStartedIfItDoesNotRun)
{
    expectStarted("  1 root  init\n 90 root  crond\n", "256");
    expectStarted("", "256");
}

TEST_F(SyncDaemon, isNotStartedIfItRuns)
{
    expectLeftAlone(" 90 root  /usr/sbin/tidewaved -n 3\n");
    expectLeftAlone("  1 root  init\n 90 root  tidewaved\n 91 root  grep tidewave\n");
    expectLeftAlone("tidewaved");
}

TEST_F(SyncDaemon, onlyTheFirstProcessThatIsFoundCounts)
{
    expectStarted(" 80 root  grep tidewave\n 90 root  tidewaved -n 3\n");
    expectStarted(" 80 root  tidewave d\n");
    expectStarted(" 80 root  tidewave idewaved\n");
}

TEST_F(SyncDaemon, firstLineCountsUpTo511Characters)
{
    expectLeftAlone(std::string(502, 'x') + "tidewaved\n");
    expectStarted(std::string(503, 'x') + "tidewaved\n");
    expectStarted("tidewave" + std::string(600, 'x') + "tidewaved\n");
}

TEST_F(SyncDaemon, searchThatCannotRunFindsNothing)
{
    watch::answer("sudo ps", -1, EAGAIN);
    expect(1, 0,
           told(search, "-1, sysErr: Resource temporarily unavailable") +
               told(kStart, "0, sysErr: Success"),
           {search, kStart});
}

TEST_F(SyncDaemon, missingOutputIsNotRemoved)
{
    stubProcesses("tidewaved\n");
    watch::after("sudo ps", [this] { fs::remove(found); });
    expect(1, 0, told(search, "0, sysErr: Success") + told(kStart, "0, sysErr: Success"),
           {search, kStart});
}

TEST_F(SyncDaemon, unreadableOutputStays)
{
    stubProcesses("tidewaved\n");
    watch::after("sudo ps", [this] { fs::permissions(found, fs::perms::none); });
    testing::internal::CaptureStdout();
    EXPECT_EQ(tideWaveFunc(1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              told(search, "0, sysErr: Success") + told(kStart, "0, sysErr: Success"));
    EXPECT_EQ(watch::calls(), (Lines{search, kStart}));
    EXPECT_TRUE(root::exists(found));
}

TEST_F(SyncDaemon, olderOutputIsReadIfTheSearchCannotRun)
{
    root::writeFile(found, "tidewaved\n");
    watch::answer("sudo ps", -1, ENOMEM);
    expect(1, 0, told(search, "-1, sysErr: Cannot allocate memory"), {search, removal});
}

TEST_F(SyncDaemon, startIsJudgedOnlyByItsErrno)
{
    stubDaemon("exit 3");
    expect(1, 0, told(search, "256, sysErr: Success") + told(kStart, "768, sysErr: Success"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, startThatLeavesAnErrnoFails)
{
    for (const int result : {-1, 0, 256}) {
        watch::restart();
        watch::answer(kStart, result, EAGAIN);
        expect(
            1, -1,
            told(search, "256, sysErr: Success") +
                told(kStart, std::to_string(result) + ", sysErr: Resource temporarily unavailable"),
            {search, removal, kStart});
    }
}

TEST_F(SyncDaemon, startWithoutAnErrnoIsGood)
{
    watch::answer(kStart, -1, 0);
    expect(1, 0, told(search, "256, sysErr: Success") + told(kStart, "-1, sysErr: Success"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, missingDaemonIsNoFailure)
{
    fs::remove(kDaemon);
    expect(1, 0, told(search, "256, sysErr: Success") + told(kStart, "32512, sysErr: Success"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, startReapedElsewhereIsGood)
{
    std::signal(SIGCHLD, SIG_IGN);
    expect(1, 0,
           told(search, "-1, sysErr: No child processes") +
               told(kStart, "-1, sysErr: No child processes"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, olderErrnoIsNotJudged)
{
    errno = EIO;
    expectStarted("", "256");
    // The removal's own errno is older than the start's.
    watch::restart();
    watch::answer(removal, -1, EPERM);
    testing::internal::CaptureStdout();
    EXPECT_EQ(tideWaveFunc(1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              told(search, "256, sysErr: Success") + told(kStart, "0, sysErr: Success"));
}

TEST_F(SyncDaemon, everyValueExceptZeroStarts)
{
    expect(2, 0,
           told(search, "256, sysErr: Success", "2") + told(kStart, "0, sysErr: Success", "2"),
           {search, removal, kStart});
    watch::restart();
    expect(0xFFFFFFFFU, 0,
           told(search, "256, sysErr: Success", "-1") + told(kStart, "0, sysErr: Success", "-1"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, linesArePrintedAtOnce)
{
    stubDaemon("echo the daemon speaks");
    expect(1, 0,
           told(search, "256, sysErr: Success") + "the daemon speaks\n" +
               told(kStart, "0, sysErr: Success"),
           {search, removal, kStart});
}

TEST_F(SyncDaemon, eachLineIsFlushedSeparately)
{
    EXPECT_EQ(root::printedPieces([] { tideWaveFunc(1); }),
              (Lines{told(search, "256, sysErr: Success"), told(kStart, "0, sysErr: Success")}));
    root::stub("killall", "exit 0");
    EXPECT_EQ(root::printedPieces([] {
                  tideWaveFunc(0);
                  tideWaveFunc(0);
              }),
              (Lines{comment("tideWaveFunc(0),iRet: 0, sysErr: Success"),
                     comment("tideWaveFunc(0),iRet: 0, sysErr: Success")}));
}

TEST_F(SyncDaemon, searchsOutputIsClosedBeforeItIsRemoved)
{
    bool isOpen = true;
    watch::after(removal, [&] { isOpen = root::isOpen(found); });
    expect(1, 0, told(search, "256, sysErr: Success") + told(kStart, "0, sysErr: Success"),
           {search, removal, kStart});
    EXPECT_FALSE(isOpen);
}

TEST_F(SyncDaemon, isStopped)
{
    root::stub("killall", "echo \"killall $*\"");
    expect(0, 0, "killall tidewaved\n" + comment("tideWaveFunc(0),iRet: 0, sysErr: Success"),
           {kStop});
}

TEST_F(SyncDaemon, stopNeverFails)
{
    root::stub("killall", "exit 1");
    expect(0, 0, comment("tideWaveFunc(0),iRet: 256, sysErr: Success"), {kStop});
    watch::restart();
    watch::answer(kStop, -1, EAGAIN);
    expect(0, 0, comment("tideWaveFunc(0),iRet: -1, sysErr: Resource temporarily unavailable"),
           {kStop});
    watch::restart();
    std::signal(SIGCHLD, SIG_IGN);
    expect(0, 0, comment("tideWaveFunc(0),iRet: -1, sysErr: No child processes"), {kStop});
}

} // namespace
