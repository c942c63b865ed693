// SPDX-License-Identifier: MIT
#include "service/usage.h"

#include <gtest/gtest.h>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using root::le32;

class ServiceUsage : public root::Test {
  protected:
    static std::string slot(std::size_t number)
    {
        return root::readFile(VOK_USAGE_FILE).substr(8 * (number - 1), 8);
    }
};

TEST_F(ServiceUsage, requestsAreCountedBySlot)
{
    service::Usage usage;
    usage.count(request::frame("lstu", 0));
    usage.count(request::frame("lstu", 0));
    usage.count(request::frame("none", 0));
    usage.count("ls");
    usage.save();
    EXPECT_EQ(root::readFile(VOK_USAGE_FILE).size(), 168U);
    EXPECT_EQ(slot(3), "lstu" + le32(2));
    EXPECT_EQ(slot(21), std::string(4, '\0') + le32(2));
}

TEST_F(ServiceUsage, countingGoesOnFromTheFile)
{
    {
        service::Usage usage;
        usage.count(request::frame("vers", 0));
        usage.save();
    }
    service::Usage usage;
    usage.count(request::frame("vers", 0));
    usage.save();
    EXPECT_EQ(slot(5), "vers" + le32(2));
}

TEST_F(ServiceUsage, whatOtherProcessesCountIsSaved)
{
    service::Usage usage;
    for (int i = 0; i < 3; ++i) {
        root::inChild([&] { usage.count(request::frame("vers", 0)); });
    }
    usage.save();
    EXPECT_EQ(slot(5), "vers" + le32(3));
}

TEST_F(ServiceUsage, fileIsReadOnceWhateverItHolds)
{
    root::writeFile(VOK_USAGE_FILE, std::string(168, '\0'));
    service::Usage usage;
    for (int i = 0; i < 3; ++i) {
        root::inChild([&] { usage.count(request::frame("vers", 0)); });
    }
    usage.save();
    EXPECT_EQ(slot(5), std::string(4, '\0') + le32(3)) << "the codes are not added to it";
}

TEST_F(ServiceUsage, countsWithinFiveMinutesOfASaveAreWrittenAtTheEnd)
{
    service::Usage usage;
    root::inChild([&] { usage.count(request::frame("vers", 0)); });
    EXPECT_EQ(slot(5), "vers" + le32(1));
    root::inChild([&] { usage.count(request::frame("vers", 0)); });
    EXPECT_EQ(slot(5), "vers" + le32(1));
    usage.save();
    EXPECT_EQ(slot(5), "vers" + le32(2));
}

TEST_F(ServiceUsage, withoutARequestTheFileStaysAsItIs)
{
    service::Usage().save();
    EXPECT_FALSE(root::exists(VOK_USAGE_FILE));
    root::writeFile(VOK_USAGE_FILE, "foreign");
    service::Usage().save();
    EXPECT_EQ(root::readFile(VOK_USAGE_FILE), "foreign");
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

} // namespace
