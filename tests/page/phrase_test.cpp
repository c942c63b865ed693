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

TEST(Phrase, languagesHaveTheirOwnOrderOfPlaces)
{
    EXPECT_EQ(phrase("{2} of {1}", Texts{"two", "one"}).text(), "<bdi>one</bdi> of <bdi>two</bdi>");
}

TEST(Phrase, placesTakeMarkupAsWell)
{
    const page::Html link = page::Html() << "<a>";
    const page::Html end = page::Html() << "</a>";
    EXPECT_EQ(phrase("<i> {1}a user{2} & {3}.", {link, end}).text(),
              "&lt;i&gt; <a>a user</a> &amp; .");
}

} // namespace
