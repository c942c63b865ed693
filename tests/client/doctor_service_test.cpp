// SPDX-License-Identifier: MIT
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

#include "client/doctor_checks.h"
#include "sharestatus/status_format.h"
#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace {

using namespace client;
namespace fs = std::filesystem;

class DoctorService : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        surroundings_.settings.path = "/stubs:/usr/bin";
        surroundings_.settings.socket = "/tmp/socket";
        surroundings_.settingsFile = "/stubs/settings";
        surroundings_.isRoot = true;
        root::writeFile("/stubs/settings", "");
    }
    void TearDown() override
    {
        for (const char* path : {"/etc/init.d", "/etc/default", "/run/systemd"}) {
            fs::remove_all(path);
        }
        fs::remove("/run/vokcontrol-collect.pid");
        root::UntracedTest::TearDown();
    }

    Diagnosis say(Diagnosis (*examine)(const Surroundings&, const Check&)) const
    {
        return examine(surroundings_, {"it", false, nullptr, examine});
    }

    static void publish()
    {
        const std::string payload =
            root::zeros(5) + root::le16(1) + root::zeros(3) + root::le16(604) + "K111820261Media\n";
        root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
    }

    Surroundings surroundings_;
};

TEST_F(DoctorService, settingsCanBeRead)
{
    EXPECT_EQ(say(examineSettings), good("They can be read."));
    root::writeFile("/stubs/settings", "nonsense\n");
    EXPECT_EQ(say(examineSettings),
              wrong("/stubs/settings:1: this is neither \"key = value\" nor a [section].",
                    "correct it; vokcontrol.conf(5) says what it may contain"));
    for (const mode_t mode : {0664U, 0602U}) {
        ::chmod("/stubs/settings", mode);
        EXPECT_EQ(say(examineSettings),
                  wrong("/stubs/settings: others can change this file; it must belong to root, and "
                        "only its owner may write it (chown root, chmod go-w).",
                        "chown root /stubs/settings; chmod go-w /stubs/settings"));
    }
}

TEST_F(DoctorService, bothGroupsAreThere)
{
    surroundings_.settings.group = "root";
    EXPECT_EQ(say(examineGroup),
              wrong("There is no group vokcontrol-view, whose members may ask the service.",
                    "groupadd --system vokcontrol-view, then start the service anew"));
    surroundings_.settings.viewGroup = "root";
    EXPECT_EQ(say(examineGroup), good("There are root and root."));
}

TEST_F(DoctorService, socketIsOneOfRoots)
{
    const std::string start = "systemctl start vokserve.socket, or /etc/init.d/vokcontrol start";
    EXPECT_EQ(say(examineSocket), wrong("There is no /tmp/socket.", start));
    root::writeFile("/tmp/socket", "");
    EXPECT_EQ(say(examineSocket),
              wrong("/tmp/socket is not a socket.", "remove it, then " + start));
    fs::remove("/tmp/socket");
    const int listener = root::listenAt("/tmp/socket");
    EXPECT_EQ(say(examineSocket), good("Its path is /tmp/socket."));
    ::close(listener);
}

TEST_F(DoctorService, serviceThatIsGoneIsWrong)
{
    ::close(root::listenAt("/tmp/socket"));
    EXPECT_EQ(say(examineService),
              wrong("It cannot be asked: cannot reach the service at /tmp/socket: Connection "
                    "refused. Is vokserve running?",
                    "see its log: journalctl -u vokserve, or /var/log/vokserve.log"));
}

TEST_F(DoctorService, initScriptStandsInForUnits)
{
    EXPECT_EQ(say(examineUnits),
              wrong("There is neither systemd nor a program /etc/init.d/vokcontrol.",
                    "copy the init script there; install.md says how"));
    fs::create_directory("/etc/init.d");
    root::stub("script", "true");
    fs::copy("/stubs/script", "/etc/init.d/vokcontrol");
    EXPECT_EQ(say(examineUnits), good("There is no systemd, but /etc/init.d/vokcontrol."));
}

TEST_F(DoctorService, regularCollectionsAreStartedByAProcess)
{
    fs::create_directory("/etc/default");
    EXPECT_EQ(say(examineTimer), wrong("Nothing starts collections.",
                                       "/etc/init.d/vokcontrol restart, and see its log"));
    root::writeFile("/etc/default/vokcontrol", "interval=60\n#interval=5\ninterval=0 # none\n");
    EXPECT_EQ(say(examineTimer),
              unneeded("No regular collections, as /etc/default/vokcontrol says."));
    root::writeFile("/etc/default/vokcontrol", "boot=no\ninterval=600\n");
    const root::Program process({"/usr/bin/sh", "-c", "sleep 100; : vokcontrol"});
    // Before the shell has started it is a copy of this process.
    const std::string words = "/proc/" + std::to_string(process.pid()) + "/cmdline";
    while (root::readFile(words).find("vokcontrol") == std::string::npos) {
        ::usleep(1000);
    }
    root::writeFile("/run/vokcontrol-collect.pid", std::to_string(process.pid()) + "\n");
    EXPECT_EQ(say(examineTimer), good("A collection starts every 600 seconds."));
    ::kill(process.pid(), SIGKILL);
}

TEST_F(DoctorService, systemdIsAskedForUnits)
{
    fs::create_directories("/run/systemd/system");
    root::stub("systemctl", "echo \"$3\" >>/units; [ \"$1 $2\" != 'is-failed --quiet' ]");
    EXPECT_EQ(say(examineUnits), good("They are enabled, and none has failed."));
    EXPECT_EQ(root::readFile("/units"), "vokserve.socket\nvokserve.socket\n"
                                        "vokcontrol-collect.timer\nvokcontrol-collect.timer\n"
                                        "vokcontrol-boot.service\nvokcontrol-boot.service\n"
                                        "vokcontrol-history.path\nvokcontrol-history.path\n"
                                        "vokcontrol-notify.timer\nvokcontrol-notify.timer\n");
    EXPECT_EQ(say(examineTimer), good("vokcontrol-collect.timer is active."));
    root::stub("systemctl", "exit 1");
    EXPECT_EQ(say(examineUnits),
              wrong("vokserve.socket is not enabled.", "systemctl enable --now vokserve.socket"));
    EXPECT_EQ(say(examineTimer),
              wrong("vokcontrol-collect.timer is not active, so that no collection starts.",
                    "systemctl start vokcontrol-collect.timer"));
    root::stub("systemctl", "exit 0");
    EXPECT_EQ(say(examineUnits),
              wrong("vokserve.socket has failed.",
                    "systemctl status vokserve.socket, then systemctl restart vokserve.socket"));
}

TEST_F(DoctorService, publicationIsJudged)
{
    const std::string collect = "vokctl collect --wait 600";
    EXPECT_EQ(say(examineStatus),
              wrong("No share has been measured yet: start a collection.", collect));
    publish();
    EXPECT_EQ(say(examineStatus).reason.substr(0, 19), "1 share, published ");
    EXPECT_EQ(say(examineCollection), good("None is running, and none was interrupted."));
    root::writeFile(root::kSemaphoreFile, std::string("\1\0", 2) + root::le32(0));
    EXPECT_EQ(say(examineCollection).sign, Sign::kWrong);
    EXPECT_EQ(say(examineCollection).remedy, collect);
}

} // namespace
