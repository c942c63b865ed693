// SPDX-License-Identifier: MIT
#include "cmdsvc/request_reader.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

namespace {

using cmdsvc::textOf;

/// A reader with its request in a buffer of its own.
class RequestReader : public cmdsvc::RequestReader {
  public:
    explicit RequestReader(const std::string& request)
        : RequestReader(std::make_unique<cmdsvc::RequestBuffer>(cmdsvc::bufferOf(request)))
    {}

    std::string takeByte() { return std::string(takeBytes(1)); }

  private:
    explicit RequestReader(std::unique_ptr<cmdsvc::RequestBuffer> buffer)
        : cmdsvc::RequestReader(*buffer), buffer_(std::move(buffer))
    {}

    std::unique_ptr<cmdsvc::RequestBuffer> buffer_;
};

std::string firstLine(const RequestReader& reader)
{
    return std::string(reader.firstLine());
}

std::string padded(std::string text)
{
    text.resize(VOK_REQUEST_SIZE);
    return text;
}

TEST(RequestReader, firstLineHasZerosAfterIt)
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

TEST(RequestReader, firstLineTakesAllExceptTwoBytesAtMost)
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

TEST(RequestReader, zerosAfterTheRequestBelongToItsLastLine)
{
    RequestReader reader("x\nanna");
    const std::string_view line = reader.takeLine(VOK_REQUEST_SIZE - 1);
    EXPECT_EQ(line.size(), std::size_t{VOK_REQUEST_SIZE - 2});
    EXPECT_EQ(textOf(line), "anna");
    EXPECT_EQ(reader.rest(), "");
}

TEST(RequestReader, nothingIsTakenAfterTheEnd)
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

TEST(RequestReader, restIncludesTheZeros)
{
    RequestReader reader("x\nanna\nbob\n");
    EXPECT_EQ(reader.rest().size(), std::size_t{VOK_REQUEST_SIZE - 2});
    EXPECT_EQ(reader.takeLine(100), "anna\n");
    EXPECT_EQ(textOf(reader.rest()), "bob\n");
    EXPECT_EQ(reader.rest().size(), std::size_t{VOK_REQUEST_SIZE - 7}) << "looking takes nothing";
}

TEST(RequestReader, fewerBytesAreTakenAtTheEnd)
{
    RequestReader reader("x\nab\ncd");
    EXPECT_EQ(reader.takeBytes(4), "ab\nc");
    EXPECT_EQ(reader.takeBytes(0), "");
    EXPECT_EQ(reader.takeBytes(5000), "d" + std::string(VOK_REQUEST_SIZE - 7, '\0'));
    EXPECT_EQ(reader.takeBytes(1), "");
}

TEST(RequestReader, textIsTakenWithItsEnd)
{
    RequestReader reader(std::string("x\nanna\nbo\\b\0\n\ncarla", 19));
    EXPECT_EQ(reader.takeText(), "anna");
    EXPECT_EQ(reader.takeText(), "bo\\b");
    EXPECT_EQ(reader.takeText(), "");
    EXPECT_EQ(reader.takeText(), "");
    EXPECT_EQ(reader.takeText(), "carla");
    EXPECT_EQ(reader.rest(), std::string(VOK_REQUEST_SIZE - 20, '\0'));
}

TEST(RequestReader, textEndsWithTheRequest)
{
    RequestReader reader("x\n" + std::string(4094, 'a'));
    EXPECT_EQ(reader.takeText(), std::string(4094, 'a'));
    EXPECT_EQ(reader.rest(), "");
    EXPECT_EQ(reader.takeText(), "");
}

TEST(RequestReader, parametersAreAllBytesAfterTheFirstLine)
{
    RequestReader reader("x\nanna\nbob");
    reader.takeLine(100);
    EXPECT_EQ(reader.parameters(), "anna\nbob" + std::string(VOK_REQUEST_SIZE - 10, '\0'));
}

TEST(RequestReader, firstLineIsCompleteUnlessTheLengthIs10)
{
    RequestReader reader("gspc \x05Media\nmore\n");
    EXPECT_EQ(reader.completeFirstLine(cmdsvc::parameter("gspc", "share")),
              padded("gspc \x05Media\n"));
    EXPECT_EQ(reader.takeLine(100), "more\n");
}

TEST(RequestReader, lineEndedByALengthOf10ContinuesInTheNext)
{
    RequestReader share("gspc \nMedia\nmore\n");
    EXPECT_EQ(share.completeFirstLine(cmdsvc::parameter("gspc", "share")), padded("gspc Media\n"))
        << "over the length";
    EXPECT_EQ(share.takeLine(100), "more\n");
    RequestReader user("subs \n \x01"
                       "anna\nmore\n");
    EXPECT_EQ(user.completeFirstLine(cmdsvc::parameter("subs", "user")), padded("subs \n \x01"
                                                                                "anna\n"))
        << "after the length";
    EXPECT_EQ(user.takeLine(100), "more\n");
}

TEST(RequestReader, completedLineAlwaysEndsInAZero)
{
    RequestReader share("gspc \n" + std::string(4090, 'a'));
    EXPECT_EQ(share.completeFirstLine(cmdsvc::parameter("gspc", "share")),
              padded("gspc " + std::string(4090, 'a')));
    RequestReader user("subs \n" + std::string(4090, 'a'));
    EXPECT_EQ(user.completeFirstLine(cmdsvc::parameter("subs", "user")),
              padded("subs \n" + std::string(4089, 'a')));
    EXPECT_EQ(user.rest(), "a");
}

TEST(RequestReader, codeAndCountAreLittleEndianAndZeroIfTheyAreMissing)
{
    const std::string request("vers\xFF\1\2\3\4", 9);
    EXPECT_EQ(cmdsvc::codeOf(request), 0x73726576U);
    EXPECT_EQ(cmdsvc::countOf(request), 0x04030201U);
    EXPECT_EQ(cmdsvc::codeOf("ve"), 0x6576U);
    EXPECT_EQ(cmdsvc::countOf("vers "), 0U);
    EXPECT_EQ(cmdsvc::countOf("vers \7"), 7U);
    EXPECT_EQ(cmdsvc::codeOf(""), 0U);
}

TEST(RequestReader, bufferHoldsTheRequestAndZerosOrIsCut)
{
    const cmdsvc::RequestBuffer buffer = cmdsvc::bufferOf("ab");
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), padded("ab"));
    const cmdsvc::RequestBuffer full = cmdsvc::bufferOf(std::string(5000, 'x'));
    EXPECT_EQ(std::string(full.data(), full.size()), std::string(4096, 'x'));
}

TEST(RequestReader, oneNewlineIsNoPartOfAText)
{
    EXPECT_EQ(cmdsvc::withoutNewline("ab\n"), "ab");
    EXPECT_EQ(cmdsvc::withoutNewline("ab\n\n"), "ab\n");
    EXPECT_EQ(cmdsvc::withoutNewline("ab"), "ab");
    EXPECT_EQ(cmdsvc::withoutNewline(""), "");
}

TEST(RequestReader, textEndsAtItsFirstZero)
{
    EXPECT_EQ(textOf(std::string_view("ab\0cd", 5)), "ab");
    EXPECT_EQ(textOf(std::string_view("\0ab", 3)), "");
    EXPECT_EQ(textOf("ab\n"), "ab\n");
    EXPECT_EQ(textOf(""), "");
}

/// Takes a request apart with the C library's functions, as handlers could.
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

TEST(RequestReader, takesRandomRequestsApartAsTheHandlersDo)
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
