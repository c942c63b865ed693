// SPDX-License-Identifier: MIT
#include "page/request.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "page/private_files.h"
#include "tests/support/root.h"

namespace {

using page::cookieValue;
using page::Refusal;
using page::Request;

const std::string kToken = "0123456789abcdef0123456789abcdef";
const std::string kOther = "fedcba9876543210fedcba9876543210";
constexpr const char* kFormType = "application/x-www-form-urlencoded";

const std::vector<std::string> kFurtherNames = {"nas.example", "Backup.example"};

class Requests : public root::Test {
  protected:
    page::Variables variables;

    void SetUp() override
    {
        root::Test::SetUp();
        variables.set("REQUEST_METHOD", "GET");
    }

    [[nodiscard]] Request read() const { return page::readHead(variables); }

    /// Sends a body as a form, with a length and a type.
    page::Form post(const std::string& body, const std::string& length,
                    const char* type = kFormType)
    {
        variables.set("CONTENT_TYPE", type);
        variables.set("CONTENT_LENGTH", length);
        root::writeFile("/tmp/body", body);
        const page::Descriptor file(::open("/tmp/body", O_RDONLY | O_CLOEXEC));
        return page::readForm(variables, file.number());
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

    std::string hostOf(const char* header)
    {
        variables.set("HTTP_HOST", header);
        return read().host();
    }

    void checkHost(const char* header)
    {
        variables.set("HTTP_HOST", header);
        page::checkHost(read(), kFurtherNames, [] { return std::string("Storage-2"); });
    }
};

TEST_F(Requests, readsTheVariables)
{
    variables.set("PATH_INFO", "/setup");
    variables.set("QUERY_STRING", "sort=name%2D&wait=10");
    variables.set("HTTP_HOST", "127.0.0.1:8080");
    variables.set("HTTP_ORIGIN", "http://127.0.0.1:8080");
    variables.set("HTTP_SEC_FETCH_SITE", "same-origin");
    variables.set("REMOTE_ADDR", "192.0.2.7");
    variables.set("HTTP_COOKIE", "a=b; vokpage_token=" + kToken + "; vokpage_session=" + kOther);
    const Request request = read();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/setup");
    EXPECT_EQ(request.rawQuery, "sort=name%2D&wait=10");
    EXPECT_EQ(request.query.value("sort"), "name-");
    EXPECT_EQ(request.query.value("wait"), "10");
    EXPECT_EQ(request.authority, "127.0.0.1:8080");
    EXPECT_EQ(request.host(), "127.0.0.1");
    EXPECT_EQ(request.origin, "http://127.0.0.1:8080");
    EXPECT_EQ(request.fetchSite, "same-origin");
    EXPECT_EQ(request.address, "192.0.2.7");
    EXPECT_EQ(request.token, kToken);
    EXPECT_EQ(request.session, kOther);
    EXPECT_FALSE(request.isPost());
    EXPECT_FALSE(request.isSecure);
}

TEST_F(Requests, deedIsACookieToo)
{
    EXPECT_EQ(read().deed, "");
    variables.set("HTTP_COOKIE", "vokpage_deed=kind=%78&0=%79; a=b");
    EXPECT_EQ(read().deed, "kind=%78&0=%79");
}

TEST_F(Requests, serversSayInTwoWaysThatTheyHaveTls)
{
    for (const char* value : {"on", "1"}) {
        variables.set("HTTPS", value);
        EXPECT_TRUE(read().isSecure) << value;
    }
    for (const char* value : {"off", ""}) {
        variables.set("HTTPS", value);
        EXPECT_FALSE(read().isSecure) << value;
    }
    variables.set("REQUEST_SCHEME", "https");
    EXPECT_TRUE(read().isSecure);
}

TEST_F(Requests, whatIsMissingIsEmpty)
{
    const Request request = read();
    EXPECT_EQ(request.path + request.host() + request.token + request.session, "");
}

TEST_F(Requests, cookieThatIsNoTokenIsNone)
{
    for (const std::string& value : {std::string(), kToken + "0", "<" + kToken.substr(1)}) {
        variables.set("HTTP_COOKIE", "vokpage_token=" + value + "; vokpage_session=" + value);
        EXPECT_EQ(read().token + read().session, "") << value;
    }
}

TEST_F(Requests, twoCookiesOfOneNameAreRefused)
{
    const std::string words =
        "Your browser has two cookies of one name, and one of them is not ours. "
        "Delete the cookies of this appliance, and log in again.";
    for (const std::string name : {"vokpage_token", "vokpage_session"}) {
        variables.set("HTTP_COOKIE", name + "=" + kToken + "; a=b; " + name + "=");
        expectRefusal(400, words, [this] { (void)read(); });
    }
    variables.set("HTTP_COOKIE", "a=1; a=2; vokpage_session=" + kToken);
    EXPECT_EQ(read().session, kToken);
}

TEST_F(Requests, cookiesAreFoundByTheirWholeName)
{
    EXPECT_EQ(cookieValue("a=1; b=2;c=3", "a"), "1");
    EXPECT_EQ(cookieValue("a=1; b=2;c=3", "b"), "2");
    EXPECT_EQ(cookieValue("a=1; b=2;c=3 ", "c"), "3");
    EXPECT_EQ(cookieValue("aa=1; xa=2", "a"), "");
    EXPECT_EQ(cookieValue("a", "a"), "");
    EXPECT_EQ(cookieValue(";;", "a"), "");
}

TEST_F(Requests, formIsReadToItsLength)
{
    EXPECT_EQ(post("a=1&b=2tail", "7").value("b"), "2");
    EXPECT_EQ(post("", "0").find("a"), nullptr);
    EXPECT_EQ(post("a=1", "3", "application/x-www-form-urlencoded; charset=utf-8").value("a"), "1");
}

TEST_F(Requests, largestFormIsRead)
{
    const std::string body = "a=" + std::string(page::kMaxBodySize - 2, 'x');
    EXPECT_EQ(post(body, std::to_string(body.size())).value("a").size(), body.size() - 2);
    expectRefusal(413, "The form is too large.",
                  [&] { (void)post(body + "x", std::to_string(body.size() + 1)); });
    expectRefusal(413, "The form is too large.",
                  [this] { (void)post("a=1", "99999999999999999999999"); });
}

TEST_F(Requests, formWithoutAGoodLengthIsRefused)
{
    for (const char* length : {"", "x", "-1", "3x", " 3"}) {
        expectRefusal(400, "The size of the form is missing.",
                      [this, length] { (void)post("a=1", length); });
    }
    expectRefusal(400, "The form is not complete.", [this] { (void)post("a=1", "4"); });
}

TEST_F(Requests, otherBodiesAreRefused)
{
    for (const char* type : {"", "text/plain", "multipart/form-data; boundary=x",
                             "application/x-www-form-urlencodedx"}) {
        expectRefusal(415, "This is not a form.", [this, type] { (void)post("a=1", "3", type); });
    }
}

TEST_F(Requests, otherMethodsAreRefused)
{
    variables.set("REQUEST_METHOD", "HEAD");
    EXPECT_EQ(read().method, "HEAD");
    for (const char* method : {"PUT", "DELETE", "get", ""}) {
        variables.set("REQUEST_METHOD", method);
        expectRefusal(405, "The pages take only GET, HEAD and POST.", [this] { (void)read(); });
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
                      [this, host] { checkHost(host); });
    }
}

TEST_F(Requests, applianceWithoutANameGoesByNone)
{
    variables.set("HTTP_HOST", ".local");
    const Request request = read();
    EXPECT_THROW(page::checkHost(request, kFurtherNames, [] { return std::string(); }), Refusal);
}

TEST_F(Requests, bodyThatComesInPiecesIsRead)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const page::Descriptor body(ends[0]);
    if (const pid_t child = ::fork(); child == 0) {
        for (const char byte : std::string("a=1&b=2")) {
            ::usleep(1000);
            [[maybe_unused]] const ssize_t written = ::write(ends[1], &byte, 1);
        }
        ::_exit(0);
    } else {
        ::close(ends[1]);
        variables.set("CONTENT_TYPE", kFormType);
        variables.set("CONTENT_LENGTH", "7");
        EXPECT_EQ(page::readForm(variables, body.number()).value("b"), "2");
        ::waitpid(child, nullptr, 0);
    }
}

TEST_F(Requests, bodyThatDoesNotComeIsNotWaitedForLong)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const page::Descriptor body(ends[0]);
    const page::Descriptor sender(ends[1]);
    variables.set("CONTENT_TYPE", kFormType);
    variables.set("CONTENT_LENGTH", "7");
    const auto start = std::chrono::steady_clock::now();
    expectRefusal(408, "The form did not come in time.",
                  [&] { (void)page::readForm(variables, body.number()); });
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, std::chrono::seconds(10));
    EXPECT_LT(taken, std::chrono::seconds(20));
}

} // namespace
