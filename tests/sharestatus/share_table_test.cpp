// SPDX-License-Identifier: MIT
//
// ParseShareInfo: from the list of shares to the share status buffer.
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

#include "sharestatus/sharestatus.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using root::le16;
using root::trace;
using root::zeros;

std::string header(unsigned count)
{
    return zeros(5) + le16(count) + zeros(3);
}

/// A record of a share that could not be measured and was never backed up.
std::string blankRecord(const std::string& name)
{
    return zeros(12) + name + "\n";
}

class ShareTable : public root::Test {
  protected:
    std::array<char, 4096> buffer{};

    ShareTable() { buffer.fill('#'); }

    void SetUp() override
    {
        root::Test::SetUp();
        root::stub("du", "exit 1");
    }

    [[nodiscard]] std::string bytes(std::size_t size) const { return {buffer.data(), size}; }

    /// The calls of share_info for these shares.
    [[nodiscard]] static Lines listCalls(const Lines& names)
    {
        const std::string command = "sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList " +
                                    root::workFile("share_info");
        Lines calls = {trace("share_info sys(" + command + ")"), command};
        for (const std::string& name : names) {
            calls.push_back(trace("share_info() -- found share:" + name));
        }
        calls.push_back(
            trace("share_info() return from share_info " + std::to_string(names.size())));
        return calls;
    }

    static std::string duLine(const std::string& name)
    {
        return "du -sk \"/share/" + name + "\" > /tmp/pelsts1.tmp";
    }

    static std::string backupPath(const std::string& name)
    {
        return "/etc/pelconfig/vokcontrol/__bksts/__bk" + name;
    }

    static void listShares(const Lines& names)
    {
        std::string listing;
        for (const std::string& name : names) {
            listing += root::shareBlock(name);
        }
        root::stubListing(listing);
    }

    /// Collects shares that du cannot measure, and compares the whole buffer.
    void expectNames(const Lines& listed, const Lines& recorded)
    {
        listShares(listed);
        std::string expected = header(static_cast<unsigned>(recorded.size()));
        for (const std::string& name : recorded) {
            expected += blankRecord(name);
        }
        EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), static_cast<int>(expected.size()));
        EXPECT_EQ(bytes(4096), expected + zeros(4096 - expected.size()));
    }
};

TEST_F(ShareTable, eachShareHasOneRecordAndItsTraces)
{
    listShares({"Music", "Photos"});
    root::stubUsage("Music", "300");
    root::stubUsage("Photos", "2500000");
    root::writeFile(backupPath("Photos"), "111202026");

    const std::string expected = header(2) + le16(300) + "K" + zeros(9) + "Music\n" + le16(2) +
                                 "G" + "11202026" + "1" + "Photos\n";
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), static_cast<int>(expected.size()));
    EXPECT_EQ(bytes(4096), expected + zeros(4096 - expected.size()));

    Lines calls = listCalls({"Music", "Photos"});
    const Lines rest = {
        trace("pelParseShareInfo() share info buf: return [\"Music\"\"Photos\"];"),
        trace("GetUserCapUsage system: " + duLine("Music")),
        duLine("Music"),
        trace("filename = " + backupPath("Music")),
        trace("GetUserCapUsage system: " + duLine("Photos")),
        duLine("Photos"),
        trace("GetUserCapUsage system: 2G"),
        trace("filename = " + backupPath("Photos")),
        trace("GetUserBkStatus 111202026 "),
        trace("ParseShare return user: 2 - iLen: " + std::to_string(expected.size())),
    };
    calls.insert(calls.end(), rest.begin(), rest.end());
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(ShareTable, withoutSharesTheHeaderIsAllZero)
{
    root::stubListing("");
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 10);
    EXPECT_EQ(bytes(4096), zeros(4096));
    Lines calls = listCalls({});
    calls.push_back(trace("pelParseShareInfo() share info buf: return [];\n"));
    calls.push_back(trace("ParseShare return user: 0 - iLen: 10"));
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(ShareTable, listIsRemovedBeforeTheLastTrace)
{
    // Without names no measurement removes the file.
    root::stubListing("");
    bool isThere = true;
    bool isOpenAtTheTrace = true;
    watch::after("echo \"ParseShare return user", [&] {
        isThere = root::exists(root::kCollectorFile);
        isOpenAtTheTrace = root::isOpen(root::kCollectorFile);
    });
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 10);
    EXPECT_FALSE(isThere);
    EXPECT_FALSE(isOpenAtTheTrace);
}

TEST_F(ShareTable, failingListClearsTheBuffer)
{
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 0);
    EXPECT_EQ(bytes(4096), zeros(4096));
    EXPECT_EQ(watch::calls().back(), trace("ParseShareInfo: failed get share infos: -1"));
}

TEST_F(ShareTable, missingListClearsTheBuffer)
{
    listShares({"Music"});
    watch::after("echo \"share_info() return",
                 [] { std::filesystem::remove(root::kCollectorFile); });
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 0);
    EXPECT_EQ(bytes(4096), zeros(4096));
    EXPECT_EQ(watch::calls(), listCalls({"Music"}));
}

TEST_F(ShareTable, emptyListFileHasNoRecords)
{
    listShares({"Music"});
    watch::after("echo \"share_info() return", [] { root::writeFile(root::kCollectorFile, ""); });
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 10);
    EXPECT_EQ(bytes(4096), zeros(4096));
    Lines calls = listCalls({"Music"});
    calls.push_back(trace("ParseShare return user: 0 - iLen: 10"));
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_FALSE(root::exists(root::kCollectorFile));
}

TEST_F(ShareTable, listWithoutABracketHasNoRecords)
{
    listShares({"Music"});
    watch::after("echo \"share_info() return",
                 [] { root::writeFile(root::kCollectorFile, "return Music\n"); });
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 10);
    Lines calls = listCalls({"Music"});
    calls.push_back(trace("pelParseShareInfo() share info buf: return Music\n"));
    calls.push_back(trace("ParseShare return user: 0 - iLen: 10"));
    EXPECT_EQ(watch::calls(), calls);
}

TEST_F(ShareTable, onlyTheFirstLineOfTheListIsRead)
{
    listShares({"Music"});
    watch::after("echo \"share_info() return",
                 [] { root::writeFile(root::kCollectorFile, "[\"one\"]\n[\"two\"]\n"); });
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 10 + 16);
    EXPECT_EQ(bytes(26), header(1) + blankRecord("one"));
}

TEST_F(ShareTable, leadingCharactersThatStartNoNameAreLeftOut)
{
    expectNames({"-dash", " blank", "\xC2\xA0nbsp"}, {"dash", "blank", "nbsp"});
}

TEST_F(ShareTable, accentedNameIsTaken)
{
    expectNames({"\xC3\x89"
                 "conomies"},
                {"\xC3\x89"
                 "conomies"});
}

TEST_F(ShareTable, nameOfSixtyFourCharactersIsOneRecord)
{
    const std::string name(64, 'n');
    expectNames({name, "next"}, {name, "next"});
}

TEST_F(ShareTable, nameOfSeventyCharactersIsTwoRecords)
{
    const std::string head(64, 'h');
    expectNames({head + "abcdef"}, {head, "cdef"});
    // Each is measured by the whole text from its start.
    const Lines calls = watch::calls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), duLine(head + "abcdef")), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), duLine("cdef")), 1);
}

TEST_F(ShareTable, shareThatCannotBeMeasuredIsStillListed)
{
    listShares({"Gone", "Music"});
    root::stubUsage("Music", "12");
    const std::string expected =
        header(2) + blankRecord("Gone") + le16(12) + "K" + zeros(9) + "Music\n";
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), static_cast<int>(expected.size()));
    EXPECT_EQ(bytes(expected.size()), expected);
}

TEST_F(ShareTable, recordsStopIfTheLongestWouldNotFit)
{
    // The last offset at which a record may begin is 4019; a record with a name of 13 bytes has 26.
    Lines listed;
    Lines recorded;
    for (int i = 1000; i < 1200; ++i) {
        listed.push_back("share-no-" + std::to_string(i));
        if (10 + 26 * recorded.size() < 4020) {
            recorded.push_back(listed.back());
        }
    }
    ASSERT_LT(recorded.size(), listed.size());
    expectNames(listed, recorded);
}

TEST_F(ShareTable, lastRecordMayEndAtTheBuffersLastByte)
{
    // Shorter records bring the write position to 4019, one below the limit.
    Lines names;
    std::size_t position = 10;
    while (position + 77 <= 4019 - 28) {
        names.push_back(std::string(60, 'a') + std::to_string(1000 + names.size()));
        position += 77;
    }
    const std::size_t half = (4019 - position) / 2;
    names.push_back(std::string(half - 13, 'b'));
    names.push_back(std::string(4019 - position - half - 13, 'c'));
    names.push_back(std::string(64, 'z'));
    names.push_back("never");
    Lines recorded(names.begin(), names.end() - 1);
    expectNames(names, recorded);
    EXPECT_EQ(buffer[4095], '\n');
}

TEST_F(ShareTable, listIsReadUpToItsBuffer)
{
    // Names of mostly dashes make a long line and short records. "return [" and 26 names of 157
    // characters with their quotes are 4142 characters. 4095 are read, which cuts the last name
    // within its dashes, before its letter.
    Lines listed;
    Lines recorded;
    for (int i = 0; i < 26; ++i) {
        const std::string letter(1, static_cast<char>('a' + i));
        listed.push_back(std::string(156, '-') + letter);
        recorded.push_back(letter);
    }
    recorded.pop_back();
    expectNames(listed, recorded);

    // With one dash less in each name, the last letter is the 4095th character.
    listed.clear();
    for (const char letter : std::string("abcdefghijklmnopqrstuvwxyz")) {
        listed.push_back(std::string(154, '-') + letter);
    }
    listed.back().insert(0, 4095 - (8 + 26 * 157 - 1), '-');
    recorded.push_back("z");
    expectNames(listed, recorded);
    listed.back().insert(0, 1, '-');
    recorded.pop_back();
    expectNames(listed, recorded);
}

TEST_F(ShareTable, failedListDoesNotChangeAnOlderFile)
{
    root::writeFile(root::kCollectorFile, "return [\"old\"];");
    root::stub("php", "exit 1");
    EXPECT_EQ(ParseShareInfo(buffer.data(), 4096), 0);
    EXPECT_EQ(root::readFile(root::kCollectorFile), "return [\"old\"];");
}

TEST_F(ShareTable, smallBuffersHoldOnlyTheHeader)
{
    for (const int size : {10, 11, 86}) {
        buffer.fill('#');
        listShares({"Music"});
        EXPECT_EQ(ParseShareInfo(buffer.data(), size), 10) << size;
        EXPECT_EQ(bytes(4096), zeros(static_cast<std::size_t>(size)) +
                                   std::string(4096 - static_cast<std::size_t>(size), '#'));
    }
}

TEST_F(ShareTable, bufferOf87BytesHoldsOneRecord)
{
    const std::string name(64, 'n');
    listShares({name, "Music"});
    EXPECT_EQ(ParseShareInfo(buffer.data(), 87), 87);
    EXPECT_EQ(bytes(4096), header(1) + blankRecord(name) + std::string(4096 - 87, '#'));
}

TEST_F(ShareTable, bufferWithoutRoomForTheHeaderIsOnlyCleared)
{
    for (const int size : {-1, 0, 1, 9}) {
        buffer.fill('#');
        watch::restart();
        EXPECT_EQ(ParseShareInfo(buffer.data(), size), 0) << size;
        const std::size_t cleared = (size > 0) ? static_cast<std::size_t>(size) : 0;
        EXPECT_EQ(bytes(4096), zeros(cleared) + std::string(4096 - cleared, '#')) << size;
        EXPECT_EQ(watch::calls(), Lines{}) << size;
    }
}

} // namespace
