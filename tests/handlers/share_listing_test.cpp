// SPDX-License-Identifier: MIT
#include "handlers/share_listing.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/request.h"
#include "tests/support/share_script.h"

namespace {

using request::Lines;
using root::trace;
using share_script::listingLine;

const std::string kListing = root::workFile("cmd_lsts");

class ShareListing : public request::Test {
  protected:
    static Lines calls(const std::string& result)
    {
        const std::string line = listingLine(kListing);
        return {line, trace("cmd_lsts: system(" + line + ") -- iRet: " + result)};
    }
};

TEST_F(ShareListing, scriptWritesItIntoTheFile)
{
    root::stub("php", "echo listed >\"$3\"");
    watch::restart();
    EXPECT_TRUE(handlers::fetchShareListing("cmd_lsts", kListing.c_str()));
    EXPECT_EQ(watch::calls(), calls("0"));
    EXPECT_EQ(root::readFile(kListing), "listed\n");
}

TEST_F(ShareListing, failingScriptIsTraced)
{
    root::stub("php", "exit 3");
    watch::restart();
    EXPECT_FALSE(handlers::fetchShareListing("cmd_lsts", kListing.c_str()));
    EXPECT_EQ(watch::calls(), calls("768"));
}

TEST_F(ShareListing, fileIsOpenedInTheSlot)
{
    root::writeFile(kListing, "listed\n");
    const std::size_t before = root::list("/proc/self/fd").size();
    FILE* listing = handlers::openShareListing(cmdsvc::channel(), kListing.c_str());
    ASSERT_NE(listing, nullptr);
    EXPECT_EQ(std::fgetc(listing), 'l');
    EXPECT_TRUE(cmdsvc::channel().closeFile());
    EXPECT_EQ(root::list("/proc/self/fd").size(), before);
    EXPECT_TRUE(root::exists(kListing));
}

TEST_F(ShareListing, fileThatCannotBeOpenedIsTracedAndRemoved)
{
    root::writeFile(kListing, "listed\n");
    root::makeUnreadable(kListing);
    watch::restart();
    EXPECT_EQ(handlers::openShareListing(cmdsvc::channel(), kListing.c_str()), nullptr);
    EXPECT_EQ(watch::calls(), Lines{trace("cannot open file " + kListing + ": " + root::kDenied)});
    EXPECT_FALSE(root::exists(kListing));
}

} // namespace
