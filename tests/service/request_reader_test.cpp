// SPDX-License-Identifier: MIT
#include "service/request_reader.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

namespace {

using service::RequestReader;
using service::textOf;

std::string firstLine(const RequestReader& reader)
{
    return {reader.firstLine().data(), reader.firstLine().size()};
}

std::string padded(std::string text)
{
    text.resize(VOK_REQUEST_SIZE);
    return text;
}

TEST(RequestReader, firstLineHasZerosBehindIt)
{
    EXPECT_EQ(firstLine(RequestReader("lstu\nmore")), padded("lstu\n"));
    EXPECT_EQ(firstLine(RequestReader("lstu")), padded("lstu"));
    EXPECT_EQ(firstLine(RequestReader("")), padded(""));
    EXPECT_EQ(firstLine(RequestReader("\n\n")), padded("\n"));
}

TEST(RequestReader, firstLineKeepsItsZeroBytes)
{
    const std::string request("crat \2\0\0\0\nanna\n", 15);
    RequestReader reader(request);
    EXPECT_EQ(firstLine(reader), padded(request.substr(0, 10)));
    EXPECT_EQ(reader.takeLine(100), "anna\n");
}

TEST(RequestReader, firstLineTakesAllButTwoBytesAtMost)
{
    const std::string request = std::string(4094, 'a') + "bc";
    RequestReader reader(request);
    EXPECT_EQ(firstLine(reader), padded(std::string(4094, 'a')));
    EXPECT_EQ(reader.rest(), "bc");
}

TEST(RequestReader, lineIsTakenWithItsNewline)
{
    RequestReader reader("x\none\n\ntwo\n");
    EXPECT_EQ(reader.takeLine(100), "one\n");
    EXPECT_EQ(reader.takeLine(100), "\n");
    EXPECT_EQ(reader.takeLine(100), "two\n");
}

TEST(RequestReader, longLineIsTakenInPieces)
{
    RequestReader reader("x\nabcdef\ng\n");
    EXPECT_EQ(reader.takeLine(4), "abc");
    EXPECT_EQ(reader.takeLine(4), "def");
    EXPECT_EQ(reader.takeLine(4), "\n") << "the newline did not fit";
    EXPECT_EQ(reader.takeLine(3), "g\n") << "it just fits";
}

TEST(RequestReader, zerosBehindTheRequestBelongToItsLastLine)
{
    RequestReader reader("x\nanna");
    const std::string_view line = reader.takeLine(VOK_REQUEST_SIZE - 1);
    EXPECT_EQ(line.size(), std::size_t{VOK_REQUEST_SIZE - 2});
    EXPECT_EQ(textOf(line), "anna");
    EXPECT_EQ(reader.rest(), "");
}

TEST(RequestReader, behindTheEndThereIsNothing)
{
    RequestReader reader("x\n" + std::string(4093, 'a') + "b");
    EXPECT_EQ(reader.takeLine(5000).size(), 4094U);
    EXPECT_EQ(reader.takeLine(100), "");
    EXPECT_EQ(reader.takeByte(), "");
    EXPECT_EQ(reader.rest(), "");
}

TEST(RequestReader, bytesAreTakenOneByOne)
{
    RequestReader reader(std::string("x\n\0\nab\n", 7));
    EXPECT_EQ(reader.takeByte(), std::string(1, '\0'));
    EXPECT_EQ(reader.takeByte(), "\n");
    EXPECT_EQ(reader.takeByte(), "a");
    EXPECT_EQ(reader.takeLine(100), "b\n");
}

TEST(RequestReader, restIsAllThatIsLeftWithTheZeros)
{
    RequestReader reader("x\nanna\nbob\n");
    EXPECT_EQ(reader.rest().size(), std::size_t{VOK_REQUEST_SIZE - 2});
    EXPECT_EQ(reader.takeLine(100), "anna\n");
    EXPECT_EQ(textOf(reader.rest()), "bob\n");
    EXPECT_EQ(reader.rest().size(), std::size_t{VOK_REQUEST_SIZE - 7}) << "looking takes nothing";
}

TEST(RequestReader, textEndsAtItsFirstZero)
{
    EXPECT_EQ(textOf(std::string_view("ab\0cd", 5)), "ab");
    EXPECT_EQ(textOf(std::string_view("\0ab", 3)), "");
    EXPECT_EQ(textOf("ab\n"), "ab\n");
    EXPECT_EQ(textOf(""), "");
}

/// Takes the same things off a request as the handlers do, with what the C library gives them.
class HandlersReader {
  public:
    explicit HandlersReader(const std::string& request)
    {
        request.copy(buffer_.data(), buffer_.size());
        stream_.reset(::fmemopen(buffer_.data(), buffer_.size(), "r"));
    }

    std::string takeLine(std::size_t size)
    {
        std::array<char, VOK_REQUEST_SIZE + 1> line{};
        const long before = std::ftell(stream_.get());
        if (std::fgets(line.data(), static_cast<int>(size), stream_.get()) == nullptr) {
            return "";
        }
        const long after = std::ftell(stream_.get());
        return {line.data(), static_cast<std::size_t>(after - before)};
    }

    std::string takeByte()
    {
        const int byte = std::fgetc(stream_.get());
        return (byte == EOF) ? "" : std::string(1, static_cast<char>(byte));
    }

  private:
    struct Closer {
        void operator()(FILE* file) const { std::fclose(file); }
    };

    std::array<char, VOK_REQUEST_SIZE> buffer_{};
    std::unique_ptr<FILE, Closer> stream_;
};

TEST(RequestReader, takesApartWhateverComesAsTheHandlersDo)
{
    constexpr auto kSizes =
        std::to_array<std::size_t>({2, 3, 10, 255, 256, VOK_REQUEST_SIZE - 1, VOK_REQUEST_SIZE});
    constexpr auto kRuns = std::to_array<std::size_t>({0, 1, 2, 9, 253, 254, 255, 256, 1000});
    std::minstd_rand random(20261121);
    for (int round = 0; round < 3000; ++round) {
        std::string request;
        while (request.size() < VOK_REQUEST_SIZE && random() % 12 != 0) {
            request += std::string(kRuns[random() % kRuns.size()], "a\0\n\xFF"[random() % 4]);
            request += "\n\nb"[random() % 3];
        }
        request.resize(std::min<std::size_t>(request.size(), VOK_REQUEST_SIZE));
        RequestReader reader(request);
        HandlersReader handlers(request);
        ASSERT_EQ(firstLine(reader), padded(handlers.takeLine(VOK_REQUEST_SIZE - 1)));
        for (int step = 0; step < 12; ++step) {
            const std::size_t size = kSizes[random() % kSizes.size()];
            const bool isByte = random() % 4 == 0;
            const std::string expected = isByte ? handlers.takeByte() : handlers.takeLine(size);
            const std::string found(isByte ? reader.takeByte() : reader.takeLine(size));
            ASSERT_EQ(found, expected) << "round " << round << ", step " << step;
        }
    }
}

} // namespace
