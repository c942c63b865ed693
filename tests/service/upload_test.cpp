// SPDX-License-Identifier: MIT
#include "service/upload.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "service/private_file.h"
#include "tests/support/request.h"
#include "tests/support/root.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;
using request::frame;
using root::le32;
using service::kPrivateFile;
using service::kSavedFile;
using service::Upload;
using service::uploadedFile;

const std::string kFolder = "/stubs/run";
const std::string kNote = kFolder + "/upload";
const std::string kFormer = "the former file\n";
const std::string kNew = "the new one";
const std::string kElsewhere = "/stubs/elsewhere";

std::string announce(std::uint32_t size, const std::string& rest)
{
    return frame("spvt", 2, le32(size) + "\n" + rest);
}

TEST(UploadedFile, isWhatTheSizeAnnounces)
{
    EXPECT_EQ(uploadedFile(announce(5, "hello\n")), "hello");
    EXPECT_EQ(uploadedFile(announce(5, "hello\nmore")), "hello");
    EXPECT_EQ(uploadedFile(announce(5, std::string("a\0\n\xFF"
                                                   "b\n",
                                                   6))),
              std::string("a\0\n\xFF"
                          "b",
                          5));
    EXPECT_EQ(uploadedFile(announce(4080, std::string(4080, 'x') + "\n")), std::string(4080, 'x'));
}

TEST(UploadedFile, requestThatChangesNoFileHasNone)
{
    EXPECT_EQ(uploadedFile(frame("gpvt", 2, le32(5) + "\nhello\n")), std::nullopt);
    EXPECT_EQ(uploadedFile(frame("spvt", 1, le32(5) + "\nhello\n")), std::nullopt);
    EXPECT_EQ(uploadedFile(announce(0, "\n")), std::nullopt);
    EXPECT_EQ(uploadedFile(announce(10, "0123456789\n")), std::nullopt) << "a newline in the size";
    EXPECT_EQ(uploadedFile(frame("spvt", 2, le32(5) + "hello\n")), std::nullopt);
    EXPECT_EQ(uploadedFile(frame("spvt", 2, "\n")), std::nullopt);
    EXPECT_EQ(uploadedFile("spvt"), std::nullopt);
    EXPECT_EQ(uploadedFile(""), std::nullopt);
}

class ServiceUpload : public root::Test {
  protected:
    Upload upload{kFolder};

    /// What an upload of the new file finds.
    void begin()
    {
        ASSERT_TRUE(upload.begin(kNew));
        upload.handOver();
    }

    /// Repairs what is there.
    /// @return what was logged
    std::string repair(bool isGood = true)
    {
        testing::internal::CaptureStderr();
        EXPECT_EQ(upload.repair(), isGood);
        EXPECT_EQ(root::exists(kNote), !isGood);
        return testing::internal::GetCapturedStderr();
    }

    /// The same; and what the two places hold afterwards.
    void expectRepaired(const std::string& outcome, const std::string& content)
    {
        EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + outcome + "\n");
        EXPECT_EQ(root::readFile(kPrivateFile), content);
        expectNames({"vokcontrol-private.txt"});
        EXPECT_FALSE(root::exists(kSavedFile));
    }

    static void expectNames(const Lines& expected)
    {
        Lines names = root::list(root::kStatusFolder);
        std::erase(names, "__bksts");
        EXPECT_EQ(names, expected);
    }

    static mode_t modeOf(const std::string& path)
    {
        struct stat status = {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }
};

const std::string kAsItWas = "the private file is as it was";
const std::string kBack = "the former private file is back";
const std::string kWhole = "the new private file is whole";
const std::string kLeft =
    "the private file's path has something else than a file; it was not changed";

// ---- The note ---------------------------------------------------------------------------------

TEST_F(ServiceUpload, noteIsWholeAndForTheServiceAlone)
{
    root::writeFile(kPrivateFile, kFormer);
    EXPECT_EQ(upload.descriptor(), -1);
    ASSERT_TRUE(upload.begin(kNew));
    EXPECT_GE(upload.descriptor(), 0);
    // The digest is what sha256sum prints for that file.
    const std::string line =
        "file 16 e6112a184023a6a10f687e70e6636672fd56fc01e35f0ba66255aa22bde0d032\n";
    EXPECT_EQ(root::readFile(kNote), "0000000000\n" + line + line + kNew);
    EXPECT_EQ(modeOf(kFolder), 0700U);
    EXPECT_EQ(modeOf(kNote), 0600U);
    EXPECT_EQ(root::list(kFolder), Lines{"upload"});
    upload.end();
    EXPECT_EQ(root::list(kFolder), Lines{});
}

TEST_F(ServiceUpload, noteIsClaimedByAProcessGroup)
{
    ASSERT_TRUE(upload.begin(kNew));
    Upload::claim(upload.descriptor());
    std::string group = std::to_string(::getpgrp());
    group.insert(0, 10 - group.size(), '0');
    EXPECT_EQ(root::readFile(kNote), group + "\nnone\nnone\n" + kNew);
}

TEST_F(ServiceUpload, withoutANoteNothingIsDone)
{
    root::writeFile(kPrivateFile, "any");
    root::writeFile(kSavedFile, "some command's");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(upload.repair());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(root::readFile(kPrivateFile), "any");
    EXPECT_EQ(root::readFile(kSavedFile), "some command's");
}

TEST_F(ServiceUpload, uploadThatCannotBeNotedIsSaidSo)
{
    root::writeFile(kFolder, "in the way");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(upload.begin(kNew));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokserve: cannot note an upload in /stubs/run/upload: Not a directory; the "
              "upload was refused. Make room there, or check the permissions\n");
    EXPECT_EQ(upload.descriptor(), -1);
}

TEST_F(ServiceUpload, noteIsNotCutShortByAFullDisk)
{
    Upload onDisk("/etc/pelconfig/run");
    root::fillDisk("/etc/pelconfig");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(onDisk.begin(std::string(4000, 'x')));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokserve: cannot note an upload in /etc/pelconfig/run/upload: No space left on "
              "device; the upload was refused. Make room there, or check the permissions\n");
    EXPECT_EQ(root::list("/etc/pelconfig/run"), Lines{});
}

void makeSocket(const std::string& path)
{
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
}

// ---- The repair -------------------------------------------------------------------------------

TEST_F(ServiceUpload, formerFileThatIsStillThereStays)
{
    for (const std::string saved : {"", "the fo", kFormer.c_str()}) {
        root::writeFile(kPrivateFile, kFormer);
        begin();
        if (!saved.empty()) {
            root::writeFile(kSavedFile, saved);
        }
        expectRepaired(kAsItWas, kFormer);
    }
}

TEST_F(ServiceUpload, formerFileComesBackForAPartOfTheNewOne)
{
    for (const std::string part : {"none", "", "the new", kNew.c_str()}) {
        root::writeFile(kPrivateFile, kFormer);
        fs::permissions(kPrivateFile, fs::perms(0640));
        begin();
        fs::copy_file(kPrivateFile, kSavedFile);
        fs::remove(kPrivateFile);
        if (part != "none") {
            root::writeFile(kPrivateFile, part);
        }
        expectRepaired(kBack, kFormer);
        EXPECT_EQ(modeOf(kPrivateFile), 0640U);
        fs::remove(kPrivateFile);
    }
}

TEST_F(ServiceUpload, formerFileIsMovedWithinAFileSystemWhateverItIs)
{
    fs::remove_all(root::kStatusFolder);
    fs::create_directories("/tmp/settings/__bksts");
    fs::create_symlink("/tmp/settings", root::kStatusFolder);
    makeSocket(kPrivateFile);
    begin();
    fs::rename(kPrivateFile, kSavedFile);
    root::writeFile(kPrivateFile, "the new");
    root::fillDisk("/tmp");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kBack + "\n");
    EXPECT_TRUE(fs::is_socket(kPrivateFile));
    EXPECT_FALSE(root::exists(kSavedFile));
}

TEST_F(ServiceUpload, newFileThatIsWholeStays)
{
    root::writeFile(kPrivateFile, kFormer);
    begin();
    root::writeFile(kPrivateFile, kNew);
    expectRepaired(kWhole, kNew);
}

/// Where mv moves nothing the new file is written over the former one; and the saved file may be
/// gone with a /tmp of the service's own.
TEST_F(ServiceUpload, newFileIsCompletedWhereTheFormerOneIsLost)
{
    for (const std::string part : {"none", "", "the new"}) {
        for (const std::string saved : {"none", "", "the fo"}) {
            root::writeFile(kPrivateFile, kFormer);
            begin();
            fs::remove(kPrivateFile);
            if (part != "none") {
                root::writeFile(kPrivateFile, part);
            }
            if (saved != "none") {
                root::writeFile(kSavedFile, saved);
            }
            expectRepaired(kWhole, kNew);
        }
    }
}

TEST_F(ServiceUpload, firstFileIsNotThereOrWhole)
{
    begin();
    root::writeFile(kSavedFile, "an older crash's");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kAsItWas + "\n");
    expectNames({});
    EXPECT_FALSE(root::exists(kSavedFile)) << "the next upload that fails would bring it in";
    for (const std::string part : {"", "the new", kNew.c_str()}) {
        fs::remove(kPrivateFile);
        begin();
        root::writeFile(kPrivateFile, part);
        expectRepaired(kWhole, kNew);
    }
}

TEST_F(ServiceUpload, emptyFormerFileIsOne)
{
    root::writeFile(kPrivateFile, "");
    begin();
    root::writeFile(kSavedFile, "");
    expectRepaired(kAsItWas, "");
    begin();
    root::writeFile(kSavedFile, "");
    root::writeFile(kPrivateFile, "the");
    expectRepaired(kBack, "");
}

TEST_F(ServiceUpload, whatAnInterruptedRepairHasMadeIsMadeAgain)
{
    root::writeFile(kPrivateFile, kFormer);
    begin();
    fs::copy_file(kPrivateFile, kSavedFile);
    root::writeFile(kPrivateFile, "the");
    root::writeFile(std::string(kPrivateFile) + ".new", "the f");
    expectRepaired(kBack, kFormer);
    begin();
    root::writeFile(kPrivateFile, "the");
    fs::create_directories(std::string(kPrivateFile) + ".new/inside");
    expectRepaired(kWhole, kNew);
}

TEST_F(ServiceUpload, linkComesBackAsOne)
{
    root::writeFile(kElsewhere, kFormer);
    fs::create_symlink(kElsewhere, kPrivateFile);
    begin();
    fs::copy_symlink(kPrivateFile, kSavedFile);
    expectRepaired(kAsItWas, kFormer);
    begin();
    fs::copy_symlink(kPrivateFile, kSavedFile);
    fs::remove(kPrivateFile);
    root::writeFile(kPrivateFile, "the new");
    expectRepaired(kBack, kFormer);
    EXPECT_EQ(fs::read_symlink(kPrivateFile), kElsewhere);
    EXPECT_EQ(root::readFile(kElsewhere), kFormer);
}

TEST_F(ServiceUpload, fileBehindALinkThatWasWrittenThroughIsCompleted)
{
    root::writeFile(kElsewhere, kFormer);
    fs::create_symlink(kElsewhere, kPrivateFile);
    begin();
    root::writeFile(kElsewhere, "the new");
    fs::copy_symlink(kPrivateFile, kSavedFile); // mv may have got as far as this
    expectRepaired(kWhole, kNew);
    EXPECT_EQ(fs::read_symlink(kPrivateFile), kElsewhere);
    EXPECT_EQ(root::readFile(kElsewhere), kNew);
}

TEST_F(ServiceUpload, folderComesBackWithWhatIsInIt)
{
    fs::create_directories(kPrivateFile);
    root::writeFile(std::string(kPrivateFile) + "/inside", "somebody's");
    begin();
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kAsItWas + "\n");
    begin();
    fs::copy(kPrivateFile, kSavedFile, fs::copy_options::recursive);
    fs::remove_all(kPrivateFile);
    root::writeFile(kPrivateFile, "the new");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kBack + "\n");
    EXPECT_EQ(root::readFile(std::string(kPrivateFile) + "/inside"), "somebody's");
    EXPECT_FALSE(root::exists(kSavedFile));
}

TEST_F(ServiceUpload, deviceThatCannotComeBackIsLeftWhereItIs)
{
    makeSocket(kPrivateFile);
    begin();
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kAsItWas + "\n");
    begin();
    fs::remove(kPrivateFile);
    makeSocket(kSavedFile);
    root::writeFile(kPrivateFile, "the new");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kLeft + "\n");
    expectNames({});
    EXPECT_TRUE(fs::is_socket(kSavedFile));
}

TEST_F(ServiceUpload, whatSomebodyElsePutThereStays)
{
    root::writeFile(kPrivateFile, kFormer);
    begin();
    fs::remove(kPrivateFile);
    fs::create_directories(std::string(kPrivateFile) + "/inside");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kLeft + "\n");
    EXPECT_EQ(root::list(kPrivateFile), Lines{"inside"});
}

TEST_F(ServiceUpload, partMakesRoomForTheRepairOnAFullDisk)
{
    const std::string former(200000, 'f');
    root::writeFile(kPrivateFile, former);
    begin();
    fs::copy_file(kPrivateFile, kSavedFile);
    root::writeFile(kPrivateFile, std::string(200000, 'n'));
    root::fillDisk(root::kStatusFolder);
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kBack + "\n");
    EXPECT_EQ(root::readFile(kPrivateFile), former);
}

TEST_F(ServiceUpload, repairThatTheDiskHasNoRoomForIsTriedAgain)
{
    root::writeFile(kPrivateFile, kFormer);
    begin();
    fs::copy_file(kPrivateFile, kSavedFile);
    fs::remove(kPrivateFile);
    root::fillDisk(root::kStatusFolder);
    EXPECT_EQ(repair(false), "vokserve: an upload was cut off: the private file cannot be "
                             "repaired; make room on its disk\n");
    expectNames({"filler"});
    EXPECT_EQ(root::readFile(kSavedFile), kFormer);
    fs::remove("/etc/pelconfig/vokcontrol/filler");
    expectRepaired(kBack, kFormer);
}

TEST_F(ServiceUpload, partIsNeverLeftWhereTheNewFileCannotBeCompleted)
{
    root::writeFile(kPrivateFile, kFormer);
    begin();
    root::writeFile(kPrivateFile, "");
    fs::create_directory(kSavedFile);
    root::fillDisk(root::kStatusFolder);
    repair(false);
    expectNames({"filler"});
    fs::remove("/etc/pelconfig/vokcontrol/filler");
    EXPECT_EQ(repair(), "vokserve: an upload was cut off: " + kWhole + "\n");
    EXPECT_TRUE(root::exists(kSavedFile)) << "no upload's";
}

TEST_F(ServiceUpload, noteThatNoServiceHasWrittenIsRemoved)
{
    fs::create_directory(kFolder);
    root::writeFile(kPrivateFile, "any");
    for (const std::string note : {"", "0000000000\n", "0000000000\nnone\n", "x"}) {
        root::writeFile(kNote, note);
        expectRepaired(kAsItWas, "any");
    }
}

// ---- What still runs --------------------------------------------------------------------------

/// A process group that holds the lock of a note, and whose member changes the private file after a
/// while.
pid_t startLateWriter(Upload& upload, bool isClaimed)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0);
        if (isClaimed) {
            Upload::claim(upload.descriptor());
        }
        ::usleep(isClaimed ? 10'000'000 : 300'000);
        root::writeFile(kPrivateFile, "a part");
        ::_exit(0);
    }
    upload.handOver();
    return child;
}

TEST_F(ServiceUpload, processOfTheUploadIsEndedBeforeTheRepair)
{
    root::writeFile(kPrivateFile, kFormer);
    ASSERT_TRUE(upload.begin(kNew));
    const pid_t child = startLateWriter(upload, true);
    while (root::readFile(kNote).starts_with("0000000000")) {
        ::usleep(1000);
    }
    expectRepaired(kAsItWas, kFormer);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
}

TEST_F(ServiceUpload, processThatHasNotClaimedTheNoteIsWaitedFor)
{
    root::writeFile(kPrivateFile, kFormer);
    ASSERT_TRUE(upload.begin(kNew));
    const pid_t child = startLateWriter(upload, false);
    expectRepaired(kWhole, kNew);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
}

TEST_F(ServiceUpload, processThatDoesNotEndIsNotRepairedBeside)
{
    root::writeFile(kPrivateFile, kFormer);
    ASSERT_TRUE(upload.begin(kNew));
    root::writeFile(kPrivateFile, "a part");
    EXPECT_EQ(repair(false), "vokserve: an upload that was cut off still runs; its private file "
                             "cannot be repaired yet\n");
    EXPECT_EQ(root::readFile(kPrivateFile), "a part");
    upload.handOver();
    expectRepaired(kWhole, kNew);
}

} // namespace
