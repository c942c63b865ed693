// SPDX-License-Identifier: MIT
#include "handlers/share_property.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/core.h"
#include "tests/support/faults.h"
#include "tests/support/request.h"
#include "tests/support/share_script.h"

namespace fs = std::filesystem;

namespace {

using request::exitTrace;
using request::frame;
using request::kFailed;
using request::kWorkFile;
using request::leftBehind;
using request::Lines;
using request::openingOf;
using request::Outcome;
using root::closeFolder;
using root::cutTrace;
using root::join;
using root::kAgain;
using root::kDenied;
using root::kNotThere;
using root::le32;
using root::makeUnreadable;
using root::openFolder;
using root::pid;
using root::trace;
using share_script::block;
using share_script::kNameSizes;
using share_script::listingLine;
using share_script::nameLine;
using share_script::problem;
using share_script::propertyLine;

// ---- gsp1 -------------------------------------------------------------------------------------

class ShareProperty : public request::Test {
  protected:
    const std::string listing = kWorkFile + pid();
    const std::string command = listingLine(listing);

    void SetUp() override
    {
        request::Test::SetUp();
        root::writeFile(kWorkFile, "old");
    }

    static Outcome ask(const std::string& name)
    {
        return request::process(frame("gsp1", 1, name + "\n"));
    }

    /// The calls up to the name.
    static Lines nameCalls(const std::string& name)
    {
        return {trace("get share property enter..0"), cutTrace("cmd_gspc pShareName: " + name)};
    }

    /// The calls for a name up to the shell line, which has this result, and then MORE.
    [[nodiscard]] Lines callsWith(const std::string& name, int result, const Lines& more) const
    {
        const std::string run =
            trace("cmd_gsp1: system(" + command + ") -- iRet: " + std::to_string(result));
        return join({nameCalls(name), {command, run}, more});
    }

    static std::string found(const std::string& line) { return trace("Found share " + line); }

    static std::string found(const std::string& line, int property)
    {
        return trace("Found property " + line + " -- " + std::to_string(property));
    }

    static std::string answerTrace(int property)
    {
        return trace("cmd_gsp1 fwrite: gspr \x01 - " + std::to_string(property) + " - return 12");
    }

    static std::string answerOf(int property)
    {
        return "gspr " + le32(1) + "\n" + static_cast<char>(property) + "\n";
    }

    /// Compares all that an answered request for a name leaves, with the traces of these lines.
    void expectProperty(const std::string& text, const std::string& name, int property,
                        const Lines& finds)
    {
        SCOPED_TRACE(name);
        root::stubListing(text);
        const Outcome outcome = ask(name);
        expectEnd(outcome, answerOf(property),
                  callsWith(name, 0, join({finds, {answerTrace(property)}})), {kWorkFile});
    }

    /// Compares only the answer.
    static void expectAnswer(const std::string& text, const std::string& name, int property)
    {
        root::stubListing(text);
        EXPECT_EQ(ask(name).answer, answerOf(property)) << name << " in\n" << text;
    }

    /// Compares all that an error exit leaves.
    static void expectError(const Outcome& outcome, std::uint32_t code, const Lines& calls,
                            const Lines& files)
    {
        request::Test::expectError(outcome, "erro " + le32(code), code, calls, files);
    }

    /// Expects the refusal of a name that does not have 1 to 64 bytes.
    static void expectBadName(const Outcome& outcome, const std::string& name)
    {
        SCOPED_TRACE(name.size());
        request::Test::expectError(outcome, le32(0xC1000003), 0xC1000003, nameCalls(name));
    }

    /// Asks for "Music" in a good listing, and runs ACTION at a moment.
    static Outcome askWhen(const std::string& moment, const std::function<void()>& action)
    {
        root::stubListing(block("Music", "public"));
        request::load(frame("gsp1", 1, "Music\n"));
        watch::after(moment, action);
        return request::run();
    }
};

TEST_F(ShareProperty, publicAndPrivateSharesAreAnswered)
{
    const std::string text = block("Music", "public") + block("Photos", "private");
    expectProperty(text, "Music", 2, {found(nameLine("Music")), found(propertyLine("public"), 2)});
    expectProperty(text, "Photos", 1,
                   {found(nameLine("Photos")), found(propertyLine("private"), 1)});
}

TEST_F(ShareProperty, shareThatIsNotListedIsNoError)
{
    expectProperty(block("Music", "public"), "Photos", 3, {});
    expectProperty("", "Photos", 3, {});
}

TEST_F(ShareProperty, caseCounts)
{
    expectAnswer(block("Music", "public"), "music", 3);
    expectAnswer(block("Music", "Public"), "Music", 1);
    expectAnswer("<SHAREPROPERTY>public\nMusic\n<Shareproperty>public\n", "Music", 3);
}

TEST_F(ShareProperty, nameMatchesAnywhereAndTheLastBlockWins)
{
    expectProperty(block("data", "public") + block("mydata", "private"), "data", 1,
                   {found(nameLine("data")), found(propertyLine("public"), 2),
                    found(nameLine("mydata")), found(propertyLine("private"), 1)});
    expectProperty(block("mydata", "private") + block("data", "public"), "data", 2,
                   {found(nameLine("mydata")), found(propertyLine("private"), 1),
                    found(nameLine("data")), found(propertyLine("public"), 2)});
    expectProperty(
        "<sharecomment>all data</sharecomment>\n" + propertyLine("public"), "data", 2,
        {found("<sharecomment>all data</sharecomment>\n"), found(propertyLine("public"), 2)});
    expectProperty(propertyLine("public"), "property>pub", 2,
                   {found(propertyLine("public")), found(propertyLine("public"), 2)});
}

TEST_F(ShareProperty, lastPropertyOfABlockWins)
{
    expectAnswer(nameLine("Music") + propertyLine("public") + propertyLine("private"), "Music", 1);
}

TEST_F(ShareProperty, propertyIsPublicIfTheLineHoldsTheWord)
{
    expectAnswer("Music\npublic <shareproperty>x\n", "Music", 2);
    expectAnswer("Music\n<shareproperty>republican\n", "Music", 2);
    expectAnswer("Music\n<shareproperty>\npublic\n", "Music", 1);
    expectAnswer("Music\n<shareproperty\npublic\n", "Music", 3);
}

TEST_F(ShareProperty, propertyCountsBetweenTheNameAndTheBlocksEnd)
{
    expectProperty(propertyLine("public") + nameLine("Music") + "</shareinfo>\n", "Music", 3,
                   {found(nameLine("Music"))});
    expectProperty(nameLine("Music") + "</shareinfo>\n" + propertyLine("public"), "Music", 3,
                   {found(nameLine("Music"))});
    expectProperty(nameLine("Music") + "<shareinfo>\n" + propertyLine("public"), "Music", 2,
                   {found(nameLine("Music")), found(propertyLine("public"), 2)});
}

TEST_F(ShareProperty, eachLineIsSearchedForNameThenPropertyThenEnd)
{
    const std::string line = "Music <shareproperty>public </shareinfo>\n";
    expectProperty(line + propertyLine("private"), "Music", 2, {found(line), found(line, 2)});
    const std::string end = "</shareinfo>Music\n";
    expectProperty(end + propertyLine("private"), "Music", 3, {found(end)});
}

TEST_F(ShareProperty, longLinesAreReadInPieces)
{
    const std::string piece = std::string(506, ' ') + "Music";
    expectProperty(piece + "</shareinfo>\n" + propertyLine("public"), "Music", 3, {found(piece)});
    // The name is in two pieces.
    expectProperty(' ' + piece + '\n' + propertyLine("public"), "Music", 3, {});
    expectAnswer("Music\n" + std::string(500, ' ') + "<shareproperty>public\n", "Music", 3);
}

TEST_F(ShareProperty, lastLineNeedsNoNewline)
{
    expectProperty("Music\n<shareproperty>public", "Music", 2,
                   {found("Music\n"), found("<shareproperty>public", 2)});
}

TEST_F(ShareProperty, zeroByteEndsItsLinesText)
{
    expectAnswer(std::string("x\0Music\n<shareproperty>public\n", 30), "Music", 3);
    expectAnswer(std::string("Music\n<shareproperty>\0public\n", 28), "Music", 1);
}

TEST_F(ShareProperty, namesUpTo64CharactersAreLookedUp)
{
    for (const std::size_t size : kNameSizes) {
        const std::string name(size, 'N');
        expectProperty(block(name, "public"), name, 2,
                       {found(nameLine(name)), found(propertyLine("public"), 2)});
    }
}

TEST_F(ShareProperty, otherNamesEndWithABareWord)
{
    root::stubListing(block("N", "public"));
    for (const std::size_t size : {0U, 65U, 66U, 255U, 4000U}) {
        root::writeFile(kWorkFile, "old");
        const std::string name(size, 'N');
        expectBadName(ask(name), name);
    }
}

TEST_F(ShareProperty, namesInUtf8CountTheirBytes)
{
    std::string name;
    for (int i = 0; i < 32; ++i) {
        name += "\xC3\xA9";
    }
    expectProperty(block(name, "private"), name, 1,
                   {found(nameLine(name)), found(propertyLine("private"), 1)});
    EXPECT_EQ(ask(name + "\xC3\xA9").answer, le32(0xC1000003));
    expectAnswer(block("\xC3\xA9t\xC3\xA9", "public"), "\xC3\xA9t\xC3\xA9", 2);
    expectAnswer(block("\xC3\xA9t\xC3\xA9", "public"), "\xC3\x89t\xC3\xA9", 3);
}

TEST_F(ShareProperty, nameWithCharactersOfTheShellIsLookedUp)
{
    expectAnswer(block("a\"b", "public"), "a\"b", 2);
    expectAnswer(block("$HOME `x` \\", "private"), "$HOME `x` \\", 1);
}

TEST_F(ShareProperty, nameNeedsNoNewline)
{
    root::stubListing(block("Music", "public"));
    const Outcome outcome = request::process(frame("gsp1", 1, "Music"));
    EXPECT_EQ(outcome.answer, answerOf(2));
    EXPECT_EQ(outcome.calls[3], trace("cmd_gspc pShareName: Music"));
}

TEST_F(ShareProperty, onlyTheNewlineIsCut)
{
    expectAnswer(block("Music", "public"), "Music\r", 3);
    expectAnswer(block("Music", "public"), "Music ", 3);
    expectAnswer(block("Music", "public"), " Music", 3);
}

TEST_F(ShareProperty, zeroByteEndsTheName)
{
    root::stubListing(block("Mu", "public"));
    const Outcome outcome = request::process(frame("gsp1", 1, std::string("Mu\0sic\n", 7)));
    EXPECT_EQ(outcome.answer, answerOf(2));
    EXPECT_EQ(outcome.calls[3], trace("cmd_gspc pShareName: Mu"));
    EXPECT_EQ(request::process(frame("gsp1", 1, std::string("\0Mu\n", 4))).answer,
              le32(0xC1000003));
}

TEST_F(ShareProperty, missingNameIsAnEmptyName)
{
    expectBadName(request::process(frame("gsp1", 1)), "");
}

TEST_F(ShareProperty, ifNothingIsLeftThePreviousLineIsTheName)
{
    root::stubListing(block("Music", "public"));
    EXPECT_EQ(request::process(request::filledFrame("host", 4, "Music")).answer,
              le32(request::kMalformed));
    watch::restart();
    const Outcome outcome = request::call(cmd_gsp1);
    EXPECT_EQ(outcome.answer, answerOf(2));
    EXPECT_EQ(outcome.calls, callsWith("Music", 0,
                                       {found(nameLine("Music")), found(propertyLine("public"), 2),
                                        answerTrace(2)}));
}

TEST_F(ShareProperty, onlyTheFirstLineIsTheName)
{
    root::stubListing(block("Music", "public"));
    EXPECT_EQ(request::process(frame("gsp1", 1, "Music\nPhotos\n")).answer, answerOf(2));
}

TEST_F(ShareProperty, traceHasTheNumberOfBytesWritten)
{
    root::stubListing(block("Music", "private"));
    request::load(frame("gsp1", 1, "Music\n"));
    watch::after("echo \"cmd_gsp1: system", request::loseAnswer);
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.answer, "");
    EXPECT_EQ(outcome.calls.back(), trace("cmd_gsp1 fwrite: gspr \x01 - 1 - return 0"));
}

TEST_F(ShareProperty, failingScriptIsAnError)
{
    root::stub("php", "echo '<sharename>Music' >\"$3\"; exit 3");
    expectError(ask("Music"), kFailed, callsWith("Music", 3 * 256, {}), {listing});
}

TEST_F(ShareProperty, missingScriptIsAnError)
{
    fs::remove("/usr/bin/php");
    expectError(ask("Music"), kFailed, callsWith("Music", 127 * 256, {}), {});
}

TEST_F(ShareProperty, shellThatCannotStartIsAnError)
{
    for (const int error : {EAGAIN, ECHILD}) {
        request::load(frame("gsp1", 1, "Music\n"));
        watch::answer("sudo", -1, error);
        expectError(request::run(), kFailed, callsWith("Music", -1, {}), {});
    }
}

TEST_F(ShareProperty, scriptReapedElsewhereIsAnError)
{
    root::stubListing(block("Music", "public"));
    std::signal(SIGCHLD, SIG_IGN);
    expectError(ask("Music"), kFailed, callsWith("Music", -1, {}), {listing});
}

TEST_F(ShareProperty, listingThatDoesNotFitOnTheDiskIsAnError)
{
    root::stubListing(block("Music", "public"));
    request::load(frame("gsp1", 1, "Music\n"));
    watch::after("echo \"cmd_gspc", [] { root::fillDisk(); });
    watch::after("echo \"exiting", [] { root::freeDisk(); });
    expectError(request::run(), kFailed, callsWith("Music", 256, {}), {listing});
}

TEST_F(ShareProperty, missingListingIsAnError)
{
    root::stub("php", "exit 0");
    expectError(ask("Music"), request::kCannotOpen,
                callsWith("Music", 0, {problem("cannot open file", listing, kNotThere)}), {});
}

TEST_F(ShareProperty, listingThatIsRemovedInBetweenIsAnError)
{
    expectError(askWhen("sudo", [&] { fs::remove(listing); }), request::kCannotOpen,
                callsWith("Music", 0, {problem("cannot open file", listing, kNotThere)}), {});
}

TEST_F(ShareProperty, unreadableListingIsAnErrorAndIsRemoved)
{
    expectError(askWhen("sudo", [&] { makeUnreadable(listing); }), request::kCannotOpen,
                callsWith("Music", 0, {problem("cannot open file", listing, kDenied)}), {});
}

TEST_F(ShareProperty, folderInTheListingsPlaceListsNothing)
{
    root::stub("php", "mkdir \"$3\"");
    expectEnd(ask("Music"), answerOf(3), callsWith("Music", 0, {answerTrace(3)}), {kWorkFile});
}

TEST_F(ShareProperty, listingThatCannotBeRemovedIsAnError)
{
    const auto removal = [&](const std::string& why) {
        return problem("cmd_gsp1() cannot remove file", listing, why);
    };
    const Lines finds = {found(nameLine("Music")), found(propertyLine("public"), 2)};
    expectError(askWhen("echo \"Found property", [&] { fs::remove(listing); }), 0xC1000001,
                callsWith("Music", 0, join({finds, {removal(kNotThere)}})), {});
    expectError(askWhen("sudo", [] { closeFolder(); }), 0xC1000001,
                callsWith("Music", 0, join({finds, {removal(kDenied)}})), {listing});
    openFolder();
    fs::remove(listing);
    root::stub("php", "mkdir -p \"$3/x\"");
    expectError(ask("Music"), 0xC1000001, callsWith("Music", 0, {removal("Directory not empty")}),
                {listing});
}

// ---- gspc -------------------------------------------------------------------------------------

class SharePropertyByPlace : public request::Test {
  protected:
    const std::string hookLine =
        "echo share_info | runwebhooks | grep return > /tmp/vokcontrol.tmp";
    const Lines fetchLines = {
        "sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers " + kWorkFile + pid(),
        "cat " + kWorkFile + pid() + " | grep username >  " + kWorkFile + pid() + "2"};
    const Lines fetchedFiles = {kWorkFile + pid(), kWorkFile + pid() + "2"};
    const std::string statusTrace =
        trace("SendReturnStatus errCode 0xF0000001 -- fwrite return: 10");
    const std::string status = "gspc " + le32(0xF0000001) + '\0';

    void SetUp() override
    {
        request::Test::SetUp();
        stubHook("return [\"Music\",\"Photos\",\"Films\"];\n");
        stubUsers({});
    }

    static void stubHook(const std::string& list)
    {
        root::writeFile("/stubs/hook", list);
        root::stub("runwebhooks", "cat /stubs/hook");
    }

    static void stubUsers(const Lines& names)
    {
        std::string answer;
        for (const std::string& name : names) {
            answer += "<username>" + name + "</username>\n";
        }
        root::writeFile("/stubs/users", answer);
        root::stub("php", "cat /stubs/users >\"$3\"");
    }

    /// A list of users with this many characters: the first name fills it.
    static Lines usersUpTo(std::size_t size)
    {
        const std::size_t frameSize = std::string_view("return [\"guest\", \"\"").size();
        return {std::string(size - frameSize, 'n')};
    }

    static std::string userList(const Lines& names)
    {
        std::string list = "return [\"guest\"";
        for (const std::string& name : names) {
            list += ", \"" + name + '"';
        }
        return list + "];";
    }

    /// A request with a length and a name.
    static std::string requestFor(const std::string& name)
    {
        return "gspc " + std::string(1, static_cast<char>(name.size())) + name + "\n";
    }

    /// The trace of the name that has been taken from a request.
    static Lines nameCalls(const std::string& name)
    {
        return {cutTrace("cmd_gspc pShareName: " + name)};
    }

    static std::string placeTrace(const std::string& name, int standing, int property)
    {
        return trace("cmd_gspc share name: " + name + " -- standing: " + std::to_string(standing) +
                     " -- share Property: " + std::to_string(property));
    }

    static std::string answerOf(int property)
    {
        return std::string("gspc ") + static_cast<char>(property) + "\n" + std::string(3, '\0');
    }

    static std::string answerTrace(int property)
    {
        return trace(std::string("cmd_gspc fwrite: gspc ") + static_cast<char>(property) + "\n - " +
                     std::to_string(property) + " - return 10");
    }

    /// Expects the answer for a name that is not in the hook's list.
    void expectNone(const std::string& request, const std::string& name)
    {
        expectEnd(request::process(request), answerOf(3),
                  join({nameCalls(name), {hookLine, placeTrace(name, 0, 3), answerTrace(3)}}));
    }

    /// Expects that a request is refused for its name.
    void expectRefused(const std::string& request, const std::string& name)
    {
        expectEnd(request::process(request), status, join({nameCalls(name), {statusTrace}}));
    }

    /// Expects that a share has a position in the hook's list, beyond the end of a short user list.
    void expectPlace(const std::string& name, int standing)
    {
        const std::string request = requestFor(name);
        expectEnd(request::process(request), status,
                  join({nameCalls(name),
                        {hookLine, placeTrace(name, standing, 1)},
                        fetchLines,
                        {statusTrace}}));
    }

    /// Expects the answer for a share with a position, and a user list with that line.
    void expectProperty(const std::string& name, int standing, const std::string& line,
                        int property)
    {
        const std::string request = requestFor(name);
        expectEnd(request::process(request), answerOf(property),
                  join({nameCalls(name),
                        {hookLine, placeTrace(name, standing, 1)},
                        fetchLines,
                        {trace("cmd_gspc " + line + ": "), answerTrace(property)}}));
    }

    /// Asks for "Music", and runs ACTION at a moment.
    static Outcome askWhen(const std::string& moment, const std::function<void()>& action)
    {
        request::load(requestFor("Music"));
        watch::after(moment, action);
        return request::run();
    }

    /// The calls of a request for "Music", up to the hook's shell line.
    [[nodiscard]] Lines musicCalls(const std::vector<Lines>& more) const
    {
        return join({nameCalls("Music"), {hookLine}, join(more)});
    }

    /// The same, up to the user list's shell lines.
    [[nodiscard]] Lines musicCallsWithUsers(const Lines& more) const
    {
        return musicCalls({{placeTrace("Music", 0, 1)}, fetchLines, more});
    }
};

TEST_F(SharePropertyByPlace, shareThatIsNotListedIsNoError)
{
    expectNone(requestFor("Books"), "Books");
    expectNone(requestFor("music"), "music");
    stubHook("return [];\n");
    expectNone(requestFor("Music"), "Music");
}

TEST_F(SharePropertyByPlace, shareThatIsListedFindsNoLineInTheUserList)
{
    expectPlace("Music", 0);
    expectPlace("Photos", 1);
    expectPlace("Films", 2);
    stubUsers({"anna", "bob"});
    expectPlace("Music", 0);
}

TEST_F(SharePropertyByPlace, positionIsTheNumberOfCommasUpToTheName)
{
    expectPlace("return", 0);
    expectPlace("eturn", 0);
    expectPlace("o", 1);
    // The name's own first character is counted, too; its others are not.
    expectPlace(",\"Photos", 1);
    expectPlace("c\",\"Photos\",", 0);
    expectPlace("];", 2);
}

TEST_F(SharePropertyByPlace, firstCharacterOfTheListIsNotCounted)
{
    stubHook(",,return [Music];\n");
    expectPlace("Music", 1);
    expectPlace(",,return", 0);
    expectPlace(",return", 1);
}

TEST_F(SharePropertyByPlace, firstOccurrenceCounts)
{
    stubHook("return [a,Music,b,Music];\n");
    expectPlace("Music", 1);
}

TEST_F(SharePropertyByPlace, onlyTheFirstLineWithReturnCounts)
{
    stubHook("Books,\nreturn [Films,Music];\nreturn [Photos];\n");
    expectPlace("Music", 1);
    expectNone(requestFor("Books"), "Books");
    expectNone(requestFor("Photos"), "Photos");
}

TEST_F(SharePropertyByPlace, onlyTheLines254CharactersCount)
{
    const std::string list = "return [" + std::string(254 - 8 - 5, ',');
    stubHook(list + "Music\n");
    expectPlace("Music", 254 - 8 - 5);
    stubHook(list + ",Music\n");
    expectNone(requestFor("Music"), "Music");
}

TEST_F(SharePropertyByPlace, emptyListCountsAsEveryShare)
{
    stubHook("");
    expectPlace("Music", 0);
    stubHook("nothing to tell\n");
    expectPlace("Books", 0);
}

TEST_F(SharePropertyByPlace, zeroByteEndsTheListsText)
{
    const Outcome outcome = askWhen("echo share_info", [] {
        root::writeFile(kWorkFile, std::string("return [\0Music];\n", 17));
    });
    expectEnd(outcome, answerOf(3), musicCalls({{placeTrace("Music", 0, 3), answerTrace(3)}}));
}

TEST_F(SharePropertyByPlace, namesUpTo64CharactersAreLookedUp)
{
    for (const std::size_t size : kNameSizes) {
        if (size != '\n') {
            const std::string name(size, 'N');
            stubHook("return [\"Music\",\"" + name + "\"];\n");
            expectPlace(name, 1);
            expectNone(requestFor(std::string(size, 'X')), std::string(size, 'X'));
        }
    }
}

TEST_F(SharePropertyByPlace, otherNamesAreRefusedBeforeAnyCommandRuns)
{
    for (const std::size_t size : {0U, 65U, 66U, 160U, 255U}) {
        const std::string name(size, 'N');
        expectRefused(requestFor(name), name);
    }
    expectRefused("gspc", "");
    expectRefused(std::string("gspc \5\0usic\n", 12), "");
}

TEST_F(SharePropertyByPlace, lengthIsOneByte)
{
    const std::string name(4000, 'N');
    expectRefused(requestFor(name), name.substr(0, 160));
    expectNone("gspc \x40" + name + "\n", name.substr(0, 64));
}

TEST_F(SharePropertyByPlace, lengthEndsTheName)
{
    expectNone("gspc \x05"
               "Books and more\n",
               "Books");
    expectNone("gspc \x05"
               "Books",
               "Books");
    expectNone("gspc \x14"
               "Books\n",
               "Books\n");
    expectNone("gspc \x14"
               "Books",
               "Books");
    expectNone(std::string("gspc \5Bo\0ks\n", 12), "Bo");
    expectNone("gspc \x08"
               "Bo\noks\n",
               "Bo\n");
}

TEST_F(SharePropertyByPlace, nameInUtf8CountsItsBytes)
{
    stubHook("return [\"\xC3\xA9t\xC3\xA9\"];\n");
    expectPlace("\xC3\xA9t\xC3\xA9", 0);
    expectNone(requestFor("\xC3\x89t\xC3\xA9"), "\xC3\x89t\xC3\xA9");
}

TEST_F(SharePropertyByPlace, nameOfTenIsShiftedByOne)
{
    expectNone("gspc \n0123456789\n", "123456789\n");
    expectNone("gspc \n0123456789", "123456789");
    expectNone("gspc \n0123456789ABC\n", "123456789A");
    expectNone("gspc \n0123\n", "123\n");
    expectNone(std::string("gspc \n01\00023456789\n", 18), "1");
    stubHook("return [\"x123456789\",\"123456789\"];\n");
    const std::string request = "gspc \n0123456789";
    expectEnd(request::process(request), status,
              join({nameCalls("123456789"),
                    {hookLine, placeTrace("123456789", 0, 1)},
                    fetchLines,
                    {statusTrace}}));
}

TEST_F(SharePropertyByPlace, nameOfTenThatIsMissingIsRefused)
{
    expectRefused("gspc \n", "");
    expectRefused("gspc \n\n", "");
    expectRefused("gspc \n0", "");
}

TEST_F(SharePropertyByPlace, nameOfTenAfterTheEndOfTheRequestIsRefused)
{
    EXPECT_EQ(request::process("gubs \n").result, 0);
    EXPECT_EQ(request::unread(), "");
    const Outcome outcome = request::call(cmd_gspc);
    EXPECT_EQ(outcome.answer, status);
    EXPECT_EQ(outcome.calls, join({nameCalls(""), {statusTrace}}));
}

TEST_F(SharePropertyByPlace, restOfTheLineIsReadOnlyForALengthOfTen)
{
    stubHook("return [x];\n");
    expectNone("gspc \x04"
               "abcd\nrest\n",
               "abcd");
    const Outcome outcome = request::process("gspc \n" + std::string(80, 'N') + "\n");
    EXPECT_EQ(outcome.answer, answerOf(3));
    EXPECT_EQ(outcome.calls[2], trace("cmd_gspc pShareName: " + std::string(10, 'N')));
}

TEST_F(SharePropertyByPlace, nameOfTenTakesTheWholeRestOfItsLine)
{
    expectNone("gspc \n0123456789\nmore\n", "123456789\n");
    EXPECT_EQ(request::unread(), "more");
    expectNone("gspc \n" + std::string(4090, 'N'), std::string(10, 'N'));
    EXPECT_EQ(request::unread(), "");
    expectNone("gspc \5Books\nmore\n", "Books");
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(SharePropertyByPlace, piecesOfALongUserListCountAsLines)
{
    Lines users = usersUpTo(300);
    stubUsers(users);
    expectProperty("Music", 0, userList(users).substr(254), 1);
    expectPlace("Photos", 1);

    users.emplace_back("return [\"full");
    stubUsers(users);
    expectProperty("Music", 0, userList(users).substr(254), 2);

    users.insert(users.begin(), usersUpTo(254).front());
    stubUsers(users);
    expectProperty("Music", 0, userList(users).substr(254, 254), 1);
    expectProperty("Photos", 1, userList(users).substr(508), 2);
    expectPlace("Films", 2);
}

TEST_F(SharePropertyByPlace, userListOf254CharactersIsOneLine)
{
    stubUsers(usersUpTo(252));
    expectPlace("Music", 0);
    stubUsers(usersUpTo(253));
    expectProperty("Music", 0, ";", 1);
    stubUsers(usersUpTo(254));
    expectProperty("Music", 0, "];", 1);
}

TEST_F(SharePropertyByPlace, markOfFullAccessMustBeWholeInItsPiece)
{
    for (const std::size_t before : {249U, 250U, 251U}) {
        Lines users = usersUpTo(before);
        users.emplace_back("return [\"full");
        stubUsers(users);
        const std::string piece = userList(users).substr(254);
        expectProperty("Music", 0, piece, (before == 251) ? 2 : 1);
    }
    Lines users = usersUpTo(300);
    users.emplace_back("return [\"Full");
    stubUsers(users);
    expectProperty("Music", 0, userList(users).substr(254), 1);
}

TEST_F(SharePropertyByPlace, traceHasTheNumberOfBytesWritten)
{
    request::load(requestFor("Books"));
    watch::after("echo \"cmd_gspc pShareName", request::loseAnswer);
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.answer, "");
    EXPECT_EQ(outcome.calls.back(), trace("cmd_gspc fwrite: gspc \x03\n - 3 - return 0"));
}

TEST_F(SharePropertyByPlace, hookThatCannotStartIsAFailure)
{
    for (const int error : {EAGAIN, ECHILD}) {
        root::writeFile(kWorkFile, "return [\"Old\"];\n");
        request::load(requestFor("Music"));
        watch::answer("echo share_info", -1, error);
        expectEnd(request::run(), status, musicCalls({{statusTrace}}), {kWorkFile});
    }
}

TEST_F(SharePropertyByPlace, failureBeforeTheHookHasRunDoesNotChangeTheWorkFile)
{
    for (const std::string& name : {std::string(), std::string("Music")}) {
        root::writeFile(kWorkFile, "old");
        request::load(requestFor(name));
        watch::answer("echo share_info", -1, EAGAIN);
        EXPECT_EQ(request::run().answer, status);
        EXPECT_EQ(root::readFile(kWorkFile), "old");
    }
}

TEST_F(SharePropertyByPlace, hookReapedElsewhereIsAFailure)
{
    std::signal(SIGCHLD, SIG_IGN);
    expectEnd(request::process(requestFor("Music")), status, musicCalls({{statusTrace}}),
              {kWorkFile});
}

TEST_F(SharePropertyByPlace, anyExitStatusOfTheHookIsAccepted)
{
    for (const int result : {1, 256, 127 * 256, -2}) {
        root::writeFile(kWorkFile, "return [\"Old\"];\n");
        request::load(requestFor("Music"));
        watch::answer("echo share_info", result, EAGAIN);
        expectEnd(request::run(), answerOf(3),
                  musicCalls({{placeTrace("Music", 0, 3), answerTrace(3)}}));
    }
    root::stub("runwebhooks", "cat /stubs/hook; exit 9");
    expectPlace("Photos", 1);
    fs::remove("/stubs/runwebhooks");
    expectPlace("Books", 0);
}

TEST_F(SharePropertyByPlace, listThatIsMissingIsAFailure)
{
    expectEnd(askWhen("echo share_info", [] { fs::remove(kWorkFile); }), status,
              musicCalls({{statusTrace}}));
}

TEST_F(SharePropertyByPlace, listThatIsUnreadableIsAFailureAndStays)
{
    expectEnd(askWhen("echo share_info", [] { makeUnreadable(kWorkFile); }), status,
              musicCalls({{statusTrace}}), {kWorkFile});
}

TEST_F(SharePropertyByPlace, folderInTheListsPlaceHasNoLine)
{
    fs::create_directory(kWorkFile);
    expectPlace("Books", 0);
}

TEST_F(SharePropertyByPlace, listThatCannotBeRemovedIsOnlyTraced)
{
    request::load(requestFor("Books"));
    watch::after("echo share_info", [] { closeFolder(); });
    const Lines calls = join({nameCalls("Books"),
                              {hookLine, problem("cannot remove file", kWorkFile, kDenied),
                               placeTrace("Books", 0, 3), answerTrace(3)}});
    expectEnd(request::run(), answerOf(3), calls, {kWorkFile});
    openFolder();

    request::load(requestFor("Music"));
    watch::after("echo share_info", [] { closeFolder(); });
    watch::after("echo \"cannot remove", [] { openFolder(); });
    expectEnd(
        request::run(), status,
        musicCalls({{problem("cannot remove file", kWorkFile, kDenied), placeTrace("Music", 0, 1)},
                    fetchLines,
                    {statusTrace}}));
}

TEST_F(SharePropertyByPlace, listThatDoesNotFitOnTheDiskHasNoLine)
{
    request::load(requestFor("Books"));
    watch::after("echo \"cmd_gspc pShareName", [] { root::fillDisk(); });
    watch::after("echo \"cmd_gspc share name", [] { root::freeDisk(); });
    expectEnd(request::run(), status,
              join({nameCalls("Books"),
                    {hookLine, placeTrace("Books", 0, 1)},
                    fetchLines,
                    {statusTrace}}));
}

TEST_F(SharePropertyByPlace, userListThatCannotBeFetchedIsAFailure)
{
    for (const auto& [error, why] : {std::pair(EAGAIN, "11(" + kAgain + ")"),
                                     std::pair(ECHILD, std::string("10(No child processes)"))}) {
        request::load(requestFor("Music"));
        watch::answer("sudo", -1, error);
        expectEnd(request::run(), status,
                  musicCalls({{placeTrace("Music", 0, 1), fetchLines[0],
                               trace("system(" + fetchLines[0] + ") --  error: " + why + " -- "),
                               statusTrace}}));
        request::load(requestFor("Music"));
        watch::answer("cat", -1, error);
        expectEnd(
            request::run(), status,
            musicCallsWithUsers(
                {trace("system(" + fetchLines[1] + ") --  error: " + why + " -- "), statusTrace}),
            {fetchedFiles[0]});
        fs::remove(fetchedFiles[0]);
    }
}

TEST_F(SharePropertyByPlace, failingUserScriptLeavesOnlyTheGuest)
{
    root::stub("php", "exit 1");
    expectPlace("Music", 0);
}

TEST_F(SharePropertyByPlace, userListThatCannotBeWrittenIsAFailure)
{
    expectEnd(askWhen("cat", [] { fs::create_directory(kWorkFile); }), status,
              musicCallsWithUsers({statusTrace}), join({{kWorkFile}, fetchedFiles}));
}

TEST_F(SharePropertyByPlace, userListThatDoesNotFitOnTheDiskIsAFailure)
{
    request::load(requestFor("Music"));
    watch::after("cat", [] { root::fillDisk(); });
    watch::after("echo \"SendReturnStatus", [] { root::freeDisk(); });
    expectEnd(request::run(), status, musicCallsWithUsers({statusTrace}),
              join({{kWorkFile}, fetchedFiles}));
}

TEST_F(SharePropertyByPlace, userListThatIsGoneIsAFailure)
{
    // The list is written through a link into a work file, which is removed at the end.
    const auto link = [&] { fs::create_symlink(fetchedFiles[0], kWorkFile); };
    expectEnd(askWhen("cat", link), status, musicCallsWithUsers({statusTrace}), {kWorkFile});
}

TEST_F(SharePropertyByPlace, userListThatIsUnreadableIsAFailure)
{
    const auto prepare = [] {
        root::writeFile(kWorkFile, "");
        fs::permissions(kWorkFile, fs::perms(0200));
    };
    expectEnd(askWhen("cat", prepare), status, musicCallsWithUsers({statusTrace}), {kWorkFile});
}

TEST_F(SharePropertyByPlace, userListThatIsLostIsAFailure)
{
    // A list written to /dev/null is lost: even its first line is missing.
    stubUsers({std::string(300, 'n')});
    expectEnd(askWhen("cat", [] { fs::create_symlink("/dev/null", kWorkFile); }), status,
              musicCallsWithUsers({statusTrace}));
}

TEST_F(SharePropertyByPlace, userListThatCannotBeRemovedIsOnlyTraced)
{
    const auto prepare = [] {
        root::writeFile(kWorkFile, "");
        closeFolder();
    };
    const std::string removal = problem("cannot remove file", kWorkFile, kDenied);
    const Lines files = join({{kWorkFile}, fetchedFiles});
    expectEnd(askWhen("cat", prepare), status, musicCallsWithUsers({removal, statusTrace}), files);
    openFolder();

    const Lines users = usersUpTo(254);
    stubUsers(users);
    expectEnd(askWhen("cat", prepare), answerOf(1),
              musicCallsWithUsers({trace("cmd_gspc ];: "), removal, answerTrace(1)}), files);
}

} // namespace
