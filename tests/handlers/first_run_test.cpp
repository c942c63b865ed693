// SPDX-License-Identifier: MIT
#include "handlers/first_run.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/request.h"

namespace fs = std::filesystem;

namespace {

using request::exitTrace;
using request::frame;
using request::kGood;
using request::kWorkFile;
using request::Lines;
using root::join;
using root::kVariables;
using root::le32;
using root::trace;

constexpr std::uint32_t kSetupDone = 0x80000001;
constexpr std::uint32_t kNoLanguage = 0xB0000001;
constexpr std::uint32_t kLanguageWithoutCode = 0xB0000002;
constexpr std::uint32_t kNoPublicShareName = 0xB0000003;

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

/// Sends a request while a work file of an earlier command is in place.
class Query : public request::Test {
  protected:
    /// Processes the loaded request, and compares all that it leaves.
    /// @param isGood  whether it ends without an error, and so without its exit
    /// @param printed  on standard output
    /// @param left  files besides the work file, which only an exit removes
    static void expectEnd(const std::string& answer, bool isGood, const Lines& calls,
                          const std::string& printed = "", const Lines& left = {})
    {
        root::writeFile(kWorkFile, "work");
        const Lines settings = root::list("/etc/pelconfig");
        const std::string variables = root::readFile(kVariables);
        request::Test::expectEnd(answer, calls, join({left, isGood ? Lines{kWorkFile} : Lines{}}),
                                 printed);
        EXPECT_EQ(root::list("/etc/pelconfig"), settings) << "nothing is written";
        EXPECT_EQ(root::readFile(kVariables), variables);
    }
};

// ---- frst -------------------------------------------------------------------------------------

class FirstTime : public Query {
  protected:
    /// @param shown  the marker in the trace
    static void expectAnswer(std::uint32_t code, const std::string& shown,
                             const std::string& printed = "")
    {
        request::load(frame("frst", 0));
        Lines calls = {trace("cmd_frst() return : " + shown)};
        if (code != kGood) {
            calls.push_back(exitTrace(code));
        }
        expectEnd(le32(code), code == kGood, calls, printed);
    }

    static void expectMarker(const std::string& marker, std::uint32_t code)
    {
        SCOPED_TRACE(marker);
        root::writeFile(kVariables, "a=0\nfirsttime=" + marker + "\nfirsttime2=0\n");
        expectAnswer(code, marker.substr(0, 39));
    }
};

TEST_F(FirstTime, setupIsDoneIfTheMarkerStartsWithZero)
{
    for (const std::string marker : {"0", "00", "01", "0x", "0 1", "0\xC3\xA9", "0\"$HOME"}) {
        expectMarker(marker, kSetupDone);
    }
}

TEST_F(FirstTime, setupIsPendingWithAnyOtherMarker)
{
    for (const std::string marker :
         {"", "1", "10", "1 0", "-0", "O", "no", "%s%n", "\xC3\xA9", "\"0\"", "'0'"}) {
        expectMarker(marker, kGood);
    }
}

TEST_F(FirstTime, markerIsTracedUpToItsBuffersEnd)
{
    for (const std::size_t size : {2U, 31U, 32U, 33U, 38U, 39U, 40U, 41U, 64U, 65U, 500U}) {
        expectMarker("0" + std::string(size - 1, 'm'), kSetupDone);
        expectMarker(std::string(size - 1, 'm') + "0", kGood);
    }
}

TEST_F(FirstTime, blanksAroundTheEqualsSignAreIgnored)
{
    for (const std::string line : {"firsttime = 0", "firsttime\t=\t 0", "firsttime=  0"}) {
        root::writeFile(kVariables, line + "\n");
        expectAnswer(kSetupDone, "0");
    }
    root::writeFile(kVariables, "firsttime=0 \t\r\n");
    expectAnswer(kSetupDone, "0 \t");
    root::writeFile(kVariables, "firsttime=0");
    expectAnswer(kSetupDone, "0");
}

TEST_F(FirstTime, onlyTheFirstOfSeveralMarkersCounts)
{
    root::writeFile(kVariables, "firsttime=1\nfirsttime=0\n");
    expectAnswer(kGood, "1");
    root::writeFile(kVariables, "firsttime=0\nfirsttime=1\n");
    expectAnswer(kSetupDone, "0");
}

TEST_F(FirstTime, similarNamesAreOtherVariables)
{
    for (const std::string content :
         {"", "a=0\n", "firsttime2=0\n", " firsttime=0\n", "FIRSTTIME=0\n", "firsttime 0\n",
          "firsttime x=0\n", "the_firsttime=0\n"}) {
        root::writeFile(kVariables, content);
        expectAnswer(kGood, "");
    }
}

TEST_F(FirstTime, lineThatIsTooLongIsNoMarker)
{
    const std::string start = "firsttime=0";
    root::writeFile(kVariables, start + std::string(511 - start.size() - 1, 'm') + "\n");
    expectAnswer(kSetupDone, "0" + std::string(38, 'm'));
    for (const std::size_t size : {511U, 512U, 4000U}) {
        root::writeFile(kVariables, start + std::string(size - start.size(), 'm') + "\n");
        expectAnswer(kGood, "");
    }
}

TEST_F(FirstTime, markerThatCannotBeReadIsAnEmptyOne)
{
    expectAnswer(kGood, "", root::unreadVariable(root::kNotThere));
    root::writeFile(kVariables, "firsttime=0\n");
    fs::permissions(kVariables, fs::perms(0));
    expectAnswer(kGood, "", root::unreadVariable(root::kDenied));
    fs::remove(kVariables);
    fs::create_directory(kVariables);
    expectAnswer(kGood, "");
}

TEST_F(FirstTime, onlyTheFirstLineIsRead)
{
    root::writeFile(kVariables, "firsttime=1\n");
    request::load(frame("frst", 0, "more\n"));
    expectEnd(le32(kGood), true, {trace("cmd_frst() return : 1")});
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(FirstTime, everyTraceReachesTheFile)
{
    root::writeFile(kVariables, "firsttime=0\n");
    expectAnswer(kSetupDone, "0");
    EXPECT_EQ(root::readFile(root::kTraceFile),
              "cmd=74737266 \nparam_count=0\ncmd_frst() return : 0\n"
              "exiting with error 0x80000001\n");
}

// ---- qlps -------------------------------------------------------------------------------------

const std::string kAsk = "sudo /usr/bin/php /etc/inc/api_system.php tovGetLanguage ";

std::string work()
{
    return root::workFile("getSysVar");
}

/// The language script's answer.
void stubLanguage(const std::string& output)
{
    root::writeFile("/stubs/language", output);
    root::stub("php", "[ $2 = tovGetLanguage ] && cat /stubs/language >\"$3\"");
}

/// An answer with a language's name after its tag.
std::string tagged(const std::string& language)
{
    return "<language>none</language>\n<languag>" + language + "</languag>\n";
}

/// The calls up to a language.
Lines languageCalls(const std::string& language)
{
    return {kAsk + work(), trace("getSysVar(): " + kAsk + work() + " -- iRet: 0"),
            trace("getSysVar retBuf:" + language), trace("cmd_qlps pel_language= " + language)};
}

/// The calls from a language to the value of its variable.
Lines valueCalls(const std::string& language, const std::string& code, const std::string& value)
{
    return join({languageCalls(language),
                 {trace("cmd_qlps pel_language= default_public_share_name_" + code),
                  trace("cmd_qlps pel_language= " + value)}});
}

class QuickSetup : public Query {
  protected:
    static void expectName(const std::string& language, const std::string& code,
                           const std::string& value)
    {
        request::load(frame("qlps", 0));
        const std::string name = value.substr(0, 64);
        const std::string answer = "qlrt " + le32(2) + "\n" + code + "\n" + name + "\n";
        EXPECT_EQ(answer.size(), 12 + code.size() + name.size());
        expectEnd(answer, true,
                  join({valueCalls(language, code, value), {trace("pubsharename = " + name)}}));
    }

    static void expectError(std::uint32_t code, const Lines& calls, const std::string& printed = "",
                            const Lines& left = {})
    {
        expectEnd("erro " + le32(code), false, join({calls, {exitTrace(code)}}), printed, left);
    }

    static void expectNoCode(const std::string& language)
    {
        SCOPED_TRACE(language);
        request::load(frame("qlps", 0));
        expectError(kLanguageWithoutCode, languageCalls(language));
    }
};

TEST_F(QuickSetup, englishHasItsShareName)
{
    root::writeFile(kVariables, "default_public_share_name_en=Public\n");
    stubLanguage(tagged("english"));
    request::load(frame("qlps", 0));
    expectEnd(std::string("qlrt \2\0\0\0\nen\nPublic\n", 20), true,
              {kAsk + work(), trace("getSysVar(): " + kAsk + work() + " -- iRet: 0"),
               trace("getSysVar retBuf:english"), trace("cmd_qlps pel_language= english"),
               trace("cmd_qlps pel_language= default_public_share_name_en"),
               trace("cmd_qlps pel_language= Public"), trace("pubsharename = Public")});
}

TEST_F(QuickSetup, everyLanguageHasItsCodeAndVariable)
{
    root::writeFile(kVariables, "default_public_share_name_en=Public\n"
                                "default_public_share_name_fr=Partag\xC3\xA9\n"
                                "default_public_share_name_ge=Gemeinsam\n"
                                "default_public_share_name_it=Pubblica\n"
                                "default_public_share_name_sp=P\xC3\xBA"
                                "blico\n");
    const std::vector<std::array<std::string, 3>> languages = {
        {"english", "en", "Public"},
        {"french", "fr", "Partag\xC3\xA9"},
        {"german", "ge", "Gemeinsam"},
        {"italian", "it", "Pubblica"},
        {"spanish", "sp",
         "P\xC3\xBA"
         "blico"},
    };
    for (const auto& [language, code, name] : languages) {
        stubLanguage(tagged(language));
        expectName(language, code, name);
    }
}

TEST_F(QuickSetup, languageThatContainsAKnownNameIsThatLanguage)
{
    root::writeFile(kVariables, "default_public_share_name_en=E\ndefault_public_share_name_fr=F\n"
                                "default_public_share_name_ge=G\ndefault_public_share_name_it=I\n"
                                "default_public_share_name_sp=S\n");
    const std::vector<std::array<std::string, 3>> languages = {
        {"us_english", "en", "E"},
        {"english (UK)", "en", "E"},
        {" french", "fr", "F"},
        {"germany", "ge", "G"},
        {"\xC3\xA9italian\xC3\xA9", "it", "I"},
        {"\tspanish\r", "sp", "S"},
    };
    for (const auto& [language, code, name] : languages) {
        stubLanguage(tagged(language));
        expectName(language, code, name);
    }
}

TEST_F(QuickSetup, orderOfTheTableDecidesNotTheOrderOfTheWords)
{
    root::writeFile(kVariables, "default_public_share_name_en=E\ndefault_public_share_name_fr=F\n"
                                "default_public_share_name_ge=G\ndefault_public_share_name_it=I\n"
                                "default_public_share_name_sp=S\n");
    const std::vector<std::array<std::string, 3>> languages = {
        {"spanishitaliangermanfrenchenglish", "en", "E"},
        {"spanishitaliangermanfrench", "fr", "F"},
        {"spanishitaliangerman", "ge", "G"},
        {"spanishitalian", "it", "I"},
    };
    for (const auto& [language, code, name] : languages) {
        stubLanguage(tagged(language));
        expectName(language, code, name);
    }
}

TEST_F(QuickSetup, anyOtherLanguageHasNoCode)
{
    root::writeFile(kVariables, "default_public_share_name_en=Public\n"
                                "default_public_share_name_=Public\n");
    for (const std::string language : {"chinese", "traditional_chinese", "English", "ENGLISH",
                                       "englis", "en", "fr", "1", " ", "portuguese",
                                       "fran\xC3\xA7"
                                       "ais",
                                       "%s%n", "spa nish"}) {
        stubLanguage(tagged(language));
        expectNoCode(language);
    }
}

TEST_F(QuickSetup, longLanguageIsReadInPieces)
{
    root::writeFile(kVariables, "default_public_share_name_en=Public\n");
    // A line of the answer has at most 511 bytes, nine of them for the tag.
    const std::string fits = std::string(502 - 7, 'x') + "english";
    stubLanguage("<languag>" + fits + "</languag>\n");
    expectName(fits, "en", "Public");
    const std::string cut = std::string(502 - 6, 'x') + "english";
    stubLanguage("<languag>" + cut + "</languag>\n");
    expectNoCode(cut.substr(0, 502));
}

TEST_F(QuickSetup, lastTagOfTheAnswerCounts)
{
    root::writeFile(kVariables, "default_public_share_name_fr=Partage\n");
    stubLanguage(tagged("english") + "\n" + tagged("french") + "<other>german</other>\n");
    expectName("french", "fr", "Partage");
}

TEST_F(QuickSetup, languageWithoutAnEndTagKeepsItsNewline)
{
    root::writeFile(kVariables, "default_public_share_name_fr=Partage\n");
    stubLanguage("<languag>french\nenglish\n");
    expectName("french\n", "fr", "Partage");
    stubLanguage("<languag>french");
    expectName("french", "fr", "Partage");
    stubLanguage("<languag>\n");
    expectNoCode("\n");
}

TEST_F(QuickSetup, answerWithoutALanguageIsAnError)
{
    for (const std::string output :
         {"", "\n", "english\n", "<language>english</language>\n", "<languag></languag>\n",
          "<languag>english</languag>\n<languag></languag>\n", "<Languag>english</Languag>\n"}) {
        SCOPED_TRACE(output);
        stubLanguage(output);
        request::load(frame("qlps", 0));
        expectError(kNoLanguage, languageCalls(""));
    }
}

TEST_F(QuickSetup, languageScriptThatFailsIsAnError)
{
    const std::vector<std::pair<std::string, int>> failures = {
        {"exit 1", 0x100}, {"exit 127", 0x7F00}, {"exit 255", 0xFF00}};
    const auto calls = [](int result) {
        return Lines{
            kAsk + work(),
            trace("getSysVar failed: " + kAsk + work() + " -- iRet: " + std::to_string(result)),
            trace("cmd_qlps pel_language= ")};
    };
    for (const auto& [action, result] : failures) {
        root::stub("php", "echo '<languag>english</languag>' >\"$3\"; " + action);
        request::load(frame("qlps", 0));
        expectError(kNoLanguage, calls(result), "", {work()});
        fs::remove(work());
    }
    for (const auto& [result, error] :
         std::vector<std::pair<int, int>>{{-1, EAGAIN}, {-1, ECHILD}, {-1, 0}, {9, 0}}) {
        request::load(frame("qlps", 0));
        watch::answer(kAsk, result, error);
        expectError(kNoLanguage, calls(result));
    }
    fs::remove("/usr/bin/php");
    request::load(frame("qlps", 0));
    expectError(kNoLanguage, calls(0x7F00));
}

TEST_F(QuickSetup, languageScriptReapedElsewhereIsAnError)
{
    stubLanguage(tagged("english"));
    std::signal(SIGCHLD, SIG_IGN);
    request::load(frame("qlps", 0));
    expectError(kNoLanguage,
                {kAsk + work(), trace("getSysVar failed: " + kAsk + work() + " -- iRet: -1"),
                 trace("cmd_qlps pel_language= ")},
                "", {work()});
}

TEST_F(QuickSetup, languageThatCannotBeReadIsAnError)
{
    const auto calls = [](const std::string& reason) {
        return Lines{kAsk + work(), trace("getSysVar(): " + kAsk + work() + " -- iRet: 0"),
                     trace("getSysVar failed: open file " + work() + " -- err: " + reason),
                     trace("cmd_qlps pel_language= ")};
    };
    root::stub("php", "exit 0");
    request::load(frame("qlps", 0));
    expectError(kNoLanguage, calls("No such file or directory"));
    root::stub("php", "echo '<languag>english</languag>' >\"$3\"; chmod 000 \"$3\"");
    request::load(frame("qlps", 0));
    expectError(kNoLanguage, calls("Permission denied"));
}

TEST_F(QuickSetup, shareNamesOfAnySizeAreAnswered)
{
    stubLanguage(tagged("english"));
    for (const std::size_t size : {1U, 2U, 31U, 32U, 33U, 63U, 64U, 65U, 70U, 400U, 481U}) {
        const std::string name = std::string(size - 1, 'n') + "m";
        root::writeFile(kVariables, "default_public_share_name_en=" + name + "\n");
        expectName("english", "en", name);
    }
}

TEST_F(QuickSetup, charactersAreBytes)
{
    stubLanguage(tagged("english"));
    for (const std::string& name :
         {repeated("\xC3\xA9", 32), repeated("\xC3\xA9", 33), "n" + repeated("\xC3\xA9", 32)}) {
        root::writeFile(kVariables, "default_public_share_name_en=" + name + "\n");
        expectName("english", "en", name);
    }
}

TEST_F(QuickSetup, shareNamesAreAnsweredUnchanged)
{
    stubLanguage(tagged("english"));
    for (const std::string name : {"Our files", "a \"quoted\" b", "$HOME", "%s%n%d", "back\\slash",
                                   "a=b", "0", "cr\rcr", "\xFF\x80"}) {
        root::writeFile(kVariables, "default_public_share_name_en= \t" + name + "\n");
        expectName("english", "en", name.substr(0, name.find('\r')));
    }
}

TEST_F(QuickSetup, languageWithoutAShareNameIsAnError)
{
    stubLanguage(tagged("english"));
    for (const std::string& content :
         {std::string(), std::string("default_public_share_name_en=\n"),
          std::string("default_public_share_name_en= \t\r\n"),
          std::string("default_public_share_name_fr=Partage\n"),
          std::string("default_public_share_name=Public\n"),
          std::string("default_public_share_name_english=Public\n"),
          "default_public_share_name_en=" + std::string(482, 'n') + "\n",
          "default_public_share_name_en=" + std::string(4000, 'n') + "\n"}) {
        SCOPED_TRACE(content);
        root::writeFile(kVariables, content);
        request::load(frame("qlps", 0));
        expectError(kNoPublicShareName, valueCalls("english", "en", ""));
    }
}

TEST_F(QuickSetup, shareNameThatCannotBeReadIsAnError)
{
    stubLanguage(tagged("english"));
    request::load(frame("qlps", 0));
    expectError(kNoPublicShareName, valueCalls("english", "en", ""),
                root::unreadVariable(root::kNotThere));
    root::writeFile(kVariables, "default_public_share_name_en=Public\n");
    fs::permissions(kVariables, fs::perms(0));
    request::load(frame("qlps", 0));
    expectError(kNoPublicShareName, valueCalls("english", "en", ""),
                root::unreadVariable(root::kDenied));
}

TEST_F(QuickSetup, answerDoesNotDependOnEarlierRequests)
{
    stubLanguage(tagged("english"));
    root::writeFile(kVariables, "default_public_share_name_en=" + std::string(70, 'n') + "\n");
    expectName("english", "en", std::string(70, 'n'));
    root::writeFile(kVariables, "default_public_share_name_en=P\n");
    expectName("english", "en", "P");
}

TEST_F(QuickSetup, everyTraceReachesTheFile)
{
    stubLanguage(tagged("english"));
    root::writeFile(kVariables, "default_public_share_name_en=Public\n");
    expectName("english", "en", "Public");
    EXPECT_EQ(root::readFile(root::kTraceFile),
              "cmd=73706c71 \nparam_count=0\ngetSysVar(): " + kAsk + work() +
                  " -- iRet: 0\ngetSysVar retBuf:english\ncmd_qlps pel_language= english\n"
                  "cmd_qlps pel_language= default_public_share_name_en\n"
                  "cmd_qlps pel_language= Public\npubsharename = Public\n");
}

} // namespace
