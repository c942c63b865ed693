// SPDX-License-Identifier: MIT
#include <array>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "tests/support/clock.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;
using root::le32;
using root::trace;

const std::string kFile = VOK_USAGE_FILE;
const std::vector<std::string> kCodes = {"crat", "shar", "lstu", "lsts", "vers", "host", "spvt",
                                         "gpvt", "frst", "qlps", "dscr", "ipcf", "sub1", "gub1",
                                         "gps1", "gsp1", "cpbu", "pshr", "sgss", "rtov"};

std::int32_t now()
{
    return static_cast<std::int32_t>(std::time(nullptr));
}

class Usage : public root::Test {
  protected:
    CommandUsage table{};
    std::int32_t lastSave = 0;

    [[nodiscard]] std::string bytes() const
    {
        return {reinterpret_cast<const char*>(table.bytes), sizeof table.bytes};
    }

    void setBytes(const std::string& content)
    {
        std::memcpy(table.bytes, content.data(), content.size());
    }

    /// A table with all codes and a count in one slot.
    static std::string tableWith(std::size_t slot, std::uint32_t count)
    {
        std::string content;
        for (std::size_t i = 0; i <= kCodes.size(); ++i) {
            content += (i < kCodes.size()) ? kCodes[i] : std::string(4, '\0');
            content += le32(i == slot ? count : 0);
        }
        return content;
    }

    static constexpr std::size_t kNoSlot = 99;

    void countOne(const std::string& code)
    {
        save_cmd_cnt(&table, &lastSave, cmdsvc::codeWord(code));
    }

    void TearDown() override
    {
        root::clock.reset();
        root::Test::TearDown();
    }

    /// Counts one command at a time of the clock, after a last save at another time.
    void countAt(std::int64_t clock, std::int32_t saved)
    {
        setBytes(tableWith(kNoSlot, 0));
        std::filesystem::remove(kFile);
        watch::restart();
        root::clock = clock;
        lastSave = saved;
        countOne("lstu");
    }

    void expectSave(std::int64_t clock, std::int32_t saved, std::int32_t nowSaved)
    {
        SCOPED_TRACE(std::to_string(clock) + " " + std::to_string(saved));
        countAt(clock, saved);
        EXPECT_EQ(root::readFile(kFile), tableWith(2, 1));
        EXPECT_EQ(lastSave, nowSaved);
        EXPECT_EQ(watch::calls(),
                  (Lines{trace("save_cmd_cnt() -- save cmd: 0x7574736C"),
                         trace("save_cmd_cnt() -- save to file cmd: 0x7574736C time: " +
                               std::to_string(nowSaved))}));
    }

    void expectNoSave(std::int64_t clock, std::int32_t saved)
    {
        SCOPED_TRACE(std::to_string(clock) + " " + std::to_string(saved));
        countAt(clock, saved);
        EXPECT_FALSE(root::exists(kFile));
        EXPECT_EQ(lastSave, saved);
        EXPECT_EQ(watch::calls(), Lines{trace("save_cmd_cnt() -- save cmd: 0x7574736C")});
    }

    static std::string hex(const std::string& code)
    {
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), "0x%X", cmdsvc::codeWord(code));
        return text.data();
    }
};

TEST_F(Usage, newTableHasAllCodes)
{
    init_cmd_buffer(&table);
    EXPECT_EQ(bytes(), tableWith(kNoSlot, 0));
    EXPECT_EQ(watch::calls(), Lines{trace("init_cmd_buffer() -- return  ")});
    EXPECT_FALSE(root::exists(kFile));
}

TEST_F(Usage, countersOfANewTableAreNotTouched)
{
    setBytes(std::string(168, '\x05'));
    init_cmd_buffer(&table);
    std::string expected;
    for (const std::string& code : kCodes) {
        expected += code + std::string(4, '\x05');
    }
    EXPECT_EQ(bytes(), expected + std::string(8, '\x05'));
}

TEST_F(Usage, preparedTableIsNotChanged)
{
    const std::string content = "crat" + std::string(164, 'x');
    setBytes(content);
    root::writeFile(kFile, tableWith(3, 9));
    init_cmd_buffer(&table);
    EXPECT_EQ(bytes(), content);
    EXPECT_EQ(watch::calls(), Lines{});
}

TEST_F(Usage, tableIsReadFromItsFile)
{
    root::writeFile(kFile, tableWith(3, 9) + "more");
    init_cmd_buffer(&table);
    EXPECT_EQ(bytes(), tableWith(3, 9));
    EXPECT_EQ(watch::calls(), Lines{trace("init_cmd_buffer() -- read from file " + kFile)});
}

TEST_F(Usage, nothingAfterTheTableIsTouched)
{
    std::array<CommandUsage, 2> tables{};
    root::writeFile(kFile, std::string(2 * sizeof(CommandUsage), 'z'));
    init_cmd_buffer(tables.data());
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(tables.data()), sizeof tables),
              std::string(168, 'z') + std::string(168, '\0'));
}

TEST_F(Usage, fileWithoutCodesIsRead)
{
    for (const std::string& content : {std::string(), std::string(168, 'z'), std::string("x")}) {
        table = {};
        watch::restart();
        root::writeFile(kFile, content);
        init_cmd_buffer(&table);
        EXPECT_EQ(bytes(), content + std::string(168 - content.size(), '\0'));
        EXPECT_EQ(watch::calls(), Lines{trace("init_cmd_buffer() -- read from file " + kFile)});
        EXPECT_EQ(root::readFile(kFile), content);
    }
}

TEST_F(Usage, longerFileIsCutByASave)
{
    root::writeFile(kFile, tableWith(3, 9) + "more");
    init_cmd_buffer(&table);
    countOne("lsts");
    EXPECT_EQ(root::readFile(kFile), tableWith(3, 10));
}

TEST_F(Usage, shortFileFillsTheStart)
{
    root::writeFile(kFile, "crat" + le32(7) + "sh");
    init_cmd_buffer(&table);
    EXPECT_EQ(bytes(), "crat" + le32(7) + "sh" + std::string(158, '\0'));
    countOne("shar");
    EXPECT_EQ(bytes().substr(8, 8), std::string("sh\0\0", 4) + le32(1)) << "slots go by place";
}

TEST_F(Usage, everyCodeCountsInItsSlot)
{
    lastSave = now();
    for (std::size_t slot = 0; slot < kCodes.size(); ++slot) {
        const std::string& code = kCodes[slot];
        setBytes(tableWith(kNoSlot, 0));
        watch::restart();
        countOne(code);
        if (code == "gub1") {
            EXPECT_EQ(bytes(), tableWith(20, 1));
            EXPECT_EQ(watch::calls(),
                      (Lines{trace("save_cmd_cnt() -- save cmd: " + hex(code)),
                             trace("save_cmd_cnt() -- save default cmd: " + hex(code))}));
        } else {
            EXPECT_EQ(bytes(), tableWith(slot, 1)) << code;
            EXPECT_EQ(watch::calls(), Lines{trace("save_cmd_cnt() -- save cmd: " + hex(code))});
        }
    }
}

TEST_F(Usage, otherCodesCountInTheLastSlot)
{
    lastSave = now();
    setBytes(tableWith(20, 0x01FFFFFF));
    for (const char* code : {"xxxx", "gspc", "CRAT"}) {
        countOne(code);
    }
    save_cmd_cnt(&table, &lastSave, 0);
    EXPECT_EQ(bytes(), tableWith(20, 0x02000003));
}

TEST_F(Usage, counterWraps)
{
    lastSave = now();
    setBytes(tableWith(0, 0xFFFFFFFF));
    countOne("crat");
    EXPECT_EQ(bytes(), tableWith(0, 0));
}

TEST_F(Usage, firstCountIsSavedAtOnce)
{
    init_cmd_buffer(&table);
    watch::restart();
    const std::int32_t before = now();
    countOne("lstu");
    EXPECT_EQ(root::readFile(kFile), tableWith(2, 1));
    EXPECT_GE(lastSave, before);
    EXPECT_LE(lastSave, now());
    EXPECT_EQ(watch::calls(), (Lines{trace("save_cmd_cnt() -- save cmd: 0x7574736C"),
                                     trace("save_cmd_cnt() -- save to file cmd: 0x7574736C time: " +
                                           std::to_string(lastSave))}));
}

TEST_F(Usage, countsWithinFiveMinutesStayInMemory)
{
    setBytes(tableWith(kNoSlot, 0));
    for (const std::int32_t age : {0, 1, 299}) {
        lastSave = now() - age;
        countOne("lstu");
        EXPECT_FALSE(root::exists(kFile)) << age;
    }
    lastSave = now() - 301;
    countOne("lstu");
    EXPECT_EQ(root::readFile(kFile), tableWith(2, 4));
}

constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kFirst = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kToday = 1800000000;

/// The first second that 32 signed bits do not hold, in 2038.
constexpr std::int64_t kBehindLast = std::int64_t{kLast} + 1;

TEST_F(Usage, saveIsDueAfterFiveMinutes)
{
    expectNoSave(kToday, kToday);
    expectNoSave(kToday, kToday - 299);
    expectNoSave(kToday, kToday - 300);
    expectSave(kToday, kToday - 301, kToday);
    expectSave(kToday, 1, kToday);
}

TEST_F(Usage, withoutALastSaveItIsDueAtOnce)
{
    expectSave(kToday, 0, kToday);
    for (const std::int32_t clock : {1, 100, 299, 300, 301}) {
        expectSave(clock, 0, clock);
    }
    expectNoSave(299, 1);
    expectNoSave(301, 1);
    expectSave(302, 1, 302);
}

TEST_F(Usage, lastSaveOfAnyAgeIsOverdue)
{
    expectSave(kLast, 1, kLast);
    expectSave(kLast, -1, kLast);
    for (const std::int32_t saved : {-1, kToday - kLast, kToday - kLast - 1, kToday - kLast - 2,
                                     kToday - kLast - 300, kFirst + 300, kFirst}) {
        expectSave(kToday, saved, kToday);
    }
}

TEST_F(Usage, lastSaveInTheFutureIsNotDue)
{
    for (const std::int32_t saved :
         {kToday + 1, kToday + 100000, kLast - 300, kLast - 100, kLast}) {
        expectNoSave(kToday, saved);
    }
    expectNoSave(1, kLast);
    expectNoSave(kLast, kLast);
    expectNoSave(kLast, kLast - 300);
    expectSave(kLast, kLast - 301, kLast);
}

TEST_F(Usage, savesContinueWhenTheClockExceedsThirtyTwoBits)
{
    expectNoSave(kBehindLast, kLast);
    expectNoSave(kBehindLast, kLast - 299);
    expectSave(kBehindLast, kLast - 300, kFirst);
    expectNoSave(kBehindLast, kFirst);
    expectNoSave(kBehindLast + 300, kFirst);
    expectSave(kBehindLast + 301, kFirst, kFirst + 301);
    expectNoSave(kBehindLast + 1000, kFirst + 1000);
    expectSave(kBehindLast + 1000, kToday, kFirst + 1000);
    expectNoSave(kBehindLast + 1000, kFirst + 2000);
    expectSave(kBehindLast + 1000, 0, kFirst + 1000);
}

TEST_F(Usage, fileIsWholeBeforeItsSaveIsTracedAndTheTimeIsSetAfterThat)
{
    setBytes(tableWith(kNoSlot, 0));
    root::clock = kToday;
    std::string saved;
    std::int32_t lastSaveAtTheTrace = -1;
    watch::after("echo \"save_cmd_cnt() -- save to file", [&] {
        saved = root::readFile(kFile);
        lastSaveAtTheTrace = lastSave;
    });
    countOne("lstu");
    EXPECT_EQ(saved, tableWith(2, 1));
    EXPECT_EQ(lastSaveAtTheTrace, 0);
    EXPECT_EQ(lastSave, kToday);
}

TEST_F(Usage, fileIsClosedBeforeItsReadingIsTraced)
{
    root::writeFile(kFile, tableWith(3, 9));
    bool isOpen = true;
    watch::after("echo \"init_cmd_buffer() -- read", [&] { isOpen = root::isOpen(kFile); });
    init_cmd_buffer(&table);
    EXPECT_FALSE(isOpen);
}

TEST_F(Usage, failedSaveIsTriedAgain)
{
    setBytes(tableWith(kNoSlot, 0));
    std::filesystem::create_directory(kFile);
    countOne("lstu");
    EXPECT_EQ(lastSave, 0);
    EXPECT_EQ(watch::calls().back(),
              trace("save_cmd_cnt() -- failed open file syserr: Is a directory"));
    std::filesystem::remove(kFile);
    countOne("lstu");
    EXPECT_EQ(root::readFile(kFile), tableWith(2, 2));
}

TEST_F(Usage, saveThatDoesNotFitOnTheDiskIsTriedAgain)
{
    setBytes(tableWith(kNoSlot, 0));
    root::fillDisk("/etc/pelconfig");
    countOne("lstu");
    EXPECT_EQ(lastSave, 0);
    EXPECT_EQ(watch::calls().back(),
              trace("cannot write file " + kFile + ": No space left on device"));
    std::filesystem::remove("/etc/pelconfig/filler");
    countOne("lstu");
    EXPECT_EQ(root::readFile(kFile), tableWith(2, 2));
}

TEST_F(Usage, withoutATableNothingIsCounted)
{
    save_cmd_cnt(nullptr, &lastSave, 1);
    EXPECT_EQ(watch::calls(), Lines{trace("save_cmd_cnt() -- failed  -- pCmdCnt==NULL  ")});
    EXPECT_EQ(lastSave, 0);
}

} // namespace
