// SPDX-License-Identifier: MIT
#include "service/request_times.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using request::frame;
using service::RequestTimes;
using std::chrono::milliseconds;

constexpr const char* kFolder = "/tmp/run";
constexpr const char* kFile = "/tmp/run/requests";

class Times : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        fs::create_directory(kFolder);
    }

    RequestTimes times{kFolder};
};

TEST_F(Times, areSumsOfEachCommand)
{
    EXPECT_FALSE(root::exists(kFile));
    times.add(frame("lstu", 0), milliseconds(30));
    EXPECT_EQ(root::readFile(kFile), "lstu 1 30\n");
    times.add(frame("wall", 2, "a\nb\n"), milliseconds(0));
    times.add(frame("lstu", 1), milliseconds(5000000000));
    EXPECT_EQ(root::readFile(kFile), "lstu 2 5000000030\nwall 1 0\n");
    EXPECT_EQ(fs::status(kFile).permissions(), fs::perms(0600));
}

TEST_F(Times, ofOtherRequestsAreOneSum)
{
    times.add(frame("none", 0), milliseconds(1));
    times.add("x", milliseconds(2));
    times.add("", milliseconds(4));
    times.add("\n\n\n\n", milliseconds(8));
    EXPECT_EQ(root::readFile(kFile), "other 4 15\n");
}

TEST_F(Times, keepTheFormerFileIfThereIsNoNewOne)
{
    times.add(frame("lstu", 0), milliseconds(30));
    fs::create_directories("/tmp/run/requests.new/inside");
    times.add(frame("lstu", 0), milliseconds(30));
    EXPECT_EQ(root::readFile(kFile), "lstu 1 30\n");
    fs::remove_all("/tmp/run/requests.new");
    times.add(frame("lstu", 0), milliseconds(30));
    EXPECT_EQ(root::readFile(kFile), "lstu 3 90\n");
    EXPECT_FALSE(root::exists("/tmp/run/requests.new"));
}

TEST_F(Times, areNotWrittenWithoutAFolder)
{
    fs::remove_all(kFolder);
    times.add(frame("lstu", 0), milliseconds(30));
    EXPECT_FALSE(root::exists(kFolder));
}

} // namespace
