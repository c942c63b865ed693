// SPDX-License-Identifier: MIT
#include "client/reasons.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using client::FirstPiece;
using client::reasonLines;
using client::receiveFirst;
using Strings = std::vector<std::string>;

constexpr std::chrono::milliseconds kPatience{20000};
constexpr std::chrono::milliseconds kNone{0};

class Received : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0); }

    void TearDown() override
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }

    /// Sends bytes, and beside them one descriptor or more.
    void send(std::string bytes, std::vector<int> descriptors) const
    {
        const std::size_t size = descriptors.size() * sizeof(int);
        alignas(cmsghdr) std::array<char, CMSG_SPACE(8 * sizeof(int))> control = {};
        iovec place = {bytes.data(), bytes.size()};
        msghdr message = {};
        message.msg_iov = &place;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = CMSG_SPACE(size);
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(header), descriptors.data(), size);
        ASSERT_EQ(::sendmsg(ends[0], &message, 0), static_cast<ssize_t>(bytes.size()));
    }

    std::array<int, 2> ends{};
};

/// A file in memory with a text, filled up with zeros.
int fileWith(const std::string& text)
{
    const int file = ::memfd_create("reasons", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(::pwrite(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    EXPECT_EQ(::ftruncate(file, 4096), 0);
    return file;
}

int countDescriptors()
{
    int count = 0;
    for (int each = 0; each < 100; ++each) {
        count += (::fcntl(each, F_GETFD) >= 0) ? 1 : 0;
    }
    return count;
}

TEST_F(Received, bytesComeWithTheText)
{
    const int file = fileWith("no such group\n");
    send("answer", {file});
    ::close(file);
    const int before = countDescriptors();
    const FirstPiece piece = receiveFirst(ends[1], 100, kPatience);
    EXPECT_EQ(piece.bytes, "answer");
    EXPECT_EQ(piece.reasons, "no such group\n");
    EXPECT_EQ(countDescriptors(), before) << "it keeps no descriptor";
}

TEST_F(Received, moreDescriptorsThanOneAreNotKept)
{
    const int file = fileWith("no such group\n");
    send("answer", {file, file, file});
    ::close(file);
    const int before = countDescriptors();
    const FirstPiece piece = receiveFirst(ends[1], 100, kPatience);
    EXPECT_EQ(piece.bytes, "answer");
    EXPECT_EQ(piece.reasons, "no such group\n");
    EXPECT_EQ(countDescriptors(), before);
}

TEST_F(Received, fullFileHasNoZero)
{
    const std::string text(4096, 'x');
    const int file = fileWith(text);
    send("answer", {file});
    ::close(file);
    EXPECT_EQ(receiveFirst(ends[1], 100, kPatience).reasons, text);
}

TEST_F(Received, bytesComeAlone)
{
    ASSERT_EQ(::write(ends[0], "answer", 6), 6);
    const FirstPiece piece = receiveFirst(ends[1], 4, kPatience);
    EXPECT_EQ(piece.bytes, "answ");
    EXPECT_EQ(piece.reasons, "");
    EXPECT_EQ(receiveFirst(ends[1], 4, kPatience).bytes, "er");
}

TEST_F(Received, nothingIsReadFromAFileThatIsNotInMemory)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    ASSERT_EQ(::write(pipe[1], "text", 4), 4);
    send("answer", {pipe[0]});
    const FirstPiece piece = receiveFirst(ends[1], 100, kPatience);
    EXPECT_EQ(piece.bytes, "answer");
    EXPECT_EQ(piece.reasons, "");
    std::array<char, 4> rest{};
    EXPECT_EQ(::read(pipe[0], rest.data(), rest.size()), 4) << "it was left there";
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(Received, nothingMayCome)
{
    EXPECT_EQ(receiveFirst(ends[1], 100, kNone).bytes, "");
    ::shutdown(ends[0], SHUT_WR);
    const FirstPiece piece = receiveFirst(ends[1], 100, kPatience);
    EXPECT_EQ(piece.bytes, "");
    EXPECT_EQ(piece.reasons, "");
    EXPECT_EQ(receiveFirst(-1, 100, kNone).bytes, "");
}

TEST_F(Received, resetIsLeftToWhoReadsOn)
{
    ASSERT_EQ(::write(ends[1], "request", 7), 7);
    ::close(std::exchange(ends[0], -1)); // without having read it
    EXPECT_EQ(receiveFirst(ends[1], 100, kPatience).bytes, "");
    std::array<char, 4> rest{};
    EXPECT_EQ(::read(ends[1], rest.data(), rest.size()), -1);
    EXPECT_EQ(errno, ECONNRESET);
}

TEST(ReasonLines, areSafeForATerminal)
{
    EXPECT_EQ(reasonLines(""), Strings());
    EXPECT_EQ(reasonLines("\n\n"), Strings());
    EXPECT_EQ(reasonLines("useradd: no group\n\nsorry"), (Strings{"useradd: no group", "sorry"}));
    EXPECT_EQ(reasonLines("a\x1B[31m\\\xC3\xA9\xFF"), (Strings{"a\\u{1b}[31m\\\\\xC3\xA9\\xff"}));
}

TEST(ReasonLines, areBounded)
{
    EXPECT_EQ(reasonLines("1\n2\n3\n4\n5\n6\n"), (Strings{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(reasonLines(std::string(200, 'x')), (Strings{std::string(200, 'x')}));
    EXPECT_EQ(reasonLines(std::string(201, 'x')), (Strings{std::string(200, 'x') + "..."}));
    EXPECT_EQ(reasonLines(std::string(199, 'x') + "\xC3\xA9"),
              (Strings{std::string(199, 'x') + "..."}));
}

} // namespace
