// SPDX-License-Identifier: MIT
#include "page/phrase.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using page::phrase;
using Texts = std::vector<std::string>;

TEST(Phrase, textsTakeTheirPlacesInOrder)
{
    EXPECT_EQ(phrase("{} & {}.", Texts{"<a>", "{}"}).text(),
              "<bdi>&lt;a&gt;</bdi> &amp; <bdi>{}</bdi>.");
    EXPECT_EQ(phrase("Nobody.", Texts{"anna"}).text(), "Nobody.");
}

TEST(Phrase, placeWithoutATextIsEmpty)
{
    EXPECT_EQ(phrase("{} and {}{}!", Texts{"anna"}).text(), "<bdi>anna</bdi> and !");
}

} // namespace
