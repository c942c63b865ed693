// SPDX-License-Identifier: MIT
//
// "vokctl raw" as people call it.
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::le32;

class RawCommand : public root::ServedTest {};

TEST_F(RawCommand, answerIsShownByItsBytesAndInWords)
{
    expectEnd(vokctl({"raw", "rtov", "--count", "7"}), 0,
              "00000000  03 00 00 ff                                      |....|\n"
              "Read as a refusal, 0xFF000003: The command takes another number of parameters.\n",
              "");
    expectEnd(vokctl({"raw", "gubs"}), 0, "Read as empty, as always for this command\n", "");
}

TEST_F(RawCommand, refusalIsAnAnswerLikeAnyOther)
{
    expectEnd(vokctl({"raw", "lsts"}), 0,
              "00000000  65 72 72 6f 20 04 00 00 ff                       |erro ....|\n"
              "Read as a refusal, 0xFF000004: A script or a tool of the appliance has failed; "
              "vokctl doctor may say why.\n",
              "");
}

TEST_F(RawCommand, answerIsReadByItsCommand)
{
    const std::string answer = "00000000  03 00 00 c1                                      |....|\n"
                               "Read as a refusal, 0xC1000003: The share's name does not have 1 to "
                               "64 bytes, or has a character that cannot be used.\n";
    expectEnd(vokctl({"raw", "gsp1", "--count", "1", "--line", ""}), 0, answer, "");
    root::writeFile("/stubs/frame", "gsp1 " + le32(1) + "\n\n");
    expectEnd(vokctl({"raw", "--frame", "/stubs/frame"}), 0, answer, "");
}

TEST_F(RawCommand, statusOfTheServicesOwnIsShown)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    expectEnd(vokctl({"raw", "lstu"}), 0,
              "00000000  73 65 72 76 20 02 00 00 53 00                    |serv ...S.|\n"
              "Read as a status of the service, 0x53000002: The request's process failed before it "
              "answered; see the service's log.\n",
              "");
}

TEST_F(RawCommand, frameIsSentAsItStands)
{
    root::writeFile("/stubs/frame", "rtov#" + le32(2) + "\n" + std::string(4086, 'x'));
    expectEnd(vokctl({"raw", "--frame", "/stubs/frame"}), 0,
              "Read as empty, as always for this command\n", "");
}

TEST_F(RawCommand, commandThatIsNotKnownIsSaidToBe)
{
    expectEnd(vokctl({"raw", "nope"}), 0,
              "Not read: this client does not know the command \"nope\"; the answer is empty\n",
              "");
}

/// What "vokctl raw" prints of an answer to a frame.
std::string printed(const std::string& frame, const std::string& answer)
{
    root::writeFile("/stubs/frame", frame);
    const root::Exchange exchanged = root::exchange({"raw", "--frame", "/stubs/frame"}, {answer});
    EXPECT_EQ(exchanged.frames, std::vector<std::string>{frame});
    EXPECT_EQ(exchanged.ended.exitCode, 0);
    EXPECT_EQ(exchanged.ended.errors, "");
    return exchanged.ended.output;
}

TEST_F(RawCommand, answerOfACommandThatIsNotKnownIsShownByItsBytes)
{
    EXPECT_EQ(printed("\x1B[2J " + le32(0) + "\n", "[2J " + le32(1) + "\n"),
              "00000000  5b 32 4a 20 01 00 00 00 0a                       |[2J .....|\n"
              "Not read: this client does not know the command \"\\u{1b}[2J\"\n");
    EXPECT_EQ(printed("gp", "x"), "00000000  78                                               |x|\n"
                                  "Not read: this client does not know the command \"gp\"\n");
    EXPECT_EQ(
        printed("nope " + le32(0) + "\n", "serv " + le32(0x53000005) + std::string(1, '\0')),
        "00000000  73 65 72 76 20 05 00 00 53 00                    |serv ...S.|\n"
        "Read as a status of the service, 0x53000005: This account may not ask for that. Members "
        "of the group vokcontrol may ask for everything, members of vokcontrol-view only for what "
        "changes nothing; ask root to add you.\n");
}

TEST_F(RawCommand, bytesThatTheCommandNeverAnswersAreShownAllTheSame)
{
    EXPECT_EQ(printed("crat", "erro " + le32(1)),
              "00000000  65 72 72 6f 20 01 00 00 00                       |erro ....|\n"
              "Read as of a shape that this client does not know\n");
}

/// The same without a service: whatever is sent all the same ends with 3.
class RawWithoutService : public RawCommand {
  protected:
    void SetUp() override { root::UntracedTest::SetUp(); }
    void TearDown() override { root::UntracedTest::TearDown(); }

    static constexpr const char* kAway = "vokctl: cannot reach the service at /tmp/socket: No such "
                                         "file or directory. Is vokserve running?\n";
};

/// What a client sends to a socket, up to its end.
std::string catchFrame(const std::vector<std::string>& arguments)
{
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::string("/tmp/catcher").copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener, 1), 0);
    std::vector<std::string> command = {root::built("vokctl"), "raw", "--socket", "/tmp/catcher"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    root::Program client(command);
    const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    std::string frame;
    char byte = 0;
    while (::read(socket, &byte, 1) > 0) {
        frame += byte;
    }
    ::close(socket);
    ::close(listener);
    EXPECT_EQ(client.wait().exitCode, 0);
    std::filesystem::remove("/tmp/catcher");
    return frame;
}

TEST_F(RawWithoutService, frameIsBuiltFromItsParts)
{
    EXPECT_EQ(catchFrame({"lstu"}), "lstu " + le32(0) + "\n");
    EXPECT_EQ(catchFrame({"shar", "--count", "4294967295"}), "shar " + le32(0xFFFFFFFF) + "\n");
    EXPECT_EQ(catchFrame({"crat", "--count", "2", "--line", "anna", "--line", "a secret"}),
              "crat " + le32(2) + "\nanna\na secret\n");
    EXPECT_EQ(catchFrame({"sub1", "--count", "2", "--hex", "01 00fF0a", "--line", "x"}),
              "sub1 " + le32(2) + "\nx\n" + std::string("\x01\x00\xFF\n", 4));
}

TEST_F(RawWithoutService, withoutAnAnswerThereIsNothingToShow)
{
    expectEnd(vokctl({"raw", "lstu"}), 3, "", kAway);
}

TEST_F(RawWithoutService, wrongUsageIsExplained)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
        {{"raw"}, "CODE: takes four characters, such as \"lstu\" (or use --frame)"},
        {{"raw", "abc"}, "CODE: takes four characters, such as \"lstu\" (or use --frame)"},
        {{"raw", "lstu", "--hex", "0g"},
         "--hex: takes pairs of hexadecimal digits, such as \"0aff\""},
        {{"raw", "lstu", "--hex", "0aF"}, "--hex: has half a byte at its end"},
        {{"raw", "--frame", "/missing"}, "--frame: cannot read /missing"},
        {{"raw", "--frame", "/stubs"}, "--frame: cannot read /stubs"},
    };
    for (const auto& [arguments, complaint] : wrong) {
        const root::Ended ended = vokctl(arguments);
        EXPECT_EQ(ended.exitCode, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_NE(ended.errors.find(complaint), std::string::npos) << ended.errors;
    }
    EXPECT_EQ(vokctl({"raw", "lstu", "--count", "-1"}).exitCode, 2);
    EXPECT_EQ(vokctl({"raw", "lstu", "--frame", "/stubs/x"}).exitCode, 2);
}

} // namespace
