// SPDX-License-Identifier: MIT
#include "page/setup_apply.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/page/visits.h"

namespace {

using Words = std::vector<std::string>;

const std::string kVariables = "/etc/pelconfig/system_var";
const page::SetupValues kValues = {"traditional_chinese", "Storage-2", "Our 'share'"};

const page::PublicShare kShare = {page::PublicShare::State::kCreated, "OUR 'share'"};

class SetupEnd : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::stubSystemScript();
        root::writeFile(kVariables, "firsttime=1\nother=kept\n");
    }

    /// The shell lines that were run, without traces.
    static Words lines()
    {
        Words lines = watch::calls();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("echo "); });
        return lines;
    }

    static std::string line(const std::string& function, const std::string& value)
    {
        return "sudo /usr/bin/php /etc/inc/api_system.php " + function + " " + value + " > " +
               root::workFile("setSysVar");
    }
};

TEST_F(SetupEnd, storesEverythingWhereItBelongs)
{
    EXPECT_EQ(page::applySetup(kValues, kShare), Words{});
    EXPECT_EQ(lines(),
              (Words{line("tovSetLanguage", "traditional_chinese"),
                     line("tovSetHostname", "Storage-2"), line("tovSetNmbdSysname", "Storage-2")}));
    EXPECT_EQ(root::readFile(kVariables), "firsttime=0\nother=kept\nlanguage_current=tc\n"
                                          "pel_pubshare_name=OUR 'share'\n");
}

TEST_F(SetupEnd, tellsWhatTheSystemScriptRefuses)
{
    root::writeFile("/stubs/refuse-tovSetHostname", "");
    EXPECT_EQ(page::applySetup(kValues, kShare), Words{"The appliance did not take the name."});
    EXPECT_EQ(root::readFile("/stubs/told"), "tovSetLanguage traditional_chinese\n"
                                             "tovSetHostname Storage-2\n"
                                             "tovSetNmbdSysname Storage-2\n")
        << "the rest is done";
    EXPECT_EQ(root::readFile(kVariables), "firsttime=1\nother=kept\nlanguage_current=tc\n"
                                          "pel_pubshare_name=OUR 'share'\n")
        << "but the first run is not over";
}

TEST_F(SetupEnd, tellsWhatCannotBeStored)
{
    std::filesystem::remove(kVariables);
    EXPECT_EQ(page::applySetup(kValues, kShare),
              (Words{"The language could not be remembered.",
                     "The name of the public share could not be stored."}));
}

TEST_F(SetupEnd, tellsOfAllThatFails)
{
    root::stub("php", "exit 1");
    std::filesystem::remove(kVariables);
    EXPECT_EQ(
        page::applySetup(kValues, kShare),
        (Words{"The appliance did not take the language.", "The language could not be remembered.",
               "The appliance did not take the name.",
               "The appliance did not take the name for its shares.",
               "The name of the public share could not be stored."}));
}

TEST_F(SetupEnd, shareThatIsNotThereIsNotNamed)
{
    EXPECT_EQ(page::applySetup(kValues, {page::PublicShare::State::kFailed, "Our 'share'", "Why."}),
              Words{"The public share was not created. Why."});
    EXPECT_EQ(root::readFile(kVariables), "firsttime=1\nother=kept\nlanguage_current=tc\n");
}

} // namespace
