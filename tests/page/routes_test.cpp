// SPDX-License-Identifier: MIT
#include "page/routes.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/configuration.h"
#include "tests/page/visits.h"

namespace {

using visits::contains;

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

class Routes : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetNmbdSysname", "<nmbdSysname>box</nmbdSysname>\n");
        root::writeFile("/stubs/tovGetLanguage", "<language>german</language>\n");
        root::writeFile("/stubs/tovGetSystemStatus", "");
        root::writeFile("/etc/pelconfig/system_var", "firsttime=1\n");
        ::setenv("HTTP_HOST", "127.0.0.1:8080", 1);
        ::setenv("CONTENT_TYPE", "application/x-www-form-urlencoded", 1);
        ::unsetenv("HTTP_COOKIE");
    }

    void TearDown() override
    {
        std::filesystem::remove(config::kDefaultFile);
        root::Test::TearDown();
    }

    static std::string ask(const char* method, const char* path, const std::string& body = "")
    {
        ::setenv("REQUEST_METHOD", method, 1);
        ::setenv("PATH_INFO", path, 1);
        ::setenv("CONTENT_LENGTH", std::to_string(body.size()).c_str(), 1);
        root::writeFile("/tmp/body", body);
        const std::unique_ptr<std::FILE, Closer> file(std::fopen("/tmp/body", "r"));
        return page::answer(file.get());
    }

    static void showCookie()
    {
        ::setenv("HTTP_COOKIE", ("vokpage_token=" + visits::kToken).c_str(), 1);
    }

    /// What stands in an answer between two marks.
    static std::string between(const std::string& answer, const std::string& start,
                               const std::string& end)
    {
        const std::size_t from = answer.find(start) + start.size();
        return answer.substr(from, answer.find(end, from) - from);
    }
};

TEST_F(Routes, everyPageIsServed)
{
    const std::vector<std::pair<const char*, std::string>> pages = {
        {"", "Overview"}, {"/setup", "Setup"}, {"/sync", "Sync"}};
    for (const auto& [path, label] : pages) {
        const std::string answer = ask("GET", path);
        EXPECT_TRUE(answer.starts_with("Status: 200 OK\r\n")) << path;
        EXPECT_TRUE(contains(answer, "<h1>" + label + "</h1>")) << path;
        EXPECT_TRUE(contains(answer, "<bdi>box</bdi></p>")) << path;
        EXPECT_TRUE(contains(answer, R"(aria-current="page">)" + label + "</a>")) << path;
    }
    EXPECT_TRUE(contains(ask("GET", "/"), "<h1>Overview</h1>"));
}

TEST_F(Routes, otherPathsAreNotFound)
{
    for (const char* path : {"/x", "/setup/", "/setup/x", "setup", "//"}) {
        const std::string answer = ask("GET", path);
        EXPECT_TRUE(answer.starts_with("Status: 404 Not Found\r\n")) << path;
        EXPECT_TRUE(contains(answer, "<p>There is no such page.</p>"));
    }
}

TEST_F(Routes, headersAloneAreServed)
{
    const std::string answer = ask("HEAD", "/sync");
    EXPECT_TRUE(answer.starts_with("Status: 200 OK\r\n"));
    EXPECT_TRUE(answer.ends_with("\r\n\r\n"));
}

TEST_F(Routes, scriptHasTheNonceOfItsAnswer)
{
    const std::string one = ask("GET", "/setup");
    const std::string nonce = between(one, "'nonce-", "'");
    EXPECT_EQ(nonce.size(), 32U);
    EXPECT_TRUE(contains(one, "<script nonce=\"" + nonce + "\">"));
    EXPECT_NE(between(ask("GET", "/setup"), "'nonce-", "'"), nonce);
}

TEST_F(Routes, browserWithoutATokenGetsOneThatItsFormsCarry)
{
    const std::string answer = ask("GET", "/setup");
    const std::string token = between(answer, "Set-Cookie: vokpage_token=", ";");
    EXPECT_EQ(token.size(), 32U);
    EXPECT_TRUE(contains(answer, "name=\"token\" value=\"" + token + "\""));
}

TEST_F(Routes, browserKeepsItsToken)
{
    showCookie();
    const std::string answer = ask("GET", "/setup");
    EXPECT_FALSE(contains(answer, "Set-Cookie"));
    EXPECT_TRUE(contains(answer, "name=\"token\" value=\"" + visits::kToken + "\""));
}

TEST_F(Routes, formWithItsTokenIsTaken)
{
    showCookie();
    const std::string answer =
        ask("POST", "/setup",
            "language=german&host_name=new-box&share_name=x&next_page=3&token=" + visits::kToken);
    EXPECT_TRUE(answer.starts_with("Status: 200 OK\r\n"));
    EXPECT_TRUE(contains(answer, "The setup is done."));
    EXPECT_TRUE(root::exists("/stubs/told"));
}

TEST_F(Routes, forgedFormsChangeNothing)
{
    const std::string fields = "language=german&host_name=evil&share_name=x&next_page=3&token=";
    const auto expectRefused = [&](const std::string& token) {
        const std::string answer = ask("POST", "/setup", fields + token);
        EXPECT_TRUE(answer.starts_with("Status: 403 Forbidden\r\n")) << token;
        EXPECT_TRUE(contains(answer, "does not come from a page of this appliance")) << token;
    };
    expectRefused("");
    expectRefused(visits::kToken);
    showCookie();
    expectRefused("");
    expectRefused(std::string(32, '0'));
    EXPECT_FALSE(root::exists("/stubs/told"));
    EXPECT_EQ(root::readFile("/etc/pelconfig/system_var"), "firsttime=1\n");
}

TEST_F(Routes, pageWithoutFormsTakesNone)
{
    showCookie();
    const std::string answer = ask("POST", "", "token=" + visits::kToken);
    EXPECT_TRUE(answer.starts_with("Status: 405 Method Not Allowed\r\n"));
    EXPECT_TRUE(contains(answer, "<p>This page takes no forms.</p>"));
}

TEST_F(Routes, foreignNamesAreRefusedAndTheOwnIsNot)
{
    ::setenv("HTTP_HOST", "evil.example", 1);
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 403 Forbidden\r\n"));
    ::setenv("HTTP_HOST", "Box.local:8080", 1);
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 200 OK\r\n"));
}

TEST_F(Routes, settingsNameFurtherHosts)
{
    ::setenv("HTTP_HOST", "nas.example", 1);
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 403 Forbidden\r\n"));
    root::writeFile(config::kDefaultFile, "[pages]\nhosts = nas.example\n");
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 200 OK\r\n"));
}

TEST_F(Routes, settingsThatAreNotUnderstoodAreToldInTheLog)
{
    root::writeFile(config::kDefaultFile, "[pages]\nhots = nas.example\n");
    testing::internal::CaptureStderr();
    const std::string answer = ask("GET", "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: /etc/vokcontrol.conf:2: \"hots\" is no key of [pages]; there are "
              "administrators, hosts and trust-web-server\n");
    EXPECT_TRUE(answer.starts_with("Status: 500 Internal Server Error\r\n"));
    EXPECT_TRUE(contains(answer,
                         "<p>The appliance&#39;s settings cannot be read, so nothing was done. "
                         "The web server&#39;s log tells what has to be mended.</p>"));
    EXPECT_FALSE(contains(answer, "hots"));
}

TEST_F(Routes, newNameShowsAtOnce)
{
    showCookie();
    root::stub("php", "case $2 in\n"
                      "tovSetNmbdSysname) echo \"<nmbdSysname>$3</nmbdSysname>\" >/stubs/name ;;\n"
                      "tovGetNmbdSysname) cat /stubs/name >\"$3\" ;;\n"
                      "esac");
    root::writeFile("/stubs/name", "<nmbdSysname>box</nmbdSysname>\n");
    const std::string answer =
        ask("POST", "/setup",
            "language=german&host_name=new-box&share_name=x&next_page=3&token=" + visits::kToken);
    EXPECT_TRUE(contains(answer, "<bdi>new-box</bdi></p>"));
}

TEST_F(Routes, nothingIsPrintedBeforeTheHeaders)
{
    testing::internal::CaptureStdout();
    (void)ask("GET", "");
    (void)ask("GET", "/setup");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
