// SPDX-License-Identifier: MIT
#include "client/hooks.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "client/failure.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using client::findHooks;
using client::Hook;
using client::HookInput;
using client::HookLimits;
using client::runHook;
using Lines = std::vector<std::string>;

const std::string kFolder = "/tmp/notify.d";

class Hooks : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::create_directory(kFolder);
    }

    static Hook add(const std::string& name, const std::string& script, mode_t mode = 0755)
    {
        const std::string path = kFolder + "/" + name;
        root::writeFile(path, "#!/usr/bin/sh\n" + script);
        EXPECT_EQ(::chmod(path.c_str(), mode), 0);
        return {name, path, ""};
    }

    /// The names that are found, each with its objection.
    static Lines found()
    {
        Lines lines;
        for (const Hook& hook : findHooks(kFolder)) {
            EXPECT_EQ(hook.path, kFolder + "/" + hook.name);
            lines.push_back(hook.name + (hook.objection.empty() ? "" : ": " + hook.objection));
        }
        return lines;
    }
};

// ---- Finding ------------------------------------------------------------------------------------

TEST_F(Hooks, areThePrograms)
{
    EXPECT_EQ(found(), Lines{});
    add("web-hook", "");
    add("Mail_2", "");
    add("off", "", 0644);
    add("copy~", "");
    add("mail.dpkg-old", "");
    fs::create_directory(kFolder + "/folder");
    fs::create_symlink("/tmp/nowhere", kFolder + "/dangling");
    root::writeFile("/tmp/elsewhere", "");
    ASSERT_EQ(::chmod("/tmp/elsewhere", 0755), 0);
    fs::create_symlink("/tmp/elsewhere", kFolder + "/linked");
    EXPECT_EQ(found(), (Lines{"Mail_2", "linked", "web-hook"}));
    EXPECT_EQ(findHooks("/tmp/none").size(), 0U);
}

TEST_F(Hooks, areNotRunIfOthersCanChangeThem)
{
    add("group", "", 0775);
    add("world", "", 0757);
    const std::string objection =
        ": was not run, because others can change it (chown root, chmod go-w)";
    EXPECT_EQ(found(), (Lines{"group" + objection, "world" + objection}));
    ASSERT_EQ(::chmod(kFolder.c_str(), 0777), 0);
    add("good", "");
    EXPECT_EQ(found()[0], "good: was not run, because others can change its folder (chown root, "
                          "chmod go-w)");
    EXPECT_EQ(runHook({"x", "/x", "is not run"}, {}, {}), "is not run");
}

TEST_F(Hooks, folderThatIsNoneIsAFailure)
{
    root::writeFile("/tmp/file", "");
    try {
        (void)findHooks("/tmp/file");
        FAIL();
    } catch (const client::Failure& failure) {
        EXPECT_EQ(failure.code(), client::kFailed);
        EXPECT_STREQ(failure.what(), "cannot read /tmp/file: Not a directory");
    }
}

// ---- Running ------------------------------------------------------------------------------------

TEST_F(Hooks, getTextAndTheirEnvironmentAndNothingElse)
{
    ::setenv("SECRET", "x", 1);
    const Hook hook =
        add("hook", "cat >/tmp/text; env | grep -v ^_= | sort >/tmp/env; pwd >>/tmp/env\n");
    const std::string text = std::string(100000, 'x') + "\n";
    EXPECT_EQ(runHook(hook, {text, {"A=b c"}}, {}), "");
    ::unsetenv("SECRET");
    EXPECT_EQ(root::readFile("/tmp/text"), text);
    std::string environment = root::readFile("/tmp/env");
    const std::size_t home = environment.find("HOME=");
    environment.erase(home, environment.find('\n', home) + 1 - home);
    EXPECT_EQ(environment, "A=b c\nLC_ALL=C.UTF-8\n"
                           "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin\n"
                           "PWD=/\n/\n");
}

TEST_F(Hooks, needNotReadTheirText)
{
    EXPECT_EQ(runHook(add("hook", "exit 0\n"), {std::string(1000000, 'x'), {}}, {}), "");
}

TEST_F(Hooks, failuresAreDescribed)
{
    EXPECT_EQ(runHook(add("hook", "exit 3\n"), {}, {}), "ended with 3");
    EXPECT_EQ(runHook(add("hook", "kill -TERM $$\n"), {}, {}), "was ended by a signal: Terminated");
    EXPECT_EQ(runHook({"none", kFolder + "/none", ""}, {}, {}), "ended with 126");
    EXPECT_EQ(runHook(add("hook", ""), {}, {.account = "nobody-here"}),
              "was not run: there is no account nobody-here");
}

TEST_F(Hooks, areKilledWithAllThatTheyHaveStarted)
{
    const Hook slow = add("slow", "(sleep 1000; : >/tmp/late) & echo $! >/tmp/child; sleep 1000\n");
    EXPECT_EQ(runHook(slow, {}, {.account = "", .timeout = std::chrono::seconds(1)}),
              "took longer than 1 seconds and was killed");
    const int child = std::stoi(root::readFile("/tmp/child"));
    for (int tries = 0; tries < 500 && ::kill(child, 0) == 0; ++tries) {
        const std::string stat = root::readFile("/proc/" + std::to_string(child) + "/stat");
        if (stat.find(") Z") != std::string::npos) {
            break; // It has ended, and nobody has waited for it yet.
        }
        ::usleep(10000);
    }
    const std::string stat = root::readFile("/proc/" + std::to_string(child) + "/stat");
    EXPECT_TRUE(stat.empty() || stat.find(") Z") != std::string::npos) << stat;
}

} // namespace
