// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/page/visits.h"

namespace {

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
        return visits::make(page::makeSetup, visits::post(fields));
    }

    static bool isUntouched()
    {
        return !root::exists("/stubs/told") &&
               root::readFile(kVariables) == "pel_pubshare_name=Old & gold\nfirsttime=1\n";
    }
};

TEST_F(SetupPage, startsWithWhatTheApplianceHas)
{
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

TEST_F(SetupPage, eachStepCarriesTheAnswersAlong)
{
    const Made sharing = post(kAnswers + "1");
    EXPECT_EQ(sharing.script, thisPage(1));
    EXPECT_TRUE(contains(sharing.body, "<h2>Step 2 of 3: public share</h2>"));
    EXPECT_TRUE(contains(sharing.body, R"(type="hidden" name="language" value="german")"));
    EXPECT_TRUE(contains(sharing.body, R"(type="hidden" name="host_name" value="storage-2")"));
    EXPECT_TRUE(contains(sharing.body, R"(name="share_name" value="Our share")"));

    const Made summary = post(kAnswers + "2");
    EXPECT_EQ(summary.script, thisPage(2));
    EXPECT_TRUE(contains(summary.body, "<h2>Step 3 of 3: check</h2>"));
    EXPECT_TRUE(contains(summary.body, "<dd>Deutsch</dd>"));
    EXPECT_TRUE(contains(summary.body, "<bdi>storage-2</bdi>"));
    EXPECT_TRUE(contains(summary.body, R"(type="hidden" name="share_name" value="Our share")"));
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
    const Made made = post(kAnswers + "3");
    EXPECT_EQ(made.script, thisPage(3));
    EXPECT_TRUE(contains(made.body, "The setup is done."));
    EXPECT_EQ(root::readFile("/stubs/told"), "tovSetLanguage german\ntovSetHostname storage-2\n"
                                             "tovSetNmbdSysname storage-2\n");
    EXPECT_EQ(root::readFile(kVariables),
              "pel_pubshare_name=Our share\nfirsttime=0\nlanguage_current=ge\n");
}

TEST_F(SetupPage, lastStepTellsWhatFailed)
{
    root::writeFile("/stubs/refuse-tovSetLanguage", "");
    const Made made = post(kAnswers + "3");
    EXPECT_TRUE(contains(made.body, "Not everything could be stored"));
    EXPECT_TRUE(contains(made.body, "<li>The appliance did not take the language.</li>"));
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
