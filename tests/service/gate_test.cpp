// SPDX-License-Identifier: MIT
//
// Every row of the gate's table; and, with the true handlers and a true shell, whether what passes
// runs nothing.
#include "service/gate.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using request::frame;
using root::le32;
using service::examine;
using service::Refusal;

const std::string kZero(1, '\0');

std::string status(const std::string& code, std::uint32_t word)
{
    return code + " " + le32(word) + kZero;
}

// ---- The table, once more ---------------------------------------------------------------------

/// Where a parameter's text ends up.
enum class Place {
    kNowhere,
    kDoubleQuotes,
    kQuotedLine, ///< between double quotes, a newline behind it
    kSingleQuotes,
    kName,
    kUserName,    ///< a name that is to be a new user's
    kShareName,   ///< a name that is to be a new share's
    kAlone,       ///< the same without its last character, if it is not "guest"
    kEscapedName, ///< a name whose backslashes are dropped first
    kWord,
    kClock
};

struct Parameter {
    std::string command;
    std::string name; ///< as it is logged
    Place place;
    std::string answer; ///< to a text that does not pass
    std::function<std::string(const std::string& text)> make;
};

/// spvt with a file and its size.
std::string spvt(const std::string& content)
{
    return frame("spvt", 2,
                 le32(static_cast<std::uint32_t>(content.size())) + "\n" + content + "\n");
}

const std::vector<Parameter>& parameters()
{
    const auto lines = [](const char* code, std::uint32_t count, const char* before,
                          const char* behind) {
        return [=](const std::string& text) { return frame(code, count, before + text + behind); };
    };
    static const std::vector<Parameter> all = {
        {"crat", "user", Place::kUserName, le32(0xFF000003), lines("crat", 2, "", "\nword\n")},
        {"crat", "password", Place::kSingleQuotes, le32(0xFF000003),
         lines("crat", 2, "anna\n", "\n")},
        {"gsp1", "share", Place::kDoubleQuotes, le32(0xC1000003), lines("gsp1", 1, "", "\n")},
        {"gspc", "share", Place::kQuotedLine, status("gspc", 0xF0000001),
         [](const std::string& text) {
             return "gspc " + std::string(1, static_cast<char>(text.size())) + text + "\n";
         }},
        {"gspc", "share", Place::kQuotedLine, status("gspc", 0xF0000001),
         [](const std::string& text) { return "gspc \nL" + text + "\n"; }},
        {"host", "time", Place::kClock, le32(0xFF000003),
         lines("host", 4, "", "\nnas\nhome\nen\n")},
        {"host", "host name", Place::kWord, le32(0xFF000003),
         lines("host", 4, "112115302026.45\n", "\nhome\nen\n")},
        {"host", "work group", Place::kWord, le32(0xFF000003),
         lines("host", 4, "112115302026.45\nnas\n", "\nen\n")},
        {"host", "language", Place::kWord, le32(0xFF000003),
         lines("host", 4, "112115302026.45\nnas\nhome\n", "\n")},
        {"pshr", "guest", Place::kAlone, le32(0xFF000003), lines("pshr", 3, "", "x\nMusic\n")},
        {"pshr", "share", Place::kShareName, le32(0xFF000003), lines("pshr", 3, "guest\n", "\n")},
        {"shar", "user", Place::kName, le32(0xFF000003), lines("shar", 3, "", "\nMusic\n")},
        {"shar", "share", Place::kShareName, le32(0xFF000003), lines("shar", 3, "anna\n", "\n")},
        {"spvt", "content", Place::kQuotedLine, le32(0xFF000003), spvt},
        {"sub1", "user", Place::kEscapedName, le32(0xFF000003), lines("sub1", 2, "\1\n", "\n")},
        {"subs", "user", Place::kName, status("subs", 0xFF000003),
         [](const std::string& text) { return std::string("subs \7\0\1", 8) + text + "\n"; }},
        {"subs", "user", Place::kName, status("subs", 0xFF000003),
         [](const std::string& text) { return std::string("subs \n\0\1", 8) + text + "\n"; }},
        {"wags", "entity", Place::kDoubleQuotes, "erro " + le32(2),
         lines("wags", 2, "", "\nanna\n")},
        {"wags", "user", Place::kName, "erro " + le32(2), lines("wags", 2, "user\n", "\n")},
        {"wasu", "user", Place::kName, "erro " + le32(3),
         lines("wasu", 4, "", "\nfirst\nsecond\n\1\n")},
        {"wasu", "first value", Place::kDoubleQuotes, "erro " + le32(3),
         lines("wasu", 4, "anna\n", "\nsecond\n\1\n")},
        {"getv", "key", Place::kNowhere, "", lines("getv", 1, "", "\n")},
        {"sub1", "state", Place::kNowhere, "",
         [](const std::string& text) { return frame("sub1", 2, text.substr(0, 1) + "\nanna\n"); }},
        {"wall", "user", Place::kNowhere, "", lines("wall", 2, "", "\nword\n")},
        {"wall", "password", Place::kNowhere, "", lines("wall", 2, "anna\n", "\n")},
        {"warp", "user", Place::kNowhere, "", lines("warp", 3, "", "\nfirst\nsecond\n")},
        {"warp", "first value", Place::kNowhere, "", lines("warp", 3, "anna\n", "\nsecond\n")},
        {"warp", "second value", Place::kNowhere, "", lines("warp", 3, "anna\nfirst\n", "\n")},
        {"wasu", "second value", Place::kNowhere, "", lines("wasu", 4, "anna\nfirst\n", "\n\1\n")},
        {"wasu", "switch", Place::kNowhere, "", lines("wasu", 4, "anna\nfirst\nsecond\n", "\n")},
    };
    return all;
}

std::string show(const Parameter& parameter, const std::string& text)
{
    return parameter.command + ", " + parameter.name + ": " + text;
}

bool passes(const std::string& request)
{
    return !examine(request);
}

/// The parameter that a request is refused for; "" for one that passes.
std::string refusedFor(const std::string& request)
{
    return std::string(examine(request).value_or(Refusal{}).parameter);
}

void expectRefused(const Parameter& parameter, const std::string& text, const std::string& name)
{
    const std::optional<Refusal> refusal = examine(parameter.make(text));
    ASSERT_TRUE(refusal) << show(parameter, text);
    EXPECT_EQ(refusal->parameter, name) << show(parameter, text);
    EXPECT_EQ(refusal->answer, parameter.answer) << show(parameter, text);
}

void expectRefused(const Parameter& parameter, const std::string& text)
{
    expectRefused(parameter, text, parameter.name);
}

// ---- Each parameter ---------------------------------------------------------------------------

/// Whether a single byte is plain in a place, in the middle of a text.
bool isPlainIn(Place place, char c)
{
    const auto byte = static_cast<unsigned char>(c);
    const bool isDigit = c >= '0' && c <= '9';
    const bool isAlphanumeric = isDigit || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const auto isOneOf = [c](std::string_view set) {
        return set.find(c) != std::string_view::npos;
    };
    switch (place) {
    case Place::kNowhere:
        return true;
    case Place::kDoubleQuotes:
        return c != '`';
    case Place::kQuotedLine:
        return c != '`' && c != '"';
    case Place::kSingleQuotes:
        return byte >= ' ' && c != '\x7F' && !isOneOf("'\"\\`");
    case Place::kEscapedName:
        return c == '\\' || isPlainIn(Place::kName, c);
    case Place::kUserName:
        return byte != 0xFF && isPlainIn(Place::kShareName, c);
    case Place::kShareName:
    case Place::kAlone:
        return !isOneOf(":,=%") && isPlainIn(Place::kName, c);
    case Place::kName:
        return isAlphanumeric || byte >= 0x80 || isOneOf(" .,_-+@%=:");
    case Place::kWord:
        return isAlphanumeric || isOneOf(" ._-");
    case Place::kClock:
        return isDigit || c == '.';
    }
    return false;
}

TEST(Gate, everyByteOfEveryParameterIsJudgedByItsPlace)
{
    for (const Parameter& parameter : parameters()) {
        const std::string around = (parameter.place == Place::kClock) ? "1" : "a";
        for (int byte = 1; byte < 256; ++byte) {
            const char c = static_cast<char>(byte);
            if (c == '\n') {
                continue; // it ends the parameter, as a zero byte does
            }
            const std::string text = around + c + around;
            if (isPlainIn(parameter.place, c)) {
                EXPECT_TRUE(passes(parameter.make(text))) << show(parameter, text);
            } else {
                const bool isOfShare =
                    parameter.place == Place::kAlone && isPlainIn(Place::kName, c);
                expectRefused(parameter, text, isOfShare ? "share" : parameter.name);
            }
        }
    }
}

TEST(Gate, everyWayOutOfAWordIsRefused)
{
    const std::vector<std::string> anywhere = {"`id`",    "$(id)",  "${x:=y}", "$[1]", "a`id`b",
                                               "a$(id)b", "$((1))", "x`",      "x$("};
    const std::vector<std::string> outOfDoubleQuotes = {
        "\";id;\"", "\"|id|\"",  "\"&id&\"", "\">f\"",   "\"<f\"", "\"*\"",
        "\"?\"",    "\"[a]\"",   "\"~\"",    "\"#\"",    "\"'id'", "\"$x\"",
        "\"(id)\"", "\"{a,b}\"", "\"\\a\"",  "\"\tid\"", "\"!x\"", "\"^x\"",
        "\"/x\"",   "a\"`id`\"", "\\\\`id`", "\\\\$(id)"};
    const std::vector<std::string> outOfSingleQuotes = {"';id;'", "'",  "'|id", "a'b",
                                                        "\"",     "\\", "a\tb", "a\rb"};
    const std::vector<std::string> outOfNames = {
        ";id", "|id", "&id",  ">f",          "<f",  "*",      "?",     "[a]",  "~",
        "#",   "'",   "\"",   "\\;id",       "$x",  "(id)",   "{a,b}", "a\tb", "!x",
        "^x",  "a/b", "../a", "/etc/passwd", "-rf", "--help", "-",     ".",    ".."};
    const std::vector<std::string> outOfWords = {"\xC3\x89", "a@b", "a=b", "a:b",
                                                 "a%b",      "a+b", "a,b"};
    for (const Parameter& parameter : parameters()) {
        std::vector<std::string> ways = anywhere;
        const auto add = [&ways](const std::vector<std::string>& more) {
            ways.insert(ways.end(), more.begin(), more.end());
        };
        switch (parameter.place) {
        case Place::kNowhere:
            continue;
        case Place::kDoubleQuotes:
        case Place::kQuotedLine:
            add(outOfDoubleQuotes);
            break;
        case Place::kSingleQuotes:
            add(outOfSingleQuotes);
            break;
        case Place::kClock:
            add({" ", "-1", "1:2", "1a", "\xB2"});
            [[fallthrough]];
        case Place::kWord:
            add(outOfWords);
            [[fallthrough]];
        case Place::kUserName:
            ways.emplace_back("\xFF");
            [[fallthrough]];
        case Place::kName:
        case Place::kShareName:
        case Place::kAlone:
            ways.emplace_back("\\");
            [[fallthrough]];
        case Place::kEscapedName:
            ways.emplace_back("\\\\`id`");
            add(outOfNames);
            break;
        }
        for (const std::string& way : ways) {
            const bool isFolder = way == "." || way == "..";
            const bool isName = parameter.place == Place::kName ||
                                parameter.place == Place::kUserName ||
                                parameter.place == Place::kShareName;
            if (!isFolder || isName) {
                expectRefused(parameter, way);
            }
        }
    }
}

TEST(Gate, whatPeopleUsePasses)
{
    const std::vector<std::string> names = {"anna",        "Élise",       "Family Videos",
                                            "J. R. Smith", "日本語 2026", "a+b@example.org"};
    for (const Parameter& parameter : parameters()) {
        std::vector<std::string> texts = names;
        if (parameter.place == Place::kName) {
            texts.insert(texts.end(),
                         {"50% = half", "@staff", ".hidden", " anna ", "homes", "root"});
        }
        if (parameter.place == Place::kWord) {
            texts = {"nas-1", "WORKGROUP", "my host", "a.b_c", "en"};
        } else if (parameter.place == Place::kClock) {
            texts = {"112115302026.45", "", "1"};
        } else if (parameter.place == Place::kSingleQuotes) {
            texts.insert(texts.end(), {"pa$$w#rd", "#1; & | < > * ? ~ !", "$HOME ()", "{}[]"});
        }
        for (const std::string& text : texts) {
            EXPECT_TRUE(passes(parameter.make(text))) << show(parameter, text);
        }
    }
}

TEST(Gate, whatNoShellSeesMayHoldAnything)
{
    for (const Parameter& parameter : parameters()) {
        if (parameter.place == Place::kNowhere) {
            for (const char* text : {"`id`", "$(id)", "';id;'", "\";id;\"", "../x", "-rf", "\\"}) {
                EXPECT_TRUE(passes(parameter.make(text))) << show(parameter, text);
            }
        }
    }
}

TEST(Gate, firstParameterThatDoesNotPassIsTheOneThatIsNamed)
{
    EXPECT_EQ(refusedFor(frame("crat", 2, "`\n`\n")), "user");
    EXPECT_EQ(refusedFor(frame("host", 4, "1\na\n`\n`\n")), "work group");
    EXPECT_EQ(refusedFor(frame("wasu", 4, "a\n`\n`\n`\n")), "first value");
}

// ---- New names --------------------------------------------------------------------------------

/// The requests that make a user or a share, with a name for it.
struct Creation {
    std::string show;
    std::string parameter;
    std::uint32_t taken;
    std::function<std::string(const std::string& name)> make;
};

const std::vector<Creation>& creations()
{
    static const std::vector<Creation> all = {
        {"crat", "user", 0x10000001,
         [](const std::string& name) { return frame("crat", 2, name + "\nword\n"); }},
        {"pshr", "share", 0x20000001,
         [](const std::string& name) { return frame("pshr", 3, "guest\n" + name + "\n"); }},
        {"pshr alone", "share", 0x20000001,
         [](const std::string& name) { return frame("pshr", 3, name + "x\n"); }},
        {"shar", "share", 0x20000001,
         [](const std::string& name) { return frame("shar", 3, "anna\n" + name + "\n"); }},
    };
    return all;
}

class NewNames : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        for (const char* path : {"/etc/passwd", "/etc/group"}) {
            kept_.push_back(root::readFile(path));
        }
        root::writeFile("/etc/passwd", "root:x:0:0:root:/root:/bin/sh\n"
                                       "sshd:x:104:65534::/run/sshd:/usr/sbin/nologin\n"
                                       "anna:x:1000:1000::/home/anna:/bin/sh\n"
                                       "last:x:59999:100::/:/bin/sh\n"
                                       "beyond:x:60000:100::/:/bin/sh\n"
                                       "below:x:999:100::/:/bin/sh\n"
                                       "odd:x:many:100::/:/bin/sh\n"
                                       "short:x\n"
                                       "cut");
        root::writeFile("/etc/group", "root:x:0:\nvokcontrol:x:998:anna\nfriends:x:1001:anna\n");
    }

    void TearDown() override
    {
        root::writeFile("/etc/passwd", kept_[0]);
        root::writeFile("/etc/group", kept_[1]);
        root::Test::TearDown();
    }

    static void expectAnswer(const Creation& creation, const std::string& name, std::uint32_t code)
    {
        const std::optional<Refusal> refusal = examine(creation.make(name));
        ASSERT_TRUE(refusal) << creation.show << ": " << name;
        EXPECT_EQ(refusal->parameter, creation.parameter) << creation.show << ": " << name;
        EXPECT_EQ(refusal->answer, le32(code)) << creation.show << ": " << name;
    }

  private:
    std::vector<std::string> kept_;
};

TEST_F(NewNames, whatTheNextReaderWouldTakeForSomethingElseIsMalformed)
{
    for (const Creation& creation : creations()) {
        for (const char* name :
             {"a:b",   ":",     "b:",     "a,b", ",",       "a=b",    "=b",      "a%b",
              "%S",    "50%",   "@staff", "@",   "+staff",  "+",      ".hidden", "...",
              " anna", "anna ", " ",      "  ",  " global", "Family "}) {
            expectAnswer(creation, name, 0xFF000003);
        }
    }
}

TEST_F(NewNames, sectionsOfTheFileServerAreReserved)
{
    for (const Creation& creation : creations()) {
        for (const char* name : {"global", "homes", "printers", "Global", "HOMES", "pRINTERs"}) {
            expectAnswer(creation, name, creation.taken);
        }
        for (const char* name : {"globals", "home", "printer", "my homes", "global-1"}) {
            EXPECT_TRUE(passes(creation.make(name))) << creation.show << ": " << name;
        }
    }
}

TEST_F(NewNames, accountsOfTheSystemAreReservedForUsersAlone)
{
    for (const Creation& creation : creations()) {
        for (const char* name : {"root", "Root", "daemon", "NOBODY", "sshd", "SSHD", "below",
                                 "beyond", "odd", "short", "vokcontrol"}) {
            if (creation.parameter == "user") {
                expectAnswer(creation, name, creation.taken);
            } else {
                EXPECT_TRUE(passes(creation.make(name))) << creation.show << ": " << name;
            }
        }
        // Accounts of people are the module's to find.
        for (const char* name : {"anna", "last", "friends", "ssh", "sshd2", "x", "104", "cut"}) {
            EXPECT_TRUE(passes(creation.make(name))) << creation.show << ": " << name;
        }
    }
}

TEST_F(NewNames, withoutAPasswordFileTheAccountsThatEverySystemHasAreReserved)
{
    std::filesystem::remove("/etc/passwd");
    std::filesystem::remove("/etc/group");
    const Creation& user = creations()[0];
    for (const char* name : {"root", "daemon", "nobody"}) {
        expectAnswer(user, name, user.taken);
    }
    EXPECT_TRUE(passes(user.make("sshd")));
}

TEST_F(NewNames, otherPunctuationPasses)
{
    for (const Creation& creation : creations()) {
        for (const char* name :
             {"a.b", "a.", "a+b", "a+", "a@b.org", "a@", "_x", "a b", "a-", "1"}) {
            EXPECT_TRUE(passes(creation.make(name))) << creation.show << ": " << name;
        }
    }
}

TEST_F(NewNames, emptyNameIsTheCommandsToJudge)
{
    for (const Creation& creation : creations()) {
        EXPECT_TRUE(passes(creation.make(""))) << creation.show;
    }
}

TEST_F(NewNames, nameThatStandsAloneIsJudgedWithoutItsLastCharacter)
{
    EXPECT_TRUE(passes(frame("pshr", 3, "Music:\n")));
    EXPECT_TRUE(passes(frame("pshr", 3, "global\n"))) << "this makes \"globa\"";
    EXPECT_EQ(refusedFor(frame("pshr", 3, "Music \n")), "");
    EXPECT_EQ(refusedFor(frame("pshr", 3, "Music :\n")), "share") << "this makes \"Music \"";
    EXPECT_EQ(refusedFor(frame("pshr", 3, "Guest\nhomes\n")), "") << "this makes \"Gues\"";
    EXPECT_TRUE(passes(frame("pshr", 3, "guest\n")));
    EXPECT_TRUE(passes(frame("pshr", 3, ":\n"))) << "nothing is left of this";
}

TEST_F(NewNames, namesThatAreThereAlreadyMayBeAnything)
{
    for (const char* name : {"a:b", "@staff", ".hidden", " anna ", "global", "root", "50%"}) {
        const std::string text = name;
        EXPECT_TRUE(passes(frame("shar", 3, text + "\nMusic\n"))) << name;
        EXPECT_TRUE(passes(frame("gsp1", 1, text + "\n"))) << name;
        EXPECT_TRUE(passes("gspc " + std::string(1, static_cast<char>(text.size())) + text + "\n"));
        EXPECT_TRUE(passes(frame("sub1", 2, "\1\n" + text + "\n"))) << name;
        EXPECT_TRUE(passes(std::string("subs \7\0\1", 8) + text + "\n")) << name;
        EXPECT_TRUE(passes(frame("wags", 2, "user\n" + text + "\n"))) << name;
        EXPECT_TRUE(passes(frame("wall", 2, text + "\nword\n"))) << name;
    }
}

TEST_F(NewNames, firstFaultOfANameIsTheOneThatIsAnswered)
{
    const auto answerTo = [](const std::string& name) {
        return examine(frame("crat", 2, name + "\n'\n")).value_or(Refusal{}).answer;
    };
    EXPECT_EQ(answerTo(std::string(33, ':')), le32(0x10000002)) << "too long, and misread";
    EXPECT_EQ(answerTo(std::string(32, ':')), le32(0xFF000003));
    EXPECT_EQ(answerTo("`" + std::string(33, ':')), le32(0xFF000003)) << "not safe, and too long";
}

TEST_F(NewNames, wrongCountIsTheDispatchersToAnswer)
{
    EXPECT_TRUE(passes(frame("crat", 1, "root\nword\n")));
    EXPECT_TRUE(passes(frame("pshr", 2, "guest\nglobal\n")));
    EXPECT_TRUE(passes(frame("shar", 2, "anna\n.hidden\n")));
}

// ---- Requests of other shapes -----------------------------------------------------------------

TEST(Gate, whatTheDispatcherAnswersItselfPasses)
{
    for (const char* code :
         {"none", "dscr", "frst", "gps1", "gpsn", "gpvt", "grst", "gub1", "gubs", "ipcf", "lsts",
          "lstu", "qlps", "rtov", "sgss", "vers", "CRAT", "cra"}) {
        EXPECT_TRUE(passes(frame(code, 0, "`id`\n$(id)\n"))) << code;
    }
    EXPECT_TRUE(passes(""));
    EXPECT_TRUE(passes(kZero));
    EXPECT_TRUE(passes("cr"));
    EXPECT_TRUE(passes("cr\nat `id`\n"));
    EXPECT_TRUE(passes(std::string(4096, '`')));
}

TEST(Gate, commandWithoutItsParametersPasses)
{
    for (const Parameter& parameter : parameters()) {
        EXPECT_TRUE(passes(parameter.command)) << parameter.command;
        EXPECT_TRUE(passes(frame(parameter.command, 0))) << parameter.command;
        EXPECT_TRUE(passes(parameter.command + "\n")) << parameter.command;
    }
}

TEST(Gate, newlineWithinTheCountMovesTheParametersForward)
{
    // A count of 0x0A02: the first line ends behind its low byte.
    EXPECT_EQ(refusedFor("crat \2\n`id`\nword\n"), "user");
    EXPECT_EQ(refusedFor("crat \2\nanna\n'\n"), "password");
    EXPECT_EQ(refusedFor("crat \n`id`\nword\n"), "user") << "a count of 10";
    EXPECT_EQ(refusedFor("crat\n`id`\nword\n"), "user");
    EXPECT_TRUE(passes("crat \2\nanna\nword\n"));
}

TEST(Gate, textBehindAZeroByteIsNotSeen)
{
    EXPECT_TRUE(passes(frame("crat", 2, "anna" + kZero + "`id`\nword\n")));
    EXPECT_TRUE(passes(frame("gsp1", 1, kZero + "`id`\n")));
    EXPECT_TRUE(passes(spvt("a" + kZero + "`id`")));
    EXPECT_TRUE(passes("gspc \7a" + kZero + "`id`\n"));
    EXPECT_FALSE(passes(frame("crat", 2, "anna" + kZero + "\n`id`\n"))) << "the next line is";
}

TEST(Gate, lastLineNeedsNoNewlineToBeSeen)
{
    EXPECT_FALSE(passes(frame("crat", 2, "`id`")));
    EXPECT_FALSE(passes(frame("crat", 2, "anna\n'")));
    EXPECT_FALSE(passes(frame("shar", 3, "$x")));
    EXPECT_FALSE(passes(frame("sub1", 2, "\1\n`id`")));
    EXPECT_FALSE(passes("gspc \4`id`"));
    EXPECT_FALSE(passes(std::string("subs \4\0\1`id`", 12)));
    EXPECT_FALSE(passes(frame("gsp1", 1, std::string(4085, 'a') + "`"))) << "the 4096th byte";
}

TEST(Gate, lineThatIsSplitGoesOnInTheNextParameter)
{
    // Lines of 255 bytes; of 254 for warp, whose texts no shell sees.
    for (const std::size_t size : {254U, 255U, 256U, 257U, 510U, 511U}) {
        const std::string text(size, 'a');
        EXPECT_TRUE(passes(frame("wags", 2, text + "\nanna\n"))) << size;
        EXPECT_FALSE(passes(frame("wags", 2, text + "`\nanna\n")) && size < 510) << size;
        EXPECT_TRUE(passes(frame("wasu", 4, text + "\nfirst\nsecond\n\1\n"))) << size;
        EXPECT_FALSE(passes(frame("wasu", 4, text + "`\nfirst\nsecond\n\1\n")) && size < 510)
            << size;
        EXPECT_TRUE(passes(frame("warp", 3, text + "`\n`\n`\n"))) << size;
    }
    const std::string line(255, 'a');
    EXPECT_EQ(refusedFor(frame("wags", 2, line + ";id\n")), "user")
        << "between double quotes it would have passed";
    EXPECT_TRUE(passes(frame("wags", 2, line.substr(1) + ";\n;\n")))
        << "the rest is the newline alone, and nothing reads the line behind it";
    EXPECT_TRUE(passes(frame("wasu", 4, line + ";id\nsecond\n\1\n"))) << "the first value's place";
    EXPECT_EQ(refusedFor(frame("wasu", 4, line + "`id`\nsecond\n\1\n")), "first value");
    EXPECT_TRUE(passes(frame("wasu", 4, line + line + "`id`\n\1\n"))) << "the second value's place";
}

TEST(Gate, nameBehindALengthThatIsANewlineIsFound)
{
    // gspc: the rest of the request goes over the length. subs: it goes behind it.
    EXPECT_TRUE(passes("gspc \n`anna\n")) << "this byte is no part of the name";
    EXPECT_FALSE(passes("gspc \nL`anna\n"));
    EXPECT_FALSE(passes("gspc \nLanna`"));
    EXPECT_FALSE(passes("gspc \nL" + std::string(4088, 'a') + "`"));
    EXPECT_TRUE(passes("gspc \n\n`\n")) << "the line has ended before the name";
    EXPECT_TRUE(passes("gspc \n"));
    EXPECT_TRUE(passes("subs \n``anna\n")) << "a byte and the state";
    EXPECT_FALSE(passes("subs \n\1\1`anna\n"));
    EXPECT_FALSE(passes("subs \n\1\1anna`"));
    EXPECT_TRUE(passes("subs \n\n`\n`\n"));
    EXPECT_TRUE(passes("subs \n"));
}

TEST(Gate, reportsNameMustEndWithItsLine)
{
    EXPECT_TRUE(passes("subs \7\1\1anna\n"));
    EXPECT_TRUE(passes("subs \7\1\1anna"));
    EXPECT_TRUE(passes("subs \7\1\1\n"));
    EXPECT_TRUE(passes("subs \7\1\n`id`\n")) << "the line has ended before the name";
    EXPECT_TRUE(passes("subs \7\n`id`\n"));
    EXPECT_TRUE(passes("sub1 \2\nS\nanna\n`id`\n")) << "behind its name there is nothing";
}

TEST(Gate, privateFileIsJudgedAsFarAsItIsText)
{
    EXPECT_TRUE(passes(spvt("server = nas\nmode = \"fast\"\n# $HOME; done & gone\n")));
    EXPECT_TRUE(passes(spvt(std::string("\x89PNG\r\n\x1A\n\0`id`", 14))));
    EXPECT_TRUE(passes(spvt(std::string(4076, 'x'))));
    EXPECT_FALSE(passes(spvt(std::string(4075, 'x') + "`")));
    EXPECT_FALSE(passes(spvt("a\nb\n`id`\n")));
    EXPECT_FALSE(passes(spvt("a b\n$\\\n(id)\n"))) << "the shell joins these lines";
    EXPECT_FALSE(passes(spvt("\"\n;id\n")));
    EXPECT_FALSE(passes(spvt("\"\nid")));
    EXPECT_FALSE(passes(frame("spvt", 2, le32(1) + "\nx\n`id`\n"))) << "whatever size is said";
}

TEST(Gate, privateFileHasToBeWhole)
{
    const auto answer = [](std::uint32_t size, const std::string& rest) {
        const auto refusal = examine(frame("spvt", 2, le32(size) + "\n" + rest));
        return refusal ? std::string(refusal->parameter) + ": " + refusal->answer : "";
    };
    EXPECT_EQ(answer(5, "whole\n"), "");
    EXPECT_EQ(answer(5, "whole\nand more"), "");
    EXPECT_EQ(answer(1, "w\n"), "");
    EXPECT_EQ(answer(0, "\n"), "") << "the handler says that this is nothing";
    for (const std::string rest : {"", "whol\n", "whole", "whole and more", "\n"}) {
        EXPECT_EQ(answer(5, rest), "end mark: " + le32(0x60000005)) << rest;
    }
    for (const std::uint32_t size : {4082U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(answer(size, "whole\n"), "content: " + le32(0x60000004)) << size;
    }
    EXPECT_EQ(answer(4080, std::string(4080, 'x') + "\n"), "");
    EXPECT_EQ(answer(4081, std::string(4081, 'x')), "end mark: " + le32(0x60000005))
        << "no room for its end";
    EXPECT_TRUE(passes(frame("spvt", 2, "abcdefgh\nx\n")))
        << "no size: the fifth byte is no newline";
}

TEST(Gate, firstLineMayLeaveRoomForASizeAlone)
{
    const auto withFirstLine = [](std::size_t size) {
        std::string request = frame("spvt", 2, "");
        request.insert(request.size() - 1, size - request.size(), 'x');
        return examine(request + le32(5) + "\n");
    };
    const auto refusal = withFirstLine(4091);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->parameter, "content");
    EXPECT_EQ(refusal->answer, le32(0x60000004));
    EXPECT_FALSE(withFirstLine(4092)) << "the size is cut";
}

TEST(Gate, wrongCountIsTheDispatchersToAnswer)
{
    for (const std::uint32_t count : {0U, 1U, 3U, 10U}) {
        EXPECT_TRUE(passes(frame("spvt", count, le32(5) + "\nwhol\n"))) << count;
        EXPECT_TRUE(passes(frame("spvt", count, le32(0xFFFFFFFF) + "\nx\n"))) << count;
        EXPECT_TRUE(passes(frame("crat", count, std::string(33, 'a') + "\nword\n"))) << count;
    }
    EXPECT_FALSE(passes(frame("crat", 0x102, std::string(33, 'a') + "\nword\n")))
        << "only the count's low byte counts";
}

TEST(Gate, newUsersNameIsNotLongerThanTheHandlerTakes)
{
    EXPECT_TRUE(passes(frame("crat", 2, std::string(32, 'a') + "\nword\n")));
    for (const std::size_t size : {33U, 255U, 4000U}) {
        const auto refusal = examine(frame("crat", 2, std::string(size, 'a') + "\nword\n"));
        ASSERT_TRUE(refusal);
        EXPECT_EQ(refusal->parameter, "user");
        EXPECT_EQ(refusal->answer, le32(0x10000002));
    }
    const auto both = examine(frame("crat", 2, std::string(33, 'a') + "\n'\n"));
    ASSERT_TRUE(both);
    EXPECT_EQ(both->parameter, "user") << "the handler looks at the name first";
    EXPECT_EQ(both->answer, le32(0x10000002));
}

TEST(Gate, sizeOfAPrivateFileIsHarmlessAsTextOrSmall)
{
    const auto withSize = [](std::uint32_t size) {
        const auto refusal = examine(frame("spvt", 2, le32(size) + "\nx\n"));
        return !refusal || refusal->answer != le32(0xFF000003);
    };
    for (std::uint32_t size = 0; size < 4096; ++size) {
        const bool endsItsLine = (size & 0xFFU) == '\n' || (size >> 8U) == '\n';
        if (!endsItsLine) {
            EXPECT_TRUE(withSize(size)) << size;
        }
    }
    EXPECT_TRUE(withSize(0x7FFFFFFF));
    EXPECT_TRUE(withSize(0xFFFFFFFF));
    EXPECT_TRUE(withSize(0x61616161));
    for (const std::string size :
         {"`id`", "$(a)", "\";a;", "a\"|b", "\">f\"", "``aa", "a`bc", "\"`id"}) {
        const auto refusal = examine(frame("spvt", 2, size + "\nx\n"));
        ASSERT_TRUE(refusal) << size;
        EXPECT_EQ(refusal->parameter, "size");
        EXPECT_EQ(refusal->answer, le32(0xFF000003));
    }
    EXPECT_EQ(refusedFor(frame("spvt", 2, "\"abc\nx\n")), "size") << "a quote that is not closed";
    EXPECT_FALSE(passes(frame("spvt", 2, "`id`"))) << "no newline behind it";
    EXPECT_FALSE(passes(frame("spvt", 2, "12345`id`\nx\n"))) << "too long for a size";
    EXPECT_FALSE(passes(frame("spvt", 2, "ab`\nx\n"))) << "too short for one";
    EXPECT_TRUE(passes(frame("spvt", 2, le32(5) + "`id`\nx\n"))) << "a zero byte ends what is seen";
}

// ---- What passes, in the hands of the true handlers -------------------------------------------

/// Requests of every command, and of shapes that none should have, with canaries in them.
class Requests {
  public:
    std::string next()
    {
        const Parameter& parameter = parameters()[random_() % parameters().size()];
        std::string request = parameter.make(text());
        for (auto changes = random_() % 3; changes > 0; --changes) {
            change(request);
        }
        request.resize(std::min<std::size_t>(request.size(), 4096));
        return request;
    }

  private:
    std::string text()
    {
        static const std::vector<std::string> kPieces = {
            "anna",        "guest",     "a b",     "\"",      "\"",      "'",     "\\",
            "$",           "$\\\n",     "$HOME",   "(",       ")",       ";",     "|",
            "&",           "#",         "`>/c/1`", "$(>/c/2", "(>/c/3)", ">/c/4", ";>/c/5;",
            "\";>/c/6;\"", "';>/c/7;'", "1",       "12",      ".",       "-",     "\xC3\x89",
            "\x81",        "%s",        "=",       "user",    "system",  "\x01",  "\t",
            ",",           "Family",    "2026"};
        std::string made;
        for (auto count = 1 + random_() % 4; count > 0; --count) {
            made += kPieces[random_() % kPieces.size()];
        }
        return made;
    }

    void change(std::string& request)
    {
        static const std::vector<std::string> kPieces = {"\n",
                                                         "\n",
                                                         kZero,
                                                         "\r\n",
                                                         std::string(240, 'a'),
                                                         std::string(254, 'b'),
                                                         std::string(255, 'c'),
                                                         std::string(4080, 'd')};
        const std::size_t at = std::min<std::size_t>(5 + random_() % 24, request.size());
        const std::string piece =
            (random_() % 2 == 0) ? text() : kPieces[random_() % kPieces.size()];
        if (random_() % 2 == 0) {
            request.insert(at, piece);
        } else {
            request.replace(at, std::min<std::size_t>(piece.size(), 8), piece);
        }
    }

    std::minstd_rand random_{20261121};
};

class GateAndHandlers : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::filesystem::create_directory("/c");
        std::filesystem::create_directory_symlink("/c", "/C");
        // Whoever is asked for is known, so that requests get as far as they can.
        root::stub("php", "case $2 in\n"
                          "tovGetUsers) echo '<username>anna</username>' >\"$3\" ;;\n"
                          "tovGetShareList) echo '<sharename>Family</sharename>' >\"$3\" ;;\n"
                          "esac");
        root::stub("runwebhooks", "echo 'return [\"anna\",\"Family\"];'");
        root::writeFile("/etc/pelconfig/system_var", "ra_signUpUrl=x\n");
        // The remote-access programs.
        root::writeFile("/usr/bin/ra-enabled", "#!/usr/bin/sh\n");
        root::writeFile("/usr/bin/ractl", "#!/usr/bin/sh\n");
        for (const char* program : kPrograms) {
            std::filesystem::permissions(program, std::filesystem::perms(0755));
        }
    }

    void TearDown() override
    {
        for (const char* name : {"/c", "/C", kPrograms[0], kPrograms[1]}) {
            std::filesystem::remove_all(name);
        }
        root::Test::TearDown();
    }

    static constexpr auto kPrograms =
        std::to_array<const char*>({"/usr/bin/ra-enabled", "/usr/bin/ractl"});

    /// What a request's canaries have left. What the shell says to all that is of no interest.
    static std::vector<std::string> canariesOf(const std::string& request)
    {
        request::load(request);
        std::fflush(stdout);
        const std::array<int, 2> streams = {::dup(STDOUT_FILENO), ::dup(STDERR_FILENO)};
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
        static_cast<void>(request::run());
        std::fflush(stdout);
        ::dup2(streams[0], STDOUT_FILENO);
        ::dup2(streams[1], STDERR_FILENO);
        ::close(streams[0]);
        ::close(streams[1]);
        const std::vector<std::string> left = root::list("/c");
        for (const std::string& name : left) {
            std::filesystem::remove("/c/" + name);
        }
        return left;
    }
};

std::string showBytes(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        constexpr std::string_view kHexDigits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        shown += {kHexDigits[byte >> 4U], kHexDigits[byte & 0x0FU]};
    }
    return shown;
}

TEST_F(GateAndHandlers, whatPassesRunsNothingOfItsOwn)
{
    constexpr int kRequests = 500;
    Requests requests;
    for (int passed = 0; passed < kRequests;) {
        const std::string request = requests.next();
        if (passes(request)) {
            ++passed;
            ASSERT_EQ(canariesOf(request), std::vector<std::string>{}) << showBytes(request);
        }
    }
}

TEST_F(GateAndHandlers, whatDoesNotWouldHave)
{
    watch::mayBeStrange("");
    constexpr int kRequests = 120;
    Requests requests;
    std::vector<std::string> fired;
    for (int refused = 0; refused < kRequests;) {
        const std::string request = requests.next();
        if (!passes(request)) {
            ++refused;
            if (!canariesOf(request).empty()) {
                fired.push_back(request.substr(0, 4));
            }
        }
    }
    EXPECT_GE(fired.size(), 20U);
    std::ranges::sort(fired);
    const auto doubles = std::ranges::unique(fired);
    fired.erase(doubles.begin(), doubles.end());
    EXPECT_GE(fired.size(), 8U) << "of eleven commands";
}

TEST_F(GateAndHandlers, parametersThatPassArriveAsTheyAre)
{
    request::load(frame("crat", 2, "Zoë B. Müller\npa$$w#rd $HOME\n"));
    ASSERT_TRUE(passes(frame("crat", 2, "Zoë B. Müller\npa$$w#rd $HOME\n")));
    root::stub("php", "case $2 in\n"
                      "tovGetUsers) : >\"$3\" ;;\n"
                      "tovAddUser) printf '<%s>' \"$@\" >/stubs/arguments ;;\n"
                      "esac");
    EXPECT_EQ(request::run().answer, le32(0));
    EXPECT_EQ(root::readFile("/stubs/arguments"),
              "</etc/inc/api_user.php><tovAddUser><Zoë B. Müller><pa$$w#rd $HOME>");
}

} // namespace
