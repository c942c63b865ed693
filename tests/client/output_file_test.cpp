// SPDX-License-Identifier: MIT
#include "client/output_file.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

#include "client/failure.h"
#include "tests/support/root.h"

namespace {

using client::checkTarget;
using client::writeTarget;
using Strings = std::vector<std::string>;

namespace fs = std::filesystem;

constexpr const char* kFolder = "/stubs/folder";
constexpr const char* kTarget = "/stubs/folder/target";
const std::string kTerminalSentence = "2: the private file may not be text, so it is not written "
                                      "to a terminal; name a file, or redirect the output";

/// How a function fails; empty if it does not.
template <class Function> std::string complaintOf(Function function)
{
    try {
        function();
    } catch (const client::Failure& failure) {
        return std::to_string(failure.code()) + ": " + failure.what();
    }
    return "";
}

class OutputFile : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::create_directory(kFolder);
    }

    static std::string write(const std::string& path = kTarget)
    {
        return complaintOf([&path] { writeTarget(path, "new\0bytes"); });
    }

    static unsigned modeOf(const std::string& path)
    {
        return static_cast<unsigned>(fs::status(path).permissions());
    }
};

TEST_F(OutputFile, newFileIsItsOwnersAlone)
{
    const mode_t former = ::umask(0);
    EXPECT_EQ(write(), "");
    ::umask(former);
    EXPECT_EQ(root::readFile(kTarget), "new");
    EXPECT_EQ(modeOf(kTarget), 0600U);
    EXPECT_EQ(root::list(kFolder), Strings{"target"});
}

TEST_F(OutputFile, bytesOfEveryKindArriveWhole)
{
    std::string bytes;
    for (unsigned i = 0; i < 100000; ++i) {
        bytes += static_cast<char>(i * 7 & 0xFFU);
    }
    writeTarget(kTarget, bytes);
    EXPECT_EQ(root::readFile(kTarget), bytes);
    writeTarget(kTarget, "");
    EXPECT_EQ(root::readFile(kTarget), "");
}

TEST_F(OutputFile, permissionsOfTheFileThatWasThereStay)
{
    for (const unsigned mode : {0640U, 0666U, 0400U, 0755U}) {
        fs::remove(kTarget);
        root::writeFile(kTarget, "an older and longer one");
        fs::permissions(kTarget, fs::perms(mode));
        EXPECT_EQ(write(), "");
        EXPECT_EQ(root::readFile(kTarget), "new");
        EXPECT_EQ(modeOf(kTarget), mode);
        EXPECT_EQ(root::list(kFolder), Strings{"target"});
    }
}

/// A program's special permissions are not for bytes that came from elsewhere.
TEST_F(OutputFile, specialPermissionsDoNotStay)
{
    root::writeFile(kTarget, "old");
    fs::permissions(kTarget, fs::perms(06755));
    EXPECT_EQ(write(), "");
    EXPECT_EQ(modeOf(kTarget), 0755U);
}

TEST_F(OutputFile, anotherNameOfTheOldFileKeepsItsBytes)
{
    root::writeFile(kTarget, "old");
    fs::create_hard_link(kTarget, "/stubs/folder/other");
    EXPECT_EQ(write(), "");
    EXPECT_EQ(root::readFile("/stubs/folder/other"), "old");
    EXPECT_EQ(root::readFile(kTarget), "new");
}

TEST_F(OutputFile, linksAreRefused)
{
    root::writeFile("/stubs/victim", "theirs");
    for (const char* leadsTo : {"/stubs/victim", "/stubs/none", "/dev/null"}) {
        fs::create_symlink(leadsTo, kTarget);
        const std::string complaint =
            "2: " + std::string(kTarget) +
            " is a symbolic link; name the file that it leads to, or \"-\" "
            "for standard output";
        EXPECT_EQ(complaintOf([] { checkTarget(kTarget); }), complaint);
        EXPECT_EQ(write(), complaint);
        EXPECT_TRUE(fs::is_symlink(kTarget));
        fs::remove(kTarget);
    }
    EXPECT_EQ(root::readFile("/stubs/victim"), "theirs");
    EXPECT_FALSE(root::exists("/stubs/none"));
    EXPECT_EQ(root::list(kFolder), Strings{});
}

TEST_F(OutputFile, fifoIsWrittenInto)
{
    ASSERT_EQ(::mkfifo(kTarget, 0600), 0);
    const int reader = ::open(kTarget, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(write(), "");
    std::array<char, 16> got{};
    EXPECT_EQ(::read(reader, got.data(), got.size()), 3);
    EXPECT_STREQ(got.data(), "new");
    ::close(reader);
    EXPECT_TRUE(fs::is_fifo(kTarget));
    EXPECT_EQ(root::list(kFolder), Strings{"target"});
}

TEST_F(OutputFile, deviceIsWrittenInto)
{
    EXPECT_EQ(write("/dev/null"), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(write("/dev/full"), "8: cannot write /dev/full: No space left on device");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(OutputFile, whatCannotBeWrittenIsSaidWithItsReason)
{
    EXPECT_EQ(write("/stubs/none/target"),
              "8: cannot write /stubs/none/target: No such file or directory");
    fs::create_directory(kTarget);
    EXPECT_EQ(write(), "8: cannot write /stubs/folder/target: Is a directory");
    EXPECT_EQ(write(""), "8: cannot write : No such file or directory");
    EXPECT_EQ(root::list(kFolder), Strings{"target"});
}

TEST_F(OutputFile, nothingIsLeftOnAFullDisk)
{
    root::writeFile("/etc/pelconfig/target", "old");
    root::fillDisk("/etc/pelconfig");
    EXPECT_EQ(write("/etc/pelconfig/target"),
              "8: cannot write /etc/pelconfig/target: No space left on device");
    EXPECT_EQ(root::readFile("/etc/pelconfig/target"), "old");
    EXPECT_EQ(root::list("/etc/pelconfig"), (Strings{"filler", "target", "vokcontrol"}));
}

TEST_F(OutputFile, nameWithoutAFolderIsInTheCurrentOne)
{
    const fs::path before = fs::current_path();
    fs::current_path(kFolder);
    EXPECT_EQ(write("target"), "");
    fs::current_path(before);
    EXPECT_EQ(root::readFile(kTarget), "new");
    EXPECT_EQ(root::list(kFolder), Strings{"target"});
}

// ---- Standard output --------------------------------------------------------------------------

TEST_F(OutputFile, standardOutputTakesBytes)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(complaintOf([] { checkTarget("-"); }), "");
    EXPECT_EQ(write("-"), "");
    std::cout.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "new");
    EXPECT_FALSE(root::exists("-"));
}

TEST_F(OutputFile, terminalTakesNoBytes)
{
    int keyboard = -1;
    int line = -1;
    std::array<char, 256> name{};
    ASSERT_EQ(::openpty(&keyboard, &line, name.data(), nullptr, nullptr), 0);
    const std::string terminal = name.data();
    EXPECT_EQ(write(terminal), kTerminalSentence);
    std::cout.flush();
    const int output = ::dup(STDOUT_FILENO);
    ::dup2(line, STDOUT_FILENO);
    const std::string checked = complaintOf([] { checkTarget("-"); });
    const std::string written = write("-");
    ::dup2(output, STDOUT_FILENO);
    for (const int each : {keyboard, line, output}) {
        ::close(each);
    }
    EXPECT_EQ(checked, kTerminalSentence);
    EXPECT_EQ(written, kTerminalSentence);
}

} // namespace
