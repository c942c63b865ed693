// SPDX-License-Identifier: MIT
#include "page/origin.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using page::Request;

Request post(const std::string& origin, const std::string& fetchSite = "",
             const std::string& authority = "storage:8080")
{
    Request request;
    request.method = "POST";
    request.authority = authority;
    request.origin = origin;
    request.fetchSite = fetchSite;
    return request;
}

void expectRefused(const Request& request)
{
    try {
        page::checkOrigin(request);
        FAIL() << request.origin << " " << request.fetchSite << " was not refused";
    } catch (const page::Refusal& refusal) {
        EXPECT_EQ(refusal.status(), 403);
        EXPECT_STREQ(refusal.what(),
                     "Your browser says that this form does not come from a page of "
                     "this appliance. Nothing was changed.");
    }
}

TEST(Origin, formsOfThisOriginAreTaken)
{
    EXPECT_NO_THROW(page::checkOrigin(post("http://storage:8080", "same-origin")));
    EXPECT_NO_THROW(page::checkOrigin(post("http://STORAGE:8080")));
    EXPECT_NO_THROW(page::checkOrigin(post("http://[::1]:8080", "", "[::1]:8080")));
    EXPECT_NO_THROW(page::checkOrigin(post("https://storage", "", "storage")))
        << "a server for TLS in front need not tell";
    EXPECT_NO_THROW(page::checkOrigin(post("http://storage:8080", "none")))
        << "the visitor sent it once more";
}

TEST(Origin, browsersThatSayNothingAreNotRefused)
{
    EXPECT_NO_THROW(page::checkOrigin(post("")));
}

TEST(Origin, formsOfOtherOriginsAreRefused)
{
    for (const char* origin :
         {"http://evil.example", "http://storage", "http://storage:8081", "http://storage:80801",
          "http://storage:8080.evil.example", "storage:8080", "null", "ftp://storage:8080"}) {
        expectRefused(post(origin));
        expectRefused(post(origin, "same-origin"));
    }
}

TEST(Origin, formsFromAfarAreRefused)
{
    for (const char* site : {"cross-site", "same-site", "something else"}) {
        expectRefused(post("", site));
        expectRefused(post("http://storage:8080", site));
    }
}

TEST(Origin, overTlsFormsWithoutItAreRefused)
{
    Request request = post("http://storage:8080");
    request.isSecure = true;
    expectRefused(request);
    request.origin = "https://storage:8080";
    EXPECT_NO_THROW(page::checkOrigin(request));
}

TEST(Origin, readingIsFree)
{
    Request request = post("http://evil.example", "cross-site");
    request.method = "GET";
    EXPECT_NO_THROW(page::checkOrigin(request));
}

} // namespace
