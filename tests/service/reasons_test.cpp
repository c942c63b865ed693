// SPDX-License-Identifier: MIT
#include "service/reasons.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/support/request.h"

namespace {

using request::frame;
using service::describeReasons;
using service::Reasons;
using service::sendWith;

ssize_t writeTo(const Reasons& reasons, const std::string& text)
{
    return ::write(reasons.descriptor(), text.data(), text.size());
}

off_t sizeOf(const Reasons& reasons)
{
    return ::lseek(reasons.descriptor(), 0, SEEK_END);
}

TEST(Reasons, areWhatIsWrittenUntilTheSeal)
{
    Reasons reasons = Reasons::make();
    EXPECT_EQ(writeTo(reasons, "one\n"), 4);
    EXPECT_EQ(writeTo(reasons, "two\n"), 4);
    EXPECT_EQ(reasons.text(), "");
    reasons.seal();
    EXPECT_EQ(reasons.text(), "one\ntwo\n");
    EXPECT_EQ(writeTo(reasons, "three\n"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::ftruncate(reasons.descriptor(), 0), -1);
    EXPECT_EQ(sizeOf(reasons), static_cast<off_t>(Reasons::kSize));
}

TEST(Reasons, letGoOnWhoStillHasTheFile)
{
    Reasons reasons = Reasons::make();
    writeTo(reasons, "one\n");
    const int former = ::dup(reasons.descriptor());
    reasons.seal();
    EXPECT_EQ(::write(former, "two\n", 4), 4);
    ::close(former);
    std::array<char, 9> bytes{};
    EXPECT_EQ(::pread(reasons.descriptor(), bytes.data(), 8, 0), 8);
    EXPECT_STREQ(bytes.data(), "one\n");
}

TEST(Reasons, areTheStartOfWhatIsWritten)
{
    Reasons reasons = Reasons::make();
    const std::string much(Reasons::kSize + 1, 'x');
    EXPECT_EQ(writeTo(reasons, much), static_cast<ssize_t>(much.size()));
    reasons.seal();
    EXPECT_EQ(reasons.text(), std::string(Reasons::kSize, 'x'));
}

TEST(Reasons, neverGrow)
{
    Reasons reasons = Reasons::make();
    const std::string most(Reasons::kRoom, 'x');
    EXPECT_EQ(writeTo(reasons, most), static_cast<ssize_t>(most.size()));
    EXPECT_EQ(writeTo(reasons, "y"), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(::lseek(reasons.descriptor(), 1 << 30, SEEK_SET), 1 << 30);
    EXPECT_EQ(writeTo(reasons, "z"), -1);
    reasons.seal();
    EXPECT_EQ(reasons.text(), std::string(Reasons::kSize, 'x'));
}

TEST(Reasons, areNoneWithoutAFile)
{
    Reasons none;
    EXPECT_EQ(none.descriptor(), -1);
    none.seal();
    EXPECT_EQ(none.text(), "");
    EXPECT_EQ(sendWith(none, -1, "answer"), 0U);
}

TEST(Reasons, moveWithTheirFile)
{
    Reasons first = Reasons::make();
    writeTo(first, "text");
    first.seal();
    const int descriptor = first.descriptor();
    Reasons second(std::move(first));
    EXPECT_EQ(second.descriptor(), descriptor);
    EXPECT_EQ(second.text(), "text");
    Reasons third;
    third = std::move(second);
    EXPECT_EQ(third.descriptor(), descriptor);
    EXPECT_EQ(third.text(), "text");
}

TEST(DescribeReasons, isOneLineOfPlainCharacters)
{
    const std::string request = frame("lstu", 0);
    EXPECT_EQ(describeReasons("", request), "");
    EXPECT_EQ(describeReasons("\n\n", request), "");
    EXPECT_EQ(describeReasons("useradd: no group\nsorry\n", request), "useradd: no group\\nsorry");
    EXPECT_EQ(describeReasons("a\x1B[31m\\ \xC3\xA9\r\n", request),
              "a\\x1b[31m\\x5c \\xc3\\xa9\\x0d");
}

TEST(DescribeReasons, isBounded)
{
    const std::string request = frame("lstu", 0);
    EXPECT_EQ(describeReasons(std::string(400, 'x'), request), std::string(400, 'x'));
    EXPECT_EQ(describeReasons(std::string(401, 'x'), request), std::string(400, 'x') + "...");
}

TEST(DescribeReasons, holdsNoParameter)
{
    const std::string request = frame("crat", 2, "bob\nse;cret\n");
    EXPECT_EQ(describeReasons("user bob: bad se;cret, bob!", request),
              "user [...]: bad [...], [...]!");
    EXPECT_EQ(describeReasons("anna, annasecret", frame("crat", 2, "anna\nannasecret\n")),
              "[...], [...]")
        << "a name may be the start of a password";
    EXPECT_EQ(describeReasons("......", frame("crat", 2, "...\n...\n")), "[...][...]");
    EXPECT_EQ(describeReasons("a word", frame("crat", 2, "a\nwo\n")), "a word");
    EXPECT_EQ(describeReasons("a secre", frame("crat", 2, "x\nsecre")), "a [...]");
    EXPECT_EQ(describeReasons("crat", "crat"), "crat");
}

TEST(DescribeReasons, holdsNoParameterThatAProgramHasCutOrEscaped)
{
    const std::string request = frame("crat", 2, "bob\ncorrect-horse battery1\n");
    EXPECT_EQ(describeReasons("#0 add('bob', 'correct-horse b...')", request),
              "#0 add('[...]', '[...]...')")
        << "in a stack trace values are cut";
    EXPECT_EQ(describeReasons("correct\\-horse\\ battery1", request),
              "[...]\\x5c-[...]\\x5c [...]");
    EXPECT_EQ(describeReasons("gr\\xC3\\xBCezi!", frame("crat", 2,
                                                        "bob\ngr\xC3\xBC"
                                                        "ezi!\n")),
              "gr\\x5cxC3\\x5cxBC[...]!");
    EXPECT_EQ(describeReasons("Tr0ub4dor", frame("crat", 2, "bob\nTr0ub4dor-and-more\n")), "[...]");
    EXPECT_EQ(describeReasons("Tr0ub", frame("crat", 2, "bob\nTr0ub4dor\n")), "Tr0ub")
        << "of a short start nothing can be said";
}

TEST(DescribeReasons, holdsNoParameterThatAZeroByteEnds)
{
    using namespace std::string_literals;
    EXPECT_EQ(describeReasons("bad: se;cret", frame("crat", 2, "bob\0\nse;cret\0more\n"s)),
              "bad: [...]");
}

class Connection : public testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        writeTo(reasons, "no such group\n");
        reasons.seal();
    }

    void TearDown() override
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }

    std::array<int, 2> ends{};
    Reasons reasons = Reasons::make();
};

TEST_F(Connection, carriesTheFileBesideTheBytes)
{
    EXPECT_EQ(sendWith(reasons, ends[0], "answer"), 6U);
    std::array<char, 100> bytes{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    iovec place = {bytes.data(), bytes.size()};
    msghdr message = {};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    EXPECT_EQ(::recvmsg(ends[1], &message, 0), 6);
    EXPECT_STREQ(bytes.data(), "answer");
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    ASSERT_NE(header, nullptr);
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    bytes.fill('\0');
    EXPECT_EQ(::pread(descriptor, bytes.data(), 14, 0), 14);
    EXPECT_STREQ(bytes.data(), "no such group\n");
    EXPECT_EQ(::pwrite(descriptor, "x", 1, 0), -1) << "the client cannot change it";
    ::close(descriptor);
}

TEST_F(Connection, givesOthersTheBytesAlone)
{
    EXPECT_EQ(sendWith(reasons, ends[0], "answer"), 6U);
    std::array<char, 100> bytes{};
    EXPECT_EQ(::read(ends[1], bytes.data(), bytes.size()), 6);
    EXPECT_STREQ(bytes.data(), "answer");
}

TEST_F(Connection, isLeftAloneIfThereIsNothingToSendOrNobodyThere)
{
    EXPECT_EQ(sendWith(reasons, ends[0], ""), 0U);
    Reasons silent = Reasons::make();
    silent.seal();
    EXPECT_EQ(sendWith(silent, ends[0], "answer"), 0U);
    ::shutdown(ends[0], SHUT_WR);
    EXPECT_EQ(sendWith(reasons, ends[0], "answer"), 0U);
}

} // namespace
