// SPDX-License-Identifier: MIT
#include "page/request.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/root.h"

namespace {

using page::cookieValue;
using page::readRequest;
using page::Refusal;
using page::Request;

const std::string kToken = "0123456789abcdef0123456789abcdef";
constexpr const char* kFormType = "application/x-www-form-urlencoded";

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

const std::vector<std::string> kFurtherNames = {"nas.example"};

class Requests : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        for (const char* name : {"REQUEST_METHOD", "PATH_INFO", "HTTP_HOST", "HTTP_COOKIE",
                                 "CONTENT_TYPE", "CONTENT_LENGTH"}) {
            ::unsetenv(name);
        }
        ::setenv("REQUEST_METHOD", "GET", 1);
    }

    static Request read(const std::string& body = "")
    {
        root::writeFile("/tmp/body", body);
        const std::unique_ptr<std::FILE, Closer> file(std::fopen("/tmp/body", "r"));
        return readRequest(file.get());
    }

    /// Sends a body as a form, with a length and a type.
    static Request post(const std::string& body, const std::string& length,
                        const char* type = kFormType)
    {
        ::setenv("REQUEST_METHOD", "POST", 1);
        ::setenv("CONTENT_TYPE", type, 1);
        ::setenv("CONTENT_LENGTH", length.c_str(), 1);
        return read(body);
    }

    template <class Work>
    static void expectRefusal(int status, const std::string& reason, Work work)
    {
        try {
            work();
            FAIL() << "it was not refused";
        } catch (const Refusal& refusal) {
            EXPECT_EQ(refusal.status(), status);
            EXPECT_EQ(refusal.what(), reason);
        }
    }

    static std::string hostOf(const char* header)
    {
        ::setenv("HTTP_HOST", header, 1);
        return read().host;
    }

    static void checkHost(const char* header)
    {
        ::setenv("HTTP_HOST", header, 1);
        page::checkHost(read(), kFurtherNames, [] { return std::string("Storage-2"); });
    }
};

TEST_F(Requests, readsTheEnvironment)
{
    ::setenv("PATH_INFO", "/setup", 1);
    ::setenv("HTTP_HOST", "127.0.0.1:8080", 1);
    ::setenv("HTTP_COOKIE", ("a=b; vokpage_token=" + kToken).c_str(), 1);
    const Request request = read();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/setup");
    EXPECT_EQ(request.host, "127.0.0.1");
    EXPECT_EQ(request.token, kToken);
    EXPECT_FALSE(request.isPost());
}

TEST_F(Requests, whatIsMissingIsEmpty)
{
    const Request request = read();
    EXPECT_EQ(request.path, "");
    EXPECT_EQ(request.host, "");
    EXPECT_EQ(request.token, "");
}

TEST_F(Requests, cookieThatIsNoTokenIsNone)
{
    for (const std::string& cookie :
         {std::string("vokpage_token="), "vokpage_token=" + kToken + "0",
          "vokpage_token=<" + kToken.substr(1)}) {
        ::setenv("HTTP_COOKIE", cookie.c_str(), 1);
        EXPECT_EQ(read().token, "") << cookie;
    }
}

TEST_F(Requests, cookiesAreFoundByTheirWholeName)
{
    EXPECT_EQ(cookieValue("a=1; b=2;c=3", "a"), "1");
    EXPECT_EQ(cookieValue("a=1; b=2;c=3", "b"), "2");
    EXPECT_EQ(cookieValue("a=1; b=2;c=3 ", "c"), "3");
    EXPECT_EQ(cookieValue("aa=1; xa=2", "a"), "");
    EXPECT_EQ(cookieValue("a", "a"), "");
    EXPECT_EQ(cookieValue("a=1; a=2", "a"), "1");
    EXPECT_EQ(cookieValue(";;", "a"), "");
}

TEST_F(Requests, formIsReadToItsLength)
{
    EXPECT_EQ(post("a=1&b=2tail", "7").form.value("b"), "2");
    EXPECT_EQ(post("", "0").form.find("a"), nullptr);
    EXPECT_EQ(post("a=1", "3", "application/x-www-form-urlencoded; charset=utf-8").form.value("a"),
              "1");
}

TEST_F(Requests, largestFormIsRead)
{
    const std::string body = "a=" + std::string(page::kMaxBodySize - 2, 'x');
    EXPECT_EQ(post(body, std::to_string(body.size())).form.value("a").size(), body.size() - 2);
    expectRefusal(413, "The form is too large.",
                  [&] { (void)post(body + "x", std::to_string(body.size() + 1)); });
    expectRefusal(413, "The form is too large.",
                  [] { (void)post("a=1", "99999999999999999999999"); });
}

TEST_F(Requests, formWithoutAGoodLengthIsRefused)
{
    for (const char* length : {"", "x", "-1", "3x", " 3"}) {
        expectRefusal(400, "The size of the form is missing.",
                      [length] { (void)post("a=1", length); });
    }
    expectRefusal(400, "The form is not complete.", [] { (void)post("a=1", "4"); });
}

TEST_F(Requests, otherBodiesAreRefused)
{
    for (const char* type : {"", "text/plain", "multipart/form-data; boundary=x",
                             "application/x-www-form-urlencodedx"}) {
        expectRefusal(415, "This is not a form.", [type] { (void)post("a=1", "3", type); });
    }
}

TEST_F(Requests, otherMethodsAreRefused)
{
    ::setenv("REQUEST_METHOD", "HEAD", 1);
    EXPECT_EQ(read().method, "HEAD");
    for (const char* method : {"PUT", "DELETE", "get", ""}) {
        ::setenv("REQUEST_METHOD", method, 1);
        expectRefusal(405, "Pages are read or sent a form; nothing else.", [] { (void)read(); });
    }
}

TEST_F(Requests, hostIsReadWithoutItsPort)
{
    EXPECT_EQ(hostOf("storage"), "storage");
    EXPECT_EQ(hostOf("storage:80"), "storage");
    EXPECT_EQ(hostOf("[::1]:8080"), "[::1]");
    EXPECT_EQ(hostOf("[::1"), "[::1");
    EXPECT_EQ(hostOf("["), "[");
}

TEST_F(Requests, addressesAndOwnNamesAreServed)
{
    for (const char* host : {"127.0.0.1", "192.0.2.7:8080", "[::1]:80", "localhost", "LocalHost:80",
                             "storage-2", "STORAGE-2.local:80", "nas.example", "NAS.example:80"}) {
        EXPECT_NO_THROW(checkHost(host)) << host;
    }
}

TEST_F(Requests, foreignNamesAreRefused)
{
    for (const char* host :
         {"", "evil.example", "storage-2.evil.example", "box.nas.example", "nas.example.local",
          "127.0.0.1.evil.example", "storage-2.", "127.0.0.1x", "[evil]", "[::1", "[]"}) {
        expectRefusal(403,
                      "The appliance does not go by this name. Use its own name or its address.",
                      [host] { checkHost(host); });
    }
}

TEST_F(Requests, applianceWithoutANameGoesByNone)
{
    ::setenv("HTTP_HOST", ".local", 1);
    const Request request = read();
    EXPECT_THROW(page::checkHost(request, kFurtherNames, [] { return std::string(); }), Refusal);
}

TEST_F(Requests, postNeedsItsToken)
{
    ::setenv("HTTP_COOKIE", ("vokpage_token=" + kToken).c_str(), 1);
    const std::string good = "token=" + kToken;
    EXPECT_NO_THROW(page::checkToken(post(good, std::to_string(good.size()))));
    for (const std::string& body :
         {std::string("a=1"), std::string("token="), "token=" + kToken.substr(1) + "0"}) {
        EXPECT_THROW(page::checkToken(post(body, std::to_string(body.size()))), Refusal) << body;
    }
    ::unsetenv("HTTP_COOKIE");
    EXPECT_THROW(page::checkToken(post(good, std::to_string(good.size()))), Refusal);
    EXPECT_THROW(page::checkToken(post("token=", "6")), Refusal) << "nothing is not the same token";
}

TEST_F(Requests, readingNeedsNoToken)
{
    EXPECT_NO_THROW(page::checkToken(read()));
}

} // namespace
