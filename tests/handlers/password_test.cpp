// SPDX-License-Identifier: MIT
#include "handlers/password.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/request.h"

namespace fs = std::filesystem;

namespace {

using request::exitTrace;
using request::filledFrame;
using request::frame;
using request::kWorkFile;
using request::Lines;
using request::opening;
using request::Outcome;
using request::process;
using root::le32;

const std::string kPasswordFile = "/usr/private/smbpasswd";

constexpr std::uint32_t kMissing = request::kMalformed;
constexpr std::uint32_t kWrong = 0x00000001;

const std::string kRight = "wall \n";

// The hashes of passwords.
const std::string kEmpty = "31D6CFE0D16AE931B73C59D7E0C089C0";
const std::string kSecret = "878D8014606CDA29677A44EFA1353FC7";
const std::string kOther = "1D6569543D9C01D25A9CF7F841D1B258";
const std::string kN = "A32F9FACBEFC62B814E5E9B5985123D9";
const std::string kAccented = "E77286D072C7858E9110CC3A011D2AC8";
const std::string k254Times = "F5CF0C4DAB7A74C9964B4CB4F1DD7CAE"; // "p"
const std::string k255Times = "02EA172E6ACCBB290C91994959D60FED";
const std::string k256Times = "E024276C5E51140838E5B432988226E3";

std::string line(const std::string& name, const std::string& hash,
                 const std::string& flags = "[U          ]")
{
    return name + ":1000:" + std::string(32, 'X') + ":" + hash + ":" + flags + ":LCT-5F3A2B1C:\n";
}

class Wall : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        removeAccounts();
        setAccounts(line("anna", kSecret) + line("bob", kOther));
    }

    void TearDown() override
    {
        removeAccounts();
        request::Test::TearDown();
    }

    static void setAccounts(const std::string& content) { root::writeFile(kPasswordFile, content); }

    static void removeAccounts() { fs::remove_all(kPasswordFile); }

    static void expectRight(const std::string& rest)
    {
        SCOPED_TRACE(rest);
        expectEnd(process(frame("wall", 2, rest)), kRight, {});
    }

    static void expectError(std::uint32_t code, const std::string& rest)
    {
        expectErrorTo(code, frame("wall", 2, rest));
    }

    static void expectErrorTo(std::uint32_t code, const std::string& frame)
    {
        SCOPED_TRACE(frame);
        request::Test::expectError(process(frame), "erro " + le32(code), code, {});
    }

    /// A request that fills all 4096 bytes.
    static std::string fullFrame(const std::string& rest) { return filledFrame("wall", 2, rest); }

    static std::size_t openFiles() { return root::list("/proc/self/fd").size(); }
};

// ---- Right and wrong --------------------------------------------------------------------------

TEST_F(Wall, rightPasswordIsAnsweredInSixBytes)
{
    expectRight("anna\nsecret\n");
    expectRight("bob\nother\n");
}

TEST_F(Wall, wrongPasswordIsAnError)
{
    for (const char* password : {"other", "", "Secret", "secret ", " secret", "secre", "secrets"}) {
        expectError(kWrong, "anna\n" + std::string(password) + "\n");
    }
}

TEST_F(Wall, unknownUserGetsTheSameAnswer)
{
    for (const char* user : {"carl", "", "ann", "annab", "anna ", " anna", "anna:1000", "#"}) {
        expectError(kWrong, std::string(user) + "\nsecret\n");
    }
}

TEST_F(Wall, everyAccountIsSearched)
{
    std::string content;
    for (int i = 0; i < 3000; ++i) {
        content += line("user" + std::to_string(i), kOther);
    }
    setAccounts(content + line("anna", kSecret));
    expectRight("anna\nsecret\n");
    expectRight("user0\nother\n");
    expectRight("user2999\nother\n");
}

TEST_F(Wall, caseOfANameDoesNotMatter)
{
    setAccounts(line("admin", kSecret) + line("Bob", kOther) + line("\xE9lise", kSecret));
    expectRight("ADMIN\nsecret\n");
    expectRight("aDmIn\nsecret\n");
    expectRight("bob\nother\n");
    expectRight("\xE9LISE\nsecret\n");
    expectError(kWrong, "\xC9lise\nsecret\n");
}

TEST_F(Wall, firstAccountOfANameCounts)
{
    setAccounts(line("ANNA", kOther) + line("anna", kSecret));
    expectRight("anna\nother\n");
    expectError(kWrong, "anna\nsecret\n");
    setAccounts(line("anna", std::string(32, 'X')) + line("anna", kSecret));
    expectError(kWrong, "anna\nsecret\n");
}

TEST_F(Wall, flagsDoNotMatter)
{
    for (const char* flags : {"", "[]", "[D          ]", "[NDUXW]"}) {
        setAccounts(line("anna", kSecret, flags));
        expectRight("anna\nsecret\n");
    }
}

TEST_F(Wall, emptyPasswordIsAPassword)
{
    setAccounts(line("anna", kEmpty) + line("bob", kOther));
    expectRight("anna\n\n");
    expectError(kWrong, "anna\n \n");
    expectError(kWrong, "bob\n\n");
}

TEST_F(Wall, charactersOfAPasswordAreBytes)
{
    setAccounts(line("anna", kAccented));
    expectRight("anna\n\xE9\n");
    expectError(kWrong, "anna\n\xC3\xA9\n");
    expectError(kWrong, "anna\n\xC9\n");
}

TEST_F(Wall, hashInLowerCaseVerifies)
{
    setAccounts(line("anna", "878d8014606cda29677a44efa1353fc7"));
    expectRight("anna\nsecret\n");
}

TEST_F(Wall, malformedHashVerifiesNothing)
{
    for (const std::string& hash :
         {std::string(), kSecret.substr(0, 31), kSecret + "0", kSecret + "X", std::string(32, 'X'),
          "G" + kSecret.substr(1), kSecret.substr(0, 31) + " ",
          std::string("NO PASSWORDXXXXXXXXXXXXXXXXXXXXX")}) {
        setAccounts(line("anna", hash) + line("bob", kOther));
        expectError(kWrong, "anna\nsecret\n");
        expectError(kWrong, "anna\n\n");
        expectRight("bob\nother\n");
    }
}

// ---- The password file ------------------------------------------------------------------------

TEST_F(Wall, commentsAreSkipped)
{
    setAccounts("# " + line("anna", kOther) + "#\n" + line("anna", kSecret) + "# end");
    expectRight("anna\nsecret\n");
}

TEST_F(Wall, lineThatIsNoAccountEndsTheSearch)
{
    const std::string good = line("carl", kOther);
    for (const std::string& broken :
         {std::string("\n"), std::string("carl\n"), good.substr(0, good.size() - 2) + "\n",
          line("carl", kOther, "[L]"), line("carl", kOther, "[S]"), line("carl", kOther, "[u]"),
          std::string("carl::x:x:[U]:LCT-1:\n"), std::string("carl:x:x:x:[U]:LCT-1:\n"),
          std::string("carl:1:x:x:[U]::\n"), std::string("carl:1:x:x:[U]:LCT-0x1:\n"),
          "#" + std::string(1022, 'x') + "tail\n", std::string("\0\n", 2)}) {
        setAccounts(line("anna", kSecret) + broken + line("bob", kOther));
        expectRight("anna\nsecret\n");
        expectError(kWrong, "bob\nother\n");
        expectError(kWrong, "carl\nother\n");
    }
}

TEST_F(Wall, lastLineWithoutANewlineNeedsACharacterAfterItsColon)
{
    const std::string whole = line("bob", kOther);
    setAccounts(line("anna", kSecret) + whole.substr(0, whole.size() - 1));
    expectRight("anna\nsecret\n");
    expectError(kWrong, "bob\nother\n");
    setAccounts(line("anna", kSecret) + whole.substr(0, whole.size() - 1) + "x");
    expectRight("bob\nother\n");
}

TEST_F(Wall, withoutAPasswordFileNothingVerifies)
{
    removeAccounts();
    expectError(kWrong, "anna\nsecret\n");
    fs::create_symlink("/tmp/none", kPasswordFile);
    expectError(kWrong, "anna\nsecret\n");
}

TEST_F(Wall, emptyPasswordFileHasNoAccounts)
{
    setAccounts("");
    expectError(kWrong, "anna\nsecret\n");
    expectError(kWrong, "\n\n");
}

TEST_F(Wall, unreadablePasswordFileVerifiesNothing)
{
    fs::permissions(kPasswordFile, fs::perms::none);
    expectError(kWrong, "anna\nsecret\n");
}

TEST_F(Wall, folderInThePlaceOfThePasswordFileVerifiesNothing)
{
    removeAccounts();
    fs::create_directory(kPasswordFile);
    expectError(kWrong, "anna\nsecret\n");
}

TEST_F(Wall, passwordFileIsOnlyRead)
{
    const std::string content = line("anna", kSecret) + "broken\n";
    setAccounts(content);
    fs::permissions(kPasswordFile, fs::perms::owner_read);
    expectRight("anna\nsecret\n");
    expectError(kWrong, "bob\nother\n");
    EXPECT_EQ(root::readFile(kPasswordFile), content);
    EXPECT_EQ(root::list("/usr/private"), Lines{"smbpasswd"});
}

// ---- The request ------------------------------------------------------------------------------

TEST_F(Wall, missingLineIsAnEmptyText)
{
    setAccounts(line("anna", kEmpty) + line("bob", kOther) + line("", kEmpty));
    expectRight("anna\n");
    expectRight("anna");
    expectError(kWrong, "bob\n");
    expectError(kWrong, "bob");
    expectRight("");
    setAccounts(line("anna", kEmpty) + line("", kOther));
    expectError(kWrong, "");
    expectRight("\nother\n");
}

TEST_F(Wall, lastLineNeedsNoNewline)
{
    expectRight("anna\nsecret");
    expectError(kWrong, "anna\nsecre");
}

TEST_F(Wall, oneNewlineIsRemovedAndNothingElse)
{
    expectError(kWrong, "anna\r\nsecret\n");
    expectError(kWrong, "anna\nsecret\r\n");
    expectError(kWrong, "anna\n\nsecret\n");
    expectRight("anna\nsecret\n\n");
    expectRight("anna\nsecret\nmore\n");
}

TEST_F(Wall, zeroByteEndsAText)
{
    expectRight(std::string("anna\0bob\nsecret\0other\n", 22));
    expectError(kWrong, std::string("\0anna\nsecret\n", 13));
}

TEST_F(Wall, missingPasswordIsAnError)
{
    for (const std::string& rest : {std::string("a\n"), std::string("ab"), std::string("anna\n"),
                                    std::string(254, 'n') + "\n", std::string(255, 'n')}) {
        expectErrorTo(kMissing, fullFrame(rest));
    }
}

TEST_F(Wall, lineThatEndsTheRequestIsNotMissing)
{
    EXPECT_EQ(process(fullFrame("anna\nsecret\n")).answer, kRight);
    EXPECT_EQ(process(fullFrame("anna\nsecret")).answer, kRight);
    setAccounts(line("anna", kEmpty) + line(std::string(255, 'n'), kN));
    EXPECT_EQ(process(fullFrame("anna\n\n")).answer, kRight);
    EXPECT_EQ(process(fullFrame(std::string(256, 'n'))).answer, kRight);
}

TEST_F(Wall, newlineAfterALongFirstLineIsALine)
{
    setAccounts(line("", kSecret) + line("a", kEmpty));
    expectErrorTo(kWrong, fullFrame("\n"));
    setAccounts(line("", kEmpty));
    EXPECT_EQ(process(fullFrame("\n")).answer, kRight);
}

TEST_F(Wall, missingUserIsAnError)
{
    EXPECT_EQ(process(frame("gubs", 0)).result, 0);
    EXPECT_EQ(request::unread(), "");
    const Outcome outcome = request::call(cmd_wall);
    EXPECT_EQ(outcome.answer, "erro " + le32(kMissing));
    EXPECT_EQ(outcome.calls, Lines{exitTrace(kMissing)});
}

TEST_F(Wall, userHas255CharactersAndTheRestIsThePassword)
{
    const auto name = [](std::size_t size) { return std::string(size, 'n'); };
    setAccounts(line(name(254), kSecret) + line(name(255), kSecret));
    expectRight(name(254) + "\nsecret\n");
    expectError(kWrong, name(255) + "\nsecret\n"); // the newline alone is the password
    expectError(kWrong, name(256) + "\nsecret\n");
    expectRight(name(255) + "secret\n");
    setAccounts(line(name(254), kEmpty) + line(name(255), kEmpty));
    expectError(kWrong, name(254) + "\nsecret\n");
    expectRight(name(255) + "\nsecret\n");
    expectError(kWrong, name(256) + "\nsecret\n");
    setAccounts(line(name(255), kN));
    expectRight(name(256) + "\nsecret\n");
    expectError(kWrong, name(257) + "\nsecret\n");
}

TEST_F(Wall, longerNameInTheFileKeeps255Characters)
{
    setAccounts(line(std::string(300, 'n'), kSecret));
    expectRight(std::string(255, 'n') + "secret\n");
    expectError(kWrong, std::string(254, 'n') + "\nsecret\n");
}

TEST_F(Wall, passwordHas255Characters)
{
    const auto password = [](std::size_t size) { return "anna\n" + std::string(size, 'p') + "\n"; };
    setAccounts(line("anna", k254Times));
    expectRight(password(254));
    expectError(kWrong, password(255));
    setAccounts(line("anna", k255Times));
    expectError(kWrong, password(254));
    expectRight(password(255));
    expectRight(password(256));
    expectRight(password(3000));
    setAccounts(line("anna", k256Times));
    expectError(kWrong, password(255));
    expectError(kWrong, password(256));
}

TEST_F(Wall, otherCountThanTwoIsRefusedBeforeTheFileIsRead)
{
    for (const std::uint32_t count : {0U, 1U, 3U, 255U, 513U}) {
        const Outcome outcome = process(frame("wall", count, "anna\nsecret\n"));
        EXPECT_EQ(outcome.result, -1) << count;
        EXPECT_EQ(outcome.answer, le32(kMissing)) << count;
        EXPECT_EQ(outcome.calls, opening("wall", count, {exitTrace(kMissing)})) << count;
    }
}

TEST_F(Wall, onlyTheLowByteOfTheCountCounts)
{
    const Outcome outcome = process(frame("wall", 0x102, "anna\nsecret\n"));
    EXPECT_EQ(outcome.answer, kRight);
    EXPECT_EQ(outcome.calls, opening("wall", 0x102));
}

// ---- What is left -----------------------------------------------------------------------------

TEST_F(Wall, errorRemovesTheWorkFile)
{
    for (const std::string& frame :
         {request::frame("wall", 2, "anna\nother\n"), fullFrame("anna\n")}) {
        root::writeFile(kWorkFile, "work");
        EXPECT_EQ(process(frame).answer.substr(0, 5), "erro ");
        EXPECT_FALSE(root::exists(kWorkFile));
    }
}

TEST_F(Wall, rightPasswordLeavesTheWorkFile)
{
    root::writeFile(kWorkFile, "work");
    EXPECT_EQ(process(frame("wall", 2, "anna\nsecret\n")).answer, kRight);
    EXPECT_EQ(root::readFile(kWorkFile), "work");
}

TEST_F(Wall, neitherPasswordNorHashIsTraced)
{
    EXPECT_EQ(process(frame("wall", 2, "anna\nsecret\n")).answer, kRight);
    expectError(kWrong, "anna\nother\n");
    EXPECT_EQ(root::readFile(root::kTraceFile), "cmd=6c6c6177 \nparam_count=2\n"
                                                "cmd=6c6c6177 \nparam_count=2\n"
                                                "exiting with error 0x00000001\n");
}

TEST_F(Wall, passwordFileIsClosedEachTime)
{
    const auto requests = [] {
        EXPECT_EQ(process(frame("wall", 2, "anna\nsecret\n")).answer, kRight);
        expectError(kWrong, "anna\nother\n");
        expectError(kWrong, "carl\nother\n");
    };
    requests();
    const std::size_t before = openFiles();
    for (int i = 0; i < 10; ++i) {
        requests();
    }
    EXPECT_EQ(openFiles(), before);
}

} // namespace
