// SPDX-License-Identifier: MIT
#include "service/child.h"

#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <asio/use_future.hpp>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
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

constexpr std::uint32_t kTimedOut = 0x53000001;
constexpr std::uint32_t kFailed = 0x53000002;
constexpr std::uint32_t kNotStarted = 0x53000003;

/// What a client gets where there is no answer of the command's.
std::string serviceStatus(std::uint32_t code)
{
    return "serv " + le32(code) + std::string(1, '\0');
}

/// What a stub does to the child that it belongs to.
std::string killChild(const std::string& signal)
{
    return "read -r pid comm state ppid group rest </proc/self/stat; kill -" + signal + " $group";
}

/// Whether a process is gone after a while.
bool hasEnded(int process)
{
    for (int tries = 0; tries < 500 && ::kill(process, 0) == 0; ++tries) {
        ::usleep(10000);
    }
    return ::kill(process, 0) != 0;
}

class ServiceChild : public root::Test {
  protected:
    /// Where this root's stubs stand before its commands.
    static std::string path() { return std::getenv("PATH"); }

    static service::Task taskOf(const std::string& request, int number = 5)
    {
        return [=] { service::dispatch(request, number); };
    }

    static Outcome finish(Child& child, seconds timeout = seconds(20))
    {
        asio::io_context context;
        auto future = asio::co_spawn(context, child.finish(timeout), asio::use_future);
        context.run();
        return future.get();
    }

    static Outcome run(const std::string& request, int number = 5, seconds timeout = seconds(20))
    {
        Child child(taskOf(request, number), number, path());
        return finish(child, timeout);
    }
};

TEST(ServiceOutcome, everyEndOfTheServicesMakingHasItsOwnAnswer)
{
    EXPECT_EQ(service::makeOutcome(Ending::kTimedOut).answer, serviceStatus(kTimedOut));
    EXPECT_EQ(service::makeOutcome(Ending::kFailed).answer, serviceStatus(kFailed));
    EXPECT_EQ(service::makeOutcome(Ending::kNotStarted).answer, serviceStatus(kNotStarted));
    EXPECT_EQ(service::makeOutcome(Ending::kTimedOut).answer.size(), 10U);
    for (const Ending ending : {Ending::kFinished, Ending::kFailed, Ending::kTimedOut,
                                Ending::kNotStarted, Ending::kRefused}) {
        EXPECT_EQ(service::makeOutcome(ending).ending, ending);
    }
    EXPECT_EQ(service::makeOutcome(Ending::kFinished).answer, "");
    EXPECT_EQ(service::makeOutcome(Ending::kRefused).answer, "");
}

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
    root::stub("php", killChild("KILL"));
    EXPECT_EQ(run(frame("lstu", 0)).answer, serviceStatus(kFailed));
    EXPECT_FALSE(root::exists("/tmp/outbuf5"));
}

TEST_F(ServiceChild, answerThatCannotBeReadIsAFailure)
{
    ASSERT_EQ(::mkdir("/tmp/outbuf5", 0700), 0);
    const Outcome outcome = run(frame("lstu", 0));
    EXPECT_EQ(outcome.ending, Ending::kFailed);
    EXPECT_EQ(outcome.answer, serviceStatus(kFailed));
}

TEST_F(ServiceChild, answerThatACrashCutsShortIsNotCollected)
{
    root::stub("php", "printf 'lsut ' >/tmp/outbuf5; " + killChild("KILL"));
    EXPECT_EQ(run(frame("lstu", 0)).answer, serviceStatus(kFailed));
    EXPECT_FALSE(root::exists("/tmp/outbuf5"));
}

TEST_F(ServiceChild, largestRequestArrivesWhole)
{
    const Outcome outcome = run("gubs " + le32(0) + std::string(4087, 'x'));
    EXPECT_EQ(outcome.ending, Ending::kFinished);
}

TEST_F(ServiceChild, requestFindsItsFolderAndItsStreams)
{
    root::stub("php", "{ pwd; readlink /proc/$$/fd/0; readlink /proc/$PPID/fd/1;"
                      " readlink /proc/$PPID/fd/2; } >/stubs/seen; echo noise >&2; : >\"$3\"");
    const Outcome outcome = run(frame("lstu", 0));
    EXPECT_EQ(outcome.answer, "lsut " + le32(0) + "\n");
    EXPECT_EQ(outcome.reasons.text(), "noise\n");
    EXPECT_EQ(root::readFile("/stubs/seen"),
              "/tmp\n/dev/null\n/dev/null\n/memfd:reasons (deleted)\n");
}

TEST_F(ServiceChild, requestInheritsNoDescriptor)
{
    // The listing has a descriptor of its own, the lowest that is free.
    root::stub("php", "ls /proc/self/fd >/stubs/seen; : >\"$3\"");
    std::vector<int> strays;
    for (int i = 0; i < 300; ++i) {
        strays.push_back(::dup(STDIN_FILENO));
    }
    strays.push_back(::fcntl(STDIN_FILENO, F_DUPFD, 900));
    EXPECT_EQ(run(frame("lstu", 0)).answer, "lsut " + le32(0) + "\n");
    for (const int stray : strays) {
        ::close(stray);
    }
    EXPECT_EQ(root::readFile("/stubs/seen"), "0\n1\n2\n3\n");
}

TEST_F(ServiceChild, requestFindsACleanEnvironment)
{
    root::stub("php", "tr '\\0' '\\n' </proc/$$/environ | sort >/stubs/seen; : >\"$3\"");
    const std::vector<std::pair<const char*, const char*>> inherited = {
        {"ENV", "/stubs/evil"},    {"BASH_ENV", "/stubs/evil"}, {"IFS", "/"},
        {"LANG", "de_DE.UTF-8"},   {"LC_ALL", "de_DE.UTF-8"},   {"SECRET", "word"},
        {"HOME", "/home/somebody"}};
    for (const auto& [name, value] : inherited) {
        ::setenv(name, value, 1);
    }
    Child child(taskOf(frame("lstu", 0)), 5, "/stubs:/usr/bin");
    const Outcome outcome = finish(child);
    for (const auto& [name, value] : inherited) {
        ::unsetenv(name);
    }
    EXPECT_EQ(outcome.ending, Ending::kFinished);
    EXPECT_EQ(root::readFile("/stubs/seen"), "HOME=/\nLC_ALL=C\nPATH=/stubs:/usr/bin\nPWD=/tmp\n")
        << "the shell adds its folder";
}

TEST_F(ServiceChild, programsAreLookedForInTheSystemsFoldersUnlessToldOtherwise)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", ": >/stubs/started");
    root::stub("php", "echo \"$PATH\" >/stubs/seen; : >\"$3\"");
    Child usual(taskOf(frame("lstu", 0)), 5);
    EXPECT_EQ(finish(usual).ending, Ending::kFinished);
    EXPECT_EQ(root::readFile("/stubs/seen"), std::string(config::kDefaultPath) + "\n");
    Child elsewhere(taskOf(frame("sgss", 0)), 5);
    EXPECT_EQ(finish(elsewhere).ending, Ending::kFinished);
    EXPECT_FALSE(root::exists("/stubs/started"))
        << "this root's stubs are no programs of the system's";
    run(frame("sgss", 0));
    EXPECT_TRUE(root::exists("/stubs/started"));
}

TEST_F(ServiceChild, requestIsAProcessGroupOfItsOwn)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat;"
                      " echo \"$group\" >/stubs/seen; : >\"$3\"");
    run(frame("lstu", 0));
    const int group = std::stoi(root::readFile("/stubs/seen"));
    EXPECT_NE(group, ::getpgrp());
    EXPECT_NE(group, ::getpid());
    EXPECT_GT(group, 1);
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

TEST_F(ServiceChild, crashIsAFailureThatIsSaid)
{
    for (const char* signal : {"SEGV", "KILL", "ABRT", "TERM", "BUS", "FPE"}) {
        root::stub("php", killChild(signal) + "; sleep 1");
        const Outcome outcome = run(frame("lstu", 0));
        EXPECT_EQ(outcome.ending, Ending::kFailed) << signal;
        EXPECT_EQ(outcome.answer, serviceStatus(kFailed)) << signal;
    }
}

TEST_F(ServiceChild, hangEndsWithAllThatItStarted)
{
    // One in the background, one that will not listen, and the script itself.
    root::stub("php", "sleep 1000 & echo $! >/stubs/background;"
                      " sh -c 'trap \"\" TERM INT HUP; echo $$ >/stubs/deaf; sleep 1000' &"
                      " echo $$ >/stubs/script; sleep 1000");
    const auto start = Clock::now();
    const Outcome outcome = run(frame("lstu", 0), 5, seconds(1));
    EXPECT_EQ(outcome.ending, Ending::kTimedOut);
    EXPECT_EQ(outcome.answer, serviceStatus(kTimedOut));
    EXPECT_GE(Clock::now() - start, seconds(1));
    EXPECT_LT(Clock::now() - start, seconds(10));
    for (const char* file : {"/stubs/background", "/stubs/deaf", "/stubs/script"}) {
        EXPECT_TRUE(hasEnded(std::stoi(root::readFile(file)))) << file;
    }
    EXPECT_FALSE(root::exists("/tmp/outbuf5"));
}

TEST_F(ServiceChild, childThatNobodyWaitsForEndsWithItsOwner)
{
    root::stub("php", "echo $$ >/stubs/script; sleep 1000");
    {
        const Child child(taskOf(frame("lstu", 0)), 5, path());
        ASSERT_TRUE(child.hasStarted());
        for (int tries = 0; tries < 500 && root::readFile("/stubs/script").empty(); ++tries) {
            ::usleep(10000);
        }
    }
    EXPECT_TRUE(hasEnded(std::stoi(root::readFile("/stubs/script"))));
}

/// In a process that has just been forked: ends the one that it was forked from.
void endParent()
{
    const pid_t parent = ::getppid();
    ::kill(parent, SIGKILL);
    while (::getppid() == parent) {
        ::usleep(1000);
    }
}

/// Starts a child from a process that is killed at once, or when the child is at work.
void startForAKilledService(bool isKilledAtOnce, const std::string& path)
{
    const pid_t service = ::fork();
    if (service == 0) {
        if (isKilledAtOnce) {
            ::pthread_atfork(nullptr, nullptr, endParent);
        }
        const auto task = [] {
            root::writeFile("/stubs/working", root::pid());
            ::sleep(1000);
        };
        const Child child(task, 5, path);
        while (root::readFile("/stubs/working").empty()) {
            ::usleep(1000);
        }
        ::raise(SIGKILL);
    }
    ::waitpid(service, nullptr, 0);
}

TEST_F(ServiceChild, childEndsWithItsService)
{
    startForAKilledService(false, path());
    EXPECT_TRUE(hasEnded(std::stoi(root::readFile("/stubs/working"))));
}

TEST_F(ServiceChild, childOfAServiceThatIsGoneDoesNothing)
{
    startForAKilledService(true, path());
    ::usleep(300000);
    EXPECT_FALSE(root::exists("/stubs/working"));
}

TEST_F(ServiceChild, whatItKeepsIsOpenForAllThatItStarts)
{
    root::writeFile("/stubs/kept", "");
    const int kept = ::open("/stubs/kept", O_RDONLY | O_CLOEXEC);
    watch::mayBeStrange("ls");
    const auto task = [] {
        [[maybe_unused]] const int ran =
            std::system("ls /proc/self/fd >/stubs/seen; readlink /proc/$$/fd/0 >>/stubs/seen");
        root::writeFile("/tmp/outbuf5", "");
    };
    Child child(task, 5, path(), kept);
    EXPECT_EQ(finish(child).ending, Ending::kFinished);
    ::close(kept);
    EXPECT_EQ(root::readFile("/stubs/seen"), "0\n1\n2\n3\n/stubs/kept\n");
}

TEST_F(ServiceChild, whatItLeavesRunningIsNotWaitedFor)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", "sleep 30 & echo $! >/stubs/service");
    const auto start = Clock::now();
    EXPECT_EQ(run(frame("sgss", 0)).answer, le32(0));
    EXPECT_LT(Clock::now() - start, seconds(10));
    const int service = std::stoi(root::readFile("/stubs/service"));
    EXPECT_EQ(::kill(service, 0), 0) << "a good end leaves a service alone";
    ::kill(service, SIGKILL);
}

TEST_F(ServiceChild, withoutADescriptorLeftItIsNotStarted)
{
    asio::io_context context;
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    rlimit none = limit;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    Child child(taskOf(frame("gubs", 0)), 5);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_FALSE(child.hasStarted());
    auto future = asio::co_spawn(context, child.finish(seconds(1)), asio::use_future);
    context.run();
    const Outcome outcome = future.get();
    EXPECT_EQ(outcome.ending, Ending::kNotStarted);
    EXPECT_EQ(outcome.answer, serviceStatus(kNotStarted));
}

} // namespace
