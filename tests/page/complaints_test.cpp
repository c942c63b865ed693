// SPDX-License-Identifier: MIT
#include "page/complaints.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

using client::Refused;
using page::Complaints;

constexpr auto kFields = std::to_array<page::BlamedField>({
    {cmdsvc::kNoSuchUser, "user"},
});

TEST(Complaints, firstSentenceAboutAFieldCounts)
{
    Complaints complaints;
    EXPECT_TRUE(complaints.areNone());
    complaints.add("name", "");
    EXPECT_TRUE(complaints.areNone()) << "nothing is wrong";
    complaints.add("name", "Too long.");
    complaints.add("name", "Too short.");
    EXPECT_FALSE(complaints.areNone());
    EXPECT_EQ(complaints.about("name"), "Too long.");
    EXPECT_EQ(complaints.summary().text(),
              "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>"
              "<li><a href=\"#name\">Too long.</a></li></ul></div>\n");
    EXPECT_EQ(complaints.about("user"), "");
}

TEST(Complaints, refusalIsAboutTheFieldThatIsToBlame)
{
    Complaints complaints;
    complaints.add(Refused(client::kRefused, "shar", cmdsvc::kNoSuchUser, "x"), kFields);
    complaints.add(Refused(client::kRefused, "shar", cmdsvc::kNoMemory, "x"), kFields);
    EXPECT_EQ(complaints.about("user"), "There is no user of this name, or it is reserved.");
    EXPECT_EQ(complaints.about(""), "The appliance has run out of memory; try again later.");
}

TEST(Complaints, failureThatIsNoRefusalIsAboutTheForm)
{
    testing::internal::CaptureStderr();
    Complaints complaints;
    complaints.add(client::Failure(client::kUnreachable, "no socket"), kFields);
    EXPECT_EQ(complaints.about(""),
              "The appliance's service does not answer. Try again in a minute.");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vokpage: no socket\n");
}

TEST(Complaints, summaryLeadsToTheFields)
{
    Complaints complaints;
    EXPECT_EQ(complaints.summary().text(), "");
    complaints.add("name", "A & B.");
    complaints.add("", "<All>.");
    EXPECT_EQ(complaints.summary().text(),
              "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>"
              "<li><a href=\"#name\">A &amp; B.</a></li><li>&lt;All&gt;.</li></ul></div>\n");
}

} // namespace
