// SPDX-License-Identifier: MIT
#include "service/child.h"

#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <asio/use_future.hpp>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using request::frame;
using root::le32;
using service::Child;
using service::Ending;
using service::Outcome;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

class ServiceChild : public root::Test {
  protected:
    static Outcome run(const std::string& request, int number = 5, seconds timeout = seconds(20))
    {
        asio::io_context context;
        Child child(request, number);
        auto future = asio::co_spawn(context, child.finish(timeout), asio::use_future);
        context.run();
        return future.get();
    }
};

TEST_F(ServiceChild, answerIsCollectedAndItsFileRemoved)
{
    const Outcome outcome = run(frame("rtov", 1));
    EXPECT_EQ(outcome.ending, Ending::kFinished);
    EXPECT_EQ(outcome.answer, le32(0xFF000003)) << "a stream that an exit left open is completed";
    EXPECT_FALSE(root::exists("/tmp/outbuf5"));
}

TEST_F(ServiceChild, emptyAnswerIsOne)
{
    const Outcome outcome = run(frame("gubs", 0));
    EXPECT_EQ(outcome.ending, Ending::kFinished);
    EXPECT_EQ(outcome.answer, "");
}

TEST_F(ServiceChild, answerOfAnEarlierServiceIsNeverCollected)
{
    root::writeFile("/tmp/outbuf5", "old");
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    EXPECT_EQ(run(frame("lstu", 0)).answer, "");
    EXPECT_FALSE(root::exists("/tmp/outbuf5"));
}

TEST_F(ServiceChild, largestRequestArrivesWhole)
{
    const Outcome outcome = run("gubs " + le32(0) + std::string(4087, 'x'));
    EXPECT_EQ(outcome.ending, Ending::kFinished);
}

TEST_F(ServiceChild, requestFindsACleanProcess)
{
    root::stub("php", "{ echo \"folder $(pwd)\"; echo \"in $(readlink /proc/self/fd/0)\";"
                      " for fd in 3 4 5 6 7 8 9; do [ ! -e /proc/$$/fd/$fd ] || echo \"open $fd\"; done;"
                      " } >/stubs/seen; echo noise >&2; : >\"$3\"");
    const int stray = ::dup(STDIN_FILENO);
    EXPECT_EQ(run(frame("lstu", 0)).answer, "lsut " + le32(0) + "\n");
    ::close(stray);
    EXPECT_EQ(root::readFile("/stubs/seen"), "folder /tmp\nin /dev/null\n");
}

TEST_F(ServiceChild, signalsHaveTheirMeaning)
{
    std::signal(SIGPIPE, SIG_IGN);
    root::stub("php", "grep SigIgn /proc/$$/status | tr -d '\\t' >/stubs/seen; : >\"$3\"");
    run(frame("lstu", 0));
    std::signal(SIGPIPE, SIG_DFL);
    const std::string seen = root::readFile("/stubs/seen");
    ASSERT_EQ(seen.substr(0, 7), "SigIgn:");
    constexpr unsigned long long kStandardSignals = 0x7FFFFFFF;
    EXPECT_EQ(std::stoull(seen.substr(7), nullptr, 16) & kStandardSignals, 0U) << seen;
}

TEST_F(ServiceChild, crashIsAFailureWithoutAnAnswer)
{
    for (const char* signal : {"SEGV", "KILL", "ABRT"}) {
        root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -" +
                              std::string(signal) + " $group; sleep 1");
        const Outcome outcome = run(frame("lstu", 0));
        EXPECT_EQ(outcome.ending, Ending::kFailed) << signal;
        EXPECT_EQ(outcome.answer, "");
    }
}

TEST_F(ServiceChild, hangEndsWithAllThatItStarted)
{
    root::stub("php", "echo $$ >/stubs/script; sleep 1000");
    const auto start = Clock::now();
    const Outcome outcome = run(frame("lstu", 0), 5, seconds(1));
    EXPECT_EQ(outcome.ending, Ending::kTimedOut);
    EXPECT_EQ(outcome.answer, "");
    EXPECT_LT(Clock::now() - start, seconds(10));
    const int script = std::stoi(root::readFile("/stubs/script"));
    for (int tries = 0; tries < 100 && ::kill(script, 0) == 0; ++tries) {
        ::usleep(10000);
    }
    EXPECT_NE(::kill(script, 0), 0) << "the script has ended, too";
}

TEST_F(ServiceChild, whatItLeavesRunningIsNotWaitedFor)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", "sleep 30 &");
    const auto start = Clock::now();
    EXPECT_EQ(run(frame("sgss", 0)).answer, le32(0));
    EXPECT_LT(Clock::now() - start, seconds(10));
}

TEST_F(ServiceChild, withoutADescriptorLeftItIsNotStarted)
{
    asio::io_context context;
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    rlimit none = limit;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    Child child(frame("gubs", 0), 5);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_FALSE(child.hasStarted());
    auto future = asio::co_spawn(context, child.finish(seconds(1)), asio::use_future);
    context.run();
    EXPECT_EQ(future.get().ending, Ending::kNotStarted);
}

} // namespace
