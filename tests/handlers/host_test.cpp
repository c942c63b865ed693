// SPDX-License-Identifier: MIT
#include "handlers/host.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

#include "tests/support/faults.h"
#include "tests/support/request.h"

namespace fs = std::filesystem;

namespace {

using request::Failure;
using request::kFailed;
using request::kFailures;
using request::kGood;
using request::kMalformed;
using request::kNoMemory;
using request::kWorkFile;
using request::Lines;
using request::Outcome;
using root::cutTrace;
using root::join;
using root::kVariables;
using root::le32;
using root::trace;

const std::string kPelScript = "sudo /usr/bin/php /etc/inc/api_pel.php ";
const std::string kSystemScript = "sudo /usr/bin/php /etc/inc/api_system.php ";
const std::string kSetTime = kPelScript + "tovSetUtcSysTime ";

constexpr std::uint32_t kStartPageNotSet = 0x50000001;
constexpr std::uint32_t kHostNameTooLong = 0x50000003;
constexpr std::uint32_t kWorkGroupTooLong = 0x50000004;
constexpr std::uint32_t kNameNotSet = 0x50000005;
constexpr std::uint32_t kUnknownLanguage = 0x50000006;

const std::vector<std::size_t> kSizes = {0, 1, 2, 31, 32, 33, 64, 65, 4000};

/// 20 November 2026, 13:45:59.
const std::string kDate = "112013452026.59";

// What the variable file holds before a request, and what a request adds.
const std::string kBefore = "a=1\n";
const std::string kEnglish = "language_current=en\n";
const std::string kStartPage = "http_start_page=/real_index.asp\n";

/// Stubs of the appliance's scripts: they record what they are asked to set.
/// @param special  rows of a shell's "case" by function, before the common one
void stubScripts(const std::string& special = "")
{
    root::stub("php", "case $2 in\n" + special + "*) printf '<%s>' \"$@\" >>/stubs/asked ;;\nesac");
}

std::string asked()
{
    return root::readFile("/stubs/asked");
}

/// The record of a script that is asked to set one value.
std::string ask(const std::string& function, const std::string& value)
{
    const bool isTime = function == "tovSetUtcSysTime";
    return "</etc/inc/api_" + std::string(isTime ? "pel" : "system") + ".php><" + function + "><" +
           value + ">";
}

// ---- Requests ---------------------------------------------------------------------------------

struct Parameters {
    std::string date = kDate;
    std::string hostName = "";
    std::string workGroup = "";
    std::string language = "en";
};

std::string lines(const Parameters& p)
{
    return p.date + "\n" + p.hostName + "\n" + p.workGroup + "\n" + p.language + "\n";
}

// ---- Calls ------------------------------------------------------------------------------------

/// The traces of the parameters.
Lines read(const Parameters& p)
{
    return {cutTrace("date=" + p.date), cutTrace("hostname=" + p.hostName),
            cutTrace("wgname=" + p.workGroup), cutTrace("language=" + p.language)};
}

Lines firstOf(Lines lines, std::size_t count)
{
    lines.resize(count);
    return lines;
}

Lines settingTime(const std::string& time, int result = 0, const std::string& error = "Success")
{
    const std::string line = kSetTime + time;
    return {line, trace("cmd_host() system(" + line + ") - iRet: " + std::to_string(result) +
                        " -- sys err: " + error)};
}

/// The calls that set one value through the system script.
Lines setting(const std::string& function, const std::string& value, int result = 0)
{
    const std::string line =
        kSystemScript + function + " " + value + " > " + root::workFile("setSysVar");
    return {line, trace("setSysVar" + std::string((result == 0) ? "()" : " failed") + ": " + line +
                        " -- iRet: " + std::to_string(result))};
}

/// The calls that set the date, of which the trace shows the line for the time.
Lines settingDate(const std::string& time, const std::string& date, int result = 0)
{
    const std::string shown = "cmd_host() system(" + kSetTime + time + ") - iRet: ";
    if (result == 0) {
        return join({setting("tovSetSysDate", date), {trace(shown + "0")}});
    }
    return join({setting("tovSetSysDate", date, result),
                 {trace(shown + "-1"), trace("cannot save host or work group name: -1")}});
}

Lines settingClock(const std::string& time = "13:45:59", const std::string& date = "11/20/2026")
{
    return join({settingTime(time), settingDate(time, date)});
}

Lines settingHostName(const std::string& name)
{
    return join({setting("tovSetHostname", name), setting("tovSetNmbdSysname", name)});
}

/// The calls from the first parameter up to the language.
Lines upToLanguage(const Parameters& p, const std::string& languageName = "english")
{
    return join({read(p), settingClock(), setting("tovSetLanguage", languageName)});
}

// ---- The command ------------------------------------------------------------------------------

class Host : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        stubScripts();
    }

    /// Loads a request, and puts a work file of an earlier command in place.
    static void loadFrame(const std::string& request)
    {
        fs::remove("/stubs/asked");
        fs::remove(root::workFile("setSysVar"));
        for (const std::string end : {"", "_lck", "_tmp", "_bak"}) {
            fs::remove(kVariables + end);
        }
        root::writeFile(kVariables, kBefore);
        request::load(request);
        root::writeFile(kWorkFile, "work");
    }

    static void loadFilled(const std::string& parameters)
    {
        loadFrame(request::filledFrame("host", 4, parameters));
    }

    static void load(const std::string& parameters)
    {
        loadFrame(request::frame("host", 4, parameters));
    }

    static void load(const Parameters& parameters) { load(lines(parameters)); }

    /// Makes the next line of a function fail in one of the ways.
    static void fail(const Failure& failure, const std::string& function)
    {
        stubScripts(failure.script.empty() ? "" : function + ") " + failure.script + " ;;\n");
        if (failure.script.empty()) {
            const bool isTime = function == "tovSetUtcSysTime";
            watch::answer((isTime ? kPelScript : kSystemScript) + function, failure.result,
                          failure.error);
        }
    }

    /// The file that a line of the system script leaves after this failure.
    static Lines leftBy(const Failure& failure)
    {
        return failure.script.empty() ? Lines{} : Lines{root::workFile("setSysVar")};
    }

    /// Processes the request, and compares all that it leaves.
    /// @param left  files besides the work file, which only an exit removes
    static void expectEnd(std::uint32_t code, const Lines& calls, const Lines& left = {})
    {
        if (code == kGood) {
            request::Test::expectEnd(le32(code), calls, join({left, {kWorkFile}}));
        } else {
            expectError(request::run(), le32(code), code, calls, left);
        }
    }

    /// Expects that the request ends before anything is changed.
    static void expectRefused(std::uint32_t code, const Lines& calls)
    {
        expectEnd(code, calls);
        EXPECT_EQ(asked(), "");
        EXPECT_EQ(root::readFile(kVariables), kBefore);
        EXPECT_EQ(root::list("/etc/pelconfig"), (Lines{"system_var", "vokcontrol"}));
    }

    static void expectVariables(const std::string& added)
    {
        EXPECT_EQ(root::readFile(kVariables), kBefore + added);
    }
};

TEST_F(Host, settingsAreMadeInTheirOrder)
{
    const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
    load(p);
    expectEnd(kGood,
              {trace("date=112013452026.59"), trace("hostname=attic"), trace("wgname=HOME"),
               trace("language=en"),
               "sudo /usr/bin/php /etc/inc/api_pel.php tovSetUtcSysTime 13:45:59",
               trace("cmd_host() system(sudo /usr/bin/php /etc/inc/api_pel.php tovSetUtcSysTime "
                     "13:45:59) - iRet: 0 -- sys err: Success"),
               setting("tovSetSysDate", "11/20/2026")[0], setting("tovSetSysDate", "11/20/2026")[1],
               trace("cmd_host() system(sudo /usr/bin/php /etc/inc/api_pel.php tovSetUtcSysTime "
                     "13:45:59) - iRet: 0"),
               setting("tovSetLanguage", "english")[0], setting("tovSetLanguage", "english")[1],
               setting("tovSetHostname", "attic")[0], setting("tovSetHostname", "attic")[1],
               setting("tovSetNmbdSysname", "attic")[0], setting("tovSetNmbdSysname", "attic")[1],
               setting("tovSetWorkgroup", "HOME")[0], setting("tovSetWorkgroup", "HOME")[1]});
    EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59") + ask("tovSetSysDate", "11/20/2026") +
                           ask("tovSetLanguage", "english") + ask("tovSetHostname", "attic") +
                           ask("tovSetNmbdSysname", "attic") + ask("tovSetWorkgroup", "HOME"));
    expectVariables(kEnglish + kStartPage);
    EXPECT_EQ(root::readFile(kVariables + "_bak"), kBefore + kEnglish);
}

TEST_F(Host, everyTraceReachesTheFile)
{
    const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
    load(p);
    expectEnd(kGood, join({upToLanguage(p), settingHostName("attic"),
                           setting("tovSetWorkgroup", "HOME")}));
    const std::string traces = root::readFile(root::kTraceFile);
    EXPECT_NE(traces.find("\ndate=112013452026.59\nhostname=attic\nwgname=HOME\nlanguage=en\n"),
              std::string::npos);
    EXPECT_EQ(std::ranges::count(traces, '\n'), 13);
}

TEST_F(Host, eachScriptFindsTheEarlierSettings)
{
    load(Parameters{.hostName = "attic", .workGroup = "HOME"});
    stubScripts("tovSetSysDate|tovSetLanguage|tovSetWorkgroup) "
                "cat /etc/pelconfig/system_var >/stubs/$2 ;;\n");
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.answer, le32(kGood));
    EXPECT_EQ(root::readFile("/stubs/tovSetSysDate"), kBefore);
    EXPECT_EQ(root::readFile("/stubs/tovSetLanguage"), kBefore + kEnglish);
    EXPECT_EQ(root::readFile("/stubs/tovSetWorkgroup"), kBefore + kEnglish) << "no start page yet";
}

TEST_F(Host, requestDoesNotDependOnAnEarlierOne)
{
    load(Parameters{.hostName = "attic", .workGroup = "HOME", .language = "tc"});
    EXPECT_EQ(request::run().answer, le32(kGood));
    const Parameters p;
    load(p);
    expectEnd(kGood, upToLanguage(p));
    expectVariables(kEnglish + kStartPage);
}

TEST_F(Host, variablesOfTheSameNameAreReplaced)
{
    load(Parameters{.language = "fr"});
    root::writeFile(kVariables, "http_start_page=/setup.asp\nb=2\nlanguage_current=en\nc=3\n");
    EXPECT_EQ(request::run().answer, le32(kGood));
    EXPECT_EQ(root::readFile(kVariables),
              "http_start_page=/real_index.asp\nb=2\nlanguage_current=fr\nc=3\n");
}

// ---- Lines ------------------------------------------------------------------------------------

TEST_F(Host, linesMayFillTheRequestToItsEnd)
{
    const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
    loadFilled(lines(p));
    expectEnd(kGood, join({upToLanguage(p), settingHostName("attic"),
                           setting("tovSetWorkgroup", "HOME")}));
}

TEST_F(Host, aFifthLineIsNotRead)
{
    const Parameters p;
    load(lines(p) + "more");
    expectEnd(kGood, upToLanguage(p));
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(Host, lineThatIsMissingIsMalformed)
{
    const Lines whole = {kDate + "\n", "attic\n", "HOME\n", "en\n"};
    const Lines traces = read({.hostName = "attic", .workGroup = "HOME"});
    std::string before;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        SCOPED_TRACE(i);
        load(before);
        expectRefused(kMalformed, firstOf(traces, i));
        before += whole[i];
    }
}

TEST_F(Host, lineAfterTheEndOfTheRequestIsMalformed)
{
    // Nothing is left, not even a zero: the previous line is taken.
    const Lines whole = {kDate + "\n", "attic\n", "HOME\n"};
    const Lines traces = read({.hostName = "attic", .workGroup = "HOME"});
    std::string before;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        SCOPED_TRACE(i);
        before += whole[i];
        loadFilled(before);
        expectRefused(kMalformed, firstOf(traces, i + 1));
    }
}

TEST_F(Host, requestLineThatFillsTheRequestLeavesTwoBytesForADate)
{
    loadFilled("");
    expectRefused(kMalformed, {trace("date=x")});
}

TEST_F(Host, lineWithoutItsNewlineIsMalformed)
{
    const Lines whole = {kDate + "\n", "attic\n", "HOME\n", "en\n"};
    const Lines traces = read({.hostName = "attic", .workGroup = "HOME"});
    std::string before;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string text = whole[i].substr(0, whole[i].size() - 1);
        load(before + text);
        expectRefused(kMalformed, firstOf(traces, i));
        loadFilled(before + text);
        expectRefused(kMalformed, firstOf(traces, i));
        before += whole[i];
    }
    load(std::string(4000, 'n'));
    expectRefused(kMalformed, {});
}

TEST_F(Host, lineWithAZeroByteIsMalformed)
{
    const Lines whole = {kDate + "\n", "attic\n", "HOME\n", "en\n"};
    const Lines traces = read({.hostName = "attic", .workGroup = "HOME"});
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (std::size_t at = 0; at < whole[i].size(); ++at) {
            SCOPED_TRACE(testing::Message() << i << ", " << at);
            std::string parameters;
            for (std::size_t other = 0; other < whole.size(); ++other) {
                parameters += whole[other];
                if (other == i) {
                    parameters.insert(parameters.size() - whole[i].size() + at, 1, '\0');
                }
            }
            load(parameters);
            expectRefused(kMalformed, firstOf(traces, i));
        }
    }
}

TEST_F(Host, carriageReturnIsPartOfTheLine)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_system.php tovSet");
    const Parameters p = {.hostName = "attic\r", .workGroup = "HOME\r"};
    load(p);
    expectEnd(kGood, join({upToLanguage(p), settingHostName("attic\r"),
                           setting("tovSetWorkgroup", "HOME\r")}));
    const Parameters language = {.language = "en\r"};
    load(language);
    expectRefused(kUnknownLanguage, read(language));
}

TEST_F(Host, withoutMemoryForALineTheCommandFails)
{
    const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
    for (int copies = 0; copies < 4; ++copies) {
        SCOPED_TRACE(copies);
        load(p);
        const faults::Guard noMemory = faults::failStrdup(copies);
        expectRefused(kNoMemory, firstOf(read(p), static_cast<std::size_t>(copies) + 1));
    }
}

TEST_F(Host, lineIsCopiedBeforeItIsChecked)
{
    const std::string name(33, 'n');
    const std::vector<Parameters> refused = {
        {.hostName = name, .workGroup = name, .language = "xx"},
        {.workGroup = name},
        {.language = "xx"},
    };
    for (std::size_t i = 0; i < refused.size(); ++i) {
        SCOPED_TRACE(i);
        load(refused[i]);
        const faults::Guard noMemory = faults::failStrdup(static_cast<int>(i) + 1);
        expectRefused(kNoMemory, firstOf(read(refused[i]), i + 2));
    }
}

TEST_F(Host, commandNeedsFourCopies)
{
    const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
    load(p);
    const faults::Guard noMemory = faults::failStrdup(4);
    expectEnd(kGood, join({upToLanguage(p), settingHostName("attic"),
                           setting("tovSetWorkgroup", "HOME")}));
    EXPECT_EQ(faults::copiesLeft(), 0);
}

// ---- Date and time ----------------------------------------------------------------------------

TEST_F(Host, missingCharactersOfAShortDateAreLeftOut)
{
    const std::vector<std::pair<std::string, std::string>> clocks = {
        {"::", "//"},
        {"::", "1//"},
        {"::", "11//"},
        {"::", "11/2/"},
        {"::", "11/20/"},
        {"1::", "11/20/"},
        {"13::", "11/20/"},
        {"13:4:", "11/20/"},
        {"13:45:", "11/20/"},
        {"13:45:", "11/20/2"},
        {"13:45:", "11/20/20"},
        {"13:45:", "11/20/202"},
        {"13:45:", "11/20/2026"},
        {"13:45:", "11/20/2026"},
        {"13:45:5", "11/20/2026"},
        {"13:45:59", "11/20/2026"},
    };
    for (std::size_t size = 0; size < clocks.size(); ++size) {
        SCOPED_TRACE(size);
        const auto& [time, date] = clocks[size];
        const Parameters p = {.date = kDate.substr(0, size)};
        load(p);
        expectEnd(kGood,
                  join({read(p), settingClock(time, date), setting("tovSetLanguage", "english")}));
        EXPECT_EQ(asked(), ask("tovSetUtcSysTime", time) + ask("tovSetSysDate", date) +
                               ask("tovSetLanguage", "english"));
    }
}

TEST_F(Host, charactersAfterADateAreIgnored)
{
    for (const std::string& more :
         {std::string("0"), std::string(" GMT"), std::string(3985, '7')}) {
        const Parameters p = {.date = kDate + more};
        load(p);
        expectEnd(kGood, join({read(p), settingClock(), setting("tovSetLanguage", "english")}));
    }
}

TEST_F(Host, dateIsTakenByOffsetsAndNotValidated)
{
    const std::vector<std::array<std::string, 3>> dates = {
        {"abcdefghijklmno", "ef:gh:no", "ab/cd/ijkl"},
        {"999999999999999", "99:99:99", "99/99/9999"},
        {"%s%d%n%x%c%5$sX", "%n:%x:sX", "%s/%d/%c%5"},
        {"\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", "\xC3\xA9:\xC3\xA9:", "\xC3\xA9/\xC3\xA9/"},
        {"\xE6\x97\xA5\xE6\x9C\xAC", "\x9C\xAC::", "\xE6\x97/\xA5\xE6/"},
    };
    for (const auto& [line, time, date] : dates) {
        const Parameters p = {.date = line};
        load(p);
        expectEnd(kGood,
                  join({read(p), settingClock(time, date), setting("tovSetLanguage", "english")}));
        EXPECT_EQ(asked(), ask("tovSetUtcSysTime", time) + ask("tovSetSysDate", date) +
                               ask("tovSetLanguage", "english"));
    }
}

TEST_F(Host, shellInterpretsTheDate)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/");
    const Parameters p = {.date = "(((((((((((((((", .hostName = "attic"};
    load(p);
    expectEnd(kFailed, join({read(p), settingTime("((:((:((", 0x200),
                             settingDate("((:((:((", "((/((/((((", 0x200)}));
    EXPECT_EQ(asked(), "");
    const Parameters blanks = {.date = "1 2 3 4 5 6 7 8"};
    load(blanks);
    expectEnd(kGood, join({read(blanks), settingClock("3 :4 : 8", "1 /2 /5 6 "),
                           setting("tovSetLanguage", "english")}));
    EXPECT_EQ(asked(), "</etc/inc/api_pel.php><tovSetUtcSysTime><3><:4><:><8>"
                       "</etc/inc/api_system.php><tovSetSysDate><1></2></5><6>"
                       "</etc/inc/api_system.php><tovSetLanguage><english>");
}

TEST_F(Host, timeThatCannotBeSetIsOnlyTraced)
{
    for (const Failure& failure : kFailures) {
        const Parameters p = {.hostName = "attic"};
        load(p);
        fail(failure, "tovSetUtcSysTime");
        expectEnd(kGood, join({read(p), settingTime("13:45:59", failure.result, failure.reason),
                               settingDate("13:45:59", "11/20/2026"),
                               setting("tovSetLanguage", "english"), settingHostName("attic")}));
        expectVariables(kEnglish + kStartPage);
    }
}

TEST_F(Host, errnoIsNeverAnOlderOne)
{
    const Parameters p;
    load(p);
    errno = EACCES;
    expectEnd(kGood, upToLanguage(p));
    load(p);
    fail({"exit 3", 0x300, 0, ""}, "tovSetUtcSysTime");
    errno = EACCES;
    expectEnd(kGood,
              join({read(p), settingTime("13:45:59", 0x300), settingDate("13:45:59", "11/20/2026"),
                    setting("tovSetLanguage", "english")}));
}

TEST_F(Host, dateThatCannotBeSetEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
        load(p);
        fail(failure, "tovSetSysDate");
        expectEnd(kFailed,
                  join({read(p), settingTime("13:45:59"),
                        settingDate("13:45:59", "11/20/2026", failure.result)}),
                  leftBy(failure));
        EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59"));
        expectVariables("");
    }
}

TEST_F(Host, childReapedElsewhereIsAFailureOfTheDate)
{
    std::signal(SIGCHLD, SIG_IGN);
    const Parameters p = {.hostName = "attic"};
    load(p);
    expectEnd(kFailed,
              join({read(p), settingTime("13:45:59", -1, "No child processes"),
                    settingDate("13:45:59", "11/20/2026", -1)}),
              {root::workFile("setSysVar")});
    EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59") + ask("tovSetSysDate", "11/20/2026"));
    expectVariables("");
}

TEST_F(Host, missingInterpreterIsAFailureOfTheDate)
{
    const Parameters p;
    load(p);
    fs::remove("/usr/bin/php");
    expectEnd(kFailed,
              join({read(p), settingTime("13:45:59", 0x7F00),
                    settingDate("13:45:59", "11/20/2026", 0x7F00)}),
              {root::workFile("setSysVar")});
}

TEST_F(Host, workFileThatCannotBeMadeIsAFailureOfTheDate)
{
    const Parameters p;
    load(p);
    fs::create_directory(root::workFile("setSysVar"));
    expectEnd(
        kFailed,
        join({read(p), settingTime("13:45:59"), settingDate("13:45:59", "11/20/2026", 0x200)}),
        {root::workFile("setSysVar")});
    EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59"));
}

// ---- Language ---------------------------------------------------------------------------------

TEST_F(Host, everyLanguageHasItsName)
{
    const std::vector<std::pair<std::string, std::string>> languages = {
        {"en", "english"},
        {"fr", "french"},
        {"ge", "german"},
        {"sp", "spanish"},
        {"it", "italian"},
        {"sc", "chinese"},
        {"tc", "traditional_chinese"},
    };
    for (const auto& [code, name] : languages) {
        const Parameters p = {.language = code};
        load(p);
        expectEnd(kGood, upToLanguage(p, name));
        expectVariables("language_current=" + code + "\n" + kStartPage);
        EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59") +
                               ask("tovSetSysDate", "11/20/2026") + ask("tovSetLanguage", name));
    }
}

TEST_F(Host, anyOtherLanguageIsRefusedBeforeTheTimeIsSet)
{
    for (const std::string language :
         {"",   "e",  "n",    "EN",      "En",       "eN",  "FR",   "TC",
          "xx", "ne", "de",   "cn",      "es",       "eng", "en ",  " en",
          " e", "e ", "enfr", "english", "\xC3\xA9", "e\t", "\r\r", "%s"}) {
        const Parameters p = {.hostName = "attic", .workGroup = "HOME", .language = language};
        load(p);
        expectRefused(kUnknownLanguage, read(p));
    }
    for (const std::size_t size : kSizes) {
        const Parameters p = {.language = std::string(size, 'e')};
        load(p);
        expectRefused(kUnknownLanguage, read(p));
    }
}

/// The ways in which a variable cannot be written.
const std::vector<std::function<void()>> kVariableTroubles = {
    [] { fs::remove(kVariables); },
    [] {
        fs::remove(kVariables);
        fs::create_directory(kVariables);
    },
    [] {
        fs::remove(kVariables + "_tmp");
        fs::create_directory(kVariables + "_tmp");
    },
    [] { fs::permissions(kVariables, fs::perms(0)); },
};

TEST_F(Host, languageThatCannotBeStoredEndsTheCommand)
{
    std::size_t number = 0;
    for (const auto& arrange : kVariableTroubles) {
        SCOPED_TRACE(++number);
        const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
        load(p);
        arrange();
        expectEnd(kFailed, join({read(p),
                                 settingClock(),
                                 {trace("cannot save host or work group name: cmd_host()")}}));
        EXPECT_EQ(asked(),
                  ask("tovSetUtcSysTime", "13:45:59") + ask("tovSetSysDate", "11/20/2026"));
    }
}

TEST_F(Host, readOnlyFolderOrFullDiskLeavesTheLanguage)
{
    const std::vector<std::function<void()>> troubles = {
        [] { fs::permissions("/etc/pelconfig", fs::perms(0555)); },
        [] { root::fillDisk("/etc/pelconfig"); },
    };
    for (const auto& arrange : troubles) {
        const Parameters p = {.language = "fr"};
        load(p);
        arrange();
        expectEnd(kFailed, join({read(p),
                                 settingClock(),
                                 {trace("cannot save host or work group name: cmd_host()")}}));
        expectVariables("");
        fs::permissions("/etc/pelconfig", fs::perms(0755));
    }
}

TEST_F(Host, languageThatCannotBeSetEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        const Parameters p = {.hostName = "attic", .workGroup = "HOME", .language = "fr"};
        load(p);
        fail(failure, "tovSetLanguage");
        expectEnd(
            kFailed,
            join({read(p), settingClock(), setting("tovSetLanguage", "french", failure.result)}),
            leftBy(failure));
        expectVariables("language_current=fr\n");
    }
}

// ---- Names ------------------------------------------------------------------------------------

TEST_F(Host, hostNamesOfAnySize)
{
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        const Parameters p = {.hostName = std::string(size, 'n')};
        load(p);
        if (size > 32) {
            expectRefused(kHostNameTooLong, firstOf(read(p), 2));
            EXPECT_EQ(request::unread(), "\nen") << "the work group is not read";
        } else {
            expectEnd(kGood,
                      join({upToLanguage(p), (size > 1) ? settingHostName(p.hostName) : Lines{}}));
            expectVariables(kEnglish + kStartPage);
        }
    }
}

TEST_F(Host, workGroupsOfAnySize)
{
    for (const std::size_t size : kSizes) {
        SCOPED_TRACE(size);
        const Parameters p = {.workGroup = std::string(size, 'n')};
        load(p);
        if (size > 32) {
            expectRefused(kWorkGroupTooLong, firstOf(read(p), 3));
            EXPECT_EQ(request::unread(), "en") << "the language is not read";
        } else {
            expectEnd(kGood,
                      join({upToLanguage(p),
                            (size > 1) ? setting("tovSetWorkgroup", p.workGroup) : Lines{}}));
            expectVariables(kEnglish + kStartPage);
        }
    }
}

TEST_F(Host, charactersAreBytes)
{
    std::string longest;
    for (int i = 0; i < 16; ++i) {
        longest += "\xC3\xA9";
    }
    std::string tooLong;
    for (int i = 0; i < 11; ++i) {
        tooLong += "\xE6\x97\xA5";
    }
    for (const std::string& name : {longest, std::string("\xC3\xA9")}) {
        const Parameters p = {.hostName = name, .workGroup = name};
        load(p);
        expectEnd(kGood,
                  join({upToLanguage(p), settingHostName(name), setting("tovSetWorkgroup", name)}));
        EXPECT_NE(asked().find(ask("tovSetNmbdSysname", name) + ask("tovSetWorkgroup", name)),
                  std::string::npos);
    }
    load(Parameters{.hostName = tooLong});
    expectRefused(kHostNameTooLong, firstOf(read({.hostName = tooLong}), 2));
    load(Parameters{.workGroup = tooLong});
    expectRefused(kWorkGroupTooLong, firstOf(read({.workGroup = tooLong}), 3));
}

TEST_F(Host, namesAreOnTheLineUnchanged)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_system.php tovSet");
    const std::vector<std::pair<std::string, std::string>> names = {
        {"at tic", "<at><tic>"},        {" attic ", "<attic>"},     {"  ", ""},
        {"$HOME", "</root>"},           {"%s%n%d", "<%s%n%d>"},     {"\"a b\"", "<a b>"},
        {"back\\slash", "<backslash>"}, {"'a  b'", "<a  b>"},       {"-n", "<-n>"},
        {"tab\there", "<tab><here>"},   {"\xFF\x80", "<\xFF\x80>"},
    };
    const std::string system = "</etc/inc/api_system.php>";
    for (const auto& [name, arguments] : names) {
        const Parameters p = {.hostName = name, .workGroup = name};
        load(p);
        expectEnd(kGood,
                  join({upToLanguage(p), settingHostName(name), setting("tovSetWorkgroup", name)}));
        EXPECT_EQ(asked(), ask("tovSetUtcSysTime", "13:45:59") +
                               ask("tovSetSysDate", "11/20/2026") +
                               ask("tovSetLanguage", "english") + system + "<tovSetHostname>" +
                               arguments + system + "<tovSetNmbdSysname>" + arguments + system +
                               "<tovSetWorkgroup>" + arguments)
            << name;
    }
}

TEST_F(Host, quoteThatIsLeftOpenBreaksTheLine)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_system.php tovSet");
    const Parameters p = {.hostName = "O'Brien"};
    load(p);
    expectEnd(kNameNotSet, join({upToLanguage(p), setting("tovSetHostname", "O'Brien", 0x200)}));
    const Parameters group = {.workGroup = "O'Brien"};
    load(group);
    expectEnd(kNameNotSet,
              join({upToLanguage(group), setting("tovSetWorkgroup", "O'Brien", 0x200)}));
}

TEST_F(Host, hostNameThatCannotBeSetEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
        load(p);
        fail(failure, "tovSetHostname");
        expectEnd(kNameNotSet,
                  join({upToLanguage(p), setting("tovSetHostname", "attic", failure.result)}),
                  leftBy(failure));
        expectVariables(kEnglish);

        load(p);
        fail(failure, "tovSetNmbdSysname");
        expectEnd(kNameNotSet,
                  join({upToLanguage(p), setting("tovSetHostname", "attic"),
                        setting("tovSetNmbdSysname", "attic", failure.result)}),
                  leftBy(failure));
        expectVariables(kEnglish);
    }
}

TEST_F(Host, workGroupThatCannotBeSetEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
        load(p);
        fail(failure, "tovSetWorkgroup");
        expectEnd(kNameNotSet,
                  join({upToLanguage(p), settingHostName("attic"),
                        setting("tovSetWorkgroup", "HOME", failure.result)}),
                  leftBy(failure));
        expectVariables(kEnglish);
    }
}

// ---- Start page -------------------------------------------------------------------------------

TEST_F(Host, startPageThatCannotBeStoredEndsTheCommand)
{
    std::size_t number = 0;
    for (const auto& arrange : kVariableTroubles) {
        SCOPED_TRACE(++number);
        const Parameters p = {.hostName = "attic", .workGroup = "HOME"};
        load(p);
        watch::after(kSystemScript + "tovSetWorkgroup", arrange);
        expectEnd(kStartPageNotSet, join({upToLanguage(p),
                                          settingHostName("attic"),
                                          setting("tovSetWorkgroup", "HOME"),
                                          {trace("cannot set var to: /real_index.asp")}}));
        EXPECT_EQ(root::readFile(kVariables).find("http_start_page"), std::string::npos);
    }
}

} // namespace
