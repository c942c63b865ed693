// SPDX-License-Identifier: MIT
#include "page/deed.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

using page::Cookie;
using page::Deed;
using page::Request;

constexpr auto kSentences = std::to_array<page::DeedSentence>({
    {"given", "{} got {}."},
    {"none", "Nothing."},
});

/// What is told of a cookie, and the cookies that the browser is given.
std::string told(const std::string& cookie, std::vector<Cookie>& cookies)
{
    Request request;
    request.deed = cookie;
    return page::tellDeed(request, kSentences, cookies).text();
}

TEST(Deeds, cookieHasFewKindsOfCharacters)
{
    const Cookie cookie = page::cookieOf({"given", {"a;b", "\xFF"}});
    EXPECT_EQ(cookie.name, "vokpage_deed");
    EXPECT_EQ(cookie.value, "kind=%67%69%76%65%6e&0=%61%3b%62&1=%ff");
}

TEST(Deeds, cookieIsReadAsItWasWritten)
{
    for (const Deed& deed :
         std::vector<Deed>{{"given", {"a;b & =%41+", "\xFF\"<"}}, {"none", {}}, {"one", {""}}}) {
        const std::optional<Deed> read = page::readDeed(page::cookieOf(deed).value);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->kind, deed.kind);
        EXPECT_EQ(read->names, deed.names);
    }
}

TEST(Deeds, otherCookiesAreNone)
{
    for (const char* cookie : {"", "x", "kind=", "0=a&1=b"}) {
        EXPECT_FALSE(page::readDeed(cookie)) << cookie;
    }
}

TEST(Deeds, deedIsToldOnce)
{
    std::vector<Cookie> cookies;
    EXPECT_EQ(told(page::cookieOf({"given", {"<anna>", "Music"}}).value, cookies),
              "<div class=\"notice good\" role=\"status\"><p><bdi>&lt;anna&gt;</bdi> got "
              "<bdi>Music</bdi>.</p></div>\n");
    ASSERT_EQ(cookies.size(), 1U);
    EXPECT_EQ(cookies[0].name, "vokpage_deed");
    EXPECT_EQ(cookies[0].value, "") << "the browser forgets it";
}

TEST(Deeds, whatIsNotOfThisPageIsNotTold)
{
    std::vector<Cookie> cookies;
    EXPECT_EQ(told(page::cookieOf({"other", {"x"}}).value, cookies), "");
    EXPECT_EQ(told("", cookies), "");
    EXPECT_EQ(cookies.size(), 0U);
}

} // namespace
