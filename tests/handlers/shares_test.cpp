// SPDX-License-Identifier: MIT
#include "handlers/shares.h"

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

// ---- The list that share_info makes ----------------------------------------------------------

const std::string kShareInfoLine = listingLine(root::workFile("share_info"));

/// The calls of share_info when it lists these shares.
Lines shareInfoCalls(const Lines& names)
{
    Lines calls = {trace("share_info sys(" + kShareInfoLine + ")"), kShareInfoLine};
    for (const std::string& name : names) {
        calls.push_back(trace("share_info() -- found share:" + name));
    }
    calls.push_back(trace("share_info() return from share_info " + std::to_string(names.size())));
    return calls;
}

/// The calls of share_info when its script fails.
Lines shareInfoFailure(int result, const std::string& why)
{
    return {trace("share_info sys(" + kShareInfoLine + ")"), kShareInfoLine,
            trace("share_info: failed system(" + kShareInfoLine +
                  ") iRet:" + std::to_string(result) + " (error: " + why + ")")};
}

/// The list that share_info makes for these shares.
std::string shareList(const Lines& names)
{
    std::string list;
    for (const std::string& name : names) {
        list += '"' + name + '"';
    }
    return list.empty() ? "return [];\n" : "return [" + list + "];";
}

// ---- gps1, gpsn -------------------------------------------------------------------------------

class PublicShare : public request::Test {
  protected:
    static void setVariables(const std::string& content)
    {
        root::writeFile(root::kVariables, content);
    }

    static void expectName(const std::string& name, const std::string& printed = "")
    {
        const std::string size = std::to_string(10 + name.size() + 1);
        expectEnd(request::process(frame("gps1", 0)), "gpsr " + le32(1) + "\n" + name + "\n",
                  {trace("cmd_gps1 fwrite " + size + ": gpsr \x01")}, {}, printed);
    }

    static void expectNoName(const std::string& request, std::uint32_t count)
    {
        const Outcome outcome = request::process(request);
        const Lines calls = {trace("cmd_gpsn fwrite 5: gpsn ")};
        expectEnd(outcome, "gpsn ", calls);
        EXPECT_EQ(outcome.calls, request::opening("gpsn", count, calls));
    }
};

TEST_F(PublicShare, nameIsTheVariable)
{
    setVariables("a=1\npel_pubshare_name=Public\nb=2\n");
    expectName("Public");
    setVariables("pel_pubshare_name = Our Public Share\r\n");
    expectName("Our Public Share");
    setVariables("pel_pubshare_name=\xC3\xA9lise \"$HOME\"\n");
    expectName("\xC3\xA9lise \"$HOME\"");
}

TEST_F(PublicShare, namesOfAllSizes)
{
    for (const std::size_t size : kNameSizes) {
        setVariables("pel_pubshare_name=" + std::string(size, 'n') + "\n");
        expectName(std::string(size, 'n'));
    }
    // A line of the variable file has at most 511 characters.
    const std::string longest(511 - 19, 'n');
    setVariables("pel_pubshare_name=" + longest + "\n");
    expectName(longest);
}

TEST_F(PublicShare, nameThatIsNotSetIsAnEmptyLine)
{
    setVariables("");
    expectName("");
    setVariables("pel_pubshare_name=\n");
    expectName("");
    setVariables("pel_pubshare_names=Public\n");
    expectName("");
}

TEST_F(PublicShare, nameThatCannotBeReadIsAnEmptyLine)
{
    expectName("", root::unreadVariable(kNotThere));
    setVariables("pel_pubshare_name=Public\n");
    makeUnreadable(root::kVariables);
    expectName("", root::unreadVariable(kDenied));
}

TEST_F(PublicShare, answerIsLostIfTheDiskIsFull)
{
    setVariables("pel_pubshare_name=Public\n");
    request::load(frame("gps1", 0));
    watch::after("echo \"param_count", [] { root::fillDisk(); });
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.answer, "");
    EXPECT_EQ(outcome.calls, request::opening("gps1", 0, {trace("cmd_gps1 fwrite 17: gpsr \x01")}));
}

TEST_F(PublicShare, olderCommandDoesNotAnswerTheName)
{
    setVariables("pel_pubshare_name=Public\n");
    expectNoName(frame("gpsn", 0), 0);
    setVariables("");
    expectNoName(frame("gpsn", 0), 0);
}

TEST_F(PublicShare, olderCommandTakesAnyCount)
{
    setVariables("pel_pubshare_name=Public\n");
    expectNoName(frame("gpsn", 1, "x\n"), 1);
    expectNoName(frame("gpsn", 0x01020304), 0x01020304);
    expectNoName(frame("gpsn", 10), 10);
    expectNoName("gpsn", 0);
}

TEST_F(PublicShare, olderCommandOnlyReadsTheVariable)
{
    root::writeFile(kWorkFile, "pel_pubshare_name=Stale\n");
    expectEnd(request::process(frame("gpsn", 0)), "gpsn ", {trace("cmd_gpsn fwrite 5: gpsn ")},
              {kWorkFile}, root::unreadVariable(kNotThere));
}

// ---- lsts -------------------------------------------------------------------------------------

class ListShares : public request::Test {
  protected:
    const std::string listing = root::workFile("cmd_lsts");
    const std::string command = listingLine(listing);

    /// The trace of the shell line, with its result.
    [[nodiscard]] std::string runTrace(int result) const
    {
        return trace("cmd_lsts: system(" + command + ") -- iRet: " + std::to_string(result));
    }

    /// The calls up to the answer's header, if these shares are internal.
    [[nodiscard]] Lines headerCalls(const Lines& internal) const
    {
        return join({shareInfoCalls(internal), {command, runTrace(0)}, shareInfoCalls(internal)});
    }

    static std::string header(std::size_t count)
    {
        return "lsst " + le32(static_cast<std::uint32_t>(count)) + "\n";
    }

    /// Compares all that a request leaves for a listing: internal shares, and the answer after the
    /// header.
    void expectShares(const std::string& text, const Lines& internal, const std::string& pairs)
    {
        root::stubListing(text);
        SCOPED_TRACE(text);
        const Outcome outcome = request::process(frame("lsts", 0));
        const std::string end =
            trace("cmd_lsts return: number of user: " + std::to_string(internal.size()));
        expectEnd(outcome, header(internal.size()) + pairs, join({headerCalls(internal), {end}}),
                  {kWorkFile});
        EXPECT_EQ(root::readFile(kWorkFile), shareList(internal));
    }

    static void expectError(const Outcome& outcome, const std::string& before, std::uint32_t code,
                            const Lines& calls, const Lines& files)
    {
        request::Test::expectError(outcome, before + "erro " + le32(code), code, calls, files);
    }

    /// Lists one good share, and runs ACTION after this command's shell line.
    [[nodiscard]] Outcome listWhenRun(const std::function<void()>& action) const
    {
        root::stubListing(block("Music", "public"));
        request::load(frame("lsts", 0));
        watch::after(command, action);
        return request::run();
    }

    /// The same, with ACTION after the shares are counted.
    [[nodiscard]] Outcome listWhenCounted(const std::function<void()>& action) const
    {
        return listWhenRun([&] { watch::after("echo \"share_info() return", action); });
    }
};

TEST_F(ListShares, countNamesAndPropertiesAreAnswered)
{
    expectShares(block("Music", "public") + block("My Photos", "private"), {"Music", "My Photos"},
                 "Music\npublic\nMy Photos\nprivate\n");
}

TEST_F(ListShares, withoutSharesTheCountIsZero)
{
    expectShares("", {}, "");
    expectShares("<sharelist>\n</sharelist>\n", {}, "");
}

TEST_F(ListShares, externalSharesAreReportedButNotCounted)
{
    expectShares(block("Stick", "public", "external") + block("Music", "private"), {"Music"},
                 "Stick\npublic\nMusic\nprivate\n");
    expectShares(block("Stick", "public", "external"), {}, "Stick\npublic\n");
}

TEST_F(ListShares, sharesWithoutAPropertyAreCountedButNotReported)
{
    expectShares(nameLine("Music") + "  <sharelocation>internal\n", {"Music"}, "");
}

TEST_F(ListShares, propertyMustFollowItsNameDirectly)
{
    expectShares(nameLine("Music") + "<comment>\n" + propertyLine("public"), {}, "");
    expectShares(nameLine("Music") + "\n" + propertyLine("public"), {}, "");
    expectShares(propertyLine("public") + nameLine("Music"), {}, "");
    expectShares(propertyLine("public"), {}, "");
}

TEST_F(ListShares, propertyThatFollowsAPropertyIsReportedWithTheSameName)
{
    expectShares(nameLine("Music") + propertyLine("public") + propertyLine("private") +
                     "<comment>\n" + propertyLine("public"),
                 {}, "Music\npublic\nMusic\nprivate\n");
}

TEST_F(ListShares, lastOfSeveralNamesIsReported)
{
    expectShares(nameLine("Music") + nameLine("Photos") + propertyLine("public"), {},
                 "Photos\npublic\n");
}

TEST_F(ListShares, emptyNameIsNotReported)
{
    expectShares(nameLine("") + propertyLine("public"), {}, "");
    expectShares(nameLine("Music") + nameLine("") + propertyLine("public"), {}, "");
}

TEST_F(ListShares, nameEndsAtTheFirstClosingTag)
{
    expectShares("<sharename>A</sharename><sharename>B</sharename>\n" + propertyLine("public"), {},
                 "A\npublic\n");
    expectShares("x<sharename>A<B</sharename>x\n" + propertyLine("public"), {}, "A<B\npublic\n");
}

TEST_F(ListShares, closingTagAloneKeepsTheLastName)
{
    expectShares(nameLine("Music") + "x</sharename>\n" + propertyLine("public"), {},
                 "Music\npublic\n");
    expectShares(nameLine("Music") + "</sharename><sharename>B\n" + propertyLine("public"), {},
                 "Music\npublic\n");
}

TEST_F(ListShares, openingTagAloneIsAnyOtherLine)
{
    expectShares(nameLine("Music") + "<sharename>B\n" + propertyLine("public"), {}, "");
    expectShares(nameLine("Music") + "<shareproperty>public\n" + propertyLine("private"), {}, "");
}

TEST_F(ListShares, tagThatLacksACharacterIsNone)
{
    expectShares("sharename>A</sharename>\n" + propertyLine("public"), {}, "");
    expectShares(nameLine("Music") + "<sharename>B</sharename\n" + propertyLine("public"), {}, "");
    expectShares(nameLine("Music") + "  <shareproperty>public</shareproperty\n", {}, "");
}

TEST_F(ListShares, lineWithBothIsANameLine)
{
    expectShares("<sharename>A</sharename><shareproperty>public</shareproperty>\n" +
                     propertyLine("private"),
                 {}, "A\nprivate\n");
}

TEST_F(ListShares, propertyIsReadAtAnIndentOfTwo)
{
    const auto property = [&](const std::string& line) { return nameLine("Music") + line + "\n"; };
    expectShares(property("<shareproperty>public</shareproperty>"), {}, "Music\nblic\n");
    expectShares(property("    <shareproperty>public</shareproperty>"), {}, "Music\ny>public\n");
    expectShares(property("\t\t<shareproperty>a b</shareproperty>x</shareproperty>"), {},
                 "Music\na b\n");
    expectShares(property("  <shareproperty></shareproperty>"), {}, "Music\n\n");
    expectShares(property(std::string(17, 'x') + "public</shareproperty>"), {}, "Music\npublic\n");
}

TEST_F(ListShares, propertyOfALineThatIsTooShortIsEmpty)
{
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U}) {
        expectShares(nameLine("Music") + std::string(size, 'x') + "</shareproperty>\n", {},
                     "Music\n\n");
    }
    expectShares(nameLine("Music") + std::string(18, 'x') + "</shareproperty>\n", {}, "Music\nx\n");
}

TEST_F(ListShares, namesOfAllSizes)
{
    for (const std::size_t size : kNameSizes) {
        const std::string name(size, 'N');
        expectShares(block(name, "public"), {name}, name + "\npublic\n");
    }
}

TEST_F(ListShares, longLinesAreReadInPieces)
{
    const std::string longest(511 - 11 - 12, 'n');
    expectShares("<sharename>" + longest + "</sharename>" + "\n" + propertyLine("public"), {}, "");
    const std::string fitting(510 - 11 - 12, 'n');
    expectShares("<sharename>" + fitting + "</sharename>" + "\n" + propertyLine("public"), {},
                 fitting + "\npublic\n");
    const std::string property(600, 'p');
    expectShares(nameLine("Music") + propertyLine(property), {}, "");
}

TEST_F(ListShares, namesInUtf8AreReported)
{
    expectShares(block("\xC3\xA9t\xC3\xA9", "public"), {"\xC3\xA9t\xC3\xA9"},
                 "\xC3\xA9t\xC3\xA9\npublic\n");
}

TEST_F(ListShares, namesAreAnsweredUnchanged)
{
    expectShares(block("100%s & \"more\"", "public", "external"), {}, "100%s & \"more\"\npublic\n");
}

TEST_F(ListShares, zeroByteEndsItsLinesText)
{
    expectShares("<sharename>A" + std::string(1, '\0') + "</sharename>\n" + propertyLine("public"),
                 {}, "");
    expectShares(nameLine("A" + std::string(1, '\0')) + propertyLine("public"), {}, "");
}

TEST_F(ListShares, lastLineNeedsNoNewline)
{
    expectShares(nameLine("Music") + "  <shareproperty>public</shareproperty>", {},
                 "Music\npublic\n");
}

TEST_F(ListShares, threeHundredShares)
{
    Lines names;
    std::string text;
    std::string pairs;
    for (int i = 0; i < 300; ++i) {
        names.push_back("share" + std::to_string(i));
        text += block(names.back(), "private");
        pairs += names.back() + "\nprivate\n";
    }
    expectShares(text, names, pairs);
}

TEST_F(ListShares, failingScriptIsAnErrorWithoutAnotherTrace)
{
    root::writeFile(kWorkFile, "old");
    root::stub("php", "exit 3");
    expectError(request::process(frame("lsts", 0)), "", kFailed, shareInfoFailure(768, "Success"),
                {});
}

TEST_F(ListShares, shellThatCannotStartIsAnError)
{
    request::load(frame("lsts", 0));
    watch::answer("sudo", -1, EAGAIN);
    expectError(request::run(), "", kFailed, shareInfoFailure(-1, kAgain), {});
}

TEST_F(ListShares, secondRunOfTheScriptThatFailsIsAnError)
{
    root::stubListing(block("Music", "public"));
    for (const auto& [result, error] :
         {std::pair(256, 0), std::pair(-1, EAGAIN), std::pair(-1, ECHILD)}) {
        request::load(frame("lsts", 0));
        watch::answer(command, result, error);
        expectError(request::run(), "", kFailed,
                    join({shareInfoCalls({"Music"}), {command, runTrace(result)}}), {listing});
        EXPECT_EQ(root::readFile(listing), shareList({"Music"}));
    }
}

TEST_F(ListShares, scriptReapedElsewhereIsAnErrorInTheSecondRun)
{
    root::stubListing(block("Music", "public"));
    std::signal(SIGCHLD, SIG_IGN);
    expectError(request::process(frame("lsts", 0)), "", kFailed,
                join({shareInfoCalls({"Music"}), {command, runTrace(-1)}}), {listing});
}

TEST_F(ListShares, countThatFailsIsTraced)
{
    const auto failCount = [](int result, int error) {
        return [=] { watch::answer(kShareInfoLine, result, error); };
    };
    const auto calls = [&](int result, const std::string& why) {
        return join({shareInfoCalls({"Music"}),
                     {command, runTrace(0)},
                     shareInfoFailure(result, why),
                     {trace("cmd_lsts: number of user: -1")}});
    };
    expectError(listWhenRun(failCount(256, 0)), "", kFailed, calls(256, "Success"), {listing});
    expectError(listWhenRun(failCount(-1, EAGAIN)), "", kFailed, calls(-1, kAgain), {listing});
}

TEST_F(ListShares, firstListThatCannotBeWrittenIsAnError)
{
    fs::create_directory(listing);
    root::stubListing(block("Music", "public"));
    expectError(request::process(frame("lsts", 0)), "", kFailed,
                {trace("share_info sys(" + kShareInfoLine + ")"), kShareInfoLine,
                 trace("share_info() cannot open file: " + root::workFile("share_info") +
                       " or file: " + listing + " (error: Is a directory)")},
                {listing, root::workFile("share_info")});
}

TEST_F(ListShares, listOfTheCountThatCannotBeWrittenIsAnError)
{
    fs::create_directory(kWorkFile);
    root::stubListing(block("Music", "public"));
    expectError(request::process(frame("lsts", 0)), "", kFailed,
                join({shareInfoCalls({"Music"}),
                      {command, runTrace(0), trace("share_info sys(" + kShareInfoLine + ")"),
                       kShareInfoLine,
                       trace("share_info() cannot open file: " + root::workFile("share_info") +
                             " or file: " + kWorkFile + " (error: Is a directory)"),
                       trace("cmd_lsts: number of user: -1")}}),
                {listing, root::workFile("share_info")});
}

TEST_F(ListShares, listingThatIsRemovedInBetweenIsAnErrorAfterTheHeader)
{
    expectError(listWhenCounted([&] { fs::remove(listing); }), header(1), request::kCannotOpen,
                join({headerCalls({"Music"}), {problem("cannot open file", listing, kNotThere)}}),
                {});
}

TEST_F(ListShares, unreadableListingIsAnErrorAfterTheHeaderAndIsRemoved)
{
    expectError(listWhenCounted([&] { makeUnreadable(listing); }), header(1), request::kCannotOpen,
                join({headerCalls({"Music"}), {problem("cannot open file", listing, kDenied)}}),
                {});
}

TEST_F(ListShares, emptyListingReportsNothing)
{
    EXPECT_EQ(listWhenRun([&] { root::writeFile(listing, ""); }).answer, header(1));
    EXPECT_EQ(leftBehind(), Lines{kWorkFile});
}

TEST_F(ListShares, folderInTheListingsPlaceReportsNothing)
{
    const auto replace = [&] {
        fs::remove(listing);
        fs::create_directory(listing);
    };
    EXPECT_EQ(listWhenRun(replace).answer, header(1));
    EXPECT_EQ(leftBehind(), Lines{kWorkFile});
}

TEST_F(ListShares, listingThatCannotBeClosedIsAnErrorAfterTheShares)
{
    const faults::Guard fault = faults::failFclose(listing);
    expectError(listWhenRun([] {}), header(1) + "Music\npublic\n", request::kCannotClose,
                join({headerCalls({"Music"}),
                      {problem("cannot close file", listing, root::kBadDescriptor)}}),
                {listing});
}

TEST_F(ListShares, listingThatCannotBeRemovedIsAnErrorThatNamesAnotherFile)
{
    const std::string named = "/etc/pelconfig/vokcontrol/lsts_data_file1";
    expectError(listWhenCounted([] { closeFolder(); }), header(1) + "Music\npublic\n",
                request::kCannotRemove,
                join({headerCalls({"Music"}), {problem("cannot remove file", named, kDenied)}}),
                {listing, kWorkFile});
    openFolder();
    const auto replace = [&] {
        fs::remove(listing);
        fs::create_directories(listing + "/x");
    };
    expectError(listWhenCounted(replace), header(1), request::kCannotRemove,
                join({headerCalls({"Music"}),
                      {problem("cannot remove file", named, "Directory not empty")}}),
                {listing});
}

TEST_F(ListShares, listingThatDoesNotFitOnTheDiskIsAnError)
{
    root::stubListing(block("Music", "public"));
    request::load(frame("lsts", 0));
    watch::after("echo \"share_info() return", [&] {
        fs::remove(listing);
        root::fillDisk();
    });
    watch::after("echo \"exiting", [] { root::freeDisk(); });
    expectError(request::run(), "", kFailed,
                join({shareInfoCalls({"Music"}), {command, runTrace(256)}}), {listing});
}

TEST_F(ListShares, countNeedsNoRoomOnTheDisk)
{
    root::stubListing(block("Music", "public"));
    request::load(frame("lsts", 0));
    watch::after(command, [] {
        watch::after(kShareInfoLine, [] { root::fillDisk(); });
        watch::after("echo \"cmd_lsts return", [] { root::freeDisk(); });
    });
    expectEnd(header(1) + "Music\npublic\n",
              join({headerCalls({"Music"}), {trace("cmd_lsts return: number of user: 1")}}),
              {kWorkFile});
}

// ---- isShareNameExisted -----------------------------------------------------------------------

class ShareNameExists : public request::Test {
  protected:
    const std::string list = root::workFile("isShareNameExisted");

    static void stubShares(const Lines& names)
    {
        std::string text;
        for (const std::string& name : names) {
            text += block(name, "public");
        }
        root::stubListing(text);
    }

    [[nodiscard]] std::string sizeTrace(std::size_t size) const
    {
        return root::sizeTrace(list, size);
    }

    static std::string searchTrace(const std::string& line, const std::string& needle)
    {
        return cutTrace("isShareNameExisted() share return:" + line + " -- shareName:" + needle);
    }

    static std::string resultTrace(int result)
    {
        return trace("isShareNameExisted() return: " + std::to_string(result));
    }

    /// Compares all that the search for a name among these internal shares leaves.
    void expectResult(const Lines& shares, const std::string& name, int result)
    {
        watch::restart();
        stubShares(shares);
        EXPECT_EQ(isShareNameExisted(name.c_str()), result) << name;
        const std::string line = shareList(shares);
        const std::string needle = root::upper('"' + name + '"').substr(0, 511);
        EXPECT_EQ(watch::calls(),
                  join({shareInfoCalls(shares),
                        {sizeTrace(line.size()), searchTrace(root::upper(line), needle),
                         resultTrace(result)}}));
        EXPECT_EQ(leftBehind(), Lines{});
    }

    /// Searches for "Music", which exists, and runs ACTION at a moment.
    void expectFailure(const std::string& moment, const std::function<void()>& action,
                       const Lines& calls, const Lines& files)
    {
        watch::restart();
        stubShares({"Music"});
        watch::after(moment, action);
        EXPECT_EQ(isShareNameExisted("Music"), -1);
        EXPECT_EQ(watch::calls(), join({shareInfoCalls({"Music"}), calls}));
        EXPECT_EQ(leftBehind(), files);
    }

    static constexpr const char* kListed = "echo \"share_info() return";
    static constexpr const char* kMeasured = "echo \"file ";
    static constexpr std::size_t kMusicSize = 17;
};

TEST_F(ShareNameExists, lettersOfBothCasesCountAsTheSame)
{
    expectResult({"MEDIA"}, "Media", 1);
    expectResult({"media"}, "Media", 1);
    expectResult({"Media"}, "media", 1);
    expectResult({"MeDiA", "x"}, "mEdIa", 1);
}

TEST_F(ShareNameExists, wholeNamesAreCompared)
{
    expectResult({"media"}, "med", 0);
    expectResult({"media"}, "edia", 0);
    expectResult({"media"}, "medias", 0);
    expectResult({"media", "My Photos"}, "my photos", 1);
    expectResult({}, "media", 0);
}

TEST_F(ShareNameExists, emptyNameIsTwoQuotesInARow)
{
    expectResult({"a"}, "", 0);
    expectResult({}, "", 0);
    expectResult({"a", "b"}, "", 1);
}

TEST_F(ShareNameExists, namesOfAllSizes)
{
    for (const std::size_t size : kNameSizes) {
        const std::string name(size, 'n');
        expectResult({name}, std::string(size, 'N'), 1);
        expectResult({name}, name + 'n', 0);
    }
    const std::string longer(65, 'n');
    expectResult({longer}, longer, 1);
}

TEST_F(ShareNameExists, longNameIsCutBeforeItIsSearchedFor)
{
    const std::string name(4000, 'n');
    expectResult({"n"}, name, 0);
    expectResult({std::string(509, 'n')}, name, 0);
    expectResult({std::string(510, 'n')}, name, 1);
}

TEST_F(ShareNameExists, onlyLettersOfAsciiHaveTwoCases)
{
    expectResult({"\xC3\xA9t\xC3\xA9"}, "\xC3\xA9T\xC3\xA9", 1);
    expectResult({"\xC3\xA9t\xC3\xA9"}, "\xC3\x89t\xC3\xA9", 0);
}

TEST_F(ShareNameExists, onlyInternalSharesHaveANameThatIsTaken)
{
    root::stubListing(block("Stick", "public", "external"));
    EXPECT_EQ(isShareNameExisted("Stick"), 0);
    EXPECT_EQ(leftBehind(), Lines{});
}

TEST_F(ShareNameExists, manySharesAreAllFound)
{
    Lines names;
    for (int i = 0; i < 150; ++i) {
        names.push_back("Share" + std::to_string(i));
    }
    expectResult(names, "share149", 1);
    expectResult(names, "share150", 0);
}

TEST_F(ShareNameExists, failedListIsAFailure)
{
    root::stub("php", "exit 3");
    EXPECT_EQ(isShareNameExisted("Music"), -1);
    EXPECT_EQ(watch::calls(), shareInfoFailure(768, "Success"));
    watch::restart();
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(isShareNameExisted("Music"), -1);
    EXPECT_EQ(watch::calls(), shareInfoFailure(-1, kAgain));
    EXPECT_EQ(leftBehind(), Lines{});
}

TEST_F(ShareNameExists, scriptReapedElsewhereCounts)
{
    std::signal(SIGCHLD, SIG_IGN);
    expectResult({"Music"}, "music", 1);
}

TEST_F(ShareNameExists, listThatIsRemovedBeforeItIsMeasuredIsTraced)
{
    expectFailure(kListed, [&] { fs::remove(list); },
                  {problem("isShareNameExisted() cannot stat file", list, kNotThere)}, {});
}

TEST_F(ShareNameExists, listThatIsRemovedBeforeItIsOpenedIsTraced)
{
    expectFailure(
        kMeasured, [&] { fs::remove(list); },
        {sizeTrace(kMusicSize), problem("isShareNameExisted() cannot open file", list, kNotThere)},
        {});
}

TEST_F(ShareNameExists, unreadableListIsTracedAndStays)
{
    expectFailure(
        kListed, [&] { makeUnreadable(list); },
        {sizeTrace(kMusicSize), problem("isShareNameExisted() cannot open file", list, kDenied)},
        {list});
}

TEST_F(ShareNameExists, listThatIsTooLargeForTheMemoryIsTracedAndRemoved)
{
    expectFailure(
        kListed, [&] { fs::resize_file(list, (std::uintmax_t{1} << 60U) + 17); },
        {sizeTrace(17), trace("isShareNameExisted() () failed  memory allocation Cannot allocate "
                              "memory")},
        {});
}

TEST_F(ShareNameExists, emptyListIsAFailure)
{
    expectFailure(kListed, [&] { root::writeFile(list, ""); }, {resultTrace(-1)}, {});
    expectFailure(kMeasured, [&] { root::writeFile(list, ""); },
                  {sizeTrace(kMusicSize), resultTrace(-1)}, {});
}

TEST_F(ShareNameExists, folderInTheListsPlaceIsAFailure)
{
    const auto replace = [&] {
        fs::remove(list);
        fs::create_directory(list);
    };
    expectFailure(kMeasured, replace, {sizeTrace(kMusicSize), resultTrace(-1)}, {});
}

TEST_F(ShareNameExists, listThatDoesNotFitOnTheDiskIsAFailure)
{
    expectFailure("sudo",
                  [] {
                      root::fillDisk();
                      watch::after("echo \"isShareNameExisted() return", [] { root::freeDisk(); });
                  },
                  {resultTrace(-1)}, {});
}

TEST_F(ShareNameExists, listThatCannotBeRemovedIsAnsweredAnyway)
{
    stubShares({"Music"});
    watch::after(kListed, [] { closeFolder(); });
    EXPECT_EQ(isShareNameExisted("music"), 1);
    EXPECT_EQ(watch::calls().back(), resultTrace(1));
    EXPECT_EQ(leftBehind(), Lines{list});
}

TEST_F(ShareNameExists, onlyTheListsFirstLineIsSearched)
{
    stubShares({"Music"});
    watch::after(kListed, [&] { root::writeFile(list, "return [\n\"Music\"];"); });
    EXPECT_EQ(isShareNameExisted("Music"), 0);
    EXPECT_EQ(leftBehind(), Lines{});
}

} // namespace
