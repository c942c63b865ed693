// SPDX-License-Identifier: MIT
#include "handlers/user_creation.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

#include "tests/support/creation.h"
#include "tests/support/faults.h"

namespace fs = std::filesystem;

namespace {

using creation::asked;
using creation::kSizes;
using creation::Lines;
using creation::stubScripts;
using creation::Trouble;
using creation::userFetch;
using creation::userList;
using creation::userLookup;
using request::Failure;
using request::frame;
using request::kFailed;
using request::kFailures;
using request::kGood;
using request::kMalformed;
using request::kNoMemory;
using root::cutTrace;
using root::join;
using root::kOddTexts;
using root::kReserved;
using root::pid;
using root::trace;
using root::upper;

const std::string kUserScript = "sudo /usr/bin/php /etc/inc/api_user.php ";
const std::string kAdd = kUserScript + "tovAddUser ";

constexpr std::uint32_t kTaken = 0x10000001;
constexpr std::uint32_t kNameTooLong = 0x10000002;
constexpr std::uint32_t kPasswordTooLong = 0x10000003;
constexpr std::uint32_t kNotCreated = 0x10000005;

std::string askedFor(const std::string& name, const std::string& password)
{
    return "<tovAddUser><" + name + "><" + password + ">";
}

// ---- Calls ------------------------------------------------------------------------------------

/// The traces of a name and of each of its bytes.
Lines named(const std::string& name)
{
    Lines calls = {cutTrace("cmd_crat() username=" + name)};
    for (const char c : name) {
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), "0x%02X %c", static_cast<unsigned char>(c), c);
        calls.push_back(trace(text.data()));
    }
    return calls;
}

Lines passwordRead(const std::string& password)
{
    return {cutTrace("password=" + password)};
}

Lines adding(const std::string& name, const std::string& password, int result = 0)
{
    const std::string line = kAdd + "'" + name + "' '" + password + "'";
    Lines calls = {line, trace("create_user: " + line + " -- iRet:" + std::to_string(result))};
    if (result != 0) {
        calls.push_back(trace("cannot create user " + name));
    }
    return calls;
}

// ---- Requests ---------------------------------------------------------------------------------

class NewUser : public creation::Test {
  protected:
    static void ask(const std::string& name, const std::string& password)
    {
        load(frame("crat", 2, name + "\n" + password + "\n"));
    }

    static void expectAdded(const std::string& name, const std::string& password,
                            const Lines& users = {"anna"})
    {
        expectEnd(kGood, join({free(name, users), passwordRead(password), adding(name, password)}));
        EXPECT_EQ(asked(), askedFor(name, password));
    }

    static void expectRefused(std::uint32_t code, const Lines& calls)
    {
        expectEnd(code, calls);
        EXPECT_EQ(asked(), "");
    }

    /// The calls up to a free name.
    static Lines free(const std::string& name, const Lines& users = {"anna"})
    {
        return join({named(name), userLookup(users, name, 0)});
    }
};

TEST_F(NewUser, userIsAdded)
{
    ask("bob", "secret");
    expectAdded("bob", "secret");
}

TEST_F(NewUser, everyTraceReachesTheFileIncludingThePassword)
{
    ask("bob", "secret");
    expectAdded("bob", "secret");
    const std::string traces = root::readFile(root::kTraceFile);
    EXPECT_NE(traces.find("\ncmd_crat() username=bob\n0x62 b\n0x6F o\n0x62 b\nfile "),
              std::string::npos);
    EXPECT_NE(traces.find("\npassword=secret\ncreate_user: " + kAdd + "'bob' 'secret' -- iRet:0\n"),
              std::string::npos);
}

TEST_F(NewUser, aThirdLineIsNotRead)
{
    load(frame("crat", 2, "bob\nsecret\nmore\n"));
    expectAdded("bob", "secret");
    EXPECT_EQ(request::unread(), "more");
}

// ---- The name ---------------------------------------------------------------------------------

TEST_F(NewUser, nameWithoutItsNewlineIsMalformed)
{
    for (const std::string& text : {std::string(), std::string("bob"), std::string(4000, 'n'),
                                    std::string("bo\0b\nsecret\n", 12), std::string("\0\n", 2)}) {
        load(frame("crat", 2, text));
        expectRefused(kMalformed, {});
    }
}

TEST_F(NewUser, everyByteOfTheNameIsTraced)
{
    ask("\xC3\xA9 a\x7F\x01", "p");
    const Lines bytes = {trace("0xC3 \xC3"), trace("0xA9 \xA9"), trace("0x20  "),
                         trace("0x61 a"),    trace("0x7F \x7F"), trace("0x01 \x01")};
    expectEnd(kGood, join({{trace("cmd_crat() username=\xC3\xA9 a\x7F\x01")},
                           bytes,
                           userLookup({"anna"}, "\xC3\xA9 a\x7F\x01", 0),
                           passwordRead("p"),
                           adding("\xC3\xA9 a\x7F\x01", "p")}));
}

TEST_F(NewUser, namesOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string name(size, 'n');
        ask(name, "secret");
        for (std::size_t i = 0; i < size && size > 100; ++i) {
            // This many shells would take too long.
            watch::answer("echo \"0x", 0, 0);
        }
        if (size <= 32) {
            expectAdded(name, "secret");
        } else {
            expectRefused(kNameTooLong, named(name));
        }
    }
}

TEST_F(NewUser, charactersOfANameAreBytes)
{
    std::string name;
    for (int i = 0; i < 16; ++i) {
        name += "\xC3\xA9";
    }
    ask(name, "secret");
    expectAdded(name, "secret");
    ask(name + "n", "secret");
    expectRefused(kNameTooLong, named(name + "n"));
}

TEST_F(NewUser, emptyNameIsLookedUpLikeAnyOther)
{
    stubScripts({}, {""});
    ask("", "secret");
    expectRefused(kTaken, join({named(""), userLookup({""}, "", 1)}));
}

TEST_F(NewUser, oddNamesReachTheScriptUnchanged)
{
    for (const std::string& name : kOddTexts) {
        ask(name, "secret");
        expectAdded(name, "secret");
    }
}

TEST_F(NewUser, shellInterpretsSingleQuotes)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_user.php tovAddUser");
    ask("O'Brien", "secret");
    expectRefused(kNotCreated, join({free("O'Brien"), passwordRead("secret"),
                                     adding("O'Brien", "secret", 0x200)}));
    ask("bob", "it's");
    expectRefused(kNotCreated,
                  join({free("bob"), passwordRead("it's"), adding("bob", "it's", 0x200)}));
    ask("a' 'b", "secret");
    expectEnd(kGood, join({free("a' 'b"), passwordRead("secret"), adding("a' 'b", "secret")}));
    EXPECT_EQ(asked(), "<tovAddUser><a><b><secret>");
}

TEST_F(NewUser, takenNameIsRefusedBeforeThePasswordIsRead)
{
    for (const std::string name : {"anna", "guest"}) {
        load(frame("crat", 2, name + "\nsecret\n"));
        expectRefused(kTaken, join({named(name), userLookup({"anna"}, name, 1)}));
        EXPECT_EQ(request::unread(), "secret");
        load(frame("crat", 2, name + "\n"));
        expectRefused(kTaken, join({named(name), userLookup({"anna"}, name, 1)}));
    }
}

TEST_F(NewUser, similarNamesAreFree)
{
    for (const std::string name : {"Anna", "ann", "nna", "anna2", "GUEST"}) {
        ask(name, "secret");
        expectAdded(name, "secret");
    }
}

TEST_F(NewUser, nameThatIsTooLongAndTakenIsTooLong)
{
    const std::string name(33, 'n');
    stubScripts({}, {name});
    ask(name, "secret");
    expectRefused(kNameTooLong, named(name));
}

TEST_F(NewUser, reservedNameIsRefusedInBothCasesBeforeThePasswordIsRead)
{
    for (const std::string& reserved : kReserved) {
        for (const std::string& name : {reserved, upper(reserved)}) {
            load(frame("crat", 2, name + "\nsecret\n"));
            expectRefused(kTaken, free(name));
            EXPECT_EQ(request::unread(), "secret");
        }
    }
    for (const std::string name : {"Config", "LOST+FOUND"}) {
        load(frame("crat", 2, name + "\n"));
        expectRefused(kTaken, free(name));
    }
}

// ---- The search for the name ------------------------------------------------------------------

/// Every way in which the search for a name fails. The only user is anna.
std::vector<Trouble> troubles()
{
    const std::string name = "isUserExisted" + pid();
    const std::string list = "/tmp/work/" + name;
    const std::string answer = list + pid();
    const std::string names = answer + "2";
    const Lines fetch = userFetch();
    const Lines sized = userList({"anna"});
    const std::string again = ") --  error: 11(Resource temporarily unavailable) -- ";
    const std::string reaped = ") --  error: 10(No child processes) -- ";
    const std::string unopened = "isUserExisted() cannot open file " + name + ": ";
    const std::string nothing = trace("isUserExisted() iRet:-1");
    const std::string sizeOfList = "echo \"file " + name;

    return {
        // The script, and the search in its output.
        {[=] { watch::answer(kUserScript, -1, EAGAIN); },
         {fetch[0], trace("system(" + fetch[0] + again)},
         {}},
        {[=] { watch::answer(kUserScript, -1, ECHILD); },
         {fetch[0], trace("system(" + fetch[0] + reaped)},
         {}},
        {[=] { watch::answer("cat ", -1, EAGAIN); },
         join({fetch, {trace("system(" + fetch[1] + again)}}),
         {answer}},
        {[=] { watch::answer("cat ", -1, ECHILD); },
         join({fetch, {trace("system(" + fetch[1] + reaped)}}),
         {answer}},
        // The names that were found.
        {[=] { watch::after("cat ", [=] { fs::remove(names); }); }, fetch, {list, answer}},
        {[=] { watch::after("cat ", [=] { fs::permissions(names, fs::perms(0)); }); },
         fetch,
         {list, answer, names}},
        // The list made from the names.
        {[=] { fs::create_directory(list); }, fetch, {list, answer, names}},
        {[=] { watch::after("cat ", [=] { fs::create_symlink(answer, list); }); },
         join(
             {fetch,
              {trace("isUserExisted() cannot stat file " + name + ": No such file or directory")}}),
         {list}},
        {[=] { watch::after("cat ", [=] { fs::create_symlink("/dev/null", list); }); },
         join({fetch, {nothing}}),
         {}},
        {[=] { watch::after(sizeOfList, [=] { fs::permissions(list, fs::perms(0)); }); },
         join({sized, {trace(unopened + "Permission denied")}}),
         {list}},
        {[=] { watch::after(sizeOfList, [=] { fs::remove(list); }); },
         join({sized, {trace(unopened + "No such file or directory")}}),
         {}},
        {[=] { watch::after(sizeOfList, [=] { fs::resize_file(list, 0); }); },
         join({sized, {nothing}}),
         {}},
        {[=] {
             watch::after(sizeOfList, [=] {
                 fs::remove(list);
                 fs::create_directory(list);
             });
         },
         join({sized, {nothing}}),
         {}},
    };
}

TEST_F(NewUser, searchThatFailsEndsTheCommand)
{
    std::size_t number = 0;
    for (const Trouble& trouble : troubles()) {
        SCOPED_TRACE(++number);
        load(frame("crat", 2, "config\nsecret\n"));
        trouble.arrange();
        expectEnd(kFailed, join({named("config"), trouble.calls}), trouble.left);
        EXPECT_EQ(request::unread(), "secret");
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(NewUser, searchFailsIfItsShellsAreReapedElsewhere)
{
    std::signal(SIGCHLD, SIG_IGN);
    const std::string line = userFetch()[0];
    ask("bob", "secret");
    expectEnd(kFailed,
              join({named("bob"),
                    {line, trace("system(" + line + ") --  error: 10(No child processes) -- ")}}),
              {"/tmp/work/isUserExisted" + pid() + pid()});
}

TEST_F(NewUser, everyNameIsFreeIfTheScriptListsNobody)
{
    for (const std::string action : {"exit 3", ": >\"$3\"", "mkdir \"$3\"", "mkdir \"$3\"2",
                                     "echo >\"$3\"; chmod 000 \"$3\""}) {
        stubScripts({}, {"anna"}, "tovGetUsers) " + action + " ;;");
        ask("anna", "secret");
        expectAdded("anna", "secret", {});
    }
}

// ---- The password -----------------------------------------------------------------------------

TEST_F(NewUser, passwordWithoutItsNewlineIsTracedAndMissing)
{
    for (const std::string& text : {std::string(), std::string("secret"), std::string(4000, 'p')}) {
        load(frame("crat", 2, "bob\n" + text));
        expectRefused(kMalformed, join({free("bob"), {cutTrace("Missing password: " + text)}}));
    }
    load(frame("crat", 2, std::string("bob\nsec\0ret\n", 12)));
    expectRefused(kMalformed, join({free("bob"), {trace("Missing password: sec")}}));
}

TEST_F(NewUser, passwordIsMissingIfTheRequestEndsAfterTheName)
{
    // Nothing is left, not even a zero: the previous line is taken.
    load(request::filledFrame("crat", 2, "bob\n"));
    expectRefused(kMalformed, join({free("bob"), {trace("Missing password: bob")}}));
}

TEST_F(NewUser, passwordMayFillTheRequestToItsEnd)
{
    load(request::filledFrame("crat", 2, "bob\nsecret\n"));
    expectAdded("bob", "secret");
}

TEST_F(NewUser, passwordsOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string password(size, 'p');
        ask("bob", password);
        if (size <= 32) {
            expectAdded("bob", password);
        } else {
            expectRefused(kPasswordTooLong, join({free("bob"), passwordRead(password)}));
        }
    }
}

TEST_F(NewUser, oddPasswordsReachTheScriptUnchanged)
{
    for (const std::string& password : kOddTexts) {
        ask("bob", password);
        expectAdded("bob", password);
    }
}

TEST_F(NewUser, longestNameAndPasswordFitOneLine)
{
    const std::string name(32, 'n');
    const std::string password(32, 'p');
    ask(name, password);
    expectAdded(name, password);
}

// ---- Memory and the script --------------------------------------------------------------------

TEST_F(NewUser, withoutMemoryForTheNameTheCommandFails)
{
    const faults::Guard noMemory = faults::failStrdup();
    ask("bob", "secret");
    expectRefused(kNoMemory, named("bob"));
    ask(std::string(33, 'n'), "secret");
    expectRefused(kNameTooLong, named(std::string(33, 'n')));
}

TEST_F(NewUser, withoutMemoryForThePasswordTheCommandFails)
{
    {
        const faults::Guard noMemory = faults::failStrdup(1);
        ask("bob", "secret");
        expectRefused(kNoMemory, join({free("bob"), passwordRead("secret")}));
    }
    const faults::Guard noMemory = faults::failStrdup(1);
    ask("bob", std::string(33, 'p'));
    expectRefused(kPasswordTooLong, join({free("bob"), passwordRead(std::string(33, 'p'))}));
}

TEST_F(NewUser, scriptThatFailsIsTraced)
{
    for (const Failure& failure : kFailures) {
        stubScripts({}, {"anna"},
                    failure.script.empty() ? "" : "tovAddUser) " + failure.script + " ;;");
        ask("bob", "secret");
        if (failure.script.empty()) {
            watch::answer(kAdd, failure.result, failure.error);
        }
        expectRefused(kNotCreated, join({free("bob"), passwordRead("secret"),
                                         adding("bob", "secret", failure.result)}));
    }
}

TEST_F(NewUser, withoutTheInterpreterNobodyIsListedAndNobodyIsAdded)
{
    fs::remove("/usr/bin/php");
    ask("anna", "secret");
    expectRefused(kNotCreated, join({free("anna", {}), passwordRead("secret"),
                                     adding("anna", "secret", 127 << 8)}));
}

} // namespace
