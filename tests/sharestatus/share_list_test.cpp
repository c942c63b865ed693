// SPDX-License-Identifier: MIT
//
// share_info: from the share script's listing to the fragment.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "sharestatus/sharestatus.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using root::trace;

constexpr const char* kFragment = "/tmp/fragment";

class ShareList : public root::Test {
  protected:
    const std::string listing = root::workFile("share_info");
    const std::string command =
        "sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList " + listing;

    /// The calls of share_info up to the listing.
    [[nodiscard]] Lines callsWith(const Lines& names, int count) const
    {
        Lines calls = {trace("share_info sys(" + command + ")"), command};
        for (const std::string& name : names) {
            calls.push_back(trace("share_info() -- found share:" + name));
        }
        calls.push_back(trace("share_info() return from share_info " + std::to_string(count)));
        return calls;
    }

    /// Runs share_info on a listing and compares all that it leaves.
    void expectFragment(const std::string& text, const Lines& names, const std::string& fragment)
    {
        watch::restart();
        root::stubListing(text);
        EXPECT_EQ(share_info(kFragment), static_cast<int>(names.size())) << text;
        EXPECT_EQ(root::readFile(kFragment), fragment) << text;
        EXPECT_EQ(watch::calls(), callsWith(names, static_cast<int>(names.size()))) << text;
        EXPECT_FALSE(root::exists(listing));
    }
};

TEST_F(ShareList, quotedNamesHaveNoSeparators)
{
    expectFragment(root::shareBlock("Music") + root::shareBlock("My Photos"),
                   {"Music", "My Photos"}, "return [\"Music\"\"My Photos\"];");
}

TEST_F(ShareList, textThatIsAlmostATagIsIgnored)
{
    expectFragment("<sharename>A</sharenames>\n<sharelocation>int\n", {""}, "return [\"\"];");
    expectFragment("<sharename>A</sharename>\n<sharelocation>inside\n"
                   "<old_sharelocation>internal\n<sharelocation>int\n",
                   {"A"}, "return [\"A\"];");
    for (const char* other : {"<name></s>", "<time></share>"}) {
        expectFragment("<sharename>A</sharename>\n<sharename>B</sharename>" + std::string(other) +
                           "\n<sharelocation>int\n",
                       {"B"}, "return [\"B\"];");
    }
}

TEST_F(ShareList, emptyListEndsInANewline)
{
    expectFragment("", {}, "return [];\n");
    expectFragment("<sharelist>\n</sharelist>\n", {}, "return [];\n");
}

TEST_F(ShareList, onlyLocationsThatStartWithIntAreListed)
{
    expectFragment(root::shareBlock("A", "external") + root::shareBlock("B", "internal") +
                       root::shareBlock("C", "int") + root::shareBlock("D", "Internal") +
                       root::shareBlock("E", " internal"),
                   {"B", "C"}, "return [\"B\"\"C\"];");
}

TEST_F(ShareList, locationBeforeAnyNameListsAnEmptyName)
{
    expectFragment("<sharelocation>internal</sharelocation>\n", {""}, "return [\"\"];");
}

TEST_F(ShareList, nameIsListedOnce)
{
    expectFragment(root::shareBlock("A") + "<sharelocation>internal</sharelocation>\n", {"A", ""},
                   "return [\"A\"\"\"];");
}

TEST_F(ShareList, emptyNameElementKeepsTheNameBefore)
{
    expectFragment(root::shareBlock("A", "external") + root::shareBlock(""), {"A"},
                   "return [\"A\"];");
}

TEST_F(ShareList, lastNameBeforeALocationCounts)
{
    expectFragment("<sharename>A</sharename>\n<sharename>B</sharename>\n<sharelocation>int\n",
                   {"B"}, "return [\"B\"];");
}

TEST_F(ShareList, nameElementMustBeWholeOnItsLine)
{
    expectFragment("<sharename>A\n</sharename>\n<sharelocation>int\n", {""}, "return [\"\"];");
}

TEST_F(ShareList, lineWithNameAndLocationIsANameLine)
{
    expectFragment("<sharename>A</sharename><sharelocation>int\n<sharelocation>int\n", {"A"},
                   "return [\"A\"];");
}

TEST_F(ShareList, textOutsideTheElementIsLeftOut)
{
    expectFragment("  junk<sharename>A B</sharename>junk\n\t<sharelocation>int\n", {"A B"},
                   "return [\"A B\"];");
}

TEST_F(ShareList, closingTagBeforeTheOpeningOneIsIgnored)
{
    expectFragment("</sharename><sharename>A\n<sharelocation>int\n", {"A\n"}, "return [\"A\n\"];");
}

TEST_F(ShareList, lastLineNeedsNoNewline)
{
    expectFragment("<sharename>A</sharename>\n<sharelocation>int", {"A"}, "return [\"A\"];");
}

TEST_F(ShareList, zeroByteEndsItsLinesText)
{
    const std::string text("<sharename>A\0</sharename>\n<sharelocation>int\n", 44);
    expectFragment(text, {""}, "return [\"\"];");
}

TEST_F(ShareList, longLinesAreReadInPieces)
{
    // Pieces have 2047 characters: the tags of the first line are in two of them.
    const std::string padding(2047 - 4, ' ');
    expectFragment(padding + "<sharename>A</sharename>\n<sharelocation>int\n", {""},
                   "return [\"\"];");
    expectFragment(std::string(2047, ' ') + "<sharename>A</sharename>\n<sharelocation>int\n", {"A"},
                   "return [\"A\"];");
}

TEST_F(ShareList, longestNameOfALineIsWhole)
{
    const std::string name(2047 - 11 - 12, 'n');
    root::stubListing("<sharename>" + name + "</sharename>\n<sharelocation>int\n");
    EXPECT_EQ(share_info(kFragment), 1);
    EXPECT_EQ(root::readFile(kFragment), "return [\"" + name + "\"];");
}

TEST_F(ShareList, targetIsReplaced)
{
    root::writeFile(kFragment, std::string(100, 'x'));
    expectFragment("", {}, "return [];\n");
}

TEST_F(ShareList, failingScriptIsTracedAndNothingIsWritten)
{
    root::stub("php", "echo listing >\"$3\"; exit 3");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(watch::calls(), (Lines{trace("share_info sys(" + command + ")"), command,
                                     trace("share_info: failed system(" + command +
                                           ") iRet:768 (error: Success)")}));
    EXPECT_FALSE(root::exists(kFragment));
}

TEST_F(ShareList, missingScriptIsAFailure)
{
    std::filesystem::remove("/usr/bin/php");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(watch::calls().back(),
              trace("share_info: failed system(" + command + ") iRet:32512 (error: Success)"));
}

TEST_F(ShareList, shellThatCannotStartIsAFailure)
{
    watch::answer("sudo", -1, EAGAIN);
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(watch::calls().back(), trace("share_info: failed system(" + command +
                                           ") iRet:-1 (error: Resource temporarily unavailable)"));
}

TEST_F(ShareList, scriptReapedElsewhereCounts)
{
    root::stubListing(root::shareBlock("A"));
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(share_info(kFragment), 1);
    EXPECT_EQ(root::readFile(kFragment), "return [\"A\"];");
    EXPECT_EQ(watch::calls(), callsWith({"A"}, 1));
}

TEST_F(ShareList, missingListingIsTraced)
{
    root::stub("php", "exit 0");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(watch::calls(),
              (Lines{trace("share_info sys(" + command + ")"), command,
                     trace("share_info() cannot open file: " + listing +
                           " or file: /tmp/fragment (error: No such file or directory)")}));
}

TEST_F(ShareList, targetThatCannotBeWrittenIsTracedAndTheListingStays)
{
    root::stubListing(root::shareBlock("A"));
    EXPECT_EQ(share_info("/tmp"), -1);
    EXPECT_EQ(watch::calls(), (Lines{trace("share_info sys(" + command + ")"), command,
                                     trace("share_info() cannot open file: " + listing +
                                           " or file: /tmp (error: Is a directory)")}));
    EXPECT_EQ(root::readFile(listing), root::shareBlock("A"));
}

TEST_F(ShareList, failureLeavesNoFileOpen)
{
    root::stubListing(root::shareBlock("A"));
    EXPECT_EQ(share_info("/tmp"), -1);
    EXPECT_FALSE(root::isOpen(listing));
    std::filesystem::remove(listing);
    root::stub("php", "exit 0");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_FALSE(root::isOpen(kFragment));
}

TEST_F(ShareList, filesAreClosedBeforeTheListingIsRemovedAndTheCountTraced)
{
    root::stubListing(root::shareBlock("A"));
    std::string writtenAtTheTrace;
    bool isOpenAtTheTrace = true;
    watch::after("echo \"share_info() return", [&] {
        writtenAtTheTrace = root::readFile(kFragment);
        isOpenAtTheTrace = root::isOpen(listing) || root::isOpen(kFragment);
    });
    EXPECT_EQ(share_info(kFragment), 1);
    EXPECT_EQ(writtenAtTheTrace, "return [\"A\"];");
    EXPECT_FALSE(isOpenAtTheTrace);
}

TEST_F(ShareList, missingFolderOfTheTargetIsTraced)
{
    root::stubListing("");
    EXPECT_EQ(share_info("/missing/fragment"), -1);
    EXPECT_EQ(watch::calls().back(),
              trace("share_info() cannot open file: " + listing +
                    " or file: /missing/fragment (error: No such file or directory)"));
}

TEST_F(ShareList, unreadableListingIsTraced)
{
    root::stub("php", "echo >\"$3\"; chmod 000 \"$3\"");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(watch::calls().back(), trace("share_info() cannot open file: " + listing +
                                           " or file: /tmp/fragment (error: Permission denied)"));
}

TEST_F(ShareList, folderInTheListingsPlaceListsNothing)
{
    root::stub("php", "mkdir \"$3\"");
    EXPECT_EQ(share_info(kFragment), 0);
    EXPECT_EQ(root::readFile(kFragment), "return [];\n");
}

TEST_F(ShareList, fullDiskLeavesAFragmentThatIsCutButNoCrash)
{
    std::string text;
    for (int i = 0; i < 2000; ++i) {
        text += root::shareBlock("share" + std::to_string(1000 + i));
    }
    root::stubListing(text);
    root::writeFile(kFragment, std::string(100, 'x'));
    watch::after("sudo", [] { root::fillDisk("/tmp"); });
    for (int i = 0; i < 2000; ++i) {
        watch::answer("echo \"share_info() -- found", 0, 0);
    }
    EXPECT_EQ(share_info(kFragment), 2000);
    const std::string whole(8 + 2000 * 11 + 2, ' ');
    EXPECT_LT(root::readFile(kFragment).size(), whole.size());
}

TEST_F(ShareList, failureWithErrnoEchildCountsAsSuccess)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList");
    root::stubListing(root::shareBlock("A"));
    ASSERT_EQ(std::system((command + " # by hand").c_str()), 0);
    watch::restart();
    watch::answer("sudo", 256, ECHILD);
    EXPECT_EQ(share_info(kFragment), 1);
    EXPECT_EQ(root::readFile(kFragment), "return [\"A\"];");
}

TEST_F(ShareList, reasonOfTheTargetIsTracedIfBothCannotBeOpened)
{
    root::stub("php", "exit 0");
    EXPECT_EQ(share_info("/tmp"), -1);
    EXPECT_EQ(watch::calls().back(), trace("share_info() cannot open file: " + listing +
                                           " or file: /tmp (error: Is a directory)"));
}

TEST_F(ShareList, targetIsEmptiedEvenIfTheListingIsMissing)
{
    root::stub("php", "exit 0");
    root::writeFile(kFragment, "old");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_TRUE(root::exists(kFragment));
    EXPECT_EQ(root::readFile(kFragment), "");
}

TEST_F(ShareList, listingOfAFailedScriptStays)
{
    root::stub("php", "echo listing >\"$3\"; exit 3");
    EXPECT_EQ(share_info(kFragment), -1);
    EXPECT_EQ(root::readFile(listing), "listing\n");
}

TEST_F(ShareList, listingIsGoneBeforeTheCountIsTraced)
{
    root::stubListing(root::shareBlock("A"));
    bool isThere = true;
    watch::after("echo \"share_info() return", [&] { isThere = root::exists(listing); });
    EXPECT_EQ(share_info(kFragment), 1);
    EXPECT_FALSE(isThere);
}

TEST_F(ShareList, emptyNameIsRecognisedByTheMiddleOfItsElement)
{
    expectFragment("<sharename>A</sharename>\n<sharename>B</sharename><name></share>\n"
                   "<sharelocation>int\n",
                   {"A"}, "return [\"A\"];");
}

} // namespace
