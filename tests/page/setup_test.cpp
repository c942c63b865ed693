// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using root::le32;
using visits::contains;
using visits::Made;

const std::string kVariables = "/etc/pelconfig/system_var";
const std::string kAnswers = "language=german&host_name=storage-2&share_name=Our+share&next_page=";

std::string thisPage(int number)
{
    const std::string text = std::to_string(number);
    return "function this_page()\n{\n\treturn " + text +
           ";\n}\n//<!-- printNextPage() this_page() { return " + text + ";}-->\n";
}

/// The appliance's shares, without the one that the setup is to make and with it.
const std::string kOther = "lsst " + le32(1) + "\nOther\npublic\n";
const std::string kThere = "lsst " + le32(1) + "\nour SHARE\npublic\n";
const std::string kPrivate = "lsst " + le32(1) + "\nOur share\nprivate\n";
const std::string kAskForShares = "lsts " + le32(0) + "\n";
const std::string kCreate = "pshr " + le32(3) + "\nguest\nOur share\n";

const std::string kComplaint = R"(<p class="complaint" id="share_name-complaint">)"
                               R"(<span aria-hidden="true">&#10005;</span> )";

class SetupPage : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetLanguage", "<language>italian</language>\n");
        root::writeFile("/stubs/tovGetNmbdSysname", "<nmbdSysname>old-\"name\"</nmbdSysname>\n");
        root::writeFile(kVariables, "pel_pubshare_name=Old & gold\nfirsttime=1\n");
    }

    static Made post(const std::string& fields)
    {
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return visits::make(page::makeSetup, visits::post(fields), visits::administrator(),
                            settings);
    }

    static bool isUntouched()
    {
        return !root::exists("/stubs/told") &&
               root::readFile(kVariables) == "pel_pubshare_name=Old & gold\nfirsttime=1\n";
    }
};

TEST_F(SetupPage, startsWithWhatTheApplianceHas)
{
    root::writeFile(kVariables, "pel_pubshare_name=Old & gold\nfirsttime=0\n");
    const Made made = visits::make(page::makeSetup, visits::get());
    EXPECT_EQ(made.title, "Setup");
    EXPECT_EQ(made.script, thisPage(0));
    EXPECT_TRUE(contains(made.body, "<h2>Step 1 of 3: name and language</h2>"));
    EXPECT_TRUE(contains(made.body, R"(<option value="italian" selected>)"));
    EXPECT_TRUE(contains(made.body, R"(name="host_name" value="old-&quot;name&quot;")"));
    EXPECT_TRUE(contains(made.body, R"(name="share_name" value="Old &amp; gold")"));
    EXPECT_TRUE(contains(made.body, R"(name="token" value=")" + visits::kToken + R"(")"));
    EXPECT_FALSE(contains(made.body, "complaint"));
}

TEST_F(SetupPage, firstSetupStartsWithTheLanguageOfThePage)
{
    EXPECT_TRUE(contains(visits::make(page::makeSetup, visits::get()).body,
                         R"(<option value="english" selected>)"));
    EXPECT_TRUE(contains(post(kAnswers + "0").body, R"(<option value="german" selected>)"));
}

TEST_F(SetupPage, eachStepCarriesTheAnswersAlong)
{
    const Made sharing = post(kAnswers + "1");
    EXPECT_EQ(sharing.script, thisPage(1));
    EXPECT_TRUE(contains(sharing.body, "<h2>Step 2 of 3: public share</h2>"));
    EXPECT_TRUE(contains(sharing.body, R"(type="hidden" name="language" value="german")"));
    EXPECT_TRUE(contains(sharing.body, R"(type="hidden" name="host_name" value="storage-2")"));
    EXPECT_TRUE(contains(sharing.body, R"(name="share_name" value="Our share")"));

    const FakeService service({kOther});
    const Made summary = post(kAnswers + "2");
    EXPECT_EQ(summary.script, thisPage(2));
    EXPECT_TRUE(contains(summary.body, "<h2>Step 3 of 3: check</h2>"));
    EXPECT_TRUE(contains(summary.body, "<dd><span lang=\"de\">Deutsch</span></dd>"));
    EXPECT_TRUE(contains(summary.body, "<bdi>storage-2</bdi>"));
    EXPECT_TRUE(contains(summary.body, R"(type="hidden" name="share_name" value="Our share")"));
    EXPECT_TRUE(
        contains(summary.body, "<p>The public share <bdi>Our share</bdi> will be created.</p>"));
    EXPECT_EQ(FakeService::frames(), kAskForShares);
    EXPECT_TRUE(isUntouched());
}

TEST_F(SetupPage, summarySaysIfTheShareIsThereOrNobodyKnows)
{
    {
        const FakeService service({kThere});
        EXPECT_TRUE(contains(post(kAnswers + "2").body,
                             "<p>The public share <bdi>our SHARE</bdi> exists already and stays as "
                             "it is.</p>"));
    }
    testing::internal::CaptureStderr();
    EXPECT_TRUE(contains(post(kAnswers + "2").body,
                         "<p>The pages cannot find out now whether the public share <bdi>Our "
                         "share</bdi> exists already.</p>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: cannot reach the service at /tmp/service: No such file or directory. Is "
              "vokserve running?\n");
}

TEST_F(SetupPage, nameOfAPrivateShareIsComplainedOfBeforeTheSummary)
{
    const FakeService service({kPrivate});
    const Made made = post(kAnswers + "2");
    EXPECT_EQ(made.script, thisPage(1));
    EXPECT_TRUE(contains(made.body, R"(value="Our share")"));
    EXPECT_TRUE(contains(made.body, kComplaint + "There is a share of this name already, but not "
                                                 "everybody may use it. Choose another name.</p>"));
    EXPECT_TRUE(isUntouched());
}

TEST_F(SetupPage, nameThatTheServiceRefusesIsComplainedOfAndNothingIsStored)
{
    const FakeService service({kOther, le32(0x20000001)});
    const Made made = post(kAnswers + "3");
    EXPECT_EQ(made.script, thisPage(1));
    EXPECT_TRUE(
        contains(made.body,
                 kComplaint + "A share of this name exists already, or the name is reserved.</p>"));
    EXPECT_TRUE(isUntouched());
}

TEST_F(SetupPage, staysAtAStepWhoseAnswersAreNotGood)
{
    const Made naming = post("language=german&host_name=a;b&share_name=x&next_page=3");
    EXPECT_EQ(naming.script, thisPage(0));
    EXPECT_TRUE(contains(naming.body, R"(value="a;b")")) << "what was typed";
    EXPECT_TRUE(
        contains(naming.body, R"(aria-invalid="true" aria-describedby="host_name-complaint")"));
    EXPECT_TRUE(contains(naming.body, "A name has 2 to 32 characters"));

    const Made sharing = post("language=german&host_name=box&share_name=a/b&next_page=3");
    EXPECT_EQ(sharing.script, thisPage(1));
    EXPECT_TRUE(contains(sharing.body, R"(aria-describedby="share_name-complaint")"));
    EXPECT_TRUE(isUntouched());
}

TEST_F(SetupPage, unknownLanguageIsComplainedOf)
{
    const Made made = post("language=x&host_name=box&next_page=1");
    EXPECT_EQ(made.script, thisPage(0));
    EXPECT_TRUE(contains(made.body, "Choose one of the languages."));
}

TEST_F(SetupPage, lastStepStoresTheAnswers)
{
    const FakeService service({kOther, le32(0)});
    const Made made = post(kAnswers + "3");
    EXPECT_EQ(made.script, thisPage(3));
    EXPECT_TRUE(contains(made.body, "The setup is done."));
    EXPECT_TRUE(contains(made.body, "<p>The public share <bdi>Our share</bdi> was created.</p>"));
    EXPECT_EQ(FakeService::frames(), kAskForShares + kCreate);
    EXPECT_EQ(root::readFile("/stubs/told"), "tovSetLanguage german\ntovSetHostname storage-2\n"
                                             "tovSetNmbdSysname storage-2\n");
    EXPECT_EQ(root::readFile(kVariables),
              "pel_pubshare_name=Our share\nfirsttime=0\nlanguage_current=ge\n");
}

TEST_F(SetupPage, lastStepKeepsAShareThatIsThere)
{
    const FakeService service({kThere});
    const Made made = post(kAnswers + "3");
    EXPECT_TRUE(contains(made.body, "The setup is done."));
    EXPECT_TRUE(contains(
        made.body, "<p>The public share <bdi>our SHARE</bdi> exists already and stays as it is."));
    EXPECT_TRUE(contains(made.body, "<dt>Public share</dt><dd><bdi>our SHARE</bdi></dd>"));
    EXPECT_EQ(FakeService::frames(), kAskForShares);
    EXPECT_EQ(root::readFile(kVariables),
              "pel_pubshare_name=our SHARE\nfirsttime=0\nlanguage_current=ge\n");
}

TEST_F(SetupPage, shareThatCannotBeCreatedIsAFailure)
{
    const FakeService service({kOther, le32(0xFF000004)});
    const Made made = post(kAnswers + "3");
    EXPECT_EQ(made.script, thisPage(3));
    EXPECT_TRUE(contains(made.body, "<li>The public share was not created. The appliance&#39;s "
                                    "share script did not create this share; vokctl doctor may say "
                                    "why.</li>"));
    EXPECT_EQ(root::readFile(kVariables),
              "pel_pubshare_name=Old & gold\nfirsttime=1\nlanguage_current=ge\n");
}

TEST_F(SetupPage, lastStepTellsWhatFailed)
{
    const FakeService service({kThere});
    root::writeFile("/stubs/refuse-tovSetLanguage", "");
    const Made made = post(kAnswers + "3");
    EXPECT_TRUE(contains(made.body,
                         "<p>Not everything could be stored:</p>\n"
                         "<ul><li>The appliance did not take the language.</li></ul>\n"
                         "<p>Everything else is stored as you chose it. You can repeat the setup."
                         "</p>"));
    EXPECT_FALSE(contains(made.body, "The setup is done."));
}

TEST_F(SetupPage, brokenApplianceStillShowsTheForm)
{
    root::stub("php", "exit 1");
    root::writeFile(kVariables, "");
    const Made made = visits::make(page::makeSetup, visits::get());
    EXPECT_EQ(made.script, thisPage(0));
    EXPECT_TRUE(contains(made.body, R"(name="host_name" value="")"));
}

} // namespace
