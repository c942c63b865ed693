// SPDX-License-Identifier: MIT
#include "page/slots.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/root.h"

namespace {

using page::Descriptor;
using page::takeSlot;

class Slots : public root::Test {
  protected:
    /// Takes slots as long as there are some.
    static std::vector<Descriptor> takeAll(bool isStranger)
    {
        std::vector<Descriptor> taken;
        while (std::optional<Descriptor> slot = takeSlot(isStranger, "/tmp/state")) {
            taken.push_back(*std::move(slot));
        }
        return taken;
    }
};

TEST_F(Slots, thereAreFew)
{
    EXPECT_EQ(takeAll(false).size(), 8U);
    EXPECT_EQ(takeAll(true).size(), 4U) << "those of before have been given back";
}

TEST_F(Slots, strangersLeaveSomeToThoseWhoHaveLoggedIn)
{
    const std::vector<Descriptor> strangers = takeAll(true);
    EXPECT_EQ(takeAll(false).size(), 4U);
}

TEST_F(Slots, whoHasLoggedInTakesThoseOfStrangersLast)
{
    std::vector<Descriptor> taken;
    for (int count = 0; count < 4; ++count) {
        taken.push_back(*takeSlot(false, "/tmp/state"));
    }
    EXPECT_EQ(takeAll(true).size(), 4U);
}

TEST_F(Slots, areKeptFromOthers)
{
    (void)takeSlot(true, "/tmp/state");
    EXPECT_EQ(root::list("/tmp/state"), std::vector<std::string>{"slots"});
    EXPECT_EQ(root::list("/tmp/state/slots"), std::vector<std::string>{"3"});
}

} // namespace
