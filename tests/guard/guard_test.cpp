// SPDX-License-Identifier: MIT
#include "guard/guard.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kPath = "PATH=/stubs:/usr/bin";

/// The guard with stubs as programs, and refusals in a file.
class Guard : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        UntracedTest::SetUp();
        guard::usePath(kPath);
        log_ = ::open("/stubs/log", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        guard::logTo(log_);
    }
    void TearDown() override
    {
        guard::logTo(STDERR_FILENO);
        ::close(log_);
        guard::usePath(guard::kDefaultPath);
        UntracedTest::TearDown();
    }

  private:
    int log_ = -1;
};

std::string logged()
{
    return root::readFile("/stubs/log");
}

TEST_F(Guard, aKnownLineRunsUnchanged)
{
    root::stub("du", "printf '%s|' \"$@\"; exit 3");
    EXPECT_EQ(guard::carryOut("du -sk \"/share/Tom & Jerry films\" > /tmp/pelsts1.tmp"), 3 << 8);
    EXPECT_EQ(root::readFile("/tmp/pelsts1.tmp"), "-sk|/share/Tom & Jerry films|");
    EXPECT_EQ(logged(), "");
}

TEST_F(Guard, wordsReachTheScriptAsSeparateArguments)
{
    root::stub("php", "printf '%s|' \"$@\"");
    EXPECT_EQ(guard::carryOut("sudo /usr/bin/php /etc/inc/api_system.php tovSetHostname my  nas > "
                              "/tmp/setSysVar1"),
              0);
    EXPECT_EQ(root::readFile("/tmp/setSysVar1"), "/etc/inc/api_system.php|tovSetHostname|my|nas|");
}

TEST_F(Guard, aLineWithoutAShapeDoesNotRunAndIsLoggedWithoutItsText)
{
    root::stub("du", ": >/tmp/ran");
    errno = ENOSPC;
    EXPECT_EQ(guard::carryOut("du -sk \"/share/`secret`\" > /tmp/pelsts1.tmp"), 2 << 8);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(guard::carryOut("secret"), 2 << 8);
    EXPECT_EQ(guard::carryOut(""), 2 << 8);
    EXPECT_EQ(guard::carryOut("sudo rm -r /"), 2 << 8);
    EXPECT_EQ(root::list("/tmp"), Lines{});
    const std::string start =
        std::string(::program_invocation_short_name) + ": a shell line was refused: ";
    EXPECT_EQ(logged(), start + "measuring a share, share\n" + start +
                            "an unknown one, its words\n" + start + "an unknown one, its words\n" +
                            start + "removing a file, its words\n");
}

TEST_F(Guard, aRefusalReturnsTheResultOfALineThatAShellCannotParse)
{
    watch::mayBeStrange("du");
    EXPECT_EQ(guard::carryOut("du -sk \"/share/a\"b\" > /tmp/pelsts1.tmp"),
              ::system("du -sk \"/share/a\"b\" > /tmp/pelsts1.tmp 2>/dev/null"));
}

TEST_F(Guard, withoutALineItReturnsThatThereIsAShell)
{
    EXPECT_EQ(guard::carryOut(nullptr), 1);
}

} // namespace
