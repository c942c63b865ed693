// SPDX-License-Identifier: MIT
//
// "vokctl host" as people and scripts call it.
#include <array>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

constexpr const char* kVariables = "/etc/pelconfig/system_var";
const std::string kApplied = "vokctl: the settings were applied\n";

class HostCommand : public root::AnsweringTest {
  protected:
    void SetUp() override
    {
        root::AnsweringTest::SetUp();
        stubScripts("");
        root::writeFile(kVariables, "other=1\n");
    }

    /// Has both scripts write down what they are told, a line each, and do this besides.
    static void stubScripts(const std::string& besides)
    {
        root::stub("php", "printf '<%s>' \"$@\" >>/stubs/told; echo >>/stubs/told\n" + besides);
    }

    /// Has one function of the scripts do this.
    static void stubFunction(const std::string& name, const std::string& script)
    {
        stubScripts("case $2 in " + name + ") " + script + " ;; esac");
    }

    static std::string told() { return root::readFile("/stubs/told"); }

    static std::string system(const std::string& function, const std::string& value)
    {
        return "</etc/inc/api_system.php><" + function + "><" + value + ">\n";
    }

    /// "vokctl host set" with a time and these options.
    static Strings set(const Strings& options)
    {
        Strings whole = {"host", "set", "--time", "2026-11-21T18:30:05"};
        whole.insert(whole.end(), options.begin(), options.end());
        return whole;
    }

    static void expectRefusal(const Strings& options, const std::string& sentence,
                              const std::string& scriptsWereTold)
    {
        std::filesystem::remove("/stubs/told");
        expectEnd(vokctl(set(options)), 1, "", "vokctl: " + sentence + "\n");
        EXPECT_EQ(told(), scriptsWereTold) << sentence;
    }

    static void expectWrongUsage(const Strings& arguments, const std::string& sentence)
    {
        std::filesystem::remove("/stubs/told");
        expectEnd(vokctl(arguments), 2, "", "vokctl: " + sentence + "\n");
        EXPECT_EQ(told(), "") << arguments.back();
    }

    const std::string clock = "</etc/inc/api_pel.php><tovSetUtcSysTime><18:30:05>\n" +
                              system("tovSetSysDate", "11/21/2026");
    const std::string english = clock + system("tovSetLanguage", "english");
};

// ---- What is sent -----------------------------------------------------------------------------

TEST_F(HostCommand, settingsGoInFourLines)
{
    const Exchange bare = exchange(set({"--language", "en"}), {le32(0)});
    EXPECT_EQ(bare.frames, Strings{"host " + le32(4) + "\n112118302026.05\n\n\nen\n"});
    expectEnd(bare.ended, 0, "", kApplied);
    const Exchange full = exchange(
        set({"--language", "tc", "--name", "cellar", "--workgroup", "HOME NET"}), {le32(0)});
    EXPECT_EQ(full.frames,
              Strings{"host " + le32(4) + "\n112118302026.05\ncellar\nHOME NET\ntc\n"});
    expectEnd(full.ended, 0, "", kApplied);
}

std::string timeLine(std::time_t time)
{
    std::tm utc = {};
    ::gmtime_r(&time, &utc);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%m%d%H%M%Y.%S", &utc);
    return text.data();
}

TEST_F(HostCommand, timesRunOnAfter2038)
{
    const Exchange exchanged =
        exchange({"host", "set", "--language", "en", "--time", "2040-02-29T23:59:58"}, {le32(0)});
    EXPECT_EQ(exchanged.frames, Strings{"host " + le32(4) + "\n022923592040.58\n\n\nen\n"});
}

TEST_F(HostCommand, presentTimeIsSentInUtcWherever)
{
    ::setenv("TZ", "XYZ-9", 1);
    const std::time_t before = std::time(nullptr);
    const Exchange exchanged = exchange({"host", "set", "--language", "en"}, {le32(0)});
    const std::time_t after = std::time(nullptr);
    ::setenv("TZ", "UTC", 1);
    ASSERT_EQ(exchanged.frames.size(), 1U);
    bool isNow = false;
    for (std::time_t time = before; time <= after; ++time) {
        isNow |= exchanged.frames[0] == "host " + le32(4) + "\n" + timeLine(time) + "\n\n\nen\n";
    }
    EXPECT_TRUE(isNow) << exchanged.frames[0];
}

// ---- What is done -----------------------------------------------------------------------------

TEST_F(HostCommand, everythingIsSet)
{
    expectEnd(vokctl(set({"--language", "fr", "--name", "cellar", "--workgroup", "HOME"})), 0, "",
              kApplied);
    EXPECT_EQ(told(),
              clock + system("tovSetLanguage", "french") + system("tovSetHostname", "cellar") +
                  system("tovSetNmbdSysname", "cellar") + system("tovSetWorkgroup", "HOME"));
    EXPECT_EQ(root::readFile(kVariables),
              "other=1\nlanguage_current=fr\nhttp_start_page=/real_index.asp\n");
}

TEST_F(HostCommand, everyLanguageHasACode)
{
    const std::vector<std::pair<std::string, std::string>> languages = {
        {"en", "english"},
        {"fr", "french"},
        {"ge", "german"},
        {"sp", "spanish"},
        {"it", "italian"},
        {"sc", "chinese"},
        {"tc", "traditional_chinese"}};
    for (const auto& [code, name] : languages) {
        std::filesystem::remove("/stubs/told");
        expectEnd(vokctl(set({"--language", code})), 0, "", kApplied);
        EXPECT_EQ(told(), clock + system("tovSetLanguage", name));
        EXPECT_NE(root::readFile(kVariables).find("\nlanguage_current=" + code + "\n"),
                  std::string::npos);
    }
}

TEST_F(HostCommand, emptyNamesLeaveTheOldOnes)
{
    expectEnd(vokctl(set({"--language", "en", "--name", "", "--workgroup", ""})), 0, "", kApplied);
    EXPECT_EQ(told(), english);
}

TEST_F(HostCommand, namesHaveTwoToThirtyTwoBytes)
{
    for (const std::string& name : {std::string("nn"), std::string(32, 'n')}) {
        std::filesystem::remove("/stubs/told");
        expectEnd(vokctl(set({"--language", "en", "--name", name, "--workgroup", name})), 0, "",
                  kApplied);
        EXPECT_EQ(told(), english + system("tovSetHostname", name) +
                              system("tovSetNmbdSysname", name) + system("tovSetWorkgroup", name));
    }
}

TEST_F(HostCommand, clockThatCannotBeSetIsNoFailure)
{
    stubFunction("tovSetUtcSysTime", "exit 1");
    expectEnd(vokctl(set({"--language", "en"})), 0, "", kApplied);
    EXPECT_EQ(told(), english);
}

TEST_F(HostCommand, earlyYearKeepsItsPlaces)
{
    expectEnd(vokctl({"host", "set", "--language", "en", "--time", "1970-01-02T03:04:05"}), 0, "",
              kApplied);
    EXPECT_EQ(told(), "</etc/inc/api_pel.php><tovSetUtcSysTime><03:04:05>\n" +
                          system("tovSetSysDate", "01/02/1970") +
                          system("tovSetLanguage", "english"));
}

// ---- Refusals ---------------------------------------------------------------------------------

TEST_F(HostCommand, badSettingsAreRefusedBeforeAnythingIsDone)
{
    for (const char* language : {"EN", "e", "eng", "xx", ""}) {
        expectRefusal({"--language", language},
                      "The appliance does not know this language; vokctl host set --help lists "
                      "the codes. (0x50000006)",
                      "");
    }
    const std::string character =
        "A setting has a character that cannot be used, such as a quote. (0xFF000003)";
    expectRefusal({"--language", "en", "--name", "a;reboot"}, character, "");
    expectRefusal({"--language", "en", "--workgroup", "$(reboot)"}, character, "");
    expectRefusal({"--language", "`x`"}, character, "");
    EXPECT_EQ(root::readFile(kVariables), "other=1\n");
}

TEST_F(HostCommand, scriptsThatFailAreSaidInWords)
{
    const Strings all = {"--language", "en", "--name", "cellar", "--workgroup", "HOME"};
    const std::string failed = "The appliance did not set the date or the language; vokctl doctor "
                               "may say why. (0xFF000004)";
    const std::string names =
        "The date and the language were set, but the appliance did not take the host name or the "
        "work group; vokctl doctor may say why. (0x50000005)";
    const std::string hostName = english + system("tovSetHostname", "cellar");
    const std::string both = hostName + system("tovSetNmbdSysname", "cellar");
    const std::vector<std::array<std::string, 3>> failures = {
        {"tovSetSysDate", failed, clock},
        {"tovSetLanguage", failed, english},
        {"tovSetHostname", names, hostName},
        {"tovSetNmbdSysname", names, both},
        {"tovSetWorkgroup", names, both + system("tovSetWorkgroup", "HOME")},
    };
    for (const auto& [function, sentence, toldBefore] : failures) {
        stubFunction(function, "exit 1");
        expectRefusal(all, sentence, toldBefore);
    }
}

TEST_F(HostCommand, variablesThatCannotBeSetAreSaidInWords)
{
    std::filesystem::remove(kVariables);
    expectRefusal({"--language", "en"},
                  "The appliance did not set the date or the language; vokctl doctor may say why. "
                  "(0xFF000004)",
                  clock);
    root::writeFile(kVariables, "");
    stubFunction("tovSetLanguage", "rm /etc/pelconfig/system_var");
    expectRefusal({"--language", "en"}, "Everything was set, except the start page. (0x50000001)",
                  english);
}

TEST_F(HostCommand, memoryThatHasRunOutIsSaidInWords)
{
    expectEnd(exchange(set({"--language", "en"}), {le32(0xFF000001)}).ended, 1, "",
              "vokctl: The appliance has run out of memory; try again later. (0xFF000001)\n");
}

TEST_F(HostCommand, otherAnswersCannotBeRead)
{
    const std::string unreadable = "vokctl: the answer cannot be read: ";
    expectEnd(exchange(set({"--language", "en"}), {""}).ended, 7, "",
              unreadable +
                  "empty: the command was ignored, is not known, or failed before it answered\n");
    expectEnd(exchange(set({"--language", "en"}), {le32(0) + "x"}).ended, 7, "",
              unreadable + "of a shape that this client does not know\n");
}

// ---- Wrong usage ------------------------------------------------------------------------------

TEST_F(HostCommand, timeHasOneForm)
{
    for (const char* time :
         {"yesterday", "2026", "2026-11-21", "2026-11-21T18:30", "2026-11-21T18:30:0",
          "2026-11-21 18:30:00", "2026-13-21T18:30:00", "2026-11-32T18:30:00",
          "2026-11-21T24:30:00", "2026-11-21T18:60:00", "2026-11-21T18:30:00Z",
          "2026-11-21T18:30:00 ", "26-11-21T18:30:00", "2026-1-2T3:04:05"}) {
        expectWrongUsage({"host", "set", "--language", "en", "--time", time},
                         "--time needs the form 2026-11-21T18:30:00, in UTC");
    }
}

TEST_F(HostCommand, namesOfAnotherSizeAreNotSent)
{
    for (const std::string& name : {std::string("n"), std::string(33, 'n')}) {
        expectWrongUsage(set({"--language", "en", "--name", name}), "--name needs 2 to 32 bytes");
        expectWrongUsage(set({"--language", "en", "--workgroup", name}),
                         "--workgroup needs 2 to 32 bytes");
    }
}

TEST_F(HostCommand, newlinesCannotBeSent)
{
    const std::string sentence = "a name or a value cannot contain a newline or a zero byte";
    expectWrongUsage(set({"--language", "en", "--name", "a\nb"}), sentence);
    expectWrongUsage(set({"--language", "en", "--workgroup", "a\n"}), sentence);
    expectWrongUsage(set({"--language", "en\n"}), sentence);
}

TEST_F(HostCommand, unreachableServiceAndWrongUsage)
{
    expectEnd(
        root::run(
            {root::built("vokctl"), "host", "set", "--language", "en", "--socket", "/tmp/none"}),
        3, "",
        "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is vokserve "
        "running?\n");
    EXPECT_EQ(vokctl({"host"}).exitCode, 2);
    EXPECT_EQ(vokctl({"host", "set"}).exitCode, 2);
    EXPECT_EQ(vokctl({"host", "set", "--name", "cellar"}).exitCode, 2);
    EXPECT_EQ(vokctl({"host", "set", "--language", "en", "extra"}).exitCode, 2);
    EXPECT_EQ(vokctl({"host", "get"}).exitCode, 2);
    EXPECT_EQ(told(), "");
}

} // namespace
