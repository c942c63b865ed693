// SPDX-License-Identifier: MIT
//
// Which texts pass, byte by byte; and whether true shells agree, for thousands of texts that
// somebody could try.
#include "service/shell_text.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/support/root.h"

namespace {

using cmdsvc::ShellContext;
using service::isHarmless;

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

constexpr auto kContexts = std::to_array<ShellContext>(
    {ShellContext::kNowhere, ShellContext::kDoubleQuotes, ShellContext::kSingleQuotes,
     ShellContext::kName, ShellContext::kWord, ShellContext::kClock});

// ---- Single bytes -----------------------------------------------------------------------------

/// The bytes that pass in a context, each between two letters (digits if it is a time's).
std::string passingBytes(ShellContext context)
{
    const std::string around = (context == ShellContext::kClock) ? "1" : "a";
    std::string passing;
    for (int byte = 0; byte < 256; ++byte) {
        if (isHarmless(around + static_cast<char>(byte) + around, context)) {
            passing += static_cast<char>(byte);
        }
    }
    return passing;
}

/// Bytes from one to another.
std::string bytes(int first, int last)
{
    std::string range;
    for (int byte = first; byte <= last; ++byte) {
        range += static_cast<char>(byte);
    }
    return range;
}

std::string inOrder(std::string text)
{
    std::ranges::sort(text, {}, [](char c) { return static_cast<unsigned char>(c); });
    return text;
}

std::string without(std::string text, std::string_view dropped)
{
    std::erase_if(text, [dropped](char c) { return dropped.find(c) != std::string_view::npos; });
    return text;
}

std::string joined(std::initializer_list<std::string_view> texts)
{
    std::string whole;
    for (const std::string_view text : texts) {
        whole += text;
    }
    return inOrder(whole);
}

TEST(ShellText, whatNoShellSeesMayHoldAnyByte)
{
    EXPECT_EQ(passingBytes(ShellContext::kNowhere), bytes(0, 255));
}

TEST(ShellText, betweenDoubleQuotesABackQuoteAloneActs)
{
    EXPECT_EQ(passingBytes(ShellContext::kDoubleQuotes), without(bytes(0, 255), "`"));
}

TEST(ShellText, betweenSingleQuotesNothingMayLeaveThemOrTheirLine)
{
    EXPECT_EQ(passingBytes(ShellContext::kSingleQuotes), without(bytes(' ', 255), "'\"\\`\x7F"));
}

TEST(ShellText, nameHoldsWhatIsPlainOutsideOfQuotes)
{
    EXPECT_EQ(passingBytes(ShellContext::kName),
              joined({kDigits, kLetters, " .,_-+@%=:", bytes(0x80, 0xFF)}));
}

TEST(ShellText, wordHoldsWhatNamesOfHostsHold)
{
    EXPECT_EQ(passingBytes(ShellContext::kWord), joined({kDigits, kLetters, " ._-"}));
}

TEST(ShellText, timeHoldsDigitsAndPoints)
{
    EXPECT_EQ(passingBytes(ShellContext::kClock), joined({kDigits, "."}));
}

TEST(ShellText, nameInALineMayEndInItsNewline)
{
    EXPECT_EQ(passingBytes(ShellContext::kNameLine), passingBytes(ShellContext::kName));
    EXPECT_TRUE(isHarmless("anna\n", ShellContext::kNameLine));
    EXPECT_FALSE(isHarmless("anna\n", ShellContext::kName));
    EXPECT_FALSE(isHarmless("anna\n\n", ShellContext::kNameLine));
    EXPECT_FALSE(isHarmless("an\nna", ShellContext::kNameLine));
    EXPECT_FALSE(isHarmless("-a\n", ShellContext::kNameLine));
}

TEST(ShellText, newUsersNameIsANameThatNoListEndsAt)
{
    EXPECT_EQ(passingBytes(ShellContext::kNewUser),
              without(passingBytes(ShellContext::kName), "\xFF"));
    EXPECT_FALSE(isHarmless("-anna", ShellContext::kNewUser));
}

TEST(ShellText, escapedNameIsANameWithoutItsBackslashes)
{
    EXPECT_EQ(passingBytes(ShellContext::kEscaped),
              inOrder(passingBytes(ShellContext::kName) + "\\"));
    EXPECT_TRUE(isHarmless("\\an\\ na\\", ShellContext::kEscaped));
    EXPECT_FALSE(isHarmless("\\-anna", ShellContext::kEscaped));
    EXPECT_FALSE(isHarmless("\\.\\.", ShellContext::kEscaped));
    EXPECT_FALSE(isHarmless("\\`", ShellContext::kEscaped));
}

TEST(ShellText, sizeIsHarmlessAsTextOrAsANumberThatARequestCanHold)
{
    EXPECT_TRUE(isHarmless(std::string("\xFF\xFF\xFF\xFF\n"), ShellContext::kSize)) << "as text";
    EXPECT_TRUE(isHarmless(std::string("`\x0F\0\0\n", 5), ShellContext::kSize)) << "3936";
    EXPECT_FALSE(isHarmless(std::string("`\x10\0\0\n", 5), ShellContext::kSize)) << "4192";
    EXPECT_FALSE(isHarmless(std::string("`\x0F\0\0", 4), ShellContext::kSize)) << "not whole";
    EXPECT_TRUE(isHarmless(std::string("a\0`\x7F\n", 5), ShellContext::kSize))
        << "the trace ends at the zero";
}

// ---- Texts ------------------------------------------------------------------------------------

TEST(ShellText, whatPeopleUsePasses)
{
    for (const char* name : {"anna", "Élise", "Family Videos", "Öffentlich", "J. R. Smith",
                             "日本語 2026", "a+b@example.org", "50% = half: so, yes", "x", "..."}) {
        EXPECT_TRUE(isHarmless(name, ShellContext::kName)) << name;
        EXPECT_TRUE(isHarmless(name, ShellContext::kSingleQuotes)) << name;
        EXPECT_TRUE(isHarmless(name, ShellContext::kDoubleQuotes)) << name;
    }
    for (const char* password : {"pa$$w#rd", "$HOME", "#1; & | < > * ? ~ ! () {} []", "$", "a b$",
                                 "$#$@$*$?$-$!$0", "pässwörd€"}) {
        EXPECT_TRUE(isHarmless(password, ShellContext::kSingleQuotes)) << password;
    }
    for (const char* word : {"nas-1", "WORKGROUP", "my host", "a.b_c", "en"}) {
        EXPECT_TRUE(isHarmless(word, ShellContext::kWord)) << word;
    }
    EXPECT_TRUE(isHarmless("112115302026.45", ShellContext::kClock));
}

TEST(ShellText, emptyTextIsHarmlessAnywhere)
{
    for (const ShellContext context : kContexts) {
        EXPECT_TRUE(isHarmless("", context));
    }
}

TEST(ShellText, expansionThatRunsOrAssignsIsRefused)
{
    for (const char* text : {"$(id)", "a$(id)", "${x}", "${x:=`id`}", "$[1]", "$((1))", "`id`", "`",
                             "a`", "$$(id)", "$x$(id)", "$(", "${"}) {
        EXPECT_FALSE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
        EXPECT_FALSE(isHarmless(text, ShellContext::kSingleQuotes)) << text;
        EXPECT_FALSE(isHarmless(text, ShellContext::kName)) << text;
    }
}

TEST(ShellText, escapesBetweenDoubleQuotesAreFollowed)
{
    for (const char* text : {"\\`", "\\$(", "\\\\", "\\\"$", "a\\", "\\\\\\`", "$\\(", "\\$\\("}) {
        EXPECT_TRUE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
    }
    for (const char* text : {"\\\\`", "\\\\$(", "\\\\\\\\`", "\\a`", "\\a$("}) {
        EXPECT_FALSE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
    }
}

TEST(ShellText, linesThatTheShellJoinsAreOne)
{
    for (const char* text :
         {"$\\\n(id)", "$\\\n{x}", "$\\\n[1]", "$\\\n\\\n(id)", "a\n$\\\n\\\n\\\n(", "$$\\\n("}) {
        EXPECT_FALSE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
    }
    for (const char* text : {"a\\\nb", "$\n(id)", "$\\\\\n(id)", "\\$\\\n(id)", "$\\\n", "$\\\na(",
                             "$\\\n\\(", "\\\n", "\\\n("}) {
        EXPECT_TRUE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
    }
}

TEST(ShellText, textThatLeavesItsQuotesIsJudgedOutsideOfThem)
{
    for (const char* text : {"\"", "\"\"", "a\"b\"c", "\"a b\"", "\"\" ; |"}) {
        EXPECT_TRUE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
    }
    for (const char c : std::string_view(";|&<>()*?[]{}~!#'\\`$\n\t\r\x01\x7F/^")) {
        const std::string text = std::string("a\"b") + c + "d";
        EXPECT_FALSE(isHarmless(text, ShellContext::kDoubleQuotes)) << text;
        EXPECT_FALSE(isHarmless(text + "\"e", ShellContext::kDoubleQuotes)) << text;
        EXPECT_EQ(isHarmless("a\"b\"" + std::string(1, c), ShellContext::kDoubleQuotes), c != '`')
            << c;
    }
    EXPECT_TRUE(isHarmless("a\\\";id", ShellContext::kDoubleQuotes))
        << "this quote is only a character";
    EXPECT_FALSE(isHarmless("a\\\\\";id", ShellContext::kDoubleQuotes)) << "this one is not";
}

TEST(ShellText, everyBeginningOfAHarmlessTextIsHarmlessToo)
{
    // Texts are cut: at a name's length, at a file's size, at what a trace holds.
    const std::string text = "a\"b c\"d\\\"e\\\\f$x$\ng\\\nh\"$";
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_TRUE(isHarmless(std::string_view(text).substr(0, size), ShellContext::kDoubleQuotes))
            << size;
    }
}

TEST(ShellText, nameIsNoOptionAndNoFolderAbove)
{
    for (const char* name :
         {"-", "-rf", "--help", ".", "..", "../x", "/etc", "a/b", "a\nb", "a\tb"}) {
        EXPECT_FALSE(isHarmless(name, ShellContext::kName)) << name;
    }
    EXPECT_FALSE(isHarmless("-n", ShellContext::kWord));
    EXPECT_FALSE(isHarmless("1 2", ShellContext::kClock));
    EXPECT_FALSE(isHarmless("-1", ShellContext::kClock));
}

// ---- True shells ------------------------------------------------------------------------------

/// Shell lines of the module with a text in them, at the "@@".
struct Lines {
    const char* name;
    ShellContext context;
    std::vector<std::string> formats;
};

const std::vector<Lines>& moduleLines()
{
    static const std::vector<Lines> lines = {
        {"between double quotes",
         ShellContext::kDoubleQuotes,
         {"echo \"writing buffer @@\" >> trace",
          "echo \"cmd_gspc share name: @@ -- standing: 0 -- share Property: 2\" >> trace",
          "echo \"wasu anna @@\" > trace"}},
        {"between single quotes",
         ShellContext::kSingleQuotes,
         {"true /etc/inc/api_user.php tovAddUser 'anna' '@@'",
          "echo \"create_user: true api_user.php tovAddUser 'anna' '@@' -- iRet:0\" >> trace",
          "echo \"Missing password: @@\" >> trace"}},
        {"name",
         ShellContext::kName,
         {"true /etc/inc/api_share.php tovAddShare '@@' 'private'",
          "true /etc/inc/api_share.php tovSetUserSharePrivileges '@@' '@@' full",
          "echo \"isUserExisted() user return:return [\"guest\", \"@@\"]; -- userName: \"@@\"\" >> "
          "trace",
          "true /usr/bin/ra-enabled get \"@@\"",
          "echo \"wasu system /usr/bin/ra-enabled set \"@@\" off\" >> trace",
          "echo \"cmd_shar() failed for user:'@@' reserved name for system\" >> trace",
          // Lines that were cut within the name.
          "true /usr/bin/ra-enabled get \"@@", "true tovSetUserSharePrivileges 'anna' '@@",
          "echo \"isUserExisted() user return:return [\"guest\"]; -- userName: \"@@\" >> trace"}},
        {"word",
         ShellContext::kWord,
         {"true /etc/inc/api_system.php tovSetHostname @@ > output",
          "echo \"setSysVar(): true api_system.php tovSetHostname @@ > output -- iRet: 0\" >> "
          "trace",
          "echo \"hostname=@@\" >> trace"}},
        {"time",
         ShellContext::kClock,
         {"true /etc/inc/api_pel.php tovSetUtcSysTime @@:30:00",
          "true /etc/inc/api_system.php tovSetSysDate 11/@@/2026 > output"}},
    };
    return lines;
}

std::string fill(std::string format, const std::string& text)
{
    for (std::size_t at = 0; (at = format.find("@@", at)) != std::string::npos; at += text.size()) {
        format.replace(at, 2, text);
    }
    return format;
}

/// Texts out of pieces that mean something to a shell; the same ones each time. Some of the pieces
/// leave a canary where they are run.
class Texts {
  public:
    explicit Texts(ShellContext context) : isOfTime_(context == ShellContext::kClock) {}

    std::string next()
    {
        static const std::vector<std::string> kPieces = {
            "$",      "(",    ")",     "`",    "\"",    "'",     "\\",    "\n",
            "{",      "}",    "[",     "]",    ";",     "|",     "&",     "<",
            ">",      "*",    "?",     "~",    "#",     "!",     "=",     "%",
            "-",      " ",    "\t",    "\r",   "/",     "..",    "\x01",  "\x7F",
            "\x80",   "\x81", "\x82",  "\x84", "\x88",  "\xA0",  "\xFF",  "\xC3\x89",
            "a",      "b",    "$HOME", "$$",   "$@",    ">c",    ">c",    ">c",
            ">c)",    ">c`",  "$(>c)", "`>c`", "(>c)",  ";>c;",  "\";>c", "';>c'",
            "\n>c\n", "|>c",  "&>c&",  "\\\n", "$\\\n", "$\\\n", "(>c)",  "(>c)"};
        static const std::vector<std::string> kPiecesOfTime = {"0",    "1",   "12", ".",
                                                               "2026", ";>c", " "};
        const auto& pieces = (isOfTime_ && random_() % 8 != 0) ? kPiecesOfTime : kPieces;
        std::string text;
        for (auto count = 1 + random_() % 7; count > 0; --count) {
            text += pieces[random_() % pieces.size()];
        }
        return text;
    }

  private:
    std::minstd_rand random_{20261121};
    bool isOfTime_;
};

class TrueShells : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::filesystem::create_directory(kFolder);
        ASSERT_EQ(::chdir(kFolder), 0);
    }

    void TearDown() override
    {
        ASSERT_EQ(::chdir("/"), 0);
        std::filesystem::remove_all(kFolder);
        root::Test::TearDown();
    }

    static void run(const std::vector<std::string>& shell, const std::string& line)
    {
        std::vector<std::string> command = shell;
        command.insert(command.end(), {"-c", line});
        std::vector<char*> arguments;
        for (std::string& argument : command) {
            arguments.push_back(argument.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
        }
        pid_t shellId = 0;
        ASSERT_EQ(
            ::posix_spawnp(&shellId, arguments[0], &actions, nullptr, arguments.data(), environ),
            0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::waitpid(shellId, nullptr, 0);
    }

    /// Whether a line has made any file but those that its own redirections name.
    static bool fires(const std::string& line, std::size_t turn)
    {
        static const std::array<std::vector<std::string>, 2> kShells = {
            {{"/usr/bin/sh"}, {"/usr/bin/busybox", "ash"}}};
        run(kShells[turn % kShells.size()], line);
        bool hasFired = false;
        for (const std::string& name : root::list(kFolder)) {
            if (name != "trace" && name != "output") {
                std::filesystem::remove_all(std::string(kFolder) + "/" + name);
                hasFired = true;
            }
        }
        return hasFired;
    }

    static constexpr const char* kFolder = "/tmp/lines";
};

/// A text's bytes, to find it again.
std::string show(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        constexpr std::string_view kHexDigits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        shown += {' ', kHexDigits[byte >> 4U], kHexDigits[byte & 0x0FU]};
    }
    return shown;
}

TEST_F(TrueShells, whatIsCalledHarmlessRunsNothing)
{
    constexpr int kTextsPerContext = 600;
    for (const Lines& lines : moduleLines()) {
        Texts texts(lines.context);
        std::size_t turn = 0;
        for (int accepted = 0; accepted < kTextsPerContext;) {
            const std::string text = texts.next();
            if (!isHarmless(text, lines.context)) {
                continue;
            }
            ++accepted;
            // Each text meets both shells, and all lines in turn.
            for (int shell = 0; shell < 2; ++shell) {
                const std::string& format = lines.formats[turn / 2 % lines.formats.size()];
                ASSERT_FALSE(fires(fill(format, text), turn)) << format << show(text);
                ++turn;
            }
        }
    }
}

TEST_F(TrueShells, whatIsRefusedRunsSomethingAtTimes)
{
    constexpr int kTextsPerContext = 150;
    for (const Lines& lines : moduleLines()) {
        Texts texts(lines.context);
        int fired = 0;
        std::size_t turn = 0;
        for (int refused = 0; refused < kTextsPerContext;) {
            const std::string text = texts.next();
            if (!isHarmless(text, lines.context)) {
                ++refused;
                ++turn;
                fired +=
                    fires(fill(lines.formats[turn / 2 % lines.formats.size()], text), turn) ? 1 : 0;
            }
        }
        EXPECT_GE(fired, 10) << lines.name;
    }
}

TEST_F(TrueShells, theyJoinLines)
{
    for (std::size_t turn = 0; turn < 2; ++turn) {
        EXPECT_TRUE(fires("echo \"writing buffer $\\\n(>c)\" >> trace", turn));
        EXPECT_FALSE(fires("echo \"writing buffer $\n(>c)\" >> trace", turn));
        EXPECT_FALSE(fires("echo \"writing buffer \\$\\\n(>c)\" >> trace", turn));
    }
}

TEST_F(TrueShells, noSingleByteRunsAnything)
{
    // A byte of a file's size, of a name, of a request's start: each is traced by itself.
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const auto turn = static_cast<std::size_t>(byte);
        ASSERT_FALSE(fires("echo \"0x00," + text + "\" >> trace", turn)) << byte;
        for (const char next : {'\x01', '\x09', '\x0D', '\x0F'}) {
            ASSERT_FALSE(fires("echo \"_spvt: " + text + next + "\" >> trace", turn)) << byte;
        }
    }
}

} // namespace
