// SPDX-License-Identifier: MIT
#include "page/response.h"

#include <gtest/gtest.h>
#include <string>

namespace {

page::Response response()
{
    page::Response made;
    made.nonce = "abc";
    made.page << "<p>page</p>";
    return made;
}

const std::string kHeaders =
    "Content-Type: text/html; charset=utf-8\r\n"
    "Content-Language: en\r\n"
    "Vary: Accept-Language, Cookie\r\n"
    "Content-Security-Policy: default-src 'none'; script-src 'self' 'nonce-abc'; style-src 'self'; "
    "img-src 'self'; connect-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors "
    "'none'\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "X-Frame-Options: DENY\r\n"
    "Referrer-Policy: same-origin\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n"
    "Cache-Control: no-store\r\n";

TEST(Response, hasItsHeadersAndThePage)
{
    EXPECT_EQ(render(response(), false), "Status: 200 OK\r\n" + kHeaders + "\r\n<p>page</p>");
}

TEST(Response, canBeItsHeadersAlone)
{
    EXPECT_EQ(render(response(), true), "Status: 200 OK\r\n" + kHeaders + "\r\n");
}

TEST(Response, givesTheBrowserItsCookies)
{
    page::Response made = response();
    made.cookies = {{"vokpage_session", "0123"}, {"vokpage_token", ""}};
    EXPECT_EQ(render(made, true),
              "Status: 200 OK\r\n" + kHeaders +
                  "Set-Cookie: vokpage_session=0123; Path=/; HttpOnly; SameSite=Strict\r\n"
                  "Set-Cookie: vokpage_token=; Path=/; HttpOnly; SameSite=Strict; "
                  "Max-Age=0\r\n\r\n");
    made.isSecure = true;
    EXPECT_EQ(render(made, true),
              "Status: 200 OK\r\n" + kHeaders +
                  "Set-Cookie: vokpage_session=0123; Path=/; HttpOnly; SameSite=Strict; "
                  "Secure\r\n"
                  "Set-Cookie: vokpage_token=; Path=/; HttpOnly; SameSite=Strict; Secure; "
                  "Max-Age=0\r\n\r\n");
}

TEST(Response, cookieThatIsKeptSaysHowLong)
{
    page::Response made = response();
    made.cookies = {{"vokpage_language", "de", std::chrono::seconds(7)}};
    EXPECT_EQ(render(made, true), "Status: 200 OK\r\n" + kHeaders +
                                      "Set-Cookie: vokpage_language=de; Path=/; HttpOnly; "
                                      "SameSite=Strict; Max-Age=7\r\n\r\n");
}

TEST(Response, leadsToAnotherPage)
{
    page::Response made;
    made.nonce = "abc";
    made.status = 303;
    made.location = "/cgi-bin/vokpage/login";
    EXPECT_EQ(render(made, false),
              "Status: 303 See Other\r\n" + kHeaders + "Location: /cgi-bin/vokpage/login\r\n\r\n");
}

TEST(Response, saysItsStatusInWords)
{
    page::Response made = response();
    made.status = 403;
    EXPECT_EQ(render(made, true), "Status: 403 Forbidden\r\n" + kHeaders + "\r\n");
    made.status = 503;
    made.retryAfter = std::chrono::seconds(2);
    EXPECT_EQ(render(made, true),
              "Status: 503 Service Unavailable\r\n" + kHeaders + "Retry-After: 2\r\n\r\n");
    made = response();
    made.status = 405;
    made.allowed = "GET, HEAD";
    EXPECT_EQ(render(made, true),
              "Status: 405 Method Not Allowed\r\n" + kHeaders + "Allow: GET, HEAD\r\n\r\n");
    made = response();
    made.status = 599;
    EXPECT_EQ(render(made, true), "Status: 500 Internal Server Error\r\n" + kHeaders + "\r\n");
}

} // namespace
