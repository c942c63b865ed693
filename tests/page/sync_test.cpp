// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "page/process.h"
#include "tests/page/visits.h"

namespace {

using visits::contains;
using visits::Made;

class SyncPage : public root::Test {
  protected:
    /// A daemon that goes into the background and waits there for ever.
    void SetUp() override
    {
        root::Test::SetUp();
        ASSERT_EQ(::mkfifo("/stubs/never", 0600), 0);
        root::writeFile("/usr/bin/tidewaved",
                        "#!/usr/bin/sh\n"
                        "if [ \"$1\" = run ]; then read -r line </stubs/never; exit; fi\n"
                        "echo \"$*\" >>/tmp/starts\n"
                        "\"$0\" run </dev/null >/dev/null 2>&1 &\n");
        std::filesystem::permissions("/usr/bin/tidewaved", std::filesystem::perms(0755));
    }

    void TearDown() override
    {
        if (page::isProcessRunning(page::kSyncDaemon)) {
            EXPECT_EQ(std::system("killall tidewaved"), 0);
        }
        std::filesystem::remove("/usr/bin/tidewaved");
        root::Test::TearDown();
    }

    static Made post(const std::string& fields)
    {
        return visits::make(page::makeSync, visits::post(fields));
    }
};

TEST_F(SyncPage, showsTheStateAndChangesNothing)
{
    const Made made = visits::make(page::makeSync, visits::get());
    EXPECT_EQ(made.title, "Sync");
    EXPECT_EQ(made.script, "");
    EXPECT_TRUE(contains(made.body, "The sync daemon is not running."));
    EXPECT_TRUE(contains(made.body, R"(name="switch" value="on">Switch on<)"));
    EXPECT_TRUE(contains(made.body, R"(name="token" value=")" + visits::kToken + R"(")"));
    EXPECT_FALSE(contains(made.body, "notice"));
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

TEST_F(SyncPage, accountsThatMayOnlyLookAreToldSo)
{
    page::Visitor other = visits::administrator();
    other.isAdministrator = false;
    const Made made = visits::make(page::makeSync, visits::get(), other);
    EXPECT_TRUE(made.body.ends_with("The sync daemon is not running.</p>\n<p>Only an administrator "
                                    "can switch it on or off.</p>\n</section>\n"))
        << made.body;
}

TEST_F(SyncPage, switchesOnAndOff)
{
    const Made on = post("switch=on");
    EXPECT_TRUE(contains(on.body, "Sync was switched on."));
    EXPECT_TRUE(contains(on.body, "The sync daemon is running."));
    EXPECT_TRUE(contains(on.body, R"(name="switch" value="off">Switch off<)"));
    EXPECT_EQ(root::readFile("/tmp/starts"), "-n 3\n");
    EXPECT_TRUE(contains(on.script, "//<!-- tideWaveFunc(1),cmd: sudo /usr/sbin/tidewaved -n 3, "
                                    "iRet: 0, sysErr: Success-->\n"));

    const Made off = post("switch=off");
    EXPECT_TRUE(contains(off.body, "Sync was switched off."));
    EXPECT_TRUE(contains(off.body, "The sync daemon is not running."));
    EXPECT_EQ(off.script, "//<!-- tideWaveFunc(0),iRet: 0, sysErr: Success-->\n");
    EXPECT_FALSE(page::isProcessRunning("tidewaved"));
}

TEST_F(SyncPage, switchingOffWhatIsOffIsGood)
{
    EXPECT_TRUE(contains(post("switch=off").body, "Sync was switched off."));
}

TEST_F(SyncPage, daemonThatDoesNotStartIsTold)
{
    root::writeFile("/usr/bin/tidewaved", "#!/usr/bin/sh\nexit 1\n");
    const Made made = post("switch=on");
    EXPECT_TRUE(contains(made.body, "The sync daemon could not be started."));
    EXPECT_TRUE(contains(made.body, "The sync daemon is not running."));
}

TEST_F(SyncPage, startThatCannotBeMadeIsToldAtOnce)
{
    watch::answer("sudo /usr/sbin/tidewaved", -1, ENOMEM);
    EXPECT_TRUE(contains(post("switch=on").body, "The sync daemon could not be started."));
}

TEST_F(SyncPage, daemonThatDoesNotStopIsTold)
{
    watch::mayBeStrange("killall");
    (void)post("switch=on");
    watch::answer("sudo killall", 0, 0);
    const Made made = post("switch=off");
    EXPECT_TRUE(contains(made.body, "The sync daemon does not stop."));
    EXPECT_TRUE(contains(made.body, "The sync daemon is running."));
}

TEST_F(SyncPage, switchHasTwoStates)
{
    for (const char* fields : {"", "switch=", "switch=1", "switch=ON"}) {
        try {
            (void)post(fields);
            FAIL() << fields;
        } catch (const page::Refusal& refusal) {
            EXPECT_EQ(refusal.status(), 400);
            EXPECT_STREQ(refusal.what(), "The switch is either on or off.");
        }
    }
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

} // namespace
