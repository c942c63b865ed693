// SPDX-License-Identifier: MIT
#include "handlers/smb_passwd.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <malloc.h>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/root.h"

namespace {

// Other programs read entries as a plain C struct.
static_assert(std::is_standard_layout_v<SmbPasswdEntry> && std::is_trivial_v<SmbPasswdEntry>);
static_assert(offsetof(SmbPasswdEntry, name) == 0 && sizeof(SmbPasswdEntry::name) == 256);
static_assert(offsetof(SmbPasswdEntry, uid) == 256);
static_assert(std::is_same_v<decltype(SmbPasswdEntry::uid), std::int32_t>);
static_assert(offsetof(SmbPasswdEntry, lmHash) == 260 && sizeof(SmbPasswdEntry::lmHash) == 33);
static_assert(offsetof(SmbPasswdEntry, ntHash) == 293 && sizeof(SmbPasswdEntry::ntHash) == 33);
static_assert(offsetof(SmbPasswdEntry, flags) == 326 && sizeof(SmbPasswdEntry::flags) == 1);
static_assert(offsetof(SmbPasswdEntry, lastChange) == 328);
static_assert(sizeof(SmbPasswdEntry) == 332 && sizeof(SmbPasswdEntry::lastChange) == 4);

const std::string kFile = "/tmp/smbpasswd";
const std::string kLm = "0123456789ABCDEF0123456789ABCDEF";
const std::string kNt = "8846F7EAEE8FB117AD06BDD830B7586C";

/// An account's line: a test changes some fields, the others are valid.
struct Line {
    std::string name = "anna";
    std::string id = "1000";
    std::string lm = kLm;
    std::string nt = kNt;
    std::string flags = "[U          ]";
    std::string change = "LCT-5F3A2B1C";

    /// The six fields, each with its colon.
    [[nodiscard]] std::string text() const
    {
        return name + ":" + id + ":" + lm + ":" + nt + ":" + flags + ":" + change + ":";
    }
};

class Reader {
  public:
    explicit Reader(const std::string& content)
    {
        root::writeFile(kFile, content);
        EXPECT_EQ(openSmbPasswd(&handle_, kFile.c_str()), 0);
    }
    ~Reader() { EXPECT_EQ(closeSmbPasswd(handle_), 0); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// Reads a line into an entry that is filled with other bytes; sets errno to 0 before.
    [[nodiscard]] int read()
    {
        std::memset(&entry_, 'x', sizeof entry_);
        errno = 0;
        return readSmbPasswdEntry(handle_, &entry_);
    }
    [[nodiscard]] const SmbPasswdEntry& entry() const { return entry_; }
    void rewind() { EXPECT_EQ(rewindSmbPasswd(handle_), 0); }

    void expectAccount(const std::string& name)
    {
        EXPECT_EQ(read(), 0) << name;
        EXPECT_EQ(entry_.name, name);
    }
    void expectNoAccount(const std::string& what)
    {
        EXPECT_EQ(read(), -1) << what;
        EXPECT_EQ(errno, EINVAL) << what;
    }
    void expectEnd()
    {
        EXPECT_EQ(read(), -1);
        EXPECT_EQ(errno, 0);
    }

  private:
    SmbPasswdHandle* handle_ = nullptr;
    SmbPasswdEntry entry_ = {};
};

class SmbPasswd : public root::Test {
  protected:
    /// The account that a content begins with.
    static SmbPasswdEntry firstAccount(const std::string& content)
    {
        Reader reader(content);
        EXPECT_EQ(reader.read(), 0) << content;
        return reader.entry();
    }

    /// The same for a single line.
    static SmbPasswdEntry accountOf(const Line& line) { return firstAccount(line.text() + "\n"); }

    /// Expects that the first line of a content is no account.
    static void expectFirstRejected(const std::string& content)
    {
        Reader(content).expectNoAccount(content);
    }
    static void expectRejected(const Line& line) { expectFirstRejected(line.text() + "\n"); }

    static std::size_t openFiles() { return root::list("/proc/self/fd").size(); }
};

/// All bytes of a hash's field.
std::string field(std::span<const char, 33> bytes)
{
    return {bytes.begin(), bytes.end()};
}

// ---- Whole lines ------------------------------------------------------------------------------

TEST_F(SmbPasswd, accountHasAllItsFields)
{
    const SmbPasswdEntry entry = accountOf(Line());
    EXPECT_STREQ(entry.name, "anna");
    EXPECT_EQ(entry.uid, 1000);
    EXPECT_STREQ(entry.lmHash, kLm.c_str());
    EXPECT_STREQ(entry.ntHash, kNt.c_str());
    EXPECT_EQ(entry.flags, kSmbUser);
    EXPECT_EQ(entry.lastChange, 0x5F3A2B1CU);
}

TEST_F(SmbPasswd, accountsAreReadInTheirOrder)
{
    Reader reader(Line{.name = "anna"}.text() + "\n" + Line{.name = "bob"}.text() + "\n" +
                  Line{.name = "anna", .id = "2"}.text() + "\n");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectAccount("anna");
    EXPECT_EQ(reader.entry().uid, 2);
    reader.expectEnd();
    reader.expectEnd();
}

TEST_F(SmbPasswd, entryHoldsNothingOfThePreviousOne)
{
    Reader reader(Line{.name = "annabel", .flags = "[NDXW]"}.text() + "\n" +
                  Line{.name = "bo", .lm = "", .nt = "A", .flags = "[U]", .change = "LCT-"}.text() +
                  "\n");
    reader.expectAccount("annabel");
    reader.expectAccount("bo");
    EXPECT_STREQ(reader.entry().lmHash, "");
    EXPECT_STREQ(reader.entry().ntHash, "A");
    EXPECT_EQ(reader.entry().flags, kSmbUser);
    EXPECT_EQ(reader.entry().lastChange, 0U);
}

TEST_F(SmbPasswd, emptyFileEndsAtOnceWithoutAnError)
{
    Reader reader("");
    reader.expectEnd();
}

TEST_F(SmbPasswd, commentsAreSkipped)
{
    Reader reader("#\n# a comment\n#" + Line{.name = "carl"}.text() + "\n" + Line().text() +
                  "\n## more\n" + Line{.name = "bob"}.text() + "\n# end");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectEnd();
}

TEST_F(SmbPasswd, commentBeginsWithTheFirstCharacter)
{
    expectFirstRejected(" # a comment\n");
    EXPECT_STREQ(accountOf({.name = " #"}).name, " #");
}

TEST_F(SmbPasswd, textAfterTheSixthColonIsIgnored)
{
    for (const char* rest : {" ", "\r", ":", "::::", "anything: at all", "LCT-zz:"}) {
        EXPECT_STREQ(firstAccount(Line().text() + rest + "\n").name, "anna") << rest;
    }
}

TEST_F(SmbPasswd, lineAfterOneThatIsNoAccountIsRead)
{
    Reader reader("broken\n" + Line().text() + "\n\n" + Line{.name = "bob"}.text() + "\n");
    reader.expectNoAccount("broken");
    reader.expectAccount("anna");
    reader.expectNoAccount("empty");
    reader.expectAccount("bob");
    reader.expectEnd();
}

TEST_F(SmbPasswd, tooFewFieldsAreNoAccount)
{
    const std::string line = Line().text();
    for (std::size_t colons = 0; colons < 6; ++colons) {
        std::size_t end = 0;
        for (std::size_t i = 0; i < colons; ++i) {
            end = line.find(':', end) + 1;
        }
        expectFirstRejected(line.substr(0, end) + "\n");
        expectFirstRejected(line.substr(0, end) + "x\n");
    }
    expectFirstRejected("\n");
    expectFirstRejected("\r\n");
    expectFirstRejected(" \n");
    expectFirstRejected(":\n");
    expectFirstRejected("::::::\n");
    expectFirstRejected(line.substr(0, line.size() - 1) + "\r\n");
}

TEST_F(SmbPasswd, sixColonsMakeAnAccountOfEmptyFieldsToo)
{
    const SmbPasswdEntry entry = firstAccount(":0:::[]:LCT-:\n");
    EXPECT_STREQ(entry.name, "");
    EXPECT_EQ(entry.uid, 0);
    EXPECT_STREQ(entry.lmHash, "");
    EXPECT_STREQ(entry.ntHash, "");
    EXPECT_EQ(entry.flags, 0);
    EXPECT_EQ(entry.lastChange, 0U);
}

// ---- The last line ----------------------------------------------------------------------------

TEST_F(SmbPasswd, lastLineNeedsNoNewline)
{
    Reader reader(Line().text() + "\n" + Line{.name = "bob"}.text() + "x");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    EXPECT_EQ(reader.entry().lastChange, 0x5F3A2B1CU);
    reader.expectEnd();
}

TEST_F(SmbPasswd, lastCharacterOfALineWithoutNewlineIsNotExamined)
{
    expectFirstRejected(Line().text());
    EXPECT_STREQ(firstAccount(Line().text() + ":").name, "anna");
    for (const char* line : {"a", ":", "x:"}) {
        Reader reader(line);
        reader.expectNoAccount(line);
        reader.expectEnd();
    }
}

// ---- Long lines -------------------------------------------------------------------------------

/// An account's line with SIZE characters, its newline included.
std::string longLine(std::size_t size, const std::string& name = "anna")
{
    const std::string text = Line{.name = name}.text();
    return text + std::string(size - 1 - text.size(), 'x') + "\n";
}

TEST_F(SmbPasswd, lineOf1023CharactersIsWhole)
{
    Reader reader(longLine(1023) + Line{.name = "bob"}.text() + "\n");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectEnd();
}

TEST_F(SmbPasswd, restOfALongerLineIsALineOfItsOwn)
{
    Reader reader(longLine(1024) + longLine(1500, "bob") + Line{.name = "carl"}.text() + "\n");
    reader.expectAccount("anna");
    reader.expectNoAccount("the newline alone");
    reader.expectAccount("bob");
    reader.expectNoAccount("x and a newline");
    reader.expectAccount("carl");
    reader.expectEnd();

    std::string line = longLine(1024);
    line.replace(1023, 1, Line{.name = "dora"}.text() + "\n");
    Reader tail(line);
    tail.expectAccount("anna");
    tail.expectAccount("dora");
    tail.expectEnd();
}

TEST_F(SmbPasswd, sixthColonAtTheEndOfALongPieceDoesNotCount)
{
    const auto content = [](std::size_t size) {
        Line line;
        line.name = std::string(size - line.text().size() + line.name.size(), 'n');
        return line.text() + "tail\n";
    };
    EXPECT_EQ(firstAccount(content(1022)).uid, 1000);
    expectFirstRejected(content(1023));
    expectFirstRejected(content(1024));
}

TEST_F(SmbPasswd, commentOf1023CharactersIsSkippedWhole)
{
    Reader reader("#" + std::string(1021, 'x') + "\n" + Line().text() + "\n");
    reader.expectAccount("anna");
    reader.expectEnd();
}

TEST_F(SmbPasswd, tailOfALongerCommentIsALineOfItsOwn)
{
    const std::string comment = "#" + std::string(1022, 'x');
    Reader reader(comment + "\n" + comment + "more\n" + comment + Line().text() + "\n" + comment +
                  "# and more\n" + Line{.name = "bob"}.text() + "\n");
    reader.expectNoAccount("the newline alone");
    reader.expectNoAccount("more");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectEnd();
}

// ---- Zero bytes -------------------------------------------------------------------------------

TEST_F(SmbPasswd, zeroByteEndsTheLine)
{
    const std::string zero(1, '\0');
    const std::string line = Line().text();
    Reader reader(zero + line + "\n" +                                 // nothing before it
                  line.substr(0, 40) + zero + line.substr(40) + "\n" + // in the LM hash
                  line + zero + "rest\n" +       // the sixth colon is the last character
                  line + "x" + zero + "rest\n" + // after it
                  "#" + zero + line + "\n" +     // a comment
                  Line{.name = "bob"}.text() + "\n");
    reader.expectNoAccount("nothing before the zero byte");
    reader.expectNoAccount("zero byte in the LM hash");
    reader.expectNoAccount("sixth colon before the zero byte");
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectEnd();
}

// ---- Names ------------------------------------------------------------------------------------

TEST_F(SmbPasswd, nameIsTakenUnchanged)
{
    for (const char* name :
         {" ", "Anna Maria ", "ANNA", "\xC3\xA9lise", "\xE9lise", "box$", "[U]"}) {
        EXPECT_STREQ(accountOf({.name = name}).name, name);
    }
}

TEST_F(SmbPasswd, nameKeeps255Bytes)
{
    for (const std::size_t size : {254U, 255U, 256U, 300U}) {
        std::string name(size, 'n');
        name[253] = 'x';
        name[size - 1] = 'z';
        const SmbPasswdEntry entry = accountOf({.name = name});
        EXPECT_EQ(entry.name, name.substr(0, 255));
        EXPECT_EQ(entry.uid, 1000) << size;
    }
}

// ---- Ids --------------------------------------------------------------------------------------

TEST_F(SmbPasswd, idIsAnOptionalSignAndDigits)
{
    EXPECT_EQ(accountOf({.id = "0"}).uid, 0);
    EXPECT_EQ(accountOf({.id = "007"}).uid, 7);
    EXPECT_EQ(accountOf({.id = "+5"}).uid, 5);
    EXPECT_EQ(accountOf({.id = "-1"}).uid, -1);
    EXPECT_EQ(accountOf({.id = "-0"}).uid, 0);
    EXPECT_EQ(accountOf({.id = "2147483647"}).uid, INT32_MAX);
    EXPECT_EQ(accountOf({.id = "-2147483648"}).uid, INT32_MIN);
    EXPECT_EQ(accountOf({.id = std::string(40, '0') + "12"}).uid, 12);
}

TEST_F(SmbPasswd, idOutsideItsRangeIsTheNearestInIt)
{
    for (const char* id : {"2147483648", "4294967295", "4294967296", "9223372036854775808",
                           "999999999999999999999999", "+2147483648"}) {
        EXPECT_EQ(accountOf({.id = id}).uid, INT32_MAX) << id;
    }
    for (const char* id : {"-2147483649", "-9223372036854775809", "-99999999999999999999999"}) {
        EXPECT_EQ(accountOf({.id = id}).uid, INT32_MIN) << id;
    }
}

TEST_F(SmbPasswd, idThatIsNoNumberIsNoAccount)
{
    for (const char* id : {"",     " ",   "x",   "+",     "-",           "+-1", "-+1", "--1", "++1",
                           "+ 1",  "- 1", " 1",  "\t1",   "\r1",         "1 ",  "1\t", "1a",  "a1",
                           "0x10", "1.0", "1e3", "1,000", "2147483648x", "1-",  "\xB2"}) {
        expectRejected({.id = id});
    }
}

// ---- Hashes -----------------------------------------------------------------------------------

TEST_F(SmbPasswd, hashesAreTakenUnchanged)
{
    for (const std::string& hash :
         {std::string(), std::string("8846f7eaee8fb117ad06bdd830b7586c"), std::string(31, 'A'),
          std::string(32, 'X'), std::string("NO PASSWORDXXXXXXXXXXXXXXXXXXXXX"),
          std::string("no hash\xFF")}) {
        EXPECT_STREQ(accountOf({.lm = hash}).lmHash, hash.c_str());
        EXPECT_STREQ(accountOf({.lm = hash}).ntHash, kNt.c_str());
        EXPECT_STREQ(accountOf({.nt = hash}).ntHash, hash.c_str());
        EXPECT_STREQ(accountOf({.nt = hash}).lmHash, kLm.c_str());
    }
}

TEST_F(SmbPasswd, longerHashIsCutAndALongerNtHashHasNoTerminator)
{
    for (const std::size_t size : {33U, 34U, 200U}) {
        const SmbPasswdEntry entry = accountOf(
            {.lm = kLm + std::string(size - 32, 'L'), .nt = kNt + std::string(size - 32, 'N')});
        EXPECT_EQ(field(entry.lmHash), kLm + std::string(1, '\0'));
        EXPECT_EQ(field(entry.ntHash), kNt + "N");
        EXPECT_EQ(entry.flags, kSmbUser);
        EXPECT_EQ(entry.lastChange, 0x5F3A2B1CU);
    }
}

TEST_F(SmbPasswd, textIsFollowedByZerosToTheEndOfItsField)
{
    const SmbPasswdEntry entry = accountOf({.name = "anna", .lm = kLm, .nt = "8846"});
    EXPECT_EQ(std::string(entry.name, sizeof entry.name), "anna" + std::string(252, '\0'));
    EXPECT_EQ(field(entry.lmHash), kLm + std::string(1, '\0'));
    EXPECT_EQ(field(entry.ntHash), "8846" + std::string(29, '\0'));
}

// ---- Flags ------------------------------------------------------------------------------------

TEST_F(SmbPasswd, eachFlagHasItsBit)
{
    static_assert(kSmbUser == 0x01 && kSmbNoPassword == 0x02 && kSmbDisabled == 0x04 &&
                  kSmbNeverExpires == 0x08 && kSmbWorkstation == 0x10);
    EXPECT_EQ(accountOf({.flags = "[U          ]"}).flags, 0x01);
    EXPECT_EQ(accountOf({.flags = "[N          ]"}).flags, 0x02);
    EXPECT_EQ(accountOf({.flags = "[D          ]"}).flags, 0x04);
    EXPECT_EQ(accountOf({.flags = "[X          ]"}).flags, 0x08);
    EXPECT_EQ(accountOf({.flags = "[W          ]"}).flags, 0x10);
    EXPECT_EQ(accountOf({.flags = "[NDUXW      ]"}).flags, 0x1F);
    EXPECT_EQ(accountOf({.flags = "[UUU]"}).flags, 0x01);
}

TEST_F(SmbPasswd, bracketsAndBlanksAmongTheFlagsAreIgnored)
{
    EXPECT_EQ(accountOf({.flags = ""}).flags, 0);
    EXPECT_EQ(accountOf({.flags = "[]"}).flags, 0);
    EXPECT_EQ(accountOf({.flags = "UD"}).flags, 0x05);
    EXPECT_EQ(accountOf({.flags = "] D[[ U"}).flags, 0x05);
}

TEST_F(SmbPasswd, lineWithAnotherCharacterAmongTheFlagsIsNoAccount)
{
    const std::string known = "UNDXW []";
    for (int value = 1; value < 256; ++value) {
        const char c = static_cast<char>(value);
        if (known.find(c) != std::string::npos || c == ':' || c == '\n') {
            continue;
        }
        expectRejected({.flags = std::string("[U") + c + "]"});
        expectRejected({.flags = std::string(1, c)});
    }
}

// ---- Last changes -----------------------------------------------------------------------------

TEST_F(SmbPasswd, lastChangeIsHexadecimalInEitherCase)
{
    EXPECT_EQ(accountOf({.change = "LCT-"}).lastChange, 0U);
    EXPECT_EQ(accountOf({.change = "LCT-0"}).lastChange, 0U);
    EXPECT_EQ(accountOf({.change = "LCT-9"}).lastChange, 9U);
    EXPECT_EQ(accountOf({.change = "LCT-6b019aBc"}).lastChange, 0x6B019ABCU);
    EXPECT_EQ(accountOf({.change = "LCT-7FFFFFFF"}).lastChange, 0x7FFFFFFFU);
    EXPECT_EQ(accountOf({.change = "LCT-80000000"}).lastChange, 0x80000000U);
    EXPECT_EQ(accountOf({.change = "LCT-FFFFFFFF"}).lastChange, 0xFFFFFFFFU);
}

TEST_F(SmbPasswd, lastChangeOfMoreThanEightDigitsIsAnAccountToo)
{
    EXPECT_EQ(accountOf({.change = "LCT-000000005F3A2B1C"}).lastChange, 0x5F3A2B1CU);
    EXPECT_EQ(accountOf({.change = "LCT-100000000"}).lastChange, 0xFFFFFFFFU);
    EXPECT_EQ(accountOf({.change = "LCT-" + std::string(64, 'f')}).lastChange, 0xFFFFFFFFU);
}

TEST_F(SmbPasswd, lastChangeWithoutItsLabelIsNoAccount)
{
    for (const char* change : {"", "L", "LCT", "lct-1", "LCT1", "LCT:1", "5F3A2B1C", " LCT-1",
                               "xLCT-1", "LCT -1", "LC", "LCTX-1"}) {
        expectRejected({.change = change});
    }
}

TEST_F(SmbPasswd, lastChangeWithOtherCharactersIsNoAccount)
{
    for (const char* change :
         {"LCT- ", "LCT- 1", "LCT-1 ", "LCT-1\r", "LCT-G", "LCT-12G4", "LCT-0x", "LCT-0x12",
          "LCT-0X12", "LCT-x12", "LCT--1", "LCT-+1", "LCT-1.0", "LCT-100000000G", "LCT-LCT-1"}) {
        expectRejected({.change = change});
    }
}

// ---- Opening, rewinding, closing --------------------------------------------------------------

TEST_F(SmbPasswd, fileThatCannotBeOpenedIsAFailureWithItsReason)
{
    root::writeFile("/tmp/closed", Line().text() + "\n");
    std::filesystem::permissions("/tmp/closed", std::filesystem::perms::none);
    struct Row {
        const char* path;
        int error;
    };
    const std::vector<Row> rows = {
        {"/tmp/none", ENOENT},
        {"/tmp/none/smbpasswd", ENOENT},
        {"/tmp/closed", EACCES},
        {"/tmp/closed/smbpasswd", ENOTDIR},
        {"", ENOENT},
    };
    const std::size_t before = openFiles();
    for (const auto& row : rows) {
        SmbPasswdHandle* handle = nullptr;
        errno = 0;
        EXPECT_EQ(openSmbPasswd(&handle, row.path), -1) << row.path;
        EXPECT_EQ(errno, row.error) << row.path;
        EXPECT_EQ(handle, nullptr) << row.path;
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(SmbPasswd, releaseDoesNotChangeTheReasonOfAFailedOpen)
{
    SmbPasswdHandle* handle = nullptr;
    const faults::Guard release = faults::setErrnoOnDelete(EINVAL);
    const int result = openSmbPasswd(&handle, "/tmp/none");
    const int error = errno;
    EXPECT_EQ(result, -1);
    EXPECT_EQ(error, ENOENT);
}

TEST_F(SmbPasswd, folderHasNoAccountsAndIsNoBrokenLine)
{
    SmbPasswdHandle* handle = nullptr;
    ASSERT_EQ(openSmbPasswd(&handle, "/tmp"), 0);
    SmbPasswdEntry entry;
    errno = 0;
    EXPECT_EQ(readSmbPasswdEntry(handle, &entry), -1);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(closeSmbPasswd(handle), 0);
}

TEST_F(SmbPasswd, withoutMemoryNothingIsOpened)
{
    root::writeFile(kFile, Line().text() + "\n");
    const std::size_t before = openFiles();
    SmbPasswdHandle* handle = nullptr;
    {
        const faults::Guard noMemory = faults::failNew();
        errno = 0;
        EXPECT_EQ(openSmbPasswd(&handle, kFile.c_str()), -1);
        EXPECT_EQ(errno, ENOMEM);
    }
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(SmbPasswd, failedOpenReleasesItsHandle)
{
    constexpr std::size_t kTries = 1000;
    SmbPasswdHandle* handle = nullptr;
    EXPECT_EQ(openSmbPasswd(&handle, "/tmp/none"), -1);
    const std::size_t before = ::mallinfo2().uordblks;
    for (std::size_t i = 0; i < kTries; ++i) {
        EXPECT_EQ(openSmbPasswd(&handle, "/tmp/none"), -1);
    }
    EXPECT_LT(::mallinfo2().uordblks, before + kTries * 100);
}

TEST_F(SmbPasswd, closingReleasesTheFile)
{
    root::writeFile(kFile, Line().text() + "\n");
    const std::size_t before = openFiles();
    SmbPasswdHandle* one = nullptr;
    SmbPasswdHandle* other = nullptr;
    ASSERT_EQ(openSmbPasswd(&one, kFile.c_str()), 0);
    ASSERT_EQ(openSmbPasswd(&other, kFile.c_str()), 0);
    EXPECT_EQ(openFiles(), before + 2);
    EXPECT_EQ(closeSmbPasswd(one), 0);
    EXPECT_EQ(openFiles(), before + 1);
    SmbPasswdEntry entry;
    EXPECT_EQ(readSmbPasswdEntry(other, &entry), 0);
    EXPECT_EQ(closeSmbPasswd(other), 0);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(SmbPasswd, rewindingGoesBackToTheFirstAccount)
{
    Reader reader("# a comment\n" + Line().text() + "\n" + Line{.name = "bob"}.text() +
                  "\nbroken\n");
    reader.expectAccount("anna");
    reader.rewind();
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectNoAccount("broken");
    reader.rewind();
    reader.expectAccount("anna");
    reader.expectAccount("bob");
    reader.expectNoAccount("broken");
    reader.expectEnd();
    reader.rewind();
    reader.expectAccount("anna");
}

TEST_F(SmbPasswd, readingRunsNothingAndDoesNotChangeTheFile)
{
    const std::string content = Line().text() + "\n" + Line{.name = "bob"}.text() + "\n";
    {
        Reader reader(content);
        reader.expectAccount("anna");
        reader.expectAccount("bob");
        reader.expectEnd();
    }
    EXPECT_EQ(root::readFile(kFile), content);
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{"smbpasswd"});
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

} // namespace
