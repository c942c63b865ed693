// SPDX-License-Identifier: MIT
//
// "vokctl notify" as a timer and people call it.
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "client/hooks.h"
#include "client/notification.h"
#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Strings = std::vector<std::string>;

const std::string kFolder = client::kHookFolder;

class NotifyCommand : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        for (const fs::path& path :
             {fs::path(kFolder), fs::path(client::kToldFile).parent_path()}) {
            fs::remove_all(path);
            fs::create_directories(path);
        }
        // How full this machine's disk is is nobody's business here.
        root::writeFile("/stubs/settings", "[thresholds]\nfull-warning = 100\nfull-critical = 100\n"
                                           "[backup]\nfailed-states = 1\n[notify]\ntimeout = 20\n");
        add("first", "cat >/tmp/findings; echo \"first $VOKCONTROL_OLD_LEVEL $VOKCONTROL_NEW_LEVEL "
                     "$VOKCONTROL_TEST\" >>/tmp/told\n");
    }

    void TearDown() override
    {
        fs::remove_all(kFolder);
        root::UntracedTest::TearDown();
    }

    static void add(const std::string& name, const std::string& script)
    {
        root::writeFile(kFolder + "/" + name, "#!/usr/bin/sh\n" + script);
        ASSERT_EQ(::chmod((kFolder + "/" + name).c_str(), 0755), 0);
    }

    static root::Ended notify(const Strings& arguments = {})
    {
        Strings command = {root::built("vokctl"), "notify", "--config", "/stubs/settings"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return root::run(command);
    }

    static void expectEnd(const root::Ended& ended, int code, const std::string& output,
                          const std::string& errors)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, output);
        EXPECT_EQ(ended.errors, errors);
    }

    /// Publishes no share (fine), or one that was backed up with a state, which is critical.
    static void publish(bool isCritical)
    {
        const std::string share = root::le16(604) + "K111820261Media\n";
        const std::string payload = root::zeros(5) + root::le16(isCritical ? 1 : 0) +
                                    root::zeros(3) + (isCritical ? share : "");
        fs::remove_all("/share/Media");
        root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
    }
};

TEST_F(NotifyCommand, tellsOfEachChangeOnce)
{
    publish(false);
    expectEnd(notify(), 0, "", "");
    EXPECT_FALSE(root::exists("/tmp/told")) << "nothing is wrong";
    publish(true);
    expectEnd(notify(), 0, "", "");
    expectEnd(notify(), 0, "", "");
    publish(false);
    expectEnd(notify(), 0, "", "");
    expectEnd(notify(), 0, "", "");
    EXPECT_EQ(root::readFile("/tmp/told"), "first fine critical \nfirst critical fine \n");
}

TEST_F(NotifyCommand, tellsAgainAfterADay)
{
    publish(true);
    const auto told = [](std::time_t age) {
        root::writeFile(client::kToldFile,
                        "critical " + std::to_string(std::time(nullptr) - age) + "\n");
    };
    told(86000);
    expectEnd(notify(), 0, "", "");
    EXPECT_FALSE(root::exists("/tmp/told"));
    told(86400);
    expectEnd(notify(), 0, "", "");
    expectEnd(notify(), 0, "", "");
    EXPECT_EQ(root::readFile("/tmp/told"), "first critical critical \n");
}

TEST_F(NotifyCommand, handsTheFindingsOver)
{
    publish(true);
    expectEnd(notify(), 0, "", "");
    Json json = Json::parse(root::readFile("/tmp/findings"));
    EXPECT_TRUE(json["host"].is_string());
    EXPECT_TRUE(json["time"].is_string());
    json.erase("host");
    json.erase("time");
    EXPECT_EQ(
        json.dump(),
        R"({"findings":[{"kind":"backup-failed","level":"critical","sentence":"The backup of )"
        R"(Media on 18 November 2026 has failed with state 1: see why, and back up again.",)"
        R"("shares":["Media"]}],"new_level":"critical","old_level":"fine","test":false})");
}

TEST_F(NotifyCommand, runsOneAfterTheOtherAndLogsFailures)
{
    add("second", "echo second >>/tmp/told; echo something to say; exit 3\n");
    add("third", "echo third >>/tmp/told\n");
    publish(true);
    expectEnd(notify(), 8, "",
              "something to say\nvokctl: " + kFolder + "/second ended with 3\n" +
                  "vokctl: not everybody was told\n");
    EXPECT_EQ(root::readFile("/tmp/told"), "first fine critical \nsecond\nthird\n");
    expectEnd(notify(), 0, "", "");
    EXPECT_EQ(root::readFile("/tmp/told"), "first fine critical \nsecond\nthird\n")
        << "the others are not told twice";
}

TEST_F(NotifyCommand, testRunsThemWhateverWasTold)
{
    publish(false);
    expectEnd(notify({"--test"}), 0, kFolder + "/first ended well\n", "");
    EXPECT_EQ(root::readFile("/tmp/told"), "first fine fine yes\n");
    EXPECT_FALSE(root::exists(client::kToldFile));
    EXPECT_EQ(Json::parse(root::readFile("/tmp/findings"))["test"], true);
}

TEST_F(NotifyCommand, withoutProgramsNothingIsToldAndNothingKept)
{
    fs::remove(kFolder + "/first");
    publish(true);
    expectEnd(notify(), 0, "", "");
    EXPECT_FALSE(root::exists(client::kToldFile)) << "the first program is told of it later";
    expectEnd(notify({"--test"}), 6, "", "vokctl: no program is switched on in " + kFolder + "\n");
}

TEST_F(NotifyCommand, runsNothingAsRootIfAnAccountIsNamedThatIsNotThere)
{
    root::writeFile("/stubs/settings", "[notify]\naccount = nobody-here\n");
    publish(true);
    expectEnd(notify({"--test"}), 8, "",
              "vokctl: " + kFolder + "/first was not run: there is no account nobody-here\n" +
                  "vokctl: not everybody was told\n");
    EXPECT_FALSE(root::exists("/tmp/told"));
}

} // namespace
