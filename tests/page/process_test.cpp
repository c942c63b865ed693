// SPDX-License-Identifier: MIT
#include "page/process.h"

#include <csignal>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using page::isProcessRunning;

class Process : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        ASSERT_EQ(::mkfifo("/stubs/never", 0600), 0);
    }

    /// Starts a program of a name that waits for ever, and looks for another name.
    static bool isFoundAs(const std::string& name, const std::string& wanted)
    {
        root::stub(name, "echo >/tmp/ready; read -r line </stubs/never");
        root::Program program({"/stubs/" + name});
        while (!root::exists("/tmp/ready")) {
            ::usleep(1000);
        }
        const bool isFound = isProcessRunning(wanted);
        ::kill(program.pid(), SIGTERM);
        EXPECT_EQ(program.wait().exitCode, 128 + SIGTERM);
        return isFound;
    }
};

TEST_F(Process, isFoundWhileItRuns)
{
    EXPECT_FALSE(isProcessRunning("tidewaved"));
    EXPECT_TRUE(isFoundAs("tidewaved", "tidewaved"));
    EXPECT_FALSE(isProcessRunning("tidewaved"));
}

TEST_F(Process, isFoundByItsWholeName)
{
    EXPECT_FALSE(isFoundAs("tidewaved2", "tidewaved"));
    EXPECT_FALSE(isFoundAs("tidewave", "tidewaved"));
}

TEST_F(Process, isFoundByTheStartOfALongName)
{
    EXPECT_TRUE(isFoundAs("name-of-twenty-signs", "name-of-twenty-signs"));
}

} // namespace
