// SPDX-License-Identifier: MIT
#include "handlers/name_list.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>

#include "core/core.h"
#include "tests/support/file_events.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;
using root::trace;

const std::string kList = "/tmp/list";

handlers::NameSearch searchWith(bool ignoresCase)
{
    return {
        .operation = "probe",
        .ignoresCase = ignoresCase,
        .traceList = [](const char* list,
                        const char* needle) { dbg_trace("list:%s needle:%s", list, needle); },
        .traceResult = [](int found) { dbg_trace("found:%d", found); },
    };
}

const handlers::NameSearch kExact = searchWith(false);
const handlers::NameSearch kAnyCase = searchWith(true);

std::string sizeTrace(std::size_t size)
{
    return root::sizeTrace(kList, size);
}

std::string listTrace(const std::string& line, const std::string& needle)
{
    return trace("list:" + line + " needle:" + needle);
}

std::string resultTrace(int found)
{
    return trace("found:" + std::to_string(found));
}

std::string inQuotes(const std::string& name)
{
    return '"' + name + '"';
}

class NameList : public root::Test {
  protected:
    static int search(const std::string& name, const handlers::NameSearch& how = kExact)
    {
        return handlers::searchNameList(kList.c_str(), name.c_str(), how);
    }

    /// Searches a list for exactly a name, and compares all that this leaves.
    static void expectFound(const std::string& list, const std::string& name, int result)
    {
        watch::restart();
        root::writeFile(kList, list);
        EXPECT_EQ(search(name), result) << name;
        EXPECT_EQ(watch::calls(), (Lines{sizeTrace(list.size()), listTrace(list, inQuotes(name)),
                                         resultTrace(result)}));
        EXPECT_FALSE(root::exists(kList));
    }

    /// The same for letters of both cases; both texts are traced in upper case.
    static void expectFoundInAnyCase(const std::string& list, const std::string& name, int result,
                                     const std::string& upperList, const std::string& upperName)
    {
        watch::restart();
        root::writeFile(kList, list);
        EXPECT_EQ(search(name, kAnyCase), result) << name;
        EXPECT_EQ(watch::calls(),
                  (Lines{sizeTrace(list.size()), listTrace(upperList, inQuotes(upperName)),
                         resultTrace(result)}));
        EXPECT_FALSE(root::exists(kList));
    }
};

// ---- What is found ----------------------------------------------------------------------------

TEST_F(NameList, wholeNamesAreFound)
{
    const std::string list = R"(return ["guest", "anna"];)";
    expectFound(list, "guest", 1);
    expectFound(list, "anna", 1);
    expectFound(list, "ann", 0);
    expectFound(list, "nna", 0);
    expectFound(list, "annabel", 0);
    expectFound(list, "return", 0);
}

TEST_F(NameList, caseMattersUnlessItIsIgnored)
{
    expectFound(R"(return ["anna"];)", "Anna", 0);
    expectFound(R"(return ["Anna"];)", "anna", 0);
    expectFoundInAnyCase(R"(return ["anna"];)", "ANNA", 1, R"(RETURN ["ANNA"];)", "ANNA");
    expectFoundInAnyCase(R"(return ["AnnA"];)", "aNNa", 1, R"(RETURN ["ANNA"];)", "ANNA");
    expectFoundInAnyCase(R"(return ["anna"];)", "ann", 0, R"(RETURN ["ANNA"];)", "ANN");
}

TEST_F(NameList, onlyLettersOfAsciiHaveTwoCases)
{
    expectFoundInAnyCase("[\"\xC3\xA9lise\"]", "\xC3\xA9Lise", 1, "[\"\xC3\xA9LISE\"]",
                         "\xC3\xA9LISE");
    expectFoundInAnyCase("[\"\xC3\xA9lise\"]", "\xC3\x89lise", 0, "[\"\xC3\xA9LISE\"]",
                         "\xC3\x89LISE");
    expectFoundInAnyCase("[\"az[{@`_~09\xE4\xFF\"]", "AZ[{@`_~09\xE4\xFF", 1,
                         "[\"AZ[{@`_~09\xE4\xFF\"]", "AZ[{@`_~09\xE4\xFF");
}

TEST_F(NameList, everyCharacterOfAListHasItsCase)
{
    std::string list;
    std::string upper;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        list += letter;
        upper += static_cast<char>(letter - 'a' + 'A');
    }
    expectFoundInAnyCase(inQuotes(list), list, 1, inQuotes(upper), upper);
    expectFoundInAnyCase(inQuotes(upper), list, 1, inQuotes(upper), upper);
}

TEST_F(NameList, onlyQuotesSeparateNames)
{
    expectFound(R"(return ["a""b"];)", "", 1);
    expectFound(R"(return ["a", "b"];)", "", 0);
    expectFound(R"(return ["a", "b"];)", ", ", 1);
    expectFound(R"(return ["a", "b"];)", R"(a", "b)", 1);
    expectFound("plain text\"", "plain text", 0);
}

TEST_F(NameList, onlyTheFirstLineIsSearched)
{
    root::writeFile(kList, "[\"a\"\n\"b\"]");
    EXPECT_EQ(search("b"), 0);
    EXPECT_EQ(watch::calls(),
              (Lines{sizeTrace(9), listTrace("[\"a\"\n", "\"b\""), resultTrace(0)}));
    expectFound("[\"a\"]\n", "a", 1);
    expectFound("\n", "", 0);
}

TEST_F(NameList, zeroByteEndsTheText)
{
    root::writeFile(kList, std::string("[\"a\"\0\"b\"]", 9));
    EXPECT_EQ(search("b"), 0);
    EXPECT_EQ(watch::calls().at(1), listTrace("[\"a\"", "\"b\""));
    root::writeFile(kList, std::string("\0\"b\"", 4));
    EXPECT_EQ(search("b"), 0);
}

TEST_F(NameList, longListIsOneLine)
{
    const std::string list = "[" + std::string(100000, 'x') + "\"last\"];";
    root::writeFile(kList, list);
    EXPECT_EQ(search("last"), 1);
    // A message ends at 1999 characters.
    EXPECT_EQ(watch::calls(), (Lines{sizeTrace(list.size()),
                                     trace(("list:" + list).substr(0, 1999)), resultTrace(1)}));
}

TEST_F(NameList, namesUpTo509CharactersKeepTheirClosingQuote)
{
    for (const std::size_t size : {1U, 10U, 31U, 32U, 33U, 63U, 64U, 65U, 508U, 509U}) {
        const std::string name(size, 'n');
        expectFound(inQuotes(name), name, 1);
        expectFound(inQuotes(name + 'n'), name, 0);
    }
}

TEST_F(NameList, longerNameIsCut)
{
    for (const std::size_t size : {510U, 511U, 512U, 4000U}) {
        const std::string name(size, 'n');
        for (const std::size_t listed : {509U, 510U, 600U}) {
            watch::restart();
            const std::string list = inQuotes(std::string(listed, 'n'));
            root::writeFile(kList, list);
            const int result = (listed < 510) ? 0 : 1;
            EXPECT_EQ(search(name), result) << size << " in " << listed;
            EXPECT_EQ(watch::calls(),
                      (Lines{sizeTrace(list.size()), listTrace(list, '"' + std::string(510, 'n')),
                             resultTrace(result)}));
        }
    }
}

// ---- What can go wrong ------------------------------------------------------------------------

TEST_F(NameList, missingListIsTraced)
{
    EXPECT_EQ(search("a"), -1);
    EXPECT_EQ(watch::calls(),
              Lines{trace("probe() cannot stat file " + kList + ": No such file or directory")});
}

TEST_F(NameList, listThatCannotBeMeasuredIsTraced)
{
    root::writeFile(kList, "[]");
    EXPECT_EQ(handlers::searchNameList("/tmp/list/list", "a", kExact), -1);
    EXPECT_EQ(watch::calls(),
              Lines{trace("probe() cannot stat file /tmp/list/list: Not a directory")});
    EXPECT_TRUE(root::exists(kList));
}

TEST_F(NameList, emptyListIsAFailure)
{
    root::writeFile(kList, "");
    EXPECT_EQ(search(""), -1);
    EXPECT_EQ(watch::calls(), Lines{resultTrace(-1)});
    EXPECT_FALSE(root::exists(kList));
}

TEST_F(NameList, unreadableListIsTracedAndStays)
{
    root::writeFile(kList, R"(["a"])");
    fs::permissions(kList, fs::perms(0));
    EXPECT_EQ(search("a"), -1);
    EXPECT_EQ(watch::calls(), (Lines{sizeTrace(5), trace("probe() cannot open file " + kList +
                                                         ": Permission denied")}));
    EXPECT_TRUE(root::exists(kList));
}

TEST_F(NameList, listRemovedBeforeItIsOpenedIsTraced)
{
    root::writeFile(kList, R"(["a"])");
    watch::after("echo \"file ", [] { fs::remove(kList); });
    EXPECT_EQ(search("a"), -1);
    EXPECT_EQ(watch::calls(), (Lines{sizeTrace(5), trace("probe() cannot open file " + kList +
                                                         ": No such file or directory")}));
}

TEST_F(NameList, folderHoldsNoLine)
{
    fs::create_directory(kList);
    watch::after("echo \"file ", [] { EXPECT_TRUE(fs::is_directory(kList)); });
    EXPECT_EQ(search("a"), -1);
    const Lines calls = watch::calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_TRUE(calls[0].starts_with("echo \"file " + kList + " size = ")) << calls[0];
    EXPECT_EQ(calls[1], resultTrace(-1));
    EXPECT_FALSE(root::exists(kList));
}

TEST_F(NameList, listEmptiedBeforeItIsReadHoldsNoLine)
{
    root::writeFile(kList, R"(["a"])");
    watch::after("echo \"file ", [] { root::writeFile(kList, ""); });
    EXPECT_EQ(search("a"), -1);
    EXPECT_EQ(watch::calls(), (Lines{sizeTrace(5), resultTrace(-1)}));
    EXPECT_FALSE(root::exists(kList));
}

TEST_F(NameList, listThatGrowsBeforeItIsReadIsReadFortyNineCharactersFurther)
{
    for (const std::size_t more : {49U, 50U}) {
        watch::restart();
        root::writeFile(kList, R"(["a"])");
        const std::string grown = R"(["a"])" + std::string(more - 3, ' ') + "\"b\"";
        watch::after("echo \"file ", [&] { root::writeFile(kList, grown); });
        const int result = (more == 49) ? 1 : 0;
        EXPECT_EQ(search("b"), result);
        EXPECT_EQ(watch::calls(), (Lines{sizeTrace(5), listTrace(grown.substr(0, 54), "\"b\""),
                                         resultTrace(result)}));
    }
}

TEST_F(NameList, bytesAddedToAListKeepTheirCase)
{
    for (const char* name : {"late", "Late", "LATE"}) {
        watch::restart();
        root::writeFile(kList, R"(["early"])");
        watch::after("echo \"file ", [] { root::writeFile(kList, R"(["early"]"late""LATER")"); });
        EXPECT_EQ(search(name, kAnyCase), 0);
        EXPECT_EQ(watch::calls(),
                  (Lines{sizeTrace(9), listTrace(R"(["EARLY"]"late""LATER")", "\"LATE\""),
                         resultTrace(0)}));
    }
}

TEST_F(NameList, listThatMemoryCannotHoldIsTracedAndRemoved)
{
    constexpr std::uintmax_t kHuge = std::uintmax_t{1} << 60U;
    constexpr std::uintmax_t kHalf = std::uintmax_t{1} << 31U;
    // Cut to 32 bits, the first is as small as the list's content, and the last leaves no room for
    // more.
    for (const std::uintmax_t more : {std::uintmax_t{5}, kHalf - 1, 2 * kHalf - 16}) {
        SCOPED_TRACE(more);
        watch::restart();
        root::writeFile(kList, R"(["a"])");
        fs::resize_file(kList, kHuge + more);
        bool isThere = false;
        watch::after("echo \"probe()", [&] { isThere = root::exists(kList); });
        EXPECT_EQ(search("a"), -1);
        EXPECT_TRUE(isThere) << "it is removed after the trace";
        EXPECT_EQ(watch::calls(),
                  (Lines{trace("file " + kList + " size = " +
                               std::to_string(static_cast<int>(kHuge + more)) + " bytes"),
                         trace("probe() () failed  memory allocation Cannot allocate memory")}));
        EXPECT_FALSE(root::exists(kList));
    }
}

TEST_F(NameList, listThatCannotBeRemovedIsAnsweredAnyway)
{
    root::writeFile(kList, R"(["a"])");
    dbg_trace("so that there is a file to trace to");
    watch::restart();
    fs::permissions("/tmp", fs::perms(0555));
    EXPECT_EQ(search("a"), 1);
    EXPECT_EQ(watch::calls(),
              (Lines{sizeTrace(5), listTrace(R"(["a"])", "\"a\""), resultTrace(1)}));
    EXPECT_TRUE(root::exists(kList));
}

TEST_F(NameList, listIsClosed)
{
    const std::size_t before = root::list("/proc/self/fd").size();
    for (int i = 0; i < 10; ++i) {
        root::writeFile(kList, R"(["a"])");
        EXPECT_EQ(search("a"), 1);
    }
    EXPECT_EQ(root::list("/proc/self/fd").size(), before);
}

TEST_F(NameList, listIsClosedBeforeItIsRemoved)
{
    root::writeFile(kList, R"(["a"])");
    const root::FileEvents events("/tmp");
    EXPECT_EQ(search("a"), 1);
    Lines ofList = events.happened();
    std::erase_if(ofList, [](const std::string& event) { return !event.ends_with(" list"); });
    EXPECT_EQ(ofList, (Lines{"close list", "remove list"}));
}

TEST_F(NameList, listIsClosedAndRemovedBeforeTheResultIsTraced)
{
    root::writeFile(kList, R"(["a"])");
    const std::size_t before = root::list("/proc/self/fd").size();
    std::size_t then = 0;
    bool isThere = true;
    watch::after("echo \"found:", [&] {
        then = root::list("/proc/self/fd").size();
        isThere = root::exists(kList);
    });
    EXPECT_EQ(search("a"), 1);
    EXPECT_EQ(then, before);
    EXPECT_FALSE(isThere);
}

} // namespace
