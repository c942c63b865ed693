// SPDX-License-Identifier: MIT
#include "page/service.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

using client::ExitCode;

struct Row {
    ExitCode code;
    const char* words;
};

constexpr auto kRows = std::to_array<Row>({
    {client::kNoAnswer, "The appliance's service has not answered in time. What you asked for may "
                        "have been done all the same: look before you repeat it."},
    {client::kUnreachable, "The appliance's service does not answer. Try again in a minute."},
    {client::kNotPermitted, "The appliance's service and the pages do not trust each other. The "
                            "web server's log says why."},
    {client::kWrongUsage, "What you have typed cannot be sent to the appliance's service."},
    {client::kUnreadableAnswer, "The answer of the appliance's service cannot be read. The web "
                                "server's log says more."},
});

TEST(Service, isWhereTheSettingsSay)
{
    config::Configuration settings;
    settings.socket = "/tmp/elsewhere";
    const client::Connection connection = page::connectionOf(settings);
    EXPECT_EQ(connection.socket, "/tmp/elsewhere");
    EXPECT_EQ(connection.timeout, 20U) << "a page ends after 30 seconds";
    EXPECT_FALSE(connection.anyServer);
}

TEST(Service, visitorsAreToldWhatTheyCanDo)
{
    for (const Row& row : kRows) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(page::explain(client::Failure(row.code, "for the log")), row.words);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "vokpage: for the log\n");
    }
}

TEST(Service, visitorsReadWhatTheApplianceSays)
{
    EXPECT_EQ(page::explain(client::Refused(client::kRefused, "crat", cmdsvc::kUserNameTooLong,
                                            "for vokctl", "useradd: no group\nsorry\x07\n")),
              "The user's name is longer than 32 bytes. The appliance says: useradd: no group; "
              "sorry\\u{7}");
}

TEST(Service, refusalIsNoMatterForTheLog)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(page::explain(client::Refused(client::kRefused, "crat", cmdsvc::kUserNameTooLong,
                                            "for vokctl")),
              "The user's name is longer than 32 bytes.");
    EXPECT_EQ(page::explain(client::Refused(client::kUnreadableAnswer, cmdsvc::kServiceCode,
                                            cmdsvc::kServiceStopping, "for vokctl")),
              "The service is stopping; try again.");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
