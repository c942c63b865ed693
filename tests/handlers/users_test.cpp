// SPDX-License-Identifier: MIT
#include "handlers/users.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "tests/support/faults.h"
#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using request::exitTrace;
using request::frame;
using request::kWorkFile;
using request::Lines;
using request::Outcome;
using root::join;
using root::le32;
using root::pid;
using root::sizeTrace;
using root::trace;

/// The two shell lines that fetch the users for a list.
Lines fetchCalls(const std::string& list)
{
    const std::string answer = list + pid();
    return {"sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers " + answer,
            "cat " + answer + " | grep username >  " + answer + "2"};
}

void stubUsers(const std::string& answer)
{
    root::writeFile("/stubs/users", answer);
    root::stub("php", "cat /stubs/users >\"$3\"");
}

std::string userLines(const Lines& names)
{
    std::string answer = "<users>\n";
    for (const std::string& name : names) {
        answer += "  <username>" + name + "</username>\n";
    }
    return answer + "</users>\n";
}

// ---- getUsersList -----------------------------------------------------------------------------

class UsersList : public request::Test {
  protected:
    static void expectList(const std::string& answer, const std::string& list)
    {
        watch::restart();
        stubUsers(answer);
        EXPECT_EQ(getUsersList(kWorkFile.c_str()), 0) << answer;
        EXPECT_EQ(root::readFile(kWorkFile), list) << answer;
        EXPECT_EQ(watch::calls(), fetchCalls(kWorkFile)) << answer;
        EXPECT_EQ(root::list("/tmp"), Lines{"vokcontrol.tmp"});
    }
};

TEST_F(UsersList, guestComesFirstAndOthersInTheirOrder)
{
    expectList(userLines({"bob", "anna"}), "return [\"guest\", \"bob\", \"anna\"];");
}

TEST_F(UsersList, withoutUsersThereIsStillAGuest)
{
    expectList("", "return [\"guest\"];");
    expectList(userLines({}), "return [\"guest\"];");
}

TEST_F(UsersList, onlyLinesWithUsernameCount)
{
    expectList("<name>x</name>\n<USERNAME>y</USERNAME>\n<username>z</username>\n",
               "return [\"guest\", \"z\"];");
}

TEST_F(UsersList, nameIsBetweenTheFirstTags)
{
    expectList("<username>a</b></username>\n", "return [\"guest\", \"a\"];");
    expectList("<username><name>a</name>\n", "return [\"guest\", \"<name>a\"];");
    expectList("username name>b</\n", "return [\"guest\", \"b\"];");
    expectList("username game>a name>b</\n", "return [\"guest\", \"b\"];");
    expectList("<username></username>\n", "return [\"guest\", \"\"];");
    expectList("</x><username>bob</username>\n", "return [\"guest\", \"bob\"];");
}

TEST_F(UsersList, lineWithoutBothTagsIsSkipped)
{
    expectList("<username>a\nusername</x>\n</username name>x\n", "return [\"guest\"];");
}

TEST_F(UsersList, namesAreWrittenUnchanged)
{
    expectList(userLines({"a \"b\"", "\xC3\xA9lise", "guest"}),
               "return [\"guest\", \"a \"b\"\", \"\xC3\xA9lise\", \"guest\"];");
}

TEST_F(UsersList, longLineIsReadInPieces)
{
    const std::string name(490, 'n');
    expectList("<username>" + name + "</username>\n", "return [\"guest\", \"" + name + "\"];");
    expectList("<username>" + std::string(600, 'n') + "</username>\n", "return [\"guest\"];");
}

TEST_F(UsersList, nameOf499CharactersIsListedAndALongerOneIsNot)
{
    const std::string name(499, 'n');
    expectList(userLines({}) + "<username>" + name + "</username>\n",
               "return [\"guest\", \"" + name + "\"];");
    expectList("<username>" + name + "n</username>\n<username>bob</username>\n",
               "return [\"guest\", \"bob\"];");
}

TEST_F(UsersList, failingScriptOrSearchIsNoFailure)
{
    root::stub("php", "cat /stubs/none >\"$3\" 2>/dev/null; exit 1");
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), 0);
    EXPECT_EQ(root::readFile(kWorkFile), "return [\"guest\"];");
}

TEST_F(UsersList, shellThatCannotStartIsTraced)
{
    const Lines fetch = fetchCalls(kWorkFile);
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
    EXPECT_EQ(watch::calls(),
              (Lines{fetch[0], trace("system(" + fetch[0] +
                                     ") --  error: 11(Resource temporarily unavailable) -- ")}));
    watch::restart();
    stubUsers("");
    watch::answer("cat", -1, ENOMEM);
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
    EXPECT_EQ(watch::calls(),
              (Lines{fetch[0], fetch[1],
                     trace("system(" + fetch[1] + ") --  error: 12(Cannot allocate memory) -- ")}));
    EXPECT_FALSE(root::exists(kWorkFile));
}

TEST_F(UsersList, scriptReapedElsewhereIsAFailure)
{
    stubUsers(userLines({"anna"}));
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
    EXPECT_EQ(watch::calls().back(), trace("system(" + fetchCalls(kWorkFile)[0] +
                                           ") --  error: 10(No child processes) -- "));
}

TEST_F(UsersList, listThatCannotBeWrittenIsAFailureWithoutATrace)
{
    stubUsers(userLines({"anna"}));
    std::filesystem::create_directory(kWorkFile);
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
    EXPECT_EQ(watch::calls(), fetchCalls(kWorkFile));
    EXPECT_EQ(root::list("/tmp"),
              (Lines{"vokcontrol.tmp", "vokcontrol.tmp" + pid(), "vokcontrol.tmp" + pid() + "2"}));
}

TEST_F(UsersList, listThatDoesNotFitOnTheDiskIsAFailure)
{
    stubUsers(userLines({"anna"}));
    watch::after("cat", [] { root::fillDisk("/tmp"); });
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
}

TEST_F(UsersList, namesThatAreGoneLeaveAnEmptyList)
{
    stubUsers(userLines({"anna"}));
    watch::after("cat", [] { std::filesystem::remove(kWorkFile + pid() + "2"); });
    EXPECT_EQ(getUsersList(kWorkFile.c_str()), -1);
    EXPECT_EQ(root::readFile(kWorkFile), "");
    EXPECT_TRUE(root::exists(kWorkFile + pid()));
}

// ---- isUserExisted ----------------------------------------------------------------------------

class UserExists : public request::Test {
  protected:
    const std::string list = "isUserExisted" + pid();

    void SetUp() override
    {
        request::Test::SetUp();
        std::filesystem::create_directory("/tmp/work");
        ASSERT_EQ(::chdir("/tmp/work"), 0);
    }

    void TearDown() override
    {
        ASSERT_EQ(::chdir("/"), 0);
        request::Test::TearDown();
    }

    void expectFound(const Lines& users, const std::string& name, int result)
    {
        watch::restart();
        stubUsers(userLines(users));
        std::string line = "return [\"guest\"";
        for (const std::string& user : users) {
            line += ", \"" + user + "\"";
        }
        line += "];";
        EXPECT_EQ(isUserExisted(name.c_str()), result) << name;
        const Lines more = {
            sizeTrace(list, line.size()),
            trace("isUserExisted() user return:" + line + " -- userName: \"" + name + "\""),
            trace("isUserExisted() iRet:" + std::to_string(result)),
        };
        EXPECT_EQ(watch::calls(), join({fetchCalls(list), more})) << name;
        EXPECT_EQ(root::list("/tmp/work"), Lines{});
    }
};

TEST_F(UserExists, wholeNamesAreFound)
{
    expectFound({"anna", "bob"}, "anna", 1);
    expectFound({"anna", "bob"}, "bob", 1);
    expectFound({"anna"}, "ann", 0);
    expectFound({"anna"}, "nna", 0);
    expectFound({"anna"}, "Anna", 0);
    expectFound({}, "anna", 0);
}

TEST_F(UserExists, guestAlwaysExists)
{
    expectFound({}, "guest", 1);
    expectFound({}, "Guest", 0);
}

TEST_F(UserExists, separatorsOfTheListCanBeFound)
{
    expectFound({"anna"}, ", ", 1);
    expectFound({"anna", "bob"}, "anna\", \"bob", 1);
    expectFound({""}, "", 1);
    expectFound({"anna"}, "", 0);
}

TEST_F(UserExists, manyUsersAreAllFound)
{
    Lines users;
    for (int i = 0; i < 150; ++i) {
        users.push_back("user" + std::to_string(i));
    }
    watch::restart();
    stubUsers(userLines(users));
    EXPECT_EQ(isUserExisted("user149"), 1);
    EXPECT_EQ(isUserExisted("user150"), 0);
}

TEST_F(UserExists, longNameIsCutBeforeItIsSearchedFor)
{
    const std::string name(4000, 'n');
    stubUsers("");
    EXPECT_EQ(isUserExisted(name.c_str()), 0);
    EXPECT_EQ(watch::calls().at(3), trace("isUserExisted() user return:return [\"guest\"]; -- "
                                          "userName: \"" +
                                          std::string(510, 'n')));
}

TEST_F(UserExists, failedListIsAFailure)
{
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(isUserExisted("anna"), -1);
}

TEST_F(UserExists, lostListIsAFailure)
{
    // A list written to /dev/null is lost: it has no size.
    stubUsers("");
    watch::after("cat", [&] { std::filesystem::create_symlink("/dev/null", list); });
    EXPECT_EQ(isUserExisted("anna"), -1);
    Lines calls = fetchCalls(list);
    calls.push_back(trace("isUserExisted() iRet:-1"));
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_EQ(root::list("/tmp/work"), Lines{});
}

TEST_F(UserExists, listThatCannotBeMeasuredIsTraced)
{
    // The list goes through a link into one of the work files, which is removed in the end.
    stubUsers("");
    watch::after("cat", [&] { std::filesystem::create_symlink(list + pid(), list); });
    EXPECT_EQ(isUserExisted("anna"), -1);
    EXPECT_EQ(watch::calls().back(),
              trace("isUserExisted() cannot stat file " + list + ": No such file or directory"));
}

TEST_F(UserExists, listThatCannotBeOpenedIsTracedAndStays)
{
    stubUsers("");
    watch::after("echo \"file ",
                 [&] { std::filesystem::permissions(list, std::filesystem::perms(0)); });
    EXPECT_EQ(isUserExisted("anna"), -1);
    EXPECT_EQ(watch::calls().back(),
              trace("isUserExisted() cannot open file " + list + ": Permission denied"));
    EXPECT_TRUE(root::exists(list));
}

TEST_F(UserExists, listThatIsTooLargeForTheMemoryIsTracedAndRemoved)
{
    // The list grows when its last work file is removed.
    stubUsers("");
    const std::uintmax_t size = (std::uintmax_t{1} << 60U) + 19;
    const faults::Guard growth =
        faults::beforeRemove(list + pid() + "2", [&] { std::filesystem::resize_file(list, size); });
    EXPECT_EQ(isUserExisted("anna"), -1);
    Lines calls = fetchCalls(list);
    calls.push_back(sizeTrace(list, 19));
    calls.push_back(trace("isUserExisted() () failed  memory allocation Cannot allocate memory"));
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_EQ(root::list("/tmp/work"), Lines{});
}

// ---- lstu -------------------------------------------------------------------------------------

class ListUsers : public request::Test {
  protected:
    static Outcome list() { return request::process(frame("lstu", 0)); }

    /// The calls up to the list's size.
    static Lines callsBefore(std::size_t size)
    {
        return join({fetchCalls(kWorkFile), {sizeTrace(kWorkFile, size)}});
    }
};

TEST_F(ListUsers, countAndNamesAreAnswered)
{
    stubUsers(userLines({"anna", "bob smith"}));
    expectEnd(list(), "lsut " + le32(2) + "\nanna\nbob smith\n",
              join({callsBefore(38),
                    {trace("comparing user: guest"), trace("comparing user: anna"),
                     trace("found user anna"), trace("comparing user: bob smith"),
                     trace("found user bob smith"), trace("found 2 user(s)"),
                     trace("reporting user anna -- 5"), trace("reporting user bob smith -- 10")}}),
              {}, "anna\nbob smith\n");
}

TEST_F(ListUsers, withoutUsersTheCountIsZero)
{
    stubUsers("");
    expectEnd(list(), "lsut " + le32(0) + "\n",
              join({callsBefore(17), {trace("comparing user: guest"), trace("found 0 user(s)")}}));
}

TEST_F(ListUsers, onlyGuestInThisSpellingIsLeftOut)
{
    stubUsers(userLines({"guest", "Guest", "guest2"}));
    EXPECT_EQ(list().answer, "lsut " + le32(2) + "\nGuest\nguest2\n");
}

TEST_F(ListUsers, quoteInANameSplitsIt)
{
    stubUsers(userLines({"a\"b"}));
    // The list ends in "a"b"]; so the quoted texts are a, and everything after b.
    EXPECT_EQ(list().answer, "lsut " + le32(1) + "\na\n");
    stubUsers(userLines({"a\"b\"c"}));
    EXPECT_EQ(list().answer, "lsut " + le32(2) + "\na\nc\n");
}

TEST_F(ListUsers, emptyNameIsAUser)
{
    stubUsers(userLines({""}));
    EXPECT_EQ(list().answer, "lsut " + le32(1) + "\n\n");
}

TEST_F(ListUsers, namesInUtf8AreReported)
{
    stubUsers(userLines({"\xC3\xA9lise"}));
    EXPECT_EQ(list().answer, "lsut " + le32(1) + "\n\xC3\xA9lise\n");
}

TEST_F(ListUsers, byteOfAllOnesEndsTheList)
{
    stubUsers(userLines({"anna", "b\xFF", "carl"}));
    EXPECT_EQ(list().answer, "lsut " + le32(1) + "\nanna\n");
}

TEST_F(ListUsers, twoHundredUsersAreAnswered)
{
    Lines users;
    std::string names;
    for (int i = 0; i < 200; ++i) {
        users.push_back("user" + std::to_string(i));
        names += users.back() + "\n";
    }
    stubUsers(userLines(users));
    EXPECT_EQ(list().answer, "lsut " + le32(200) + "\n" + names);
}

TEST_F(ListUsers, oldListIsReadIfANewOneCannotBeMade)
{
    root::writeFile(kWorkFile, "return [\"guest\", \"old\"];");
    request::load(frame("lstu", 0));
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(request::run().answer, "lsut " + le32(1) + "\nold\n");
}

/// Tests in which getUsersList cannot make the list, and leaves its file unchanged.
class ListUsersFails : public ListUsers {
  protected:
    static Outcome fail()
    {
        request::load(frame("lstu", 0));
        watch::answer("sudo", -1, EAGAIN);
        return request::run();
    }

    /// @param calls  that follow the failed fetch
    static void expectFailure(std::uint32_t code, const Lines& calls)
    {
        const std::string line = fetchCalls(kWorkFile)[0];
        const std::string failed = "system(" + line + ") --  error: 11(" + root::kAgain + ") -- ";
        expectError(fail(), "erro " + le32(code), code, join({{line, trace(failed)}, calls}));
    }

    /// Lists anna as the only user, and runs ACTION at a trace.
    static Outcome listWhen(const std::string& traceStart, const std::function<void()>& action)
    {
        stubUsers(userLines({"anna"}));
        request::load(frame("lstu", 0));
        watch::after("echo \"" + traceStart, action);
        return request::run();
    }

    /// The traces after the first pass and after the second.
    static constexpr const char* kFound = "found 1 user(s)";
    static constexpr const char* kReported = "reporting user anna";

    static Lines callsOnceFound()
    {
        return join({callsBefore(25),
                     {trace("comparing user: guest"), trace("comparing user: anna"),
                      trace("found user anna"), trace(kFound)}});
    }

    static Lines callsOnceReported()
    {
        return join({callsOnceFound(), {trace("reporting user anna -- 5")}});
    }
};

TEST_F(ListUsersFails, missingListIsAnError)
{
    expectFailure(request::kCannotStat, {trace("cannot stat file " + kWorkFile)});
}

TEST_F(ListUsersFails, emptyListIsAnError)
{
    root::writeFile(kWorkFile, "");
    expectFailure(0x20000006, {sizeTrace(kWorkFile, 0)});
}

TEST_F(ListUsersFails, unreadableListIsAnError)
{
    root::writeFile(kWorkFile, "x");
    root::makeUnreadable(kWorkFile);
    expectFailure(
        request::kCannotOpen,
        {sizeTrace(kWorkFile, 1), trace("cannot open file " + kWorkFile + ": " + root::kDenied)});
}

TEST_F(ListUsersFails, listMissingInTheSecondPassIsAnError)
{
    const Outcome outcome = listWhen(kFound, [] { std::filesystem::remove(kWorkFile); });
    const Lines reason = {trace("cannot open file " + kWorkFile + ": " + root::kNotThere)};
    expectError(outcome, "lsut " + le32(1) + "\nerro " + le32(request::kCannotOpen),
                request::kCannotOpen, join({callsOnceFound(), reason}));
}

TEST_F(ListUsersFails, listThatCannotBeRemovedIsAnError)
{
    const Outcome outcome = listWhen(kReported, [] { std::filesystem::remove(kWorkFile); });
    const Lines reason = {trace("cannot remove file " + kWorkFile + ": " + root::kNotThere)};
    expectError(outcome, "lsut " + le32(1) + "\nanna\nerro " + le32(request::kCannotRemove),
                request::kCannotRemove, join({callsOnceReported(), reason}), {}, "anna\n");
}

TEST_F(ListUsersFails, listThatCannotBeClosedIsAnError)
{
    const Lines reason = {trace("cannot close file " + kWorkFile + ": " + root::kBadDescriptor)};
    const std::string error = "erro " + le32(request::kCannotClose);
    faults::Guard fault;
    const auto breakList = [&] { fault = faults::failFclose(kWorkFile); };
    expectError(listWhen(kFound, breakList), error, request::kCannotClose,
                join({callsOnceFound(), reason}));
    fault = faults::Guard();
    expectError(listWhen(kReported, breakList), "lsut " + le32(1) + "\nanna\n" + error,
                request::kCannotClose, join({callsOnceReported(), reason}), {}, "anna\n");
}

TEST_F(ListUsersFails, tooLongANameIsCut)
{
    root::writeFile(kWorkFile, "return [\"" + std::string(9000, 'n') + "\", \"anna\"];");
    const Outcome outcome = fail();
    EXPECT_EQ(outcome.answer, "lsut " + le32(2) + "\n" + std::string(4094, 'n') + "\nanna\n");
}

TEST_F(ListUsersFails, listWithoutAnEndIsReadToItsEnd)
{
    root::writeFile(kWorkFile, "return [\"guest\", \"anna\", \"open");
    EXPECT_EQ(fail().answer, "lsut " + le32(1) + "\nanna\n");
}

} // namespace
