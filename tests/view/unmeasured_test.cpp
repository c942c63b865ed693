// SPDX-License-Identifier: MIT
#include "view/unmeasured.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using view::findUnmeasured;
using view::Obstacle;
using view::ShareRow;
using view::Unmeasured;
using Strings = std::vector<std::string>;

ShareRow measured(const std::string& name)
{
    return {.name = name, .used = view::Space{5, 'K'}, .backupState = {}, .backupDay = {}};
}

ShareRow failed(const std::string& name)
{
    return {.name = name, .used = {}, .backupState = {}, .backupDay = {}};
}

/// "NAME: REASON", one for each share.
Strings describe(const std::vector<ShareRow>& shares, const std::optional<Strings>& listed)
{
    constexpr std::array kReasons = {"shell", "separator", "first", "failed", "no room"};
    Strings lines;
    for (const Unmeasured& each : findUnmeasured(shares, listed)) {
        lines.push_back(each.name + ": " + kReasons.at(static_cast<std::size_t>(each.obstacle)));
    }
    return lines;
}

TEST(UnmeasuredShares, areNoneIfAllHaveASize)
{
    EXPECT_EQ(describe({measured("A"), measured("b c")}, Strings{"A", "b c"}), Strings{});
    EXPECT_EQ(describe({measured("A")}, std::nullopt), Strings{});
    EXPECT_EQ(describe({}, std::nullopt), Strings{});
}

TEST(UnmeasuredShares, areThoseWithoutASize)
{
    EXPECT_EQ(describe({measured("A"), failed("B")}, std::nullopt), Strings{"B: failed"});
    EXPECT_EQ(describe({failed("B")}, Strings{"B"}), Strings{"B: failed"}) << "once";
    EXPECT_EQ(describe({failed("B")}, Strings{"A"}), Strings{"B: failed"});
}

TEST(UnmeasuredShares, mayHaveNamesThatTheGuardRefuses)
{
    const Strings expected = {"a\"b: shell", "c$: shell", "d`: shell", "e\\: shell"};
    EXPECT_EQ(
        describe({failed("c$"), failed("d`"), failed("e\\")}, Strings{"a\"b", "c$", "d`", "e\\"}),
        expected);
    EXPECT_EQ(describe({failed("c$")}, std::nullopt), Strings{"c$: shell"});
}

TEST(UnmeasuredShares, mayHaveNamesThatAreBrokenIntoPieces)
{
    EXPECT_EQ(describe({failed("a"), failed("b")}, Strings{"a,b"}), Strings{"a,b: separator"});
    EXPECT_EQ(describe({failed("a")}, Strings{"a]"}), Strings{"a]: separator"});
    EXPECT_EQ(describe({failed("a"), failed("c")}, Strings{"a,b"}),
              (Strings{"c: failed", "a,b: separator"}));
}

TEST(UnmeasuredShares, mayBeginWithWhatIsPassedOver)
{
    EXPECT_EQ(describe({failed("Archive")},
                       Strings{"-Archive", "\xC2\xA9", "\xE5\x86\x99\xE7\x9C\x9F", ""}),
              (Strings{"-Archive: first", "\xC2\xA9: first", "\xE5\x86\x99\xE7\x9C\x9F: first",
                       ": first"}));
    EXPECT_EQ(describe({measured("_a"), measured("9"), measured("\xC3\x89")},
                       Strings{"_a", "9", "\xC3\x89"}),
              Strings{});
}

TEST(UnmeasuredShares, ofLongNamesAreCutInTheStatus)
{
    const std::string name = std::string(70, 'x') + "yz";
    EXPECT_EQ(describe({measured(name.substr(0, 64)), failed(name.substr(66))}, Strings{name}),
              Strings{});
    EXPECT_EQ(describe({failed(name.substr(0, 64)), failed(name.substr(66))}, Strings{name}),
              Strings{name + ": failed"});
}

/// What is on the disk only may be no share, or one that has come since.
TEST(UnmeasuredShares, thatTheStatusDoesNotHaveAreOnlyThoseBeyondItsEnd)
{
    EXPECT_EQ(describe({measured("A")}, Strings{"A", "New"}), Strings{});
    // 52 records of 77 bytes and the header are 4014 bytes, and there is room for one more.
    std::vector<ShareRow> shares;
    for (char c = 0; c < 52; ++c) {
        shares.push_back(measured(std::string(63, 'n') + static_cast<char>('A' + c)));
    }
    EXPECT_EQ(describe(shares, Strings{"New"}), Strings{});
    shares.back().name.resize(57);
    shares.push_back(measured(""));
    EXPECT_EQ(describe(shares, Strings{"New"}), Strings{"New: no room"}) << "4020 bytes";
    shares.front().name.resize(63);
    EXPECT_EQ(describe(shares, Strings{"New"}), Strings{}) << "4019 bytes";
}

} // namespace
