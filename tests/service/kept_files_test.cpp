// SPDX-License-Identifier: MIT
//
// Which files the service closes to others, and what it leaves alone.
#include "service/kept_files.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "service/private_file.h"
#include "tests/service/socket_client.h"
#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using request::frame;
using root::le32;
using service::kPrivateFile;
using service::kTraceFile;
using service::kVariableLock;
using socketclient::Client;
using socketclient::exchange;
using socketclient::kSocket;

struct stat statusOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

unsigned modeOf(const std::string& path)
{
    return statusOf(path).st_mode & 07777U;
}

void makeFile(const std::string& path, const std::string& content, unsigned mode)
{
    root::writeFile(path, content);
    fs::permissions(path, fs::perms(mode));
}

/// What an action says in the log.
std::string logged(void (*action)())
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

std::string protect()
{
    return logged([] { service::protectVariableLock(); });
}

std::string complaint(const std::string& reason)
{
    return std::string("vokserve: cannot keep other accounts from locking ") + kVariableLock +
           " (" + reason + "); while it is locked, no program can read or write variables\n";
}

class KeptFiles : public root::UntracedTest {
  protected:
    void TearDown() override
    {
        ::umask(022);
        root::UntracedTest::TearDown();
    }
};

// ---- The variables' lock ----------------------------------------------------------------------

TEST_F(KeptFiles, lockIsMadeForTheServicesUserAlone)
{
    ::umask(0);
    EXPECT_EQ(protect(), "");
    EXPECT_EQ(modeOf(kVariableLock), 0600U);
    EXPECT_EQ(statusOf(kVariableLock).st_uid, ::geteuid());
}

TEST_F(KeptFiles, lockThatIsAsItMustBeStays)
{
    makeFile(kVariableLock, "", 0600);
    const ino_t before = statusOf(kVariableLock).st_ino;
    EXPECT_EQ(protect(), "");
    EXPECT_EQ(statusOf(kVariableLock).st_ino, before);
    EXPECT_EQ(modeOf(kVariableLock), 0600U);
}

TEST_F(KeptFiles, lockThatOthersMayHaveOpenIsReplaced)
{
    const std::vector<std::string> before = root::list("/etc/pelconfig");
    for (const unsigned mode : {0644U, 0666U, 0640U, 0604U, 0400U, 04600U}) {
        makeFile(kVariableLock, "", mode);
        const int stranger = ::open(kVariableLock, O_RDONLY | O_CLOEXEC);
        ASSERT_GE(stranger, 0);
        EXPECT_EQ(protect(), "") << mode;
        EXPECT_EQ(modeOf(kVariableLock), 0600U) << mode;
        // What the stranger can lock now is nobody's lock any more.
        EXPECT_EQ(::flock(stranger, LOCK_EX | LOCK_NB), 0);
        const int own = ::open(kVariableLock, O_RDWR | O_CLOEXEC);
        EXPECT_EQ(::flock(own, LOCK_EX | LOCK_NB), 0) << mode;
        ::close(own);
        ::close(stranger);
        fs::remove(kVariableLock);
    }
    EXPECT_EQ(root::list("/etc/pelconfig"), before) << "no other file is left";
}

TEST_F(KeptFiles, lockThatSomebodyKeepsIsReplacedAllTheSame)
{
    makeFile(kVariableLock, "", 0666);
    const int stranger = ::open(kVariableLock, O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(stranger, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(protect(), "");
    EXPECT_EQ(modeOf(kVariableLock), 0600U);
    const int own = ::open(kVariableLock, O_RDWR | O_CLOEXEC);
    EXPECT_EQ(::flock(own, LOCK_EX | LOCK_NB), 0);
    ::close(own);
    ::close(stranger);
}

TEST_F(KeptFiles, lockIsReplacedAfterItsHolderHasFinished)
{
    makeFile(kVariableLock, "", 0666);
    int ready[2] = {};
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t holder = ::fork();
    if (holder == 0) {
        const int file = ::open(kVariableLock, O_RDONLY | O_CLOEXEC);
        ::flock(file, LOCK_EX);
        [[maybe_unused]] const ssize_t told = ::write(ready[1], "r", 1);
        ::usleep(200'000);
        const bool isStillThere =
            fs::file_size(kVariableLock) == 0 && modeOf(kVariableLock) == 0666U;
        ::_exit(isStillThere ? 0 : 1);
    }
    char told = 0;
    ASSERT_EQ(::read(ready[0], &told, 1), 1);
    EXPECT_EQ(protect(), "");
    int status = -1;
    ::waitpid(holder, &status, 0);
    EXPECT_EQ(status, 0) << "it was replaced under its holder's hands";
    EXPECT_EQ(modeOf(kVariableLock), 0600U);
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(KeptFiles, whatIsNoFileInTheLocksPlaceIsLeftAlone)
{
    fs::create_directory(kVariableLock);
    EXPECT_EQ(protect(), complaint("Is a directory"));
    fs::remove(kVariableLock);

    ASSERT_EQ(::mkfifo(kVariableLock, 0666), 0);
    fs::permissions(kVariableLock, fs::perms(0666));
    EXPECT_EQ(protect(), complaint("it is not a regular file"));
    EXPECT_EQ(modeOf(kVariableLock), 0666U);
    fs::remove(kVariableLock);

    makeFile("/stubs/target", "", 0666);
    fs::create_symlink("/stubs/target", kVariableLock);
    EXPECT_EQ(protect(), complaint("Too many levels of symbolic links"));
    EXPECT_EQ(modeOf("/stubs/target"), 0666U);
    fs::remove(kVariableLock);
}

TEST_F(KeptFiles, lockThatCannotBeMadeIsLogged)
{
    testing::internal::CaptureStderr();
    service::protectVariableLock("/stubs/missing/lock");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokserve: cannot keep other accounts from locking /stubs/missing/lock (No such file "
              "or directory); while it is locked, no program can read or write variables\n");
}

// ---- The private file -------------------------------------------------------------------------

TEST_F(KeptFiles, privateFileIsClosed)
{
    makeFile(kPrivateFile, "private", 0644);
    service::closePrivateFile();
    EXPECT_EQ(modeOf(kPrivateFile), 0600U);
    EXPECT_EQ(root::readFile(kPrivateFile), "private");
    fs::remove(kPrivateFile);
    service::closePrivateFile();
    EXPECT_FALSE(root::exists(kPrivateFile));
}

TEST_F(KeptFiles, whatIsNoPrivateFileStaysAsItIs)
{
    makeFile("/stubs/target", "", 0644);
    fs::create_symlink("/stubs/target", kPrivateFile);
    service::closePrivateFile();
    EXPECT_EQ(modeOf("/stubs/target"), 0644U);
    fs::remove(kPrivateFile);
    ASSERT_EQ(::mkfifo(kPrivateFile, 0644), 0);
    service::closePrivateFile();
    EXPECT_EQ(modeOf(kPrivateFile), 0644U);
    fs::remove(kPrivateFile);
    fs::create_directory(kPrivateFile);
    service::closePrivateFile();
    EXPECT_EQ(modeOf(kPrivateFile), 0755U);
    fs::remove(kPrivateFile);
}

// ---- The traces -------------------------------------------------------------------------------

TEST_F(KeptFiles, tracesAreEmptied)
{
    makeFile(kTraceFile, "password=secret\n", 0644);
    service::emptyTraces();
    EXPECT_EQ(root::readFile(kTraceFile), "");
    EXPECT_EQ(modeOf(kTraceFile), 0644U);
    fs::remove(kTraceFile);
    service::emptyTraces();
    EXPECT_FALSE(root::exists(kTraceFile));
}

TEST_F(KeptFiles, tracesAreEmptiedAfterAUserWasCreated)
{
    for (const std::string request : {"lstu \0", "crat", "wall \2\n", "", "cra", "CRAT \2\n"}) {
        root::writeFile(kTraceFile, "traces\n");
        service::emptyTracesAfter(request);
        EXPECT_EQ(root::readFile(kTraceFile), request == "crat" ? "" : "traces\n") << request;
    }
}

TEST_F(KeptFiles, anotherFileUnderTheTracesNameIsNotEmptied)
{
    root::writeFile("/tmp/target", "kept");
    fs::create_symlink("/tmp/target", kTraceFile);
    service::emptyTraces();
    fs::remove(kTraceFile);
    fs::create_hard_link("/tmp/target", kTraceFile);
    service::emptyTraces();
    fs::remove(kTraceFile);
    EXPECT_EQ(root::readFile("/tmp/target"), "kept");
    // Nobody reads this one, or ever will.
    ASSERT_EQ(::mkfifo(kTraceFile, 0666), 0);
    service::emptyTraces();
    EXPECT_TRUE(fs::is_fifo(kTraceFile));
}

// ---- What a running service does about them ---------------------------------------------------

class ServedFiles : public root::UntracedTest {
  protected:
    std::optional<root::Program> service_;

    void start()
    {
        service_.emplace(std::vector<std::string>{root::built("vokserve"), "--shared-tmp",
                                                  "--socket", kSocket, "--path",
                                                  std::getenv("PATH")});
        socketclient::awaitService();
    }

    void stop()
    {
        ::kill(service_->pid(), SIGTERM);
        EXPECT_EQ(service_->wait().exitCode, 0);
    }
};

TEST_F(ServedFiles, lockOfTheVariablesIsItsUsersFromTheStartOn)
{
    root::writeFile(kVariableLock, "");
    fs::permissions(kVariableLock, fs::perms(0666));
    start();
    EXPECT_EQ(modeOf(kVariableLock), 0600U);
    stop();
}

TEST_F(ServedFiles, uploadMakesAFileForItsUserAlone)
{
    const std::string upload = frame("spvt", 2, le32(5) + "\nfresh\n");
    start();
    EXPECT_EQ(exchange(upload), le32(0));
    EXPECT_EQ(modeOf(kPrivateFile), 0600U) << "a first one";
    fs::permissions(kPrivateFile, fs::perms(0644));
    EXPECT_EQ(exchange(upload), le32(0));
    EXPECT_EQ(modeOf(kPrivateFile), 0600U) << "in the place of an open one";
    fs::permissions(kPrivateFile, fs::perms(0644));
    root::stub("mv", "exit 1");
    EXPECT_EQ(exchange(upload), le32(0));
    EXPECT_EQ(modeOf(kPrivateFile), 0600U) << "into an open one";
    EXPECT_EQ(root::readFile(kPrivateFile), "fresh");
    stop();
}

TEST_F(ServedFiles, uploadIsClosedToOthersBeforeItsFirstByte)
{
    root::stub("mv", "rm \"$1\"; umask >/tmp/umask");
    root::writeFile(kPrivateFile, "former");
    start();
    EXPECT_EQ(exchange(frame("spvt", 2, le32(5) + "\nfresh\n")), le32(0));
    EXPECT_EQ(root::readFile("/tmp/umask"), "0077\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(ServedFiles, passwordOfANewUserDoesNotStayInTheTraces)
{
    root::stub("php",
               "[ \"$2\" != tovGetUsers ] || : >\"$3\"; cp /tmp/dbg_vokcontrol.txt /tmp/seen");
    start();
    EXPECT_EQ(exchange(frame("crat", 2, "carla\nsecret\n")), le32(0));
    EXPECT_NE(root::readFile("/tmp/seen").find("\npassword=secret\n"), std::string::npos);
    EXPECT_EQ(root::readFile(kTraceFile), "");
    EXPECT_EQ(exchange(frame("crat", 2, "carla\nsecret")), le32(0xFF000003));
    EXPECT_EQ(root::readFile(kTraceFile), "") << "one that is refused after it was traced";
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_NE(root::readFile(kTraceFile), "") << "all else is traced";
    stop();
}

TEST_F(ServedFiles, passwordThatAKilledServiceHasTracedIsGoneWithTheNext)
{
    root::stub("php",
               "[ \"$2\" != tovGetUsers ] || : >\"$3\"; [ \"$2\" != tovAddUser ] || exec sleep 60");
    start();
    {
        const Client client;
        client.send(frame("crat", 2, "carla\nsecret\n"));
        client.finishSending();
        for (int tries = 0;
             tries < 500 && root::readFile(kTraceFile).find("secret") == std::string::npos;
             ++tries) {
            ::usleep(10'000);
        }
        EXPECT_NE(root::readFile(kTraceFile).find("secret"), std::string::npos);
        ::kill(service_->pid(), SIGKILL);
        static_cast<void>(service_->wait());
    }
    start();
    EXPECT_EQ(root::readFile(kTraceFile), "");
    stop();
}

} // namespace
