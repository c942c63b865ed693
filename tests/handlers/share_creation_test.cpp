// SPDX-License-Identifier: MIT
#include "handlers/share_creation.h"

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
using request::filledFrame;
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
using root::sizeTrace;
using root::trace;
using root::upper;

const std::string kShareScript = "sudo /usr/bin/php /etc/inc/api_share.php ";
const std::string kUserScript = "sudo /usr/bin/php /etc/inc/api_user.php ";
const std::string kFetchListing = kShareScript + "tovGetShareList ";
const std::string kCreate = kShareScript + "tovAddShare ";
const std::string kGive = kShareScript + "tovSetUserSharePrivileges ";

constexpr std::uint32_t kTaken = 0x20000001;
constexpr std::uint32_t kTooLong = 0x20000003;
constexpr std::uint32_t kNoUser = 0x20000006;

/// A shell line that may be too long for its buffer.
std::string cutLine(const std::string& line)
{
    return line.substr(0, 2047);
}

std::string askedFor(const std::string& share, const std::string& property)
{
    return "<tovAddShare><" + share + "><" + property + ">";
}

std::string askedToGive(const std::string& share, const std::string& user)
{
    return "<tovSetUserSharePrivileges><" + user + "><" + share + "><full>";
}

// ---- Calls ------------------------------------------------------------------------------------

std::string fragmentOf(const Lines& shares)
{
    std::string fragment;
    for (const std::string& share : shares) {
        fragment += "\"" + share + "\"";
    }
    return shares.empty() ? "return [];\n" : "return [" + fragment + "];";
}

/// The calls up to the list of shares.
Lines listingCalls(const Lines& shares)
{
    const std::string line = kFetchListing + root::workFile("share_info");
    Lines calls = {trace("share_info sys(" + line + ")"), line};
    for (const std::string& share : shares) {
        calls.push_back(trace("share_info() -- found share:" + share));
    }
    calls.push_back(trace("share_info() return from share_info " + std::to_string(shares.size())));
    return calls;
}

/// The calls that look a share up.
Lines shareLookup(const Lines& shares, const std::string& name, int result)
{
    const std::string fragment = fragmentOf(shares);
    return join({listingCalls(shares),
                 {sizeTrace(root::workFile("isShareNameExisted"), fragment.size()),
                  trace("isShareNameExisted() share return:" + upper(fragment) +
                        " -- shareName:\"" + upper(name) + "\""),
                  trace("isShareNameExisted() return: " + std::to_string(result))}});
}

/// The calls that look a user up if no shell can be started.
Lines failedUserLookup()
{
    const std::string line = userFetch()[0];
    return {line,
            trace("system(" + line + ") --  error: 11(Resource temporarily unavailable) -- ")};
}

Lines creation(const std::string& share, const std::string& property, int result = 0)
{
    const std::string line = cutLine(kCreate + "'" + share + "' '" + property + "'");
    Lines calls = {cutTrace("create_shar() " + share + " - " + property),
                   cutTrace("create_shar() cmd: " + line + " "), line};
    if (result != 0) {
        calls.push_back(
            cutTrace("create_shar() system(" + line + "), iRet:" + std::to_string(result)));
    }
    return calls;
}

Lines giving(const std::string& share, const std::string& user, int result = 0,
             const std::string& error = "Success")
{
    const std::string line = cutLine(kGive + "'" + user + "' '" + share + "' full");
    const std::string code = std::to_string(result);
    return {cutTrace("setUserPrivilege() cmd:" + line), line,
            cutTrace((result == 0) ? "setUserPrivilege() cmd:" + line + " iRet:0"
                                   : "setUserPrivilege() failed system(" + line +
                                         "), iRet: " + code + ", err: " + error)};
}

// ---- Names and shell lines --------------------------------------------------------------------

/// Tests of single calls of the share script, which is a stub.
class ShareScript : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        stubScripts({}, {});
    }

    /// Starts again, with a shell line that fails in one of its ways.
    static void fail(const Failure& failure, const std::string& line, const std::string& function)
    {
        watch::restart();
        fs::remove("/stubs/asked");
        stubScripts({}, {}, failure.script.empty() ? "" : function + ") " + failure.script + " ;;");
        if (failure.script.empty()) {
            watch::answer(line, failure.result, failure.error);
        }
    }
};

TEST_F(ShareScript, shareIsCreated)
{
    for (const std::string property : {"public", "private", ""}) {
        watch::restart();
        fs::remove("/stubs/asked");
        EXPECT_EQ(create_shar("Media", property.c_str()), 0);
        EXPECT_EQ(watch::calls(), creation("Media", property));
        EXPECT_EQ(asked(), askedFor("Media", property));
    }
}

TEST_F(ShareScript, creationThatFailsIsTraced)
{
    for (const Failure& failure : kFailures) {
        fail(failure, kCreate, "tovAddShare");
        EXPECT_EQ(create_shar("Media", "public"), -1) << failure.result;
        EXPECT_EQ(watch::calls(), creation("Media", "public", failure.result));
    }
}

TEST_F(ShareScript, missingInterpreterIsAFailure)
{
    fs::remove("/usr/bin/php");
    EXPECT_EQ(create_shar("Media", "public"), -1);
    EXPECT_EQ(watch::calls(), creation("Media", "public", 127 << 8));
    watch::restart();
    EXPECT_EQ(setUserPrivilege("anna", "Media"), -1);
    EXPECT_EQ(watch::calls(), giving("Media", "anna", 127 << 8));
}

TEST_F(ShareScript, childReapedElsewhereIsAFailure)
{
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(create_shar("Media", "public"), -1);
    EXPECT_EQ(watch::calls(), creation("Media", "public", -1));
    EXPECT_EQ(asked(), askedFor("Media", "public"));
    watch::restart();
    EXPECT_EQ(setUserPrivilege("anna", "Media"), -1);
    EXPECT_EQ(watch::calls(), giving("Media", "anna", -1, "No child processes"));
}

TEST_F(ShareScript, userIsGivenAShare)
{
    EXPECT_EQ(setUserPrivilege("anna", "Media"), 0);
    EXPECT_EQ(watch::calls(), giving("Media", "anna"));
    EXPECT_EQ(asked(), askedToGive("Media", "anna"));
}

TEST_F(ShareScript, givingThatFailsIsTracedWithItsReason)
{
    for (const Failure& failure : kFailures) {
        fail(failure, kGive, "tovSetUserSharePrivileges");
        EXPECT_EQ(setUserPrivilege("anna", "Media"), -1) << failure.result;
        EXPECT_EQ(watch::calls(), giving("Media", "anna", failure.result, failure.reason));
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(ShareScript, errnoIsNeverAnOlderOne)
{
    fail({"exit 3", 0x300, 0, ""}, kGive, "tovSetUserSharePrivileges");
    errno = EACCES;
    EXPECT_EQ(setUserPrivilege("anna", "Media"), -1);
    EXPECT_EQ(watch::calls(), giving("Media", "anna", 0x300, "Success"));
}

TEST_F(ShareScript, namesOfAnySize)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/");
    for (const std::size_t size : kSizes) {
        const std::string name(size, 'n');
        // The quote of a name that is too long for its line is left open.
        const int result = (size < 2000) ? 0 : 0x200;
        watch::restart();
        EXPECT_EQ(create_shar(name.c_str(), "public"), (result == 0) ? 0 : -1) << size;
        EXPECT_EQ(watch::calls(), creation(name, "public", result)) << size;
        watch::restart();
        EXPECT_EQ(setUserPrivilege("anna", name.c_str()), (result == 0) ? 0 : -1) << size;
        EXPECT_EQ(watch::calls(), giving(name, "anna", result)) << size;
        watch::restart();
        EXPECT_EQ(setUserPrivilege(name.c_str(), "Media"), (result == 0) ? 0 : -1) << size;
        EXPECT_EQ(watch::calls(), giving("Media", name, result)) << size;
    }
}

TEST_F(ShareScript, namesReachTheScriptUnchanged)
{
    for (const std::string& name : kOddTexts) {
        watch::restart();
        fs::remove("/stubs/asked");
        EXPECT_EQ(create_shar(name.c_str(), "public"), 0) << name;
        EXPECT_EQ(setUserPrivilege(name.c_str(), name.c_str()), 0) << name;
        EXPECT_EQ(watch::calls(), join({creation(name, "public"), giving(name, name)})) << name;
        EXPECT_EQ(asked(), askedFor(name, "public") + askedToGive(name, name)) << name;
    }
}

TEST_F(ShareScript, shellInterpretsSingleQuotes)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/");
    EXPECT_EQ(create_shar("a' 'b", "public"), 0);
    EXPECT_EQ(asked(), "<tovAddShare><a><b><public>");
    watch::restart();
    EXPECT_EQ(create_shar("O'Brien", "public"), -1);
    EXPECT_EQ(watch::calls(), creation("O'Brien", "public", 0x200));
    watch::restart();
    EXPECT_EQ(setUserPrivilege("O'Brien", "Media"), -1);
    EXPECT_EQ(watch::calls(), giving("Media", "O'Brien", 0x200));
}

// ---- Requests ---------------------------------------------------------------------------------

class Creation : public creation::Test {
  protected:
    void load(const std::string& request)
    {
        creation::Test::load(request);
        line_ = request.substr(0, request.find('\n') + 1);
    }

    /// Adds the traces that "shar" makes of its line before the count is checked.
    void expectEnd(std::uint32_t code, const Lines& calls, const Lines& left = {})
    {
        creation::Test::expectEnd(code, join({lineTraces(), calls}), left);
    }

  private:
    std::string line_;

    [[nodiscard]] Lines lineTraces() const
    {
        return line_.starts_with("shar") ? request::lineTraces(line_) : Lines{};
    }
};

/// Every way in which the search for a share's name fails. The only share is "Old".
std::vector<Trouble> shareTroubles()
{
    const Lines shares = {"Old"};
    const std::string fragment = fragmentOf(shares);
    const std::string listing = root::workFile("share_info");
    const std::string list = root::workFile("isShareNameExisted");
    const std::string line = kFetchListing + listing;
    const Lines start = {trace("share_info sys(" + line + ")"), line};
    const Lines listed = listingCalls(shares);
    const Lines sized = join({listed, {sizeTrace(list, fragment.size())}});
    const std::string failed = "share_info: failed system(" + line + ") iRet:";
    const std::string unopened =
        "share_info() cannot open file: " + listing + " or file: " + list + " (error: ";
    const std::string nothing = trace("isShareNameExisted() return: -1");
    const std::string listTrace = "echo \"share_info() return";
    const std::string sizeOfList = "echo \"file " + list;
    const auto script = [](const std::string& action) {
        stubScripts({"Old"}, {"anna"}, "tovGetShareList) " + action + " ;;");
    };

    return {
        // The script.
        {[=] { script("exit 3"); }, join({start, {trace(failed + "768 (error: Success)")}}), {}},
        {[=] { watch::answer(kFetchListing, -1, EAGAIN); },
         join({start, {trace(failed + "-1 (error: Resource temporarily unavailable)")}}),
         {}},
        {[=] { watch::answer(kFetchListing, -1, ECHILD); },
         join({start, {trace(unopened + "No such file or directory)")}}),
         {list}},
        // The listing.
        {[=] { script(""); },
         join({start, {trace(unopened + "No such file or directory)")}}),
         {list}},
        {[=] { script("echo >\"$3\"; chmod 000 \"$3\""); },
         join({start, {trace(unopened + "Permission denied)")}}),
         {list, listing}},
        // The list made from the listing.
        {[=] {
             script("cat /stubs/listing >\"$3\"");
             fs::create_directory(list);
         },
         join({start, {trace(unopened + "Is a directory)")}}),
         {list, listing}},
        {[=] { watch::after(listTrace, [=] { fs::remove(list); }); },
         join({listed,
               {trace("isShareNameExisted() cannot stat file " + list +
                      ": No such file or directory")}}),
         {}},
        {[=] { watch::after(listTrace, [=] { fs::resize_file(list, 0); }); },
         join({listed, {nothing}}),
         {}},
        {[=] { watch::after(sizeOfList, [=] { fs::permissions(list, fs::perms(0)); }); },
         join({sized,
               {trace("isShareNameExisted() cannot open file " + list + ": Permission denied")}}),
         {list}},
        {[=] { watch::after(sizeOfList, [=] { fs::remove(list); }); },
         join({sized,
               {trace("isShareNameExisted() cannot open file " + list +
                      ": No such file or directory")}}),
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

// ---- pshr -------------------------------------------------------------------------------------

class PublicShare : public Creation {
  protected:
    static Lines named(const std::string& name)
    {
        return {cutTrace("cmd_pshr() sharename=" + name)};
    }

    /// Loads a request for a share by this name.
    void ask(const std::string& name) { load(frame("pshr", 3, "guest\n" + name + "\n")); }

    void expectCreated(const std::string& name, const Lines& shares = {})
    {
        expectEnd(kGood,
                  join({named(name), shareLookup(shares, name, 0), creation(name, "public")}));
        EXPECT_EQ(asked(), askedFor(name, "public"));
    }

    /// The request is refused for how it is written.
    void expectMalformed(const std::string& parameters)
    {
        load(frame("pshr", 3, parameters));
        expectEnd(kMalformed, {});
        EXPECT_EQ(asked(), "");
    }
};

TEST_F(PublicShare, nameAfterGuestIsCreated)
{
    ask("Media");
    expectCreated("Media");
}

TEST_F(PublicShare, nameWithoutGuestLosesItsLastCharacter)
{
    for (const std::string name :
         {"Media", "Guest", "guests", "guest ", "guest\r", "m", "a\xC3\xA9"}) {
        load(frame("pshr", 3, name + "\n"));
        expectCreated(name.substr(0, name.size() - 1));
    }
}

TEST_F(PublicShare, emptyNameStaysEmpty)
{
    load(frame("pshr", 3, "\n"));
    expectCreated("");
    ask("");
    expectCreated("");
}

TEST_F(PublicShare, emptyNameIsTakenIfTheListHoldsTwoQuotesInARow)
{
    stubScripts({"A", "B"}, {});
    ask("");
    expectEnd(kTaken, join({named(""), shareLookup({"A", "B"}, "", 1)}));
}

TEST_F(PublicShare, furtherLinesAreNotRead)
{
    load(frame("pshr", 3, "Medias\nmore\n"));
    expectCreated("Media");
    EXPECT_EQ(request::unread(), "more");
    load(frame("pshr", 3, "guest\nMedia\nmore\n"));
    expectCreated("Media");
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(PublicShare, lineWithoutItsNewlineIsMalformed)
{
    expectMalformed("");
    expectMalformed("Media");
    expectMalformed("guest");
    expectMalformed("guest\n");
    expectMalformed("guest\nMedia");
    expectMalformed("guest\n" + std::string(4000, 'n'));
    expectMalformed(std::string(4000, 'n'));
}

TEST_F(PublicShare, lineWithAZeroByteIsMalformed)
{
    expectMalformed(std::string("Me\0dia\n", 7));
    expectMalformed(std::string("guest\0\nMedia\n", 13));
    expectMalformed(std::string("guest\nMe\0dia\n", 13));
    expectMalformed(std::string("\0\n", 2));
    expectMalformed(std::string("guest\n\0\nMedia\n", 14));
}

TEST_F(PublicShare, guestAtTheEndOfTheRequestIsMalformed)
{
    // Nothing is left, not even a zero: the previous line is the name.
    load(filledFrame("pshr", 3, "guest\n"));
    expectEnd(kMalformed, {});
}

TEST_F(PublicShare, nameMayFillTheRequestToItsEnd)
{
    load(filledFrame("pshr", 3, "guest\nMedia\n"));
    expectCreated("Media");
}

TEST_F(PublicShare, namesOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string name(size, 'n');
        ask(name);
        if (size <= 64) {
            expectCreated(name);
        } else {
            expectEnd(kTooLong, named(name));
            EXPECT_EQ(asked(), "");
        }
    }
}

TEST_F(PublicShare, nameWithoutGuestMayHaveOneCharacterMore)
{
    for (const std::size_t size : {64U, 65U, 66U, 4000U}) {
        const std::string name(size - 1, 'n');
        load(frame("pshr", 3, name + "n\n"));
        if (name.size() <= 64) {
            expectCreated(name);
        } else {
            expectEnd(kTooLong, named(name));
        }
    }
}

TEST_F(PublicShare, charactersAreBytes)
{
    std::string name;
    for (int i = 0; i < 32; ++i) {
        name += "\xC3\xA9";
    }
    ask(name);
    expectCreated(name);
    ask(name + "n");
    expectEnd(kTooLong, named(name + "n"));
}

TEST_F(PublicShare, oddNamesReachTheScriptUnchanged)
{
    for (const std::string& name : kOddTexts) {
        ask(name);
        expectCreated(name);
    }
}

TEST_F(PublicShare, singleQuoteBreaksTheLine)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_share.php tovAddShare");
    ask("O'Brien");
    expectEnd(kFailed, join({named("O'Brien"), shareLookup({}, "O'Brien", 0),
                             creation("O'Brien", "public", 0x200)}));
    EXPECT_EQ(asked(), "");
}

TEST_F(PublicShare, missingMemoryIsTraced)
{
    const faults::Guard noMemory = faults::failStrdup();
    ask("Media");
    expectEnd(kNoMemory,
              join({named("Media"), {trace("cmd_pshr() allmem error=Cannot allocate memory")}}));
    EXPECT_EQ(asked(), "");
}

TEST_F(PublicShare, longNameIsRefusedBeforeItIsCopied)
{
    const faults::Guard noMemory = faults::failStrdup();
    ask(std::string(65, 'n'));
    expectEnd(kTooLong, named(std::string(65, 'n')));
}

TEST_F(PublicShare, takenNameIsRefusedInAnyCase)
{
    const Lines shares = {"Music", "Media"};
    stubScripts(shares, {});
    for (const std::string name : {"Media", "MEDIA", "media", "mUSIC"}) {
        ask(name);
        expectEnd(kTaken, join({named(name), shareLookup(shares, name, 1)}));
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(PublicShare, similarNamesAreFree)
{
    const Lines shares = {"Media"};
    stubScripts(shares, {});
    for (const std::string name : {"Medi", "edia", "Media2", "Media ", "MEDI"}) {
        ask(name);
        expectCreated(name, shares);
    }
}

TEST_F(PublicShare, reservedNameIsRefusedInBothCases)
{
    for (const std::string& reserved : kReserved) {
        for (const std::string& name : {reserved, upper(reserved)}) {
            ask(name);
            expectEnd(kTaken, join({named(name), shareLookup({}, name, 0)}));
            EXPECT_EQ(asked(), "") << name;
        }
    }
    ask("Lost+Found");
    expectEnd(kTaken, join({named("Lost+Found"), shareLookup({}, "Lost+Found", 0)}));
}

TEST_F(PublicShare, searchThatFailsEndsTheCommand)
{
    std::size_t number = 0;
    for (const Trouble& trouble : shareTroubles()) {
        SCOPED_TRACE(++number);
        stubScripts({"Old"}, {"anna"});
        ask("config");
        trouble.arrange();
        expectEnd(kFailed, join({named("config"), trouble.calls}), trouble.left);
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(PublicShare, listingWithoutContentHoldsNoShares)
{
    for (const std::string action : {": >\"$3\"", "mkdir \"$3\""}) {
        stubScripts({"Media"}, {}, "tovGetShareList) " + action + " ;;");
        ask("Media");
        expectCreated("Media");
    }
}

TEST_F(PublicShare, listingReapedElsewhereCounts)
{
    // The list counts despite the lost status, but the share's own line does not.
    std::signal(SIGCHLD, SIG_IGN);
    ask("Media");
    expectEnd(kFailed,
              join({named("Media"), shareLookup({}, "Media", 0), creation("Media", "public", -1)}));
    EXPECT_EQ(asked(), askedFor("Media", "public"));
}

TEST_F(PublicShare, creationThatFailsEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        stubScripts({}, {}, failure.script.empty() ? "" : "tovAddShare) " + failure.script + " ;;");
        ask("Media");
        if (failure.script.empty()) {
            watch::answer(kCreate, failure.result, failure.error);
        }
        expectEnd(kFailed, join({named("Media"), shareLookup({}, "Media", 0),
                                 creation("Media", "public", failure.result)}));
    }
}

// ---- shar -------------------------------------------------------------------------------------

class PrivateShare : public Creation {
  protected:
    /// Loads a request; the traces of its line's bytes are recorded, but not run.
    void load(const std::string& request)
    {
        Creation::load(request);
        for (int i = 0; i < 30; ++i) {
            watch::answer("echo \"0x", 0, 0);
        }
    }

    void ask(const std::string& user, const std::string& share)
    {
        load(frame("shar", 3, user + "\n" + share + "\n"));
    }

    static Lines userNamed(const std::string& user)
    {
        return {cutTrace("cmd_shar() username=" + user)};
    }

    /// The calls up to a user who may have shares.
    static Lines userFound(const std::string& user, const Lines& users)
    {
        return join({userNamed(user), userLookup(users, user, 1)});
    }

    static Lines annaFound() { return userFound("anna", {"anna"}); }

    static Lines shareNamed(const std::string& share)
    {
        return {cutTrace("cmd_shar() sharename: " + share + "\n"),
                cutTrace("cmd_shar() sharename=" + share)};
    }

    static Lines made(const std::string& share, const std::string& user, const Lines& shares = {})
    {
        return join({shareNamed(share), shareLookup(shares, share, 0), creation(share, "private"),
                     giving(share, user)});
    }

    /// The trace if the user gets no access.
    static std::string notGiven(const std::string& share, const std::string& user)
    {
        return cutTrace("cmd_shar() failed setUserPrivilege for share: " + share +
                        ", user:" + user + " ");
    }

    void expectMade(const std::string& share, const std::string& user, const Lines& before,
                    const Lines& left = {})
    {
        expectEnd(kGood, join({before, made(share, user)}), left);
        EXPECT_EQ(asked(), askedFor(share, "private") + askedToGive(share, user));
    }
};

TEST_F(PrivateShare, shareIsCreatedAndGivenToItsUser)
{
    ask("anna", "Media");
    expectMade("Media", "anna", annaFound());
}

TEST_F(PrivateShare, everyTraceReachesTheFile)
{
    Creation::load(frame("shar", 3, "anna\nMedia\n"));
    expectMade("Media", "anna", annaFound());
    const std::string traces = root::readFile(root::kTraceFile);
    EXPECT_NE(traces.find("\n0x73,s\n0x68,h\n0x61,a\n0x72,r\n0x20, \n0x03,\x03\n0x00,\n"),
              std::string::npos);
    EXPECT_NE(traces.find("\ncmd_shar() sharename: Media\n\ncmd_shar() sharename=Media\n"),
              std::string::npos);
    EXPECT_NE(traces.find("\nsetUserPrivilege() cmd:" + kGive + "'anna' 'Media' full iRet:0\n"),
              std::string::npos);
}

TEST_F(PrivateShare, aThirdLineIsNotRead)
{
    load(frame("shar", 3, "anna\nMedia\nmore\n"));
    expectMade("Media", "anna", annaFound());
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(PrivateShare, userLineWithoutItsNewlineIsTraced)
{
    for (const std::string& text : {std::string(), std::string("anna"), std::string(4000, 'n')}) {
        load(frame("shar", 3, text));
        expectEnd(kMalformed, {cutTrace("cmd_shar=" + text)});
    }
    load(frame("shar", 3, std::string("an\0na\nMedia\n", 12)));
    expectEnd(kMalformed, {trace("cmd_shar=an")});
    EXPECT_EQ(asked(), "");
}

TEST_F(PrivateShare, shareLineWithoutItsNewlineIsTraced)
{
    for (const std::string& text : {std::string(), std::string("Media"), std::string(4000, 'n')}) {
        load(frame("shar", 3, "anna\n" + text));
        expectEnd(kMalformed, join({annaFound(), {cutTrace("cmd_shar() sharename: " + text)}}));
    }
    load(frame("shar", 3, std::string("anna\nMe\0dia\n", 12)));
    expectEnd(kMalformed, join({annaFound(), {trace("cmd_shar() sharename: Me")}}));
    EXPECT_EQ(asked(), "");
}

TEST_F(PrivateShare, userAtTheEndOfTheRequestIsMalformed)
{
    // Nothing is left, not even a zero: the previous line is the share's.
    const std::string user(4000, 'u');
    load(filledFrame("shar", 3, user + "\n"));
    watch::answer(kUserScript, -1, EAGAIN);
    expectEnd(
        kMalformed,
        join({userNamed(user), failedUserLookup(), {cutTrace("cmd_shar() sharename: " + user)}}));
}

TEST_F(PrivateShare, shareMayFillTheRequestToItsEnd)
{
    load(filledFrame("shar", 3, "anna\nMedia\n"));
    expectMade("Media", "anna", annaFound());
}

TEST_F(PrivateShare, withoutMemoryForTheUserTheCommandFails)
{
    const faults::Guard noMemory = faults::failStrdup();
    ask("anna", "Media");
    expectEnd(kNoMemory, userNamed("anna"));
}

TEST_F(PrivateShare, withoutMemoryForTheShareTheCommandFails)
{
    {
        const faults::Guard noMemory = faults::failStrdup(1);
        ask("anna", "Media");
        expectEnd(kNoMemory, join({annaFound(), shareNamed("Media")}));
    }
    const faults::Guard noMemory = faults::failStrdup(1);
    ask("anna", std::string(65, 'n'));
    expectEnd(kTooLong, join({annaFound(), shareNamed(std::string(65, 'n'))}));
}

TEST_F(PrivateShare, unknownUserIsRefusedBeforeTheShareIsRead)
{
    for (const std::string user : {"bob", "Anna", "ann", "config"}) {
        load(frame("shar", 3, user + "\nMedia\n"));
        expectEnd(kNoUser, join({userNamed(user), userLookup({"anna"}, user, 0)}));
        EXPECT_EQ(request::unread(), "Media");
    }
    EXPECT_EQ(asked(), "");
}

TEST_F(PrivateShare, guestIsAUser)
{
    ask("guest", "Media");
    expectMade("Media", "guest", userFound("guest", {"anna"}));
}

TEST_F(PrivateShare, everyUserIsRefusedIfTheScriptListsNobody)
{
    for (const std::string action : {"exit 3", ": >\"$3\"", "mkdir \"$3\"", "mkdir \"$3\"2"}) {
        stubScripts({}, {"anna"}, "tovGetUsers) " + action + " ;;");
        ask("anna", "Media");
        expectEnd(kNoUser, join({userNamed("anna"), userLookup({}, "anna", 0)}));
    }
}

TEST_F(PrivateShare, userCountsAsExistingIfTheSearchFails)
{
    const Lines fetch = userFetch();
    const std::string answer = "/tmp/work/isUserExisted" + pid() + pid();
    const std::string again = ") --  error: 11(Resource temporarily unavailable) -- ";
    const std::string reaped = ") --  error: 10(No child processes) -- ";

    ask("bob", "Media");
    watch::answer(kUserScript, -1, EAGAIN);
    expectMade("Media", "bob", join({userNamed("bob"), failedUserLookup()}));
    ask("bob", "Media");
    watch::answer(kUserScript, -1, ECHILD);
    expectMade("Media", "bob",
               join({userNamed("bob"), {fetch[0], trace("system(" + fetch[0] + reaped)}}));
    ask("bob", "Media");
    watch::answer("cat ", -1, EAGAIN);
    expectMade("Media", "bob",
               join({userNamed("bob"), fetch, {trace("system(" + fetch[1] + again)}}), {answer});
    ask("bob", "Media");
    watch::answer("cat ", -1, ECHILD);
    expectMade("Media", "bob",
               join({userNamed("bob"), fetch, {trace("system(" + fetch[1] + reaped)}}), {answer});
}

TEST_F(PrivateShare, userListThatIsLostIsNoRefusal)
{
    const std::string name = "isUserExisted" + pid();
    const std::string list = "/tmp/work/" + name;
    const Lines sized = join({userNamed("bob"), userList({"anna"})});
    const std::string unopened = "isUserExisted() cannot open file " + name + ": ";

    ask("bob", "Media");
    fs::create_directory(list);
    expectMade("Media", "bob", join({userNamed("bob"), userFetch()}),
               {list, list + pid(), list + pid() + "2"});
    ask("bob", "Media");
    watch::after("cat ", [=] { fs::remove(list + pid() + "2"); });
    expectMade("Media", "bob", join({userNamed("bob"), userFetch()}), {list, list + pid()});
    ask("bob", "Media");
    watch::after("echo \"file ", [=] { fs::permissions(list, fs::perms(0)); });
    expectMade("Media", "bob", join({sized, {trace(unopened + "Permission denied")}}), {list});
    ask("bob", "Media");
    watch::after("echo \"file ", [=] { fs::resize_file(list, 0); });
    expectMade("Media", "bob", join({sized, {trace("isUserExisted() iRet:-1")}}));
}

TEST_F(PrivateShare, reservedUserIsRefused)
{
    for (const std::string& reserved : kReserved) {
        for (const std::string& user : {reserved, upper(reserved)}) {
            stubScripts({}, {user});
            ask(user, "Media");
            expectEnd(kNoUser, join({userFound(user, {user}),
                                     {trace("cmd_shar() failed for user:'" + user +
                                            "' reserved name for system")}}));
            EXPECT_EQ(asked(), "") << user;
        }
    }
}

TEST_F(PrivateShare, reservedUserIsRefusedEvenWithoutALookup)
{
    ask("Config", "Media");
    watch::answer(kUserScript, -1, EAGAIN);
    expectEnd(kNoUser,
              join({userNamed("Config"),
                    failedUserLookup(),
                    {trace("cmd_shar() failed for user:'Config' reserved name for system")}}));
}

TEST_F(PrivateShare, usersOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string user(size, 'u');
        // Lines of the list of users have at most 511 characters, so the longest name is not in it.
        const Lines users = (size < 100) ? Lines{"anna", user} : Lines{"anna"};
        stubScripts({}, users);
        ask(user, "Media");
        if (size < 100) {
            expectMade("Media", user, userFound(user, users));
        } else {
            expectEnd(kNoUser, join({userNamed(user), userLookup(users, user, 0)}));
        }
    }
}

TEST_F(PrivateShare, emptyUserIsUnknown)
{
    ask("", "Media");
    expectEnd(kNoUser, join({userNamed(""), userLookup({"anna"}, "", 0)}));
}

TEST_F(PrivateShare, userWhoIsTooLongForALineGetsNothing)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_share.php tovSetUser");
    const std::string user(4000, 'u');
    ask(user, "Media");
    watch::answer(kUserScript, -1, EAGAIN);
    expectEnd(kFailed, join({userNamed(user),
                             failedUserLookup(),
                             shareNamed("Media"),
                             shareLookup({}, "Media", 0),
                             creation("Media", "private"),
                             giving("Media", user, 0x200),
                             {notGiven("Media", user)}}));
    EXPECT_EQ(asked(), askedFor("Media", "private"));
}

TEST_F(PrivateShare, sharesOfAnySize)
{
    for (const std::size_t size : kSizes) {
        const std::string share(size, 'n');
        ask("anna", share);
        if (size <= 64) {
            expectMade(share, "anna", annaFound());
        } else {
            expectEnd(kTooLong, join({annaFound(), shareNamed(share)}));
            EXPECT_EQ(asked(), "");
        }
    }
}

TEST_F(PrivateShare, oddNamesReachTheScriptsUnchanged)
{
    for (const std::string& name : kOddTexts) {
        stubScripts({}, {name});
        ask(name, name);
        expectMade(name, name, userFound(name, {name}));
    }
}

TEST_F(PrivateShare, singleQuotesBreakTheirLines)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_share.php");
    const Lines users = {"anna", "O'Brien"};
    stubScripts({}, users);
    ask("anna", "O'Share");
    expectEnd(kFailed,
              join({userFound("anna", users), shareNamed("O'Share"), shareLookup({}, "O'Share", 0),
                    creation("O'Share", "private", 0x200)}));
    EXPECT_EQ(asked(), "");
    ask("O'Brien", "Media");
    expectEnd(kFailed, join({userFound("O'Brien", users),
                             shareNamed("Media"),
                             shareLookup({}, "Media", 0),
                             creation("Media", "private"),
                             giving("Media", "O'Brien", 0x200),
                             {notGiven("Media", "O'Brien")}}));
    EXPECT_EQ(asked(), askedFor("Media", "private"));
}

TEST_F(PrivateShare, takenShareIsRefusedInAnyCase)
{
    const Lines shares = {"Music", "MEDIA"};
    stubScripts(shares, {"anna"});
    for (const std::string share : {"MEDIA", "media", "Media", "mUSIC"}) {
        ask("anna", share);
        expectEnd(kTaken, join({annaFound(),
                                shareNamed(share),
                                shareLookup(shares, share, 1),
                                {trace("cmd_shar()share name existed: " + share)}}));
        EXPECT_EQ(asked(), "");
    }
    ask("anna", "Medi");
    expectEnd(kGood, join({annaFound(), made("Medi", "anna", shares)}));
}

TEST_F(PrivateShare, emptyShareIsTakenIfTheListHoldsTwoQuotesInARow)
{
    const Lines shares = {"A", "B"};
    stubScripts(shares, {"anna"});
    ask("anna", "");
    expectEnd(kTaken, join({annaFound(),
                            shareNamed(""),
                            shareLookup(shares, "", 1),
                            {trace("cmd_shar()share name existed: ")}}));
}

TEST_F(PrivateShare, longShareIsRefusedBeforeItIsLookedUp)
{
    const std::string share(65, 'n');
    stubScripts({share}, {"anna"});
    ask("anna", share);
    expectEnd(kTooLong, join({annaFound(), shareNamed(share)}));
}

TEST_F(PrivateShare, reservedShareIsRefusedInBothCases)
{
    for (const std::string& reserved : kReserved) {
        for (const std::string& share : {reserved, upper(reserved)}) {
            ask("anna", share);
            expectEnd(kTaken, join({annaFound(),
                                    shareNamed(share),
                                    shareLookup({}, share, 0),
                                    {trace("cmd_shar() failed for share:'" + share +
                                           "' reserved name for system")}}));
            EXPECT_EQ(asked(), "") << share;
        }
    }
}

TEST_F(PrivateShare, searchThatFailsEndsTheCommand)
{
    std::size_t number = 0;
    for (const Trouble& trouble : shareTroubles()) {
        SCOPED_TRACE(++number);
        stubScripts({"Old"}, {"anna"});
        ask("guest", "config");
        trouble.arrange();
        expectEnd(kFailed,
                  join({userFound("guest", {"anna"}), shareNamed("config"), trouble.calls}),
                  trouble.left);
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(PrivateShare, creationThatFailsEndsTheCommand)
{
    for (const Failure& failure : kFailures) {
        stubScripts({}, {"anna"},
                    failure.script.empty() ? "" : "tovAddShare) " + failure.script + " ;;");
        ask("anna", "Media");
        if (failure.script.empty()) {
            watch::answer(kCreate, failure.result, failure.error);
        }
        expectEnd(kFailed, join({annaFound(), shareNamed("Media"), shareLookup({}, "Media", 0),
                                 creation("Media", "private", failure.result)}));
        EXPECT_EQ(asked(), "");
    }
}

TEST_F(PrivateShare, shareThatCannotBeGivenStays)
{
    for (const Failure& failure : kFailures) {
        stubScripts(
            {}, {"anna"},
            failure.script.empty() ? "" : "tovSetUserSharePrivileges) " + failure.script + " ;;");
        ask("anna", "Media");
        if (failure.script.empty()) {
            watch::answer(kGive, failure.result, failure.error);
        }
        expectEnd(kFailed, join({annaFound(),
                                 shareNamed("Media"),
                                 shareLookup({}, "Media", 0),
                                 creation("Media", "private"),
                                 giving("Media", "anna", failure.result, failure.reason),
                                 {notGiven("Media", "anna")}}));
        EXPECT_EQ(asked(), askedFor("Media", "private"));
    }
}

TEST_F(PrivateShare, childrenReapedElsewhereAreFailures)
{
    // The user counts as existing and the list of shares is read, but the share's own line fails.
    std::signal(SIGCHLD, SIG_IGN);
    const std::string line = userFetch()[0];
    ask("bob", "Media");
    expectEnd(kFailed,
              join({userNamed("bob"),
                    {line, trace("system(" + line + ") --  error: 10(No child processes) -- ")},
                    shareNamed("Media"),
                    shareLookup({}, "Media", 0),
                    creation("Media", "private", -1)}),
              {"/tmp/work/isUserExisted" + pid() + pid()});
    EXPECT_EQ(asked(), askedFor("Media", "private"));
}

} // namespace
