// SPDX-License-Identifier: MIT
//
// "vokctl drives" as people and scripts call it.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/vokserve.h"

namespace {

using root::Ended;
using root::le32;

class DrivesCommand : public root::ServedTest {
  protected:
    static void expectReadable()
    {
        expectEnd(vokctl({"drives", "check"}), 0, "", "vokctl: the number of drives can be read\n");
    }
};

TEST_F(DrivesCommand, anyNumberOfDrivesIsGood)
{
    for (const char* script : {"echo 1", "echo 2", "echo 4", "true", "exit 1"}) {
        root::stub("pelparam", script);
        expectReadable();
    }
}

TEST_F(DrivesCommand, countThatCannotBeToldIsRefused)
{
    root::stub("pelparam", "echo -1");
    expectEnd(
        vokctl({"drives", "check"}), 1, "",
        "vokctl: The number of drives cannot be read; vokctl doctor may say why. (0xFF000004)\n");
}

TEST_F(DrivesCommand, handlerThatCrashesIsSaid)
{
    root::stub("pelparam",
               "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    expectEnd(vokctl({"drives", "check"}), 7, "",
              "vokctl: The request's process failed before it answered; see the service's log. "
              "(0x53000002)\n");
}

TEST_F(DrivesCommand, frameIsTheCommandAlone)
{
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::string("/tmp/catcher").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    root::Program client({root::built("vokctl"), "drives", "check", "--socket", "/tmp/catcher"});
    const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    std::string frame;
    for (char byte = 0; ::read(socket, &byte, 1) > 0;) {
        frame += byte;
    }
    EXPECT_EQ(frame, "grst " + le32(0) + "\n");
    const std::string answer = le32(0xD0000001);
    EXPECT_EQ(::write(socket, answer.data(), answer.size()), 4);
    ::close(socket);
    ::close(listener);
    expectEnd(client.wait(), 0, "", "vokctl: the number of drives can be read\n");
}

TEST_F(DrivesCommand, unreachableServiceAndWrongUsage)
{
    const Ended away =
        root::run({root::built("vokctl"), "drives", "check", "--socket", "/tmp/none"});
    expectEnd(
        away, 3, "",
        "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is vokserve "
        "running?\n");
    EXPECT_EQ(vokctl({"drives"}).exitCode, 2);
    EXPECT_EQ(vokctl({"drives", "count"}).exitCode, 2);
    EXPECT_EQ(vokctl({"drives", "check", "extra"}).exitCode, 2);
}

} // namespace
