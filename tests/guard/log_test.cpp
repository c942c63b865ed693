// SPDX-License-Identifier: MIT
#include "guard/log.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "guard/guard.h"
#include "tests/support/root.h"

namespace {

class GuardLog : public root::UntracedTest {};

/// The log of a refusal.
std::string logged(const guard::Verdict& verdict)
{
    const int log = ::open("/stubs/log", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    guard::logTo(log);
    guard::logRefusal(verdict);
    guard::logTo(STDERR_FILENO);
    ::close(log);
    return root::readFile("/stubs/log");
}

TEST_F(GuardLog, namesTheProgramTheOperationAndThePlace)
{
    EXPECT_EQ(logged({false, "measuring a share", "share"}),
              std::string(::program_invocation_short_name) +
                  ": a shell line was refused: measuring a share, share\n");
}

TEST_F(GuardLog, aLongLineIsCutToTheBuffer)
{
    const std::string longest(300, 'x');
    const std::string line = logged({false, longest, "share"});
    EXPECT_EQ(line, (std::string(::program_invocation_short_name) +
                     ": a shell line was refused: " + longest)
                        .substr(0, 256));
}

TEST_F(GuardLog, goesToStandardErrorByDefault)
{
    testing::internal::CaptureStderr();
    guard::logRefusal({false, "collecting", "its words"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(::program_invocation_short_name) +
                  ": a shell line was refused: collecting, its words\n");
}

} // namespace
