// SPDX-License-Identifier: MIT
//
// One collection, from the start to the end of its mark.
#include "sharestatus/daemon.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/support/clock.h"
#include "tests/support/root.h"

namespace {

using root::le32;

constexpr std::time_t kStart = 1800000000;

const std::string kBusy("\x01\0", 2);
const std::string kIdle("\0\0", 2);

class Collection : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        root::clock = kStart;
        root::stubListing(root::shareBlock("Music"));
        root::stubUsage("Music", "77");
    }

    void TearDown() override
    {
        root::clock.reset();
        root::Test::TearDown();
    }
};

TEST_F(Collection, markHasTheTimeOfTheStartAndThenOfTheEnd)
{
    std::string duringTheList;
    std::string duringTheLastTrace;
    watch::after("sudo", [&] {
        duringTheList = root::readFile(root::kSemaphoreFile);
        root::clock = kStart + 1000;
    });
    watch::after("echo \"ParseShare return user", [&] {
        duringTheLastTrace = root::readFile(root::kSemaphoreFile);
        root::clock = kStart + 5000;
    });
    sharestatus::collectAndPublish();
    EXPECT_EQ(duringTheList, kBusy + le32(kStart));
    EXPECT_EQ(duringTheLastTrace, kBusy + le32(kStart));
    EXPECT_EQ(root::readFile(root::kSemaphoreFile), kIdle + le32(kStart + 5000));
}

TEST_F(Collection, markIsReleasedWhenTheStatusIsPublished)
{
    // A writer to a pipe waits for its reader, so the mark is read while the status is written.
    ASSERT_EQ(::mkfifo(root::kStatusFile, 0644), 0);
    std::string duringTheWrite;
    std::size_t size = 0;
    std::thread reader([&] {
        const int pipe = ::open(root::kStatusFile, O_RDONLY);
        std::array<char, 4096> block{};
        while (const ssize_t got = ::read(pipe, block.data(), block.size())) {
            size += static_cast<std::size_t>(got);
            if (duringTheWrite.empty()) {
                duringTheWrite = root::readFile(root::kSemaphoreFile);
            }
        }
        ::close(pipe);
    });
    sharestatus::collectAndPublish();
    reader.join();
    EXPECT_EQ(duringTheWrite, kBusy + le32(kStart));
    EXPECT_EQ(size, 1048576U + 4 + 10 + 18 + 1);
    EXPECT_EQ(root::readFile(root::kSemaphoreFile), kIdle + le32(kStart));
}

} // namespace
