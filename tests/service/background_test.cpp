// SPDX-License-Identifier: MIT
#include "service/background.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "tests/support/root.h"

namespace {

/// Programs that start vokserve the way init scripts do; it is ended before they end.
class InBackground : public root::Test {
  protected:
    std::string said;

    /// What a shell does with "serve OPTION...", the number of its process in $pid, and "stop".
    void runShell(const std::string& script)
    {
        const root::Ended ended = root::run({"/usr/bin/sh", "-c", R"(
            serve() {
                /build/vokserve --shared-tmp --socket /tmp/socket "$@"
                code=$?
                pid=$(cat /tmp/pid 2>/dev/null)
            }
            stop() {
                kill "$pid"
                tries=0
                while [ -n "$pid" ] && [ -e "/proc/$pid" ] && [ "$tries" -lt 1000 ]; do
                    tries=$((tries + 1))
                    usleep 10000
                done
            }
            )" + script});
        said = ended.output + ended.errors;
    }
};

TEST_F(InBackground, whoeverStartsItGoesOnWhenItListens)
{
    runShell(R"(
        serve --background --pidfile /tmp/pid --log /tmp/log
        echo "$code"
        ls /tmp/socket /tmp/pid
        stop
        ls /tmp)");
    EXPECT_EQ(said, "0\n/tmp/pid\n/tmp/socket\nlog\n");
}

TEST_F(InBackground, logHasEveryLineFromThenOn)
{
    runShell(R"(
        echo before >/tmp/log
        serve --background --pidfile /tmp/pid --log /tmp/log
        stop
        cat /tmp/log)");
    EXPECT_EQ(said, "before\nvokserve: ready\nvokserve: stopped\n");
}

TEST_F(InBackground, newLogIsNotForEverybody)
{
    runShell(R"(
        serve --background --pidfile /tmp/pid --log /tmp/log
        stat -c %a /tmp/log /tmp/pid
        stop)");
    EXPECT_EQ(said, "640\n644\n");
}

TEST_F(InBackground, itHoldsOnToNothingOfWhoeverStartedIt)
{
    // The pipe would stay open as long as the service has it as its output.
    runShell(R"(
        { serve --background --pidfile /tmp/pid; } 2>&1 | cat
        pid=$(cat /tmp/pid)
        for stream in 0 1 2; do readlink "/proc/$pid/fd/$stream"; done
        read -r number command state parent group session rest </proc/$pid/stat
        [ "$session" = "$pid" ] && echo "a session of its own"
        stop)");
    EXPECT_EQ(said, "/dev/null\n/dev/null\n/dev/null\na session of its own\n");
}

TEST_F(InBackground, whyItDoesNotServeIsToldToWhoeverStartsIt)
{
    runShell(R"(
        mkdir /tmp/socket
        serve --background --pidfile /tmp/pid --log /tmp/log
        echo "$code"
        ls /tmp)");
    EXPECT_EQ(said, "1\nsocket\nvokserve: cannot listen on /tmp/socket: File exists\n");
}

TEST_F(InBackground, anotherServiceIsToldToo)
{
    runShell(R"(
        serve --background --pidfile /tmp/pid
        first=$pid
        serve --background --pidfile /tmp/other 2>/dev/null
        echo "$code"
        ls /tmp/other 2>/dev/null
        pid=$first
        stop)");
    EXPECT_EQ(said, "3\n");
}

TEST_F(InBackground, logAndPidFileAreForTheForegroundToo)
{
    runShell(R"(
        serve --pidfile /tmp/pid --log /tmp/log >/dev/null 2>&1 &
        tries=0
        until [ -s /tmp/pid ] || [ "$tries" -ge 1000 ]; do
            tries=$((tries + 1))
            usleep 10000
        done
        pid=$(cat /tmp/pid)
        until grep -q ready /tmp/log || [ "$tries" -ge 1000 ]; do
            tries=$((tries + 1))
            usleep 10000
        done
        stop
        wait
        ls /tmp
        cat /tmp/log)");
    EXPECT_EQ(said, "log\nvokserve: ready\nvokserve: stopped\n");
}

TEST_F(InBackground, fileThatCannotBeWrittenIsAFailure)
{
    runShell(R"(
        serve --background --pidfile /missing/pid
        echo "$code"
        serve --background --log /missing/log
        echo "$code"
        ls /tmp)");
    EXPECT_EQ(said, "1\n1\nvokserve: /missing/pid: No such file or directory\n"
                    "vokserve: /missing/log: No such file or directory\n");
}

class PidFile : public root::Test {};

TEST_F(PidFile, hasTheProcessAsLongAsItIsThere)
{
    {
        const service::PidFile file("/tmp/pid");
        EXPECT_EQ(root::readFile("/tmp/pid"), root::pid() + "\n");
    }
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{});
}

TEST_F(PidFile, doesNotFollowALink)
{
    root::writeFile("/tmp/target", "precious");
    std::filesystem::create_symlink("/tmp/target", "/tmp/pid");
    EXPECT_THROW(service::PidFile("/tmp/pid"), std::system_error);
    EXPECT_EQ(root::readFile("/tmp/target"), "precious");
}

TEST_F(PidFile, thatCannotBeWrittenIsNotLeft)
{
    root::fillDisk();
    EXPECT_THROW(service::PidFile("/tmp/pid"), std::system_error);
    root::freeDisk();
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{});
}

} // namespace
