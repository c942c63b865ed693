// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "page/deed.h"
#include "page/pages.h"
#include "page/share_form.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Page;
using root::le32;

const std::string kShares =
    "lsst " + le32(1) + "\nDocuments\npublic\nTax & co\nprivate\nUSB Stick\n<odd>\n";
const std::string kPublicName = "gpsr " + le32(1) + "\ndocuments\n";
const std::string kTwoUsers = "lsut " + le32(2) + "\nanna\nbob\n";
const std::string kAsked = "lsts " + le32(0) + "\ngps1 " + le32(0) + "\nlstu " + le32(0) + "\n";

const std::string kStart = "<section class=\"card\" aria-labelledby=\"all\">\n"
                           "<h2 id=\"all\">All shares</h2>\n";
const std::string kTable =
    "<table class=\"listing\">\n<caption>3 shares; on the appliance&#39;s own disks: "
    "1</caption>\n<thead><tr><th scope=\"col\">Name</th>"
    "<th scope=\"col\">Who may read and write</th></tr></thead>\n<tbody>\n"
    "<tr><th scope=\"row\"><bdi>Documents</bdi></th><td>everybody in the network</td></tr>\n"
    "<tr><th scope=\"row\"><bdi>Tax &amp; co</bdi></th><td>only users who were given "
    "access</td></tr>\n"
    "<tr><th scope=\"row\"><bdi>USB Stick</bdi></th><td><bdi>&lt;odd&gt;</bdi></td></tr>\n"
    "</tbody>\n</table>\n";
const std::string kNamed =
    "<p>The public share that the setup names is <bdi>documents</bdi>.</p>\n";
const std::string kEnd = "</section>\n";

class Shares : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        testing::internal::CaptureStderr();
    }

    void TearDown() override
    {
        (void)testing::internal::GetCapturedStderr();
        root::Test::TearDown();
    }

    /// What was logged since the last call.
    static std::string logged()
    {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }

    static config::Configuration settings()
    {
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return settings;
    }

    static Page make(const page::Request& request,
                     const page::Visitor& visitor = visits::administrator())
    {
        return visits::makeFor(visitor, page::makeShares, request, settings());
    }

    /// The form at the end of the page, for the two users that the tests have.
    static std::string
    form(const page::Request& request = visits::get(), const page::Complaints& complaints = {},
         const page::Candidates& candidates = {.users = {"anna", "bob"}, .failure = {}})
    {
        const config::Configuration ownSettings = settings();
        const page::Visitor visitor = visits::administrator();
        page::Script script;
        const page::Visit visit{request, ownSettings, visitor, visits::kToken, script};
        return page::shareForm(visit, candidates, complaints).text();
    }

    /// What a form that was sent leads to: the deed in the cookie, told by the next page.
    static std::string toldAfter(const Page& made)
    {
        if (made.next != "/shares" || made.cookies.size() != 1) {
            return "not done";
        }
        page::Request next = visits::get();
        next.deed = made.cookies[0].value;
        const std::string body = make(next).body.text();
        return body.substr(0, body.find(kStart));
    }
};

TEST_F(Shares, administratorsSeeWhoMayDoWhatAndCanCreate)
{
    const FakeService service({kShares, kPublicName, kTwoUsers});
    const Page made = make(visits::get());
    EXPECT_EQ(made.title, "Shares");
    EXPECT_EQ(made.status, 200);
    EXPECT_EQ(made.body.text(), kStart + kTable + kNamed + kEnd + form());
    EXPECT_EQ(made.cookies.size(), 0U);
    EXPECT_EQ(FakeService::frames(), kAsked);
    EXPECT_EQ(logged(), "");
}

TEST_F(Shares, othersSeeTheListAlone)
{
    page::Visitor visitor = visits::administrator();
    visitor.isAdministrator = false;
    const FakeService service({kShares, kPublicName, kTwoUsers});
    EXPECT_EQ(make(visits::get(), visitor).body.text(),
              kStart + kTable + kNamed + kEnd +
                  "<p>Only an administrator can create shares.</p>\n");
    EXPECT_EQ(FakeService::frames(), "lsts " + le32(0) + "\ngps1 " + le32(0) + "\n")
        << "the users are not asked for";
}

TEST_F(Shares, publicShareThatIsMissingIsSaidToBe)
{
    const FakeService service({"lsst " + le32(0) + "\n", kPublicName, kTwoUsers});
    EXPECT_EQ(make(visits::get()).body.text(),
              kStart +
                  "<p>The appliance has no shares yet.</p>\n"
                  "<p>The setup names <bdi>documents</bdi> as the public share, but there is no "
                  "share of this name.</p>\n" +
                  kEnd + form());
}

TEST_F(Shares, setupThatNamesNoPublicShareIsNotSpokenOf)
{
    const FakeService service({kShares, "gpsr " + le32(1) + "\n\n", kTwoUsers});
    EXPECT_EQ(make(visits::get()).body.text(), kStart + kTable + kEnd + form());
}

TEST_F(Shares, listThatCannotBeHadIsNoEmptyOne)
{
    const FakeService service({"erro " + le32(0xFF000004), "erro " + le32(0xFF000005)});
    EXPECT_EQ(
        make(visits::get()).body.text(),
        kStart +
            "<div class=\"notice bad\" role=\"alert\"><p>The list of shares cannot be read. A "
            "script or a tool of the appliance has failed; vokctl doctor may say why.</p></div>\n" +
            kEnd +
            form(visits::get(), {},
                 {.users = {}, .failure = "The appliance's list of users cannot be found."}));
}

TEST_F(Shares, publicShareIsCreatedAndToldOnTheNextPage)
{
    const FakeService service({le32(0), kShares, kPublicName, kTwoUsers});
    const Page made = make(visits::post("name=+%3Cb%3E+&access=everybody&user=anna"));
    EXPECT_EQ(made.body.text(), "");
    EXPECT_EQ(FakeService::frames(), "pshr " + le32(3) + "\nguest\n<b>\n");
    EXPECT_EQ(logged(), "vokpage: \"anna\" has created the share \"<b>\"\n");
    EXPECT_EQ(toldAfter(made),
              "<div class=\"notice good\" role=\"status\"><p>The share <bdi>&lt;b&gt;</bdi> was "
              "created. Everybody in the network may read and write what is in it. The overview "
              "shows it after the next collection.</p></div>\n");
}

TEST_F(Shares, privateShareIsCreatedForItsUser)
{
    const FakeService service({le32(0), kShares, kPublicName, kTwoUsers});
    const Page made = make(visits::post("name=Papers&access=one&user=bob"));
    EXPECT_EQ(FakeService::frames(), "shar " + le32(3) + "\nbob\nPapers\n");
    EXPECT_EQ(toldAfter(made),
              "<div class=\"notice good\" role=\"status\"><p>The share <bdi>Papers</bdi> was "
              "created. <bdi>bob</bdi> alone may read and write what is in it. The overview shows "
              "it after the next collection.</p></div>\n");
}

/// A refusal of the service, its words, and the field that they are about.
struct Refusal {
    std::uint32_t status;
    const char* field;
    const char* words;
};

const auto kRefusals = std::to_array<Refusal>({
    {0x20000001, "name", "A share of this name exists already, or the name is reserved."},
    {0x20000003, "name", "The share's name is longer than 64 bytes."},
    {0x20000006, "user", "There is no user of this name, or it is reserved."},
    {0xFF000003, "name",
     "A name has a character that cannot be used, such as a quote or a slash. A share's cannot "
     "have : , = %, a blank at an end, or - @ + . at its start."},
    {0xFF000004, "",
     "The appliance's share script did not create this share, or did not give it to this user; "
     "vokctl doctor may say why."},
});

TEST_F(Shares, refusalIsSaidBesideItsField)
{
    for (const Refusal& refusal : kRefusals) {
        const FakeService service({le32(refusal.status), kShares, kPublicName, kTwoUsers});
        const page::Request request = visits::post("name=Papers&access=one&user=bob");
        page::Complaints complaints;
        complaints.add(refusal.field, refusal.words);
        const Page made = make(request);
        EXPECT_FALSE(made.next);
        EXPECT_EQ(made.body.text(), complaints.summary().text() + kStart + kTable + kNamed + kEnd +
                                        form(request, complaints));
        EXPECT_EQ(made.cookies.size(), 0U);
        EXPECT_EQ(logged(), "");
    }
}

TEST_F(Shares, whatIsMissingIsNotSent)
{
    const FakeService service({kShares, kPublicName, kTwoUsers});
    const page::Request request = visits::post("name=&user=anna");
    const page::Complaints complaints = page::complaintsOf(page::readNewShare(request.form));
    EXPECT_EQ(make(request).body.text(), complaints.summary().text() + kStart + kTable + kNamed +
                                             kEnd + form(request, complaints));
    EXPECT_EQ(FakeService::frames(), kAsked);
}

} // namespace
