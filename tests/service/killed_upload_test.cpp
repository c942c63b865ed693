// SPDX-License-Identifier: MIT
//
// Uploads through a service of which something is killed, behind each of its steps, one after the
// other. Whatever that was, the next download gives the former file whole or the new one whole.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

#include "service/private_file.h"
#include "service/upload.h"
#include "tests/service/socket_client.h"
#include "tests/support/request.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;
using request::frame;
using root::le32;
using service::kPrivateFile;
using service::kRunFolder;
using service::kSavedFile;
using socketclient::exchange;
using socketclient::kSocket;
using socketclient::serviceStatus;

constexpr std::uint32_t kTimedOut = 0x53000001;
constexpr std::uint32_t kFailed = 0x53000002;
constexpr std::uint32_t kNotStarted = 0x53000003;

const std::string kFormer = "the former file\n";
const std::string kNew(3000, 'n');
const std::string kUpload = frame("spvt", 2, le32(3000) + "\n" + kNew + "\n");

/// What a download answers.
std::string sent(const std::string& content)
{
    return "gprt " + le32(2) + "\n" + le32(static_cast<std::uint32_t>(content.size())) + "\n" +
           content;
}

/// What an upload meets.
struct Scene {
    const char* name;
    std::string mv = {};
    bool hasFormer = true;
    bool isLink = false;
};

const std::vector<Scene> kScenes = {
    {"mv as it is"},
    {"mv moves nothing", "exit 1"},
    {"mv copies a part", "head -c 3 \"$1\" >\"$2\"; exit 1"},
    {"mv only copies", "cp \"$1\" \"$2\"; exit 1"},
    {"first file", "", false},
    {"link", "", true, true},
    {"link that mv does not move", "exit 1", true, true},
};

class KilledUpload : public root::UntracedTest {
  protected:
    std::optional<root::Program> service;
    Lines serviceLog;

    void start(bool isBreakable = true, const std::string& timeout = "30")
    {
        Lines command = {root::built("vokserve"), "--shared-tmp", "--socket", kSocket, "--path",
                         std::getenv("PATH"),     "--timeout",    timeout};
        if (isBreakable) {
            command.insert(command.begin(), {"env", "LD_PRELOAD=" + root::built("libkiller.so")});
        }
        // A process that the last service has forked may have its socket for another moment.
        fs::remove(kSocket);
        service.emplace(command);
        socketclient::awaitService();
    }

    /// Whether the service is gone; after a while where it should be.
    bool isDead(int tries = 1)
    {
        int result = 0;
        for (int i = 0; i < tries && result == 0; ++i) {
            result = ::waitpid(service->pid(), nullptr, WNOHANG);
            ::usleep((result == 0 && tries > 1) ? 1000 : 0);
        }
        if (result != 0) {
            service.reset();
        }
        return result != 0;
    }

    void stop()
    {
        if (service && !isDead()) {
            ::kill(service->pid(), SIGTERM);
            EXPECT_EQ(service->wait().exitCode, 0);
            service.reset();
        }
    }

    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::remove_all(kRunFolder);
    }

    void TearDown() override
    {
        fs::remove("/stubs/kill");
        stop();
        root::UntracedTest::TearDown();
        fs::remove_all(kRunFolder);
    }

    static void prepare(const Scene& scene)
    {
        fs::remove_all(kSavedFile);
        fs::remove_all(kPrivateFile);
        fs::remove("/stubs/mv");
        if (scene.isLink) {
            root::writeFile("/stubs/elsewhere", kFormer);
            fs::create_symlink("/stubs/elsewhere", kPrivateFile);
        } else if (scene.hasFormer) {
            root::writeFile(kPrivateFile, kFormer);
        }
        if (!scene.mv.empty()) {
            root::stub("mv", scene.mv);
        }
    }

    /// A download gives one of the two files whole, and nothing is left of the upload.
    static void expectWhole(const Scene& scene)
    {
        const std::string answer = exchange(frame("gpvt", 0));
        const std::string former = scene.hasFormer ? sent(kFormer) : "erro " + le32(0x70000001);
        EXPECT_TRUE(answer == former || answer == sent(kNew)) << answer.substr(0, 60);
        expectTidy();
    }

    /// What is in the service's folder, but for the times of requests.
    static Lines runFolder()
    {
        Lines names = root::list(kRunFolder);
        std::erase_if(names, [](const std::string& name) { return name.starts_with("requests"); });
        return names;
    }

    static void expectTidy()
    {
        EXPECT_EQ(runFolder(), Lines{"lock"});
        EXPECT_FALSE(root::exists(kSavedFile));
        Lines names = root::list(root::kStatusFolder);
        std::erase_if(names, [](const std::string& name) {
            return name == "__bksts" || name == "vokcontrol_cmd_used" ||
                   name == "vokcontrol-private.txt";
        });
        EXPECT_EQ(names, Lines{});
    }

    /// Uploads once, where somebody is killed behind a step.
    /// @return whether that step was reached
    bool isKilled(const Scene& scene, const std::string& who, int step)
    {
        if (!service) {
            start();
        }
        prepare(scene);
        root::writeFile("/stubs/kill", who + " " + std::to_string(step));
        const std::string answer = exchange(kUpload);
        fs::remove("/stubs/kill");
        if (who == "child") {
            EXPECT_TRUE(answer == le32(0) || answer == serviceStatus(kFailed)) << answer;
            return answer != le32(0);
        }
        const bool isGone = isDead(answer.size() == le32(0).size() ? 1 : 5000);
        if (isGone) {
            start();
        }
        return isGone;
    }

    /// Kills somebody behind each step of an upload.
    /// @return how many steps that were
    int walk(const Scene& scene, const std::string& who)
    {
        SCOPED_TRACE(std::string(scene.name) + ", " + who);
        int step = 0;
        while (isKilled(scene, who, step)) {
            SCOPED_TRACE("step " + std::to_string(step));
            expectWhole(scene);
            ++step;
        }
        EXPECT_EQ(root::readFile(kPrivateFile), kNew) << "the last one came to its end";
        expectTidy();
        stop();
        return step;
    }
};

/// Eight traces and shell lines, or six where nothing is moved, and the calls that write files.
TEST_F(KilledUpload, processOfTheRequestAtEachStep)
{
    for (const Scene& scene : kScenes) {
        EXPECT_GE(walk(scene, "child"), 12) << scene.name;
    }
}

TEST_F(KilledUpload, serviceAtEachStepOfTheRequestsProcess)
{
    for (const Scene& scene : kScenes) {
        EXPECT_GE(walk(scene, "service-of-child"), 12) << scene.name;
    }
}

/// The folder, the note (lock, flush, name), the process, the answer's removal, the note's.
TEST_F(KilledUpload, serviceAtEachStepOfItsOwn)
{
    for (const Scene& scene : kScenes) {
        EXPECT_GE(walk(scene, "service"), 7) << scene.name;
    }
}

/// A service that is killed while it repairs is followed by one that does.
TEST_F(KilledUpload, serviceAtEachStepOfARepair)
{
    for (const bool isFormerLost : {false, true}) {
        int step = 0;
        for (bool isGone = true; isGone; ++step) {
            SCOPED_TRACE(step);
            prepare(kScenes[0]);
            service::Upload upload;
            ASSERT_TRUE(upload.begin(kNew));
            upload.handOver();
            root::writeFile(kPrivateFile, "a part");
            if (!isFormerLost) {
                root::writeFile(kSavedFile, kFormer);
            }
            root::writeFile("/stubs/kill", "service " + std::to_string(step));
            service.emplace(Lines{"env", "LD_PRELOAD=" + root::built("libkiller.so"),
                                  root::built("vokserve"), "--shared-tmp", "--socket", kSocket});
            while (!isDead() && root::exists(std::string(kRunFolder) + "/upload")) {
                ::usleep(1000);
            }
            ::usleep(20000);
            isGone = !service || isDead();
            fs::remove("/stubs/kill");
            if (isGone) {
                start(false);
            }
            socketclient::awaitService();
            EXPECT_EQ(exchange(frame("gpvt", 0)), sent(isFormerLost ? kNew : kFormer));
            expectTidy();
            stop();
        }
        EXPECT_GE(step, 4) << "lock, flush, name, note";
    }
}

// ---- In the middle of a step ------------------------------------------------------------------

/// What a stub does to the process group that it belongs to.
constexpr const char* kKillGroup =
    "read -r pid comm state ppid group rest </proc/self/stat; kill -9 -$group";

TEST_F(KilledUpload, inTheMiddleOfAMove)
{
    const Lines moves = {
        "head -c 3 \"$1\" >\"$2\"; ",
        "cp \"$1\" \"$2\"; ",
        "cp \"$1\" \"$2\"; rm \"$1\"; ",
    };
    for (const std::string& move : moves) {
        start();
        const Scene killed = {"killed", move + kKillGroup};
        prepare(killed);
        EXPECT_EQ(exchange(kUpload), serviceStatus(kFailed));
        expectWhole(killed);
        stop();
    }
}

TEST_F(KilledUpload, whatTakesTooLongIsRepairedAtOnce)
{
    start(false, "1");
    const Scene slow = {"slow", "cp \"$1\" \"$2\"; rm \"$1\"; printf 'a part' >\"$1\"; sleep 1000"};
    prepare(slow);
    EXPECT_EQ(exchange(kUpload), serviceStatus(kTimedOut));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    expectTidy();
    expectWhole(slow);
}

/// The service is gone, but mv still runs, and would bring a part into the next one's file.
TEST_F(KilledUpload, moveThatOutlivesTheServiceIsEndedByTheNext)
{
    start();
    const Scene slow = {"slow",
                        "cp \"$1\" \"$2\"; rm \"$1\"; echo $$ >/stubs/mover; "
                        "kill -9 $(cat /stubs/service); sleep 1000; printf 'a part' >\"$1\""};
    prepare(slow);
    root::writeFile("/stubs/service", std::to_string(service->pid()));
    static_cast<void>(exchange(kUpload));
    ASSERT_TRUE(isDead(5000));
    const int mover = std::stoi(root::readFile("/stubs/mover"));
    EXPECT_EQ(::kill(mover, 0), 0) << "it goes on by itself";
    start(false);
    EXPECT_EQ(exchange(frame("gpvt", 0)), sent(kFormer));
    expectTidy();
    for (int tries = 0; tries < 500 && ::kill(mover, 0) == 0; ++tries) {
        ::usleep(10000);
    }
    EXPECT_NE(::kill(mover, 0), 0);
}

// ---- What is refused --------------------------------------------------------------------------

TEST_F(KilledUpload, uploadThatCannotBeNotedIsRefusedAndCounted)
{
    const std::string inTheWay = std::string(kRunFolder) + "/upload.new";
    fs::create_directories(inTheWay);
    root::writeFile(kPrivateFile, kFormer);
    start(false);
    EXPECT_EQ(exchange(kUpload), serviceStatus(kNotStarted));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    EXPECT_EQ(exchange(frame("gpvt", 0)), sent(kFormer)) << "all else is served";
    fs::remove(inTheWay);
    EXPECT_EQ(exchange(kUpload), le32(0));
    EXPECT_EQ(exchange(frame("gpvt", 0)), sent(kNew));
    stop();
    EXPECT_EQ(root::readFile(VOK_USAGE_FILE).substr(8 * 6, 8), "spvt" + le32(2));
}

TEST_F(KilledUpload, folderOfTheServiceIsItsOwn)
{
    start(false);
    EXPECT_EQ(exchange(kUpload), le32(0));
    EXPECT_EQ(fs::status(kRunFolder).permissions(), fs::perms(0700));
    EXPECT_EQ(runFolder(), Lines{"lock"});
}

} // namespace
