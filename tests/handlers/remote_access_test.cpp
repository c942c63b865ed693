// SPDX-License-Identifier: MIT
#include "handlers/remote_access.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/core.h"
#include "tests/support/faults.h"
#include "tests/support/request.h"

namespace fs = std::filesystem;

namespace {

using request::exitTrace;
using request::filledFrame;
using request::frame;
using request::kWorkFile;
using request::Lines;
using request::Outcome;
using root::join;
using root::kVariables;
using root::le32;
using root::trace;

const std::string kRegister = "/usr/bin/ractl";
const std::string kSwitch = "/usr/bin/ra-enabled";

const std::vector<std::size_t> kSizes = {0, 1, 2, 31, 32, 33, 64, 65};

/// Texts with characters that mean something to a shell or a format.
const Lines kOddTexts = {"\xC3\xA9lise \xE6\x97\xA5\xE6\x9C\xAC",
                         "a \"quoted\" b",
                         "O'Brien",
                         "%s%n%d",
                         "$HOME",
                         "`pwd`",
                         "a;b",
                         " blanks ",
                         "back\\slash",
                         "*",
                         "-n",
                         "tab\there",
                         "cr\r",
                         "\xFF\x80"};

std::string withoutNewline(const std::string& text)
{
    return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

// ---- Programs ---------------------------------------------------------------------------------

/// Installs a program that records its arguments and then runs SCRIPT.
void place(const std::string& path, const std::string& script)
{
    const std::string record = "printf '<%s>' \"$@\" >/stubs/asked-" + path.substr(9) + "\n";
    fs::remove(path);
    root::writeFile(path, "#!/usr/bin/sh\n" + record + script + "\n");
    fs::permissions(path, fs::perms(0755));
}

/// The arguments that a program recorded.
std::string asked(const std::string& path)
{
    return root::readFile("/stubs/asked-" + path.substr(9));
}

std::string registration(const std::string& user, const std::string& first,
                         const std::string& second)
{
    return "<registerUser><" + user + "><" + first + "><" + second + ">";
}

/// The ways in which a program cannot be started.
const std::vector<std::function<void(const std::string&)>> kUnstartable = {
    [](const std::string& path) { fs::remove(path); },
    [](const std::string& path) { fs::permissions(path, fs::perms(0644)); },
    [](const std::string& path) { fs::permissions(path, fs::perms(0)); },
    [](const std::string& path) {
        fs::remove(path);
        fs::create_directory(path);
    },
    [](const std::string& path) {
        fs::remove(path);
        fs::create_symlink(path, path);
    },
    [](const std::string& path) {
        root::writeFile(path, "#!/usr/bin/none\n");
        fs::permissions(path, fs::perms(0755));
    },
};

/// Only signals that the caller of the tests does not set to be ignored.
const std::vector<int> kSignals = {SIGKILL, SIGTERM, SIGSEGV, SIGABRT, SIGUSR1};

std::string dieBy(int signal)
{
    return "kill -" + std::to_string(signal) + " $$";
}

// ---- Requests ---------------------------------------------------------------------------------

class RemoteAccess : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        fs::create_directory("/tmp/work");
        ASSERT_EQ(::chdir("/tmp/work"), 0);
        root::writeFile(kVariables, "a=1\n");
        place(kRegister, "exit 0");
        place(kSwitch, "exit 0");
    }

    void TearDown() override
    {
        fs::remove_all(kRegister);
        fs::remove_all(kSwitch);
        ASSERT_EQ(::chdir("/"), 0);
        request::Test::TearDown();
    }

    /// Loads a request, and puts a work file of an earlier command in place.
    void load(const std::string& request)
    {
        fs::remove("/stubs/asked-ractl");
        fs::remove("/stubs/asked-ra-enabled");
        request::load(request);
        printed_ = "";
        root::writeFile(kWorkFile, "work");
    }

    /// Sets the expected standard output of the request.
    void expectPrinted(const std::string& text) { printed_ = text; }

    /// Expects that the request succeeds, and leaves the work file.
    void expectAnswer(const std::string& answer, const Lines& calls)
    {
        expectEnd(answer, calls, {kWorkFile}, printed_);
        expectNoChild();
    }

    void expectError(std::uint32_t code, const Lines& calls)
    {
        request::Test::expectError(request::run(), "erro " + le32(code), code, calls, {}, printed_);
        expectNoChild();
    }

    /// Expects that no program was started.
    static void expectNoProgram()
    {
        EXPECT_FALSE(root::exists("/stubs/asked-ractl"));
        EXPECT_FALSE(root::exists("/stubs/asked-ra-enabled"));
    }

  private:
    std::string printed_;

    static void expectNoChild()
    {
        errno = 0;
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }
};

// ---- getv -------------------------------------------------------------------------------------

class Value : public RemoteAccess {
  protected:
    void ask(std::int32_t key)
    {
        load(frame("getv", 1, le32(static_cast<std::uint32_t>(key)) + "\n"));
    }

    void expectValue(std::int32_t key, const std::string& value)
    {
        SCOPED_TRACE(value);
        ask(key);
        expectAnswer("getv " + le32(static_cast<std::uint32_t>(key)) + "\n" + value + "\n",
                     {trace("key is " + std::to_string(key)), trace("getv returning " + value)});
        expectNoProgram();
    }

    void expectNoValue(std::int32_t key, std::uint32_t code)
    {
        SCOPED_TRACE(key);
        ask(key);
        expectError(code, {trace("key is " + std::to_string(key))});
    }

    /// Expects that an address in the variables, KEPT, is answered as VALUE.
    void expectAddresses(const std::string& kept, const std::string& value)
    {
        root::writeFile(kVariables, "ra_signUpUrl=" + kept + "\nra_signInUrl=other\n");
        expectValue(1, value);
        root::writeFile(kVariables, "ra_signUpUrl=other\nra_signInUrl=" + kept + "\n");
        expectValue(2, value);
    }
};

TEST_F(Value, thirdKeyIsAFixedText)
{
    load(frame("getv", 1, std::string("\3\0\0\0\n", 5)));
    expectAnswer(std::string("getv \3\0\0\0\n2\n", 12),
                 {trace("key is 3"), trace("getv returning 2")});
}

TEST_F(Value, thirdKeyNeedsNoVariables)
{
    fs::remove(kVariables);
    expectValue(3, "2");
}

TEST_F(Value, firstTwoKeysAreAddresses)
{
    root::writeFile(kVariables, "ra_signUpUrl=https://example.org/up?a=b&c\n"
                                "ra_signInUrl=https://example.org/in\n");
    load(frame("getv", 1, std::string("\1\0\0\0\n", 5)));
    expectAnswer(std::string("getv \1\0\0\0\nhttps://example.org/up?a=b&c\n", 39),
                 {trace("key is 1"), trace("getv returning https://example.org/up?a=b&c")});
    expectValue(2, "https://example.org/in");
}

TEST_F(Value, addressesOfAnySize)
{
    for (const std::size_t size : {1U, 2U, 31U, 32U, 33U, 64U, 65U, 255U, 256U, 497U}) {
        const std::string value(size, 'u');
        expectAddresses(value, value);
    }
}

TEST_F(Value, addressesAreAnsweredUnchanged)
{
    for (const std::string& text : kOddTexts) {
        // Blanks before a value are not part of it, nor is a carriage return.
        const std::string value = text.substr(text.find_first_not_of(' '));
        expectAddresses(text, value.substr(0, value.find('\r')));
    }
}

TEST_F(Value, addressThatIsEmptyOrAbsentIsAnError)
{
    for (const std::string& content :
         {std::string(), std::string("ra_signUpUrl=\nra_signInUrl= \t\r\n"),
          std::string("ra_signUpUrl2=x\nRA_SIGNINURL=x\n"),
          "ra_signUpUrl=" + std::string(498, 'u') + "\nra_signInUrl=" + std::string(4000, 'u') +
              "\n"}) {
        root::writeFile(kVariables, content);
        expectNoValue(1, 1);
        expectNoValue(2, 1);
    }
}

TEST_F(Value, addressThatCannotBeReadIsAnError)
{
    fs::permissions(kVariables, fs::perms(0));
    ask(1);
    expectPrinted(root::unreadVariable(root::kDenied));
    expectError(1, {trace("key is 1")});
    fs::remove(kVariables);
    ask(2);
    expectPrinted(root::unreadVariable(root::kNotThere));
    expectError(1, {trace("key is 2")});
}

TEST_F(Value, anyOtherKeyIsUnknown)
{
    root::writeFile(kVariables, "ra_signUpUrl=up\nra_signInUrl=in\n");
    for (const std::int32_t key :
         {0, -1, 4, 10, 0x101, 0x103, 0x0A0A0A0A, 0x01000000, 0x7FFFFFFF, -0x7FFFFFFF - 1, -3}) {
        expectNoValue(key, 2);
    }
}

TEST_F(Value, keyWithoutItsNewlineIsMalformed)
{
    for (const std::string& next : {std::string(), std::string("\r\n"), std::string("3\n"),
                                    std::string(" \n"), std::string("\0\n", 2)}) {
        SCOPED_TRACE(next);
        load(frame("getv", 1, le32(3) + next));
        expectError(3, {trace("getv: no trailing newline")});
    }
    load(filledFrame("getv", 1, le32(3)));
    expectError(3, {trace("getv: no trailing newline")});
}

TEST_F(Value, keyMayFillTheRequestToItsEnd)
{
    load(filledFrame("getv", 1, le32(3) + "\n"));
    expectAnswer(std::string("getv \3\0\0\0\n2\n", 12),
                 {trace("key is 3"), trace("getv returning 2")});
}

TEST_F(Value, keyThatIsCutByTheRequestsEndIsMalformed)
{
    // The longest request line leaves two bytes.
    for (const std::string& end :
         {std::string(), std::string("\3\0", 2), std::string("\3\0\0", 3)}) {
        load(filledFrame("getv", 1, end));
        errno = EACCES;
        expectError(3, {trace("getv: failed to read key: Success")});
    }
}

TEST_F(Value, onlyTheKeyIsRead)
{
    load(frame("getv", 1, le32(3) + "\nmore\n"));
    expectAnswer(std::string("getv \3\0\0\0\n2\n", 12),
                 {trace("key is 3"), trace("getv returning 2")});
    EXPECT_EQ(request::unread(), "more");
}

// ---- wags -------------------------------------------------------------------------------------

class Access : public RemoteAccess {
  protected:
    /// The line for a user, as it is cut.
    static std::string line(const std::string& user)
    {
        return (kSwitch + " get \"" + user + "\"").substr(0, 255);
    }

    static Lines userCalls(const std::string& user)
    {
        return {trace("wags entity: user"), line(user)};
    }

    void ask(const std::string& user) { load(frame("wags", 2, "user\n" + user + "\n")); }

    void expectSystem(const std::string& value, bool isOn)
    {
        SCOPED_TRACE(value);
        load(frame("wags", 1, "system\n"));
        expectAnswer("wags system\n" + std::string(1, isOn ? '\1' : '\0') + "\n",
                     {trace("wags entity: system"), trace("wags system on: " + value)});
        expectNoProgram();
    }

    void expectUser(bool isOn, const Lines& calls)
    {
        expectAnswer("wags user\n" + std::string(1, isOn ? '\1' : '\0') + "\n", calls);
    }
};

TEST_F(Access, systemIsOnIfItsVariableStartsWithOne)
{
    root::writeFile(kVariables, "raclient_raenabled=1\n");
    load(frame("wags", 1, "system\n"));
    expectAnswer("wags system\n\1\n", {trace("wags entity: system"), trace("wags system on: 1")});
    for (const std::string value : {"10", "1 0", "1x", "1\xC3\xA9"}) {
        root::writeFile(kVariables, "raclient_raenabled = " + value + "\n");
        expectSystem(value, true);
    }
}

TEST_F(Access, systemIsOffWithAnythingElse)
{
    for (const std::string& value :
         {std::string(), std::string("0"), std::string("01"), std::string("on"), std::string("-1"),
          std::string("\"1\""), std::string("yes"), std::string(490, '0')}) {
        root::writeFile(kVariables, "raclient_raenabled=" + value + "\n");
        expectSystem(value, false);
    }
    root::writeFile(kVariables, "raclient_raenabled2=1\n");
    expectSystem("", false);
    root::writeFile(kVariables, "raclient_raenabled=1" + std::string(500, 'x') + "\n");
    expectSystem("", false);
}

TEST_F(Access, systemWithoutVariablesIsOff)
{
    fs::remove(kVariables);
    load(frame("wags", 1, "system\n"));
    expectPrinted(root::unreadVariable(root::kNotThere));
    expectAnswer(std::string("wags system\n\0\n", 14),
                 {trace("wags entity: system"), trace("wags system on: ")});
}

TEST_F(Access, systemNeedsNoSecondLine)
{
    root::writeFile(kVariables, "raclient_raenabled=1\n");
    load(frame("wags", 2, "system\nanna\n"));
    expectAnswer("wags system\n\1\n", {trace("wags entity: system"), trace("wags system on: 1")});
    EXPECT_EQ(request::unread(), "anna");
    load(filledFrame("wags", 1, "system\n"));
    expectAnswer("wags system\n\1\n", {trace("wags entity: system"), trace("wags system on: 1")});
}

TEST_F(Access, anyOtherEntityIsMalformed)
{
    for (const std::string entity :
         {"System", "SYSTEM", "systeM", "User", "USER", "system ", " system", "systems", "syste",
          "use", "users", "", "system\r", "user\r", "systemuser", "\xC3\xA9", "%s%n"}) {
        SCOPED_TRACE(entity);
        load(frame("wags", 2, entity + "\nanna\n"));
        expectError(2, {trace("wags entity: " + entity)});
        EXPECT_EQ(request::unread(), "anna");
        expectNoProgram();
    }
}

TEST_F(Access, entitiesOfAnySizeAreMalformed)
{
    for (const std::size_t size : {31U, 32U, 33U, 64U, 65U, 253U, 254U, 255U, 256U, 257U, 4000U}) {
        const std::string entity(size, 's');
        load(frame("wags", 2, entity + "\nanna\n"));
        expectError(2, {trace("wags entity: " + entity.substr(0, 255))});
        EXPECT_EQ(request::unread(), ((size < 255) ? "" : entity.substr(255) + "\n") + "anna");
    }
}

TEST_F(Access, entityNeedsNoNewline)
{
    root::writeFile(kVariables, "raclient_raenabled=1\n");
    const std::string answer = "wags system\n\1\n";
    const Lines calls = {trace("wags entity: system"), trace("wags system on: 1")};
    load(frame("wags", 1, "system"));
    expectAnswer(answer, calls);
    load(filledFrame("wags", 1, "system"));
    expectAnswer(answer, calls);
    load(frame("wags", 1, std::string("system\0more\n", 12)));
    expectAnswer(answer, calls);
    load(frame("wags", 1, ""));
    expectError(2, {trace("wags entity: ")});
}

TEST_F(Access, entityThatCannotBeReadIsMalformed)
{
    // Every request has bytes after its first line, so they are read here first.
    EXPECT_EQ(request::process(frame("wags", 1, "system\nanna\n")).result, 0);
    EXPECT_EQ(request::unread(), "anna");
    for (void (*const handler)() : {cmd_wags, +[] {
                                        errno = EACCES;
                                        cmd_wags();
                                    }}) {
        watch::restart();
        const Outcome outcome = request::call(handler);
        EXPECT_EQ(outcome.answer, "erro " + le32(2));
        EXPECT_EQ(outcome.calls, (Lines{trace("failed to fgets entity 0"), exitTrace(2)}));
    }
}

TEST_F(Access, accessOfAUserIsAskedFor)
{
    load(frame("wags", 2, "user\nanna\n"));
    expectAnswer("wags user\n\1\n",
                 {trace("wags entity: user"), "/usr/bin/ra-enabled get \"anna\""});
    EXPECT_EQ(asked(kSwitch), "<get><anna>");
    EXPECT_EQ(asked(kRegister), "");
}

TEST_F(Access, statusOfTheProgramIsTheAnswer)
{
    ask("anna");
    expectUser(true, userCalls("anna"));
    place(kSwitch, "exit 1");
    ask("anna");
    expectAnswer(std::string("wags user\n\0\n", 12), userCalls("anna"));
    place(kSwitch, "exit 2");
    ask("anna");
    expectError(1, userCalls("anna"));
    for (const int status : {3, 4, 126, 127, 128, 130, 254, 255}) {
        place(kSwitch, "exit " + std::to_string(status));
        ask("anna");
        expectError(2, userCalls("anna"));
        EXPECT_EQ(asked(kSwitch), "<get><anna>");
    }
}

TEST_F(Access, programThatIsKilledGivesNoAnswer)
{
    for (const int signal : kSignals) {
        place(kSwitch, dieBy(signal));
        ask("anna");
        expectError(2, userCalls("anna"));
        EXPECT_EQ(asked(kSwitch), "<get><anna>");
    }
    // In each form of the shell's status: its own end, with a core dump, or 128 and more.
    for (const int result : {9, 15, 11 | 0x80, 137 << 8}) {
        ask("anna");
        watch::answer(kSwitch, result, 0);
        expectError(2, userCalls("anna"));
    }
}

TEST_F(Access, programThatCannotBeStartedGivesNoAnswer)
{
    for (const auto& arrange : kUnstartable) {
        place(kSwitch, "exit 0");
        arrange(kSwitch);
        ask("anna");
        expectError(2, userCalls("anna"));
        expectNoProgram();
        fs::remove(kSwitch);
    }
}

TEST_F(Access, shellThatCannotStartGivesNoAnswer)
{
    for (const int error : {EAGAIN, ECHILD, ENOMEM, 0}) {
        ask("anna");
        watch::answer(kSwitch, -1, error);
        expectError(2, userCalls("anna"));
    }
    std::signal(SIGCHLD, SIG_IGN);
    ask("anna");
    expectError(2, userCalls("anna"));
    EXPECT_EQ(asked(kSwitch), "<get><anna>");
}

TEST_F(Access, usersOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string user(size, 'n');
        ask(user);
        expectUser(true, userCalls(user));
        EXPECT_EQ(asked(kSwitch), "<get><" + user + ">");
    }
}

TEST_F(Access, lineForTheShellIsCutAt255Characters)
{
    watch::mayBeStrange("/usr/bin/ra-enabled");
    for (const std::size_t size : {228U, 229U}) {
        const std::string user(size, 'n');
        ask(user);
        expectUser(true, userCalls(user));
        EXPECT_EQ(userCalls(user)[1].size(), size + 26);
        EXPECT_EQ(asked(kSwitch), "<get><" + user + ">");
    }
    // From this size on the last quote is cut off, and the shell refuses the line with status 2.
    for (const std::size_t size : {230U, 231U, 250U, 4000U}) {
        const std::string user(size, 'n');
        ask(user);
        expectError(1, {trace("wags entity: user"), kSwitch + " get \"" + std::string(230, 'n')});
        expectNoProgram();
    }
}

TEST_F(Access, restOfALongUserIsNotRead)
{
    watch::mayBeStrange("/usr/bin/ra-enabled");
    for (std::size_t size = 253; size <= 257; ++size) {
        const std::string text = std::string(size - 1, 'n') + "\n";
        load(frame("wags", 2, "user\n" + text + "more\n"));
        watch::answer(kSwitch, 0, 0);
        expectUser(true, userCalls(text));
        EXPECT_EQ(request::unread(), ((size <= 255) ? "" : text.substr(255)) + "more") << size;
    }
}

TEST_F(Access, restOfALongEntityIsTheUser)
{
    // Zeros make the line long, but are not part of the text.
    for (std::size_t size = 253; size <= 257; ++size) {
        const std::string entity = "user" + std::string(size - 5, '\0') + "\n";
        load(frame("wags", 2, entity + "anna\n"));
        if (size <= 255) {
            expectUser(true, userCalls("anna"));
            EXPECT_EQ(request::unread(), "");
        } else {
            expectUser(true, userCalls(""));
            EXPECT_EQ(request::unread(), "anna");
        }
    }
    load(frame("wags", 2, "user" + std::string(251, '\0') + "bob\nanna\n"));
    expectUser(true, userCalls("bob"));
}

TEST_F(Access, userNeedsNoNewline)
{
    for (const std::string& parameters :
         {std::string("user\nanna"), std::string("user\nanna\0more\n", 15)}) {
        load(frame("wags", 2, parameters));
        expectUser(true, userCalls("anna"));
    }
    load(filledFrame("wags", 2, "user\nanna"));
    expectUser(true, userCalls("anna"));
    load(filledFrame("wags", 2, "user\nanna\n"));
    expectUser(true, userCalls("anna"));
}

TEST_F(Access, missingUserIsAnEmptyName)
{
    for (const std::string parameters : {"user", "user\n", "user\n\n"}) {
        load(frame("wags", 1, parameters));
        expectUser(true, userCalls(""));
        EXPECT_EQ(asked(kSwitch), "<get><>");
    }
}

TEST_F(Access, userAfterTheEndOfTheRequestIsMalformed)
{
    for (const std::string end : {"user\n", "user"}) {
        load(filledFrame("wags", 2, end));
        expectError(2, {trace("wags entity: user")});
        expectNoProgram();
    }
}

TEST_F(Access, userIsBetweenDoubleQuotesUnchanged)
{
    watch::mayBeStrange("/usr/bin/ra-enabled");
    const std::vector<std::pair<std::string, std::string>> users = {
        {"\xC3\xA9lise \xE6\x97\xA5", "<\xC3\xA9lise \xE6\x97\xA5>"},
        {"O'Brien", "<O'Brien>"},
        {"%s%n%d", "<%s%n%d>"},
        {"$HOME", "</root>"},
        {"`echo x`", "<x>"},
        {"a;b", "<a;b>"},
        {" blanks ", "< blanks >"},
        {"a\" \"b", "<a><b>"},
        {"\"\"", "<>"},
        {"*", "<*>"},
        {"cr\r", "<cr\r>"},
        {"\xFF\x80", "<\xFF\x80>"},
    };
    for (const auto& [user, arguments] : users) {
        ask(user);
        expectUser(true, userCalls(user));
        EXPECT_EQ(asked(kSwitch), "<get>" + arguments);
    }
    for (const std::string user : {"\"", "a\"b", "ends in \\"}) {
        ask(user);
        expectError(1, userCalls(user));
        expectNoProgram();
    }
}

// ---- warp -------------------------------------------------------------------------------------

class SigningUp : public RemoteAccess {
  protected:
    static std::string done() { return {"warp \0\n\0\n", 9}; }

    void ask(const std::string& parameters) { load(frame("warp", 3, parameters)); }

    /// Expects that the request succeeds, and that the program got these arguments.
    void expectRegistered(const std::string& user, const std::string& first,
                          const std::string& second)
    {
        expectAnswer(done(), {});
        EXPECT_EQ(asked(kRegister), registration(user, first, second));
        EXPECT_EQ(asked(kSwitch), "");
    }

    static const inline std::string kAnna = "anna\nanna@example.org\nsecret\n";
};

TEST_F(SigningUp, userLosesItsNewlineButTheOtherTextsKeepTheirs)
{
    ask("anna\nanna@example.org\nsecret\n");
    expectAnswer(std::string("warp \0\n\0\n", 9), {});
    EXPECT_EQ(asked(kRegister), "<registerUser><anna><anna@example.org\n><secret\n>");
    EXPECT_EQ(asked(kSwitch), "");
}

TEST_F(SigningUp, programIsCalledByItsPath)
{
    // A shell as the program runs its first argument, a script that records all arguments.
    fs::remove(kRegister);
    fs::create_symlink("/usr/bin/sh", kRegister);
    ASSERT_EQ(::chdir("/stubs"), 0);
    root::writeFile("/stubs/registerUser", "cat /proc/$$/cmdline >/stubs/vector\n");
    ask("anna\nb\nc\n");
    expectAnswer(done(), {});
    EXPECT_EQ(root::readFile("/stubs/vector"),
              std::string("/usr/bin/ractl\0registerUser\0anna\0b\n\0c\n\0", 39));
}

TEST_F(SigningUp, anyStatusExceptZeroIsARefusal)
{
    for (const int status : {1, 2, 3, 126, 127, 128, 130, 255}) {
        place(kRegister, "exit " + std::to_string(status));
        ask(kAnna);
        expectError(1, {});
        EXPECT_EQ(asked(kRegister), registration("anna", "anna@example.org\n", "secret\n"));
    }
}

TEST_F(SigningUp, programThatIsKilledIsAFailure)
{
    for (const int signal : kSignals) {
        place(kRegister, dieBy(signal));
        ask(kAnna);
        expectError(3, {});
        EXPECT_EQ(asked(kRegister), registration("anna", "anna@example.org\n", "secret\n"));
    }
}

TEST_F(SigningUp, programThatCannotBeStartedRefuses)
{
    for (const auto& arrange : kUnstartable) {
        place(kRegister, "exit 0");
        arrange(kRegister);
        ask(kAnna);
        expectError(1, {});
        expectNoProgram();
        fs::remove(kRegister);
    }
    // It is not run as a shell script.
    root::writeFile(kRegister, "exit 0\n");
    fs::permissions(kRegister, fs::perms(0755));
    ask(kAnna);
    expectError(1, {});
}

TEST_F(SigningUp, processThatCannotBeCreatedIsAFailure)
{
    ask(kAnna);
    const faults::Guard noProcess = faults::failFork();
    expectError(3, {});
    expectNoProgram();
}

TEST_F(SigningUp, childReapedElsewhereIsAFailure)
{
    std::signal(SIGCHLD, SIG_IGN);
    ask(kAnna);
    expectError(3, {});
    EXPECT_EQ(asked(kRegister), registration("anna", "anna@example.org\n", "secret\n"));
}

TEST_F(SigningUp, programEndsBeforeTheAnswer)
{
    place(kRegister, "sleep 0.2; wc -c </tmp/outbuf7 >/stubs/early; exit 0");
    ask(kAnna);
    expectAnswer(done(), {});
    EXPECT_EQ(root::readFile("/stubs/early"), "0\n");
}

TEST_F(SigningUp, textsOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string text(size, 'n');
        ask(text + "\nb\nc\n");
        expectRegistered(text, "b\n", "c\n");
        ask("a\n" + text + "\nc\n");
        expectRegistered("a", text + "\n", "c\n");
        ask("a\nb\n" + text + "\n");
        expectRegistered("a", "b\n", text + "\n");
    }
    const std::string piece(254, 'n');
    ask(std::string(4000, 'n') + "\n");
    expectRegistered(piece, piece, piece);
    EXPECT_EQ(request::unread(), std::string(4000 - 3 * 254, 'n'));
}

TEST_F(SigningUp, restOfALongLineIsTheNextLine)
{
    for (std::size_t size = 253; size <= 257; ++size) {
        SCOPED_TRACE(size);
        const std::string text = std::string(size - 1, 'n') + "\n";
        const std::string start = text.substr(0, 254);
        const bool isWhole = size <= 254;
        const std::string rest = isWhole ? "" : text.substr(254);

        ask(text + "b\nc\n");
        if (isWhole) {
            expectRegistered(withoutNewline(text), "b\n", "c\n");
        } else {
            expectRegistered(start, rest, "b\n");
        }
        EXPECT_EQ(request::unread(), isWhole ? "" : "c");
        ask("a\n" + text + "c\n");
        expectRegistered("a", start, isWhole ? "c\n" : rest);
        EXPECT_EQ(request::unread(), isWhole ? "" : "c");
        ask("a\nb\n" + text + "more\n");
        expectRegistered("a", "b\n", start);
        EXPECT_EQ(request::unread(), rest + "more");
    }
}

TEST_F(SigningUp, textsReachTheProgramUnchanged)
{
    for (const std::string& text : kOddTexts) {
        ask(text + "\n" + text + "\n" + text + "\n");
        expectRegistered(text, text + "\n", text + "\n");
    }
}

TEST_F(SigningUp, linesThatAreMissingAreEmpty)
{
    ask("");
    expectRegistered("", "", "");
    ask("anna\n");
    expectRegistered("anna", "", "");
    ask("anna\nb\n");
    expectRegistered("anna", "b\n", "");
    ask("\n\n\n");
    expectRegistered("", "\n", "\n");
}

TEST_F(SigningUp, linesNeedNoNewline)
{
    ask("anna\nb\nc");
    expectRegistered("anna", "b\n", "c");
    ask("anna");
    expectRegistered("anna", "", "");
    load(filledFrame("warp", 3, "anna\nb\nc"));
    expectRegistered("anna", "b\n", "c");
    load(filledFrame("warp", 3, "anna\nb\nc\n"));
    expectRegistered("anna", "b\n", "c\n");
}

TEST_F(SigningUp, zeroByteEndsAText)
{
    ask(std::string("an\0na\nb\0b\nc\0c\n", 14));
    expectRegistered("an", "b", "c");
    ask(std::string("\0anna\n\0b\n\0\n", 11));
    expectRegistered("", "", "");
}

TEST_F(SigningUp, lineAfterTheEndOfTheRequestIsAFailure)
{
    for (const std::string end : {"", "anna\n", "anna", "anna\nb\n", "anna\nb"}) {
        SCOPED_TRACE(end);
        load(filledFrame("warp", 3, end));
        expectError(3, {});
        expectNoProgram();
    }
}

TEST_F(SigningUp, aFourthLineIsNotRead)
{
    ask(kAnna + "more\n");
    expectRegistered("anna", "anna@example.org\n", "secret\n");
    EXPECT_EQ(request::unread(), "more");
}

// ---- wasu -------------------------------------------------------------------------------------

class Switching : public RemoteAccess {
  protected:
    static std::string done() { return {"wasu \0\n\0\n", 9}; }

    static Lines named(const std::string& user, const std::string& first)
    {
        return {trace("wasu " + user + " " + first)};
    }

    static Lines annaNamed() { return named("anna", "anna@example.org"); }

    void ask(const std::string& parameters) { load(frame("wasu", 4, parameters)); }

    void askForAnna(char flag)
    {
        ask("anna\nanna@example.org\nsecret\n" + std::string(1, flag) + "\n");
    }

    void expectRegistered(const std::string& user, const std::string& first,
                          const std::string& second)
    {
        expectAnswer(done(), join({named(user, first), {trace("wasu success")}}));
        EXPECT_EQ(asked(kRegister), registration(user, first, second));
        EXPECT_EQ(asked(kSwitch), "");
    }

    static void expectAnnaRegistered()
    {
        EXPECT_EQ(asked(kRegister), registration("anna", "anna@example.org", "secret"));
        EXPECT_EQ(asked(kSwitch), "");
    }

    /// The request is refused for how it is written.
    void expectMalformed(const std::string& request)
    {
        SCOPED_TRACE(request);
        load(request);
        expectError(3, {});
        expectNoProgram();
    }
};

TEST_F(Switching, onRegistersTheUserWithoutNewlines)
{
    ask("anna\nanna@example.org\nsecret\n\1\n");
    expectAnswer(std::string("wasu \0\n\0\n", 9),
                 {trace("wasu anna anna@example.org"), trace("wasu success")});
    EXPECT_EQ(asked(kRegister), "<registerUser><anna><anna@example.org><secret>");
    EXPECT_EQ(asked(kSwitch), "");
}

TEST_F(Switching, programIsCalledByItsPath)
{
    // A shell as the program runs its first argument, a script that records all arguments.
    fs::remove(kRegister);
    fs::create_symlink("/usr/bin/sh", kRegister);
    ASSERT_EQ(::chdir("/stubs"), 0);
    root::writeFile("/stubs/registerUser", "cat /proc/$$/cmdline >/stubs/vector\n");
    ask("anna\nb\nc\n\1\n");
    expectAnswer(done(), {trace("wasu anna b"), trace("wasu success")});
    EXPECT_EQ(root::readFile("/stubs/vector"),
              std::string("/usr/bin/ractl\0registerUser\0anna\0b\0c\0", 37));
}

TEST_F(Switching, anyStatusExceptZeroIsARefusalToSwitchOn)
{
    for (const int status : {1, 2, 3, 126, 127, 128, 130, 255}) {
        const std::string text = std::to_string(status);
        place(kRegister, "exit " + text);
        askForAnna('\1');
        expectError(1,
                    join({annaNamed(), {trace("wasu /usr/bin/ractl exits with status " + text)}}));
        expectAnnaRegistered();
    }
}

TEST_F(Switching, programThatIsKilledDoesNotSwitchOn)
{
    for (const int signal : kSignals) {
        place(kRegister, dieBy(signal));
        askForAnna('\1');
        expectError(3, join({annaNamed(), {trace("wasu /usr/bin/ractl did not exit cleanly")}}));
        expectAnnaRegistered();
    }
}

TEST_F(Switching, programThatCannotBeStartedIsTracedByTheChild)
{
    const Lines calls = join({annaNamed(),
                              {trace("execl /usr/bin/ractl failed!"),
                               trace("wasu /usr/bin/ractl exits with status 127")}});
    for (const auto& arrange : kUnstartable) {
        place(kRegister, "exit 0");
        arrange(kRegister);
        askForAnna('\1');
        expectError(1, calls);
        expectNoProgram();
        fs::remove(kRegister);
    }
    root::writeFile(kRegister, "exit 0\n");
    fs::permissions(kRegister, fs::perms(0755));
    askForAnna('\1');
    expectError(1, calls);
    EXPECT_EQ(root::readFile(root::kTraceFile).substr(0, 15), "cmd=75736177 \np")
        << "the child goes on with the parent's traces";
}

TEST_F(Switching, processThatCannotBeCreatedDoesNotSwitchOn)
{
    askForAnna('\1');
    const faults::Guard noProcess = faults::failFork();
    expectError(3, annaNamed());
    expectNoProgram();
}

TEST_F(Switching, childReapedElsewhereDoesNotSwitchOn)
{
    std::signal(SIGCHLD, SIG_IGN);
    askForAnna('\1');
    expectError(3, join({annaNamed(), {trace("wasu waitpid No child processes")}}));
    expectAnnaRegistered();
}

TEST_F(Switching, programEndsBeforeOnIsAnswered)
{
    place(kRegister, "sleep 0.2; wc -c </tmp/outbuf7 >/stubs/early; exit 0");
    askForAnna('\1');
    expectAnswer(done(), join({annaNamed(), {trace("wasu success")}}));
    EXPECT_EQ(root::readFile("/stubs/early"), "0\n");
}

TEST_F(Switching, onIsAnsweredBeforeItsSuccessIsTraced)
{
    askForAnna('\1');
    long answered = 0;
    watch::after("echo \"wasu success", [&] { answered = std::ftell(fout_buf); });
    expectAnswer(done(), join({annaNamed(), {trace("wasu success")}}));
    EXPECT_EQ(answered, static_cast<long>(done().size()));
}

TEST_F(Switching, everyTraceReachesTheFile)
{
    fs::remove(kRegister);
    askForAnna('\1');
    expectError(1, join({annaNamed(),
                         {trace("execl /usr/bin/ractl failed!"),
                          trace("wasu /usr/bin/ractl exits with status 127")}}));
    EXPECT_EQ(root::readFile(root::kTraceFile),
              "cmd=75736177 \nparam_count=4\nwasu anna anna@example.org\n"
              "execl /usr/bin/ractl failed!\nwasu /usr/bin/ractl exits with status 127\n"
              "exiting with error 0x00000001\n");
}

// ---- wasu: off --------------------------------------------------------------------------------

class SwitchingOff : public Switching {
  protected:
    /// The line for a user, as it is cut.
    static std::string line(const std::string& user)
    {
        return (kSwitch + " set \"" + user + "\" off").substr(0, 255);
    }

    /// The calls up to the line.
    static Lines lineCalls(const std::string& user)
    {
        return join({named(user, "b"), {trace("wasu system " + line(user)), line(user)}});
    }

    static Lines offCalls(const std::string& user, int status)
    {
        return join(
            {lineCalls(user), {trace("wasu exited with status " + std::to_string(status))}});
    }

    void askFor(const std::string& user) { ask(user + "\nb\nc\n" + std::string("\0\n", 2)); }
};

TEST_F(SwitchingOff, offRunsOnlyTheSwitchProgram)
{
    ask(std::string("anna\nb\nc\n\0\n", 11));
    expectAnswer(std::string("wasu \0\n\0\n", 9),
                 {trace("wasu anna b"), trace("wasu system /usr/bin/ra-enabled set \"anna\" off"),
                  "/usr/bin/ra-enabled set \"anna\" off", trace("wasu exited with status 0")});
    EXPECT_EQ(asked(kSwitch), "<set><anna><off>");
    EXPECT_EQ(asked(kRegister), "");
}

TEST_F(SwitchingOff, everyStatusHasItsError)
{
    const std::vector<std::pair<int, std::uint32_t>> statuses = {
        {1, 3}, {2, 1}, {3, 3}, {4, 3}, {126, 3}, {127, 3}, {128, 3}, {130, 3}, {255, 3}};
    for (const auto& [status, code] : statuses) {
        place(kSwitch, "exit " + std::to_string(status));
        askFor("anna");
        expectError(code, offCalls("anna", status));
        EXPECT_EQ(asked(kSwitch), "<set><anna><off>");
    }
}

TEST_F(SwitchingOff, programThatIsKilledDidNotExit)
{
    for (const int result : {1, 9, 15, 11 | 0x80}) {
        askFor("anna");
        watch::answer(kSwitch, result, 0);
        expectError(3, join({lineCalls("anna"), {trace("wasu did not exit cleanly")}}));
    }
    place(kSwitch, dieBy(SIGKILL));
    askFor("anna");
    EXPECT_EQ(request::run().answer, "erro " + le32(3));
    EXPECT_EQ(asked(kSwitch), "<set><anna><off>");
}

TEST_F(SwitchingOff, shellThatCannotStartDidNotExit)
{
    const Lines calls = join({lineCalls("anna"), {trace("wasu did not exit cleanly")}});
    for (const int error : {EAGAIN, ECHILD, ENOMEM, 0}) {
        askFor("anna");
        watch::answer(kSwitch, -1, error);
        expectError(3, calls);
        expectNoProgram();
    }
    std::signal(SIGCHLD, SIG_IGN);
    askFor("anna");
    expectError(3, calls);
    EXPECT_EQ(asked(kSwitch), "<set><anna><off>");
}

TEST_F(SwitchingOff, programThatCannotBeStartedIsAFailure)
{
    place(kSwitch, "exit 0");
    fs::remove(kSwitch);
    askFor("anna");
    expectError(3, offCalls("anna", 127));
    place(kSwitch, "exit 0");
    fs::permissions(kSwitch, fs::perms(0644));
    askFor("anna");
    expectError(3, offCalls("anna", 126));
    expectNoProgram();
}

TEST_F(SwitchingOff, usersOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string user(size, 'n');
        askFor(user);
        expectAnswer(done(), offCalls(user, 0));
        EXPECT_EQ(asked(kSwitch), "<set><" + user + "><off>");
    }
}

TEST_F(SwitchingOff, lineForTheShellIsCutAt255Characters)
{
    watch::mayBeStrange("/usr/bin/ra-enabled");
    const Lines ends = {"<off>", "<off>", "<of>", "<o>", "", ""};
    for (std::size_t i = 0; i < ends.size(); ++i) {
        const std::string user(224 + i, 'n');
        askFor(user);
        expectAnswer(done(), offCalls(user, 0));
        EXPECT_EQ(asked(kSwitch), "<set><" + user + ">" + ends[i]);
    }
    EXPECT_EQ(line(std::string(225, 'n')).size(), 255U);
    EXPECT_EQ(line(std::string(225, 'n')).substr(251), " off");
    // From this size on the quote stays open, and the shell refuses the line with status 2.
    for (const std::size_t size : {230U, 231U, 254U}) {
        const std::string user(size, 'n');
        const std::string cut = kSwitch + " set \"" + std::string(230, 'n');
        askFor(user);
        expectError(1, {trace("wasu " + user + " b"), trace("wasu system " + cut), cut,
                        trace("wasu exited with status 2")});
        expectNoProgram();
    }
}

TEST_F(SwitchingOff, userIsBetweenDoubleQuotesUnchanged)
{
    watch::mayBeStrange("/usr/bin/ra-enabled");
    const std::vector<std::pair<std::string, std::string>> users = {
        {"\xC3\xA9lise \xE6\x97\xA5", "<\xC3\xA9lise \xE6\x97\xA5>"},
        {"O'Brien", "<O'Brien>"},
        {"%s%n%d", "<%s%n%d>"},
        {"$HOME", "</root>"},
        {"`echo x`", "<x>"},
        {" blanks ", "< blanks >"},
        {"a\" \"b", "<a><b>"},
        {"\"\"", "<>"},
        {"cr\r", "<cr\r>"},
        {"\xFF\x80", "<\xFF\x80>"},
    };
    for (const auto& [user, arguments] : users) {
        askFor(user);
        expectAnswer(done(), offCalls(user, 0));
        EXPECT_EQ(asked(kSwitch), "<set>" + arguments + "<off>");
    }
    for (const std::string user : {"\"", "a\"b", "ends in \\"}) {
        askFor(user);
        expectError(1, offCalls(user, 2));
        expectNoProgram();
    }
}

TEST_F(SwitchingOff, quotesOfTheLineEndTheQuotesOfItsTrace)
{
    askFor("a;true b");
    expectPrinted("wasu system /usr/bin/ra-enabled set a\n");
    expectAnswer(done(), offCalls("a;true b", 0));
    EXPECT_EQ(asked(kSwitch), "<set><a;true b><off>");
}

TEST_F(SwitchingOff, offForksNoProcess)
{
    const faults::Guard noProcess = faults::failFork();
    askFor("anna");
    expectAnswer(done(), offCalls("anna", 0));
}

// ---- wasu: the request ------------------------------------------------------------------------

TEST_F(Switching, anyOtherFlagIsNotAnswered)
{
    for (const char flag : {'\2', '\3', '\n', '0', '1', '\x7F', '\x80', '\x81', '\xFF'}) {
        askForAnna(flag);
        expectAnswer("", annaNamed());
        expectNoProgram();
    }
}

TEST_F(Switching, textsOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string text(size, 'n');
        ask(text + "\nb\nc\n\1\n");
        expectRegistered(text, "b", "c");
        ask("a\n" + text + "\nc\n\1\n");
        expectRegistered("a", text, "c");
        ask("a\nb\n" + text + "\n\1\n");
        expectRegistered("a", "b", text);
    }
    const std::string piece(255, 'n');
    ask(piece + piece + piece + "\1\n");
    expectRegistered(piece, piece, piece);
    expectMalformed(frame("wasu", 4, std::string(4000, 'n') + "\nb\nc\n\1\n"));
}

TEST_F(Switching, restOfALongLineIsTheNextLine)
{
    for (std::size_t size = 253; size <= 257; ++size) {
        SCOPED_TRACE(size);
        const std::string text = std::string(size - 1, 'n') + "\n";
        const std::string start = withoutNewline(text.substr(0, 255));
        const bool isWhole = size <= 255;
        const std::string rest = isWhole ? "" : withoutNewline(text.substr(255));

        ask(text + "b\n" + (isWhole ? "c\n" : "") + "\1\n");
        if (isWhole) {
            expectRegistered(start, "b", "c");
        } else {
            expectRegistered(start, rest, "b");
        }
        ask("a\n" + text + (isWhole ? "c\n" : "") + "\1\n");
        expectRegistered("a", start, isWhole ? "c" : rest);
    }
}

TEST_F(Switching, restOfALongLastLineIsTheFlag)
{
    const std::string text(255, 'n');
    ask("a\nb\n" + text + "\1\n");
    expectRegistered("a", "b", text);
    // The flag is the newline, and the byte after it is no newline.
    expectMalformed(frame("wasu", 4, "a\nb\n" + text + "\n\1\n"));
    expectMalformed(frame("wasu", 4, "a\nb\n" + text + "nn\n\1\n"));
    ask("a\nb\n" + text + "n\n\1\n");
    expectAnswer("", named("a", "b"));
    EXPECT_EQ(request::unread(), "\1");
}

TEST_F(Switching, restOfALongFirstLineMovesTheFlag)
{
    ask(std::string(256, 'n') + "\nb\nc\n\1\n");
    expectAnswer("", named(std::string(255, 'n'), "n"));
    EXPECT_EQ(request::unread(), "\1");
    expectNoProgram();
}

TEST_F(Switching, textsReachTheProgramUnchanged)
{
    for (const std::string& text : kOddTexts) {
        ask(text + "\n" + text + "\n" + text + "\n\1\n");
        expectRegistered(text, text, text);
    }
}

TEST_F(Switching, zeroByteEndsAText)
{
    ask(std::string("an\0na\nb\0b\nc\0c\n\1\n", 16));
    expectRegistered("an", "b", "c");
    ask(std::string("\0anna\n\0b\n\0\n\1\n", 13));
    expectRegistered("", "", "");
}

TEST_F(Switching, flagWithoutItsNewlineIsMalformed)
{
    const std::string texts = "anna\nb\nc\n";
    for (const std::string flag : {"", "\1", "\1\r\n", "\1\1\n", "1 \n", "\1 "}) {
        expectMalformed(frame("wasu", 4, texts + flag));
    }
    expectMalformed(frame("wasu", 4, texts + std::string("\0\0\n", 3)));
}

TEST_F(Switching, lineThatIsMissingIsMalformed)
{
    for (const std::string parameters : {"", "\1\n", "anna\n\1\n", "anna\nb\n\1\n", "anna\nb\nc"}) {
        expectMalformed(frame("wasu", 4, parameters));
    }
}

TEST_F(Switching, parametersAfterTheEndOfTheRequestAreMalformed)
{
    for (const std::string end : {"", "anna\n", "anna", "anna\nb\n", "anna\nb", "anna\nb\nc\n",
                                  "anna\nb\nc", "anna\nb\nc\n\1"}) {
        expectMalformed(filledFrame("wasu", 4, end));
    }
}

TEST_F(Switching, requestMayFillTheBufferToItsEnd)
{
    load(filledFrame("wasu", 4, "anna\nb\nc\n\1\n"));
    expectRegistered("anna", "b", "c");
}

TEST_F(Switching, nothingAfterTheFlagIsRead)
{
    ask("anna\nb\nc\n\1\nmore\n");
    expectRegistered("anna", "b", "c");
    EXPECT_EQ(request::unread(), "more");
}

// ---- Processes --------------------------------------------------------------------------------

/// Both commands that start the register program.
class Children : public Switching, public testing::WithParamInterface<const char*> {
  protected:
    static bool isSwitch() { return GetParam() == std::string("wasu"); }

    void askForAnna()
    {
        load(isSwitch() ? frame("wasu", 4, "anna\nb\nc\n\1\n") : frame("warp", 3, "anna\nb\nc\n"));
    }

    static std::string done() { return GetParam() + std::string(" \0\n\0\n", 5); }

    /// The calls of a command whose program cannot be started.
    static Lines unstartedCalls()
    {
        return isSwitch() ? Lines{trace("wasu anna b"), trace("execl /usr/bin/ractl failed!"),
                                  trace("wasu /usr/bin/ractl exits with status 127")}
                          : Lines{};
    }
};

TEST_P(Children, childFlushesNothingOfItsParent)
{
    fs::remove(kRegister);
    std::FILE* other = std::fopen("/stubs/other", "w");
    ASSERT_NE(other, nullptr);
    std::fputs("other", other);
    askForAnna();
    const faults::Guard earlier = faults::beforeFork([] {
        std::fputs("answer", fout_buf);
        std::fputs("page", stdout);
    });
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.printed, "page");
    EXPECT_EQ(outcome.answer, "answererro " + le32(1));
    EXPECT_EQ(
        outcome.calls,
        join({request::opening(GetParam(), isSwitch() ? 4 : 3), unstartedCalls(), {exitTrace(1)}}));
    std::fclose(other);
    EXPECT_EQ(root::readFile("/stubs/other"), "other");
}

TEST_P(Children, childRunsNoExitHandlerOfItsParent)
{
    static pid_t parent = 0;
    parent = ::getpid();
    ASSERT_EQ(std::atexit([] {
                  if (::getpid() != parent) {
                      root::writeFile("/stubs/left", "by a child");
                  }
              }),
              0);
    fs::remove(kRegister);
    askForAnna();
    expectError(1, unstartedCalls());
    EXPECT_FALSE(root::exists("/stubs/left"));
}

TEST_P(Children, programHoldsNoFileOfTheRequestOpen)
{
    place(kRegister, "ls -l /proc/$$/fd >/stubs/open; exit 0");
    askForAnna();
    EXPECT_EQ(request::run().answer, done());
    const std::string open = root::readFile("/stubs/open");
    EXPECT_NE(open, "");
    EXPECT_EQ(open.find("outbuf"), std::string::npos) << open;
    EXPECT_EQ(open.find("vokcontrol.tmp"), std::string::npos) << open;
}

TEST_P(Children, otherChildrenAreNotWaitedFor)
{
    for (const bool isForked : {true, false}) {
        const pid_t other = ::fork();
        if (other == 0) {
            ::_exit(42);
        }
        siginfo_t ended;
        ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(other), &ended, WEXITED | WNOWAIT), 0);
        askForAnna();
        faults::Guard noProcess;
        if (!isForked) {
            noProcess = faults::failFork();
        }
        EXPECT_EQ(request::run().answer, isForked ? done() : "erro " + le32(3));
        int status = 0;
        EXPECT_EQ(::waitpid(other, &status, 0), other);
        EXPECT_EQ(status, 42 << 8);
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nobody else is left";
    }
}

TEST_P(Children, signalDoesNotEndTheWait)
{
    static volatile std::sig_atomic_t signals = 0;
    signals = 0;
    // The handler stays: a signal may come after a wait that ended early. A started program does
    // not inherit it.
    struct sigaction counting = {};
    counting.sa_handler = [](int) { signals = signals + 1; };
    ::sigaction(SIGUSR1, &counting, nullptr);
    place(kRegister, "sleep 0.1; kill -USR1 $PPID; sleep 0.1; kill -USR1 $PPID; sleep 0.1");
    askForAnna();
    EXPECT_EQ(request::run().answer, done());
    EXPECT_EQ(signals, 2);
}

TEST_P(Children, childrenOfTheProgramKeepRunning)
{
    place(kRegister, "sleep 30 >/dev/null 2>&1 & echo $! >/stubs/grandchild; exit 0");
    askForAnna();
    EXPECT_EQ(request::run().answer, done());
    const pid_t grandchild = std::stoi(root::readFile("/stubs/grandchild"));
    EXPECT_EQ(::kill(grandchild, SIGTERM), 0);
}

INSTANTIATE_TEST_SUITE_P(RemoteAccess, Children, testing::Values("warp", "wasu"));

} // namespace
