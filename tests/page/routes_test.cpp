// SPDX-License-Identifier: MIT
#include "page/routes.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "config/configuration.h"
#include "page/private_files.h"
#include "page/slots.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using visits::contains;

/// The public share that the setup is to make exists already.
const std::string kShareIsThere = "lsst " + root::le32(1) + "\nx\npublic\n";

class Routes : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetNmbdSysname", "<nmbdSysname>box</nmbdSysname>\n");
        root::writeFile("/stubs/tovGetLanguage", "<language>german</language>\n");
        root::writeFile("/stubs/tovGetSystemStatus", "");
        root::writeFile("/etc/pelconfig/system_var", "firsttime=1\n");
        configure("administrators = anna\n");
        variables.set("HTTP_HOST", "127.0.0.1:8080");
        variables.set("CONTENT_TYPE", "application/x-www-form-urlencoded");
        testing::internal::CaptureStderr();
    }

    void TearDown() override
    {
        testing::internal::GetCapturedStderr();
        std::filesystem::remove(config::kDefaultFile);
        root::Test::TearDown();
    }

    /// What the administrator has settled for the pages.
    static void configure(const std::string& lines)
    {
        root::writeFile(config::kDefaultFile,
                        "[pages]\n" + lines + "[service]\nsocket = " + FakeService::kSocket + "\n");
    }

    std::string ask(const char* method, const char* path, const std::string& body = "")
    {
        variables.set("REQUEST_METHOD", method);
        variables.set("PATH_INFO", path);
        variables.set("CONTENT_LENGTH", std::to_string(body.size()));
        root::writeFile("/tmp/body", body);
        const page::Descriptor file(::open("/tmp/body", O_RDONLY | O_CLOEXEC));
        return page::answer(variables, file.number());
    }

    /// Whatever follows is asked by somebody with this account.
    void logIn(const std::string& account)
    {
        session = page::Sessions().begin(account, page::now());
        formToken = page::Sessions().find(session, page::now())->formToken;
        variables.set("HTTP_COOKIE", "vokpage_session=" + session);
    }

    /// Whatever follows is asked by a browser that has been here, but not logged in.
    void showToken()
    {
        formToken = visits::kToken;
        variables.set("HTTP_COOKIE", "vokpage_token=" + formToken);
    }

    static std::string statusOf(const std::string& answer)
    {
        return answer.substr(8, answer.find("\r\n") - 8);
    }

    page::Variables variables;
    std::string session;
    std::string formToken;

    /// What stands in an answer between two marks.
    static std::string between(const std::string& answer, const std::string& start,
                               const std::string& end)
    {
        const std::size_t from = answer.find(start) + start.size();
        return answer.substr(from, answer.find(end, from) - from);
    }
};

/// Each page's path, and what its reading and a form get for an administrator, for another account,
/// for nobody, and for nobody where the appliance is new. A "303" leads to the page behind it.
struct Row {
    const char* path;
    std::array<const char*, 4> read;
    std::array<const char*, 4> written;
};

// clang-format off
constexpr auto kRows = std::to_array<Row>({
    // path                  read: administrator, account, nobody, newcomer             form: the same
    {"",                     {"200",        "200",        "303 /login", "303 /setup/administrator"}, {"405", "405", "405", "405"}},
    {"/share",               {"404",        "404",        "303 /login", "303 /setup/administrator"}, {"405", "405", "405", "405"}},
    {"/shares",              {"200",        "200",        "303 /login", "303 /setup/administrator"}, {"200", "403", "403", "403"}},
    {"/users",               {"200",        "200",        "303 /login", "303 /setup/administrator"}, {"200", "403", "403", "403"}},
    {"/users/check",         {"200",        "403",        "303 /login", "303 /setup/administrator"}, {"200", "403", "403", "403"}},
    {"/collection",          {"200",        "200",        "303 /login", "303 /setup/administrator"}, {"503", "403", "403", "403"}},
    {"/setup",               {"200",        "403",        "303 /login", "303 /setup/administrator"}, {"200", "403", "403", "403"}},
    {"/setup/administrator", {"303 /setup", "303 /setup", "303 /login", "200"},                      {"303 /setup", "303 /setup", "403", "200"}},
    {"/sync",                {"200",        "200",        "303 /login", "303 /setup/administrator"}, {"200", "403", "403", "403"}},
    {"/login",               {"303 ",       "303 ",       "200",        "303 /setup/administrator"}, {"303 ", "303 ", "403", "303 /setup/administrator"}},
    {"/logout",              {"405",        "405",        "405",        "405"},                      {"303 /login", "303 /login", "403", "403"}},
    {"/language",            {"405",        "405",        "405",        "405"},                      {"400", "400", "400", "400"}},
    {"/help",                {"200",        "200",        "200",        "200"},                      {"405", "405", "405", "405"}},
});
// clang-format on

class Access : public Routes {
  protected:
    /// The visitors, in the order of the table.
    void become(std::size_t visitor)
    {
        configure((visitor == 3) ? "" : "administrators = anna\n");
        if (visitor < 2) {
            logIn(visitor == 0 ? "anna" : "bob");
        } else {
            showToken();
        }
    }

    /// The status, and where a "303" leads.
    static std::string outcomeOf(const std::string& answer)
    {
        const std::string status = statusOf(answer).substr(0, 3);
        return (status == "303") ? "303 " + between(answer, "Location: /cgi-bin/vokpage", "\r\n")
                                 : status;
    }
};

TEST_F(Access, isAsTheTableSays)
{
    for (const Row& row : kRows) {
        for (std::size_t visitor = 0; visitor < row.read.size(); ++visitor) {
            become(visitor);
            EXPECT_EQ(outcomeOf(ask("GET", row.path)), row.read.at(visitor))
                << row.path << " " << visitor;
            become(visitor);
            EXPECT_EQ(outcomeOf(ask("POST", row.path, "switch=off&token=" + formToken)),
                      row.written.at(visitor))
                << row.path << " " << visitor;
        }
    }
}

TEST_F(Access, tableHasAllPages)
{
    std::vector<std::string_view> served;
    for (const page::PageEntry& entry : page::pages()) {
        served.push_back(entry.path);
    }
    std::vector<std::string_view> tested;
    for (const Row& row : kRows) {
        tested.emplace_back(row.path);
    }
    EXPECT_EQ(served, tested);
}

TEST_F(Routes, whoMayNotChangesNothing)
{
    logIn("bob");
    const std::string answer =
        ask("POST", "/setup",
            "language=german&host_name=evil&share_name=x&next_page=3&token=" + formToken);
    EXPECT_TRUE(contains(answer, "<p>Only an administrator may do this.</p>"));
    EXPECT_FALSE(root::exists("/stubs/told"));
    EXPECT_EQ(root::readFile("/etc/pelconfig/system_var"), "firsttime=1\n");
}

TEST_F(Routes, choiceOfTheLanguageLeadsBackToThePageAsItWasAskedFor)
{
    logIn("anna");
    variables.set("QUERY_STRING", "a=b&c");
    EXPECT_TRUE(contains(ask("GET", "/users"),
                         "<input type=\"hidden\" name=\"from\" value=\"/users?a=b&amp;c\">\n"));
}

TEST_F(Routes, formOfALoginThatHasEndedChangesNothing)
{
    logIn("anna");
    page::Sessions().end(session);
    const std::string answer = ask("POST", "/sync", "switch=on&token=" + formToken);
    EXPECT_EQ(statusOf(answer), "403 Forbidden");
    EXPECT_TRUE(contains(answer, "your login has ended. Nothing was changed."));
}

TEST_F(Routes, formOfAnotherOriginIsRefused)
{
    logIn("anna");
    variables.set("HTTP_ORIGIN", "http://127.0.0.1:8081");
    const std::string answer = ask("POST", "/sync", "switch=off&token=" + formToken);
    EXPECT_EQ(statusOf(answer), "403 Forbidden");
    EXPECT_TRUE(contains(answer, "does not come from a page of this appliance"));
}

TEST_F(Routes, whoSendsAFormIsLogged)
{
    logIn("anna");
    (void)ask("POST", "/setup", "token=" + formToken);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: \"anna\" sends a form to \"/setup\"\n");
    testing::internal::CaptureStderr();
}

TEST_F(Routes, cookiesAreForTlsAloneOverTls)
{
    variables.set("HTTPS", "on");
    EXPECT_TRUE(contains(ask("GET", "/login"), "SameSite=Strict; Secure\r\n"));
}

TEST_F(Routes, twoSessionsOfOneBrowserAreRefused)
{
    logIn("anna");
    variables.set("HTTP_COOKIE", "vokpage_session=" + session + "; vokpage_session=" + session);
    EXPECT_EQ(statusOf(ask("GET", "")), "400 Bad Request");
}

TEST_F(Routes, everyPageIsServed)
{
    logIn("anna");
    const std::vector<std::pair<const char*, std::string>> pages = {{"", "Overview"},
                                                                    {"/shares", "Shares"},
                                                                    {"/users", "Users"},
                                                                    {"/setup", "Setup"},
                                                                    {"/sync", "Sync"}};
    for (const auto& [path, label] : pages) {
        const std::string answer = ask("GET", path);
        EXPECT_TRUE(answer.starts_with("Status: 200 OK\r\n")) << path;
        EXPECT_TRUE(contains(answer, "<h1>" + label + "</h1>")) << path;
        EXPECT_TRUE(contains(answer, "<bdi>box</bdi></p>")) << path;
        EXPECT_TRUE(contains(answer, R"(aria-current="page">)" + label + "</a>")) << path;
    }
    EXPECT_TRUE(contains(ask("GET", "/"), "<h1>Overview</h1>"));
}

TEST_F(Routes, fragmentComesWithoutAFrame)
{
    logIn("anna");
    const std::string answer = ask("GET", "/collection");
    EXPECT_EQ(answer.substr(answer.find("\r\n\r\n")),
              "\r\n\r\n<p class=\"quiet\">No collection is running.</p>\n");
    EXPECT_EQ(watch::calls(), std::vector<std::string>{}) << "it is asked for often";
}

TEST_F(Routes, otherPathsAreNotFound)
{
    for (const char* path : {"/x", "/setup/", "/setup/x", "setup", "//"}) {
        const std::string answer = ask("GET", path);
        EXPECT_TRUE(answer.starts_with("Status: 404 Not Found\r\n")) << path;
        EXPECT_TRUE(contains(answer, "<p>There is no such page.</p>"));
    }
}

TEST_F(Routes, errorsKeepTheNameAndLeadOn)
{
    logIn("anna");
    (void)ask("GET", "/sync");
    watch::restart();
    const auto expectNamed = [](const std::string& answer, const std::string& status) {
        EXPECT_EQ(statusOf(answer), status);
        EXPECT_TRUE(contains(answer, "<title>That did not work &middot; box</title>")) << status;
        EXPECT_TRUE(contains(answer, "<bdi>box</bdi></p>")) << status;
        EXPECT_TRUE(contains(answer, "<a class=\"button\" href=\"/cgi-bin/vokpage\">To the "
                                     "overview</a>"))
            << status;
    };
    expectNamed(ask("GET", "/none"), "404 Not Found");
    expectNamed(ask("POST", "/sync", "switch=on"), "403 Forbidden");
    expectNamed(page::refuse(variables, 504, "late"), "504 Gateway Timeout");
    EXPECT_EQ(watch::calls(), std::vector<std::string>{}) << "nothing may work any more";
    configure("x = y\n");
    expectNamed(ask("GET", "/sync"), "500 Internal Server Error");
}

/// Of an answer: the pages in the menu, who has logged in, and whether a language can be chosen.
std::string frameOf(const std::string& answer)
{
    std::string frame;
    for (const char* part :
         {"<nav aria-label=\"Pages\">", ">Setup</a>", "<bdi>anna</bdi>", "<bdi>bob</bdi>",
          "<ul class=\"languages\"", "aria-current=\"page\""}) {
        frame += contains(answer, part) ? std::string(part) + "\n" : "";
    }
    return frame;
}

const std::string kMenu = "<nav aria-label=\"Pages\">\n";
const std::string kLanguages = "<ul class=\"languages\"\n";

TEST_F(Routes, refusalsKeepMenuAccountAndLanguages)
{
    logIn("anna");
    const std::string ofAnna = kMenu + ">Setup</a>\n<bdi>anna</bdi>\n" + kLanguages;
    EXPECT_EQ(frameOf(ask("GET", "/none")), ofAnna);
    EXPECT_EQ(frameOf(ask("POST", "/sync", "switch=on")), ofAnna) << "without the token";
    EXPECT_EQ(frameOf(ask("POST", "/sync", "switch=x&token=" + formToken)), ofAnna);
    EXPECT_EQ(frameOf(ask("GET", "/logout")), ofAnna);
    logIn("bob");
    EXPECT_EQ(frameOf(ask("GET", "/setup")), kMenu + "<bdi>bob</bdi>\n" + kLanguages);
    showToken();
    EXPECT_EQ(frameOf(ask("GET", "/none")), kLanguages);
    variables.set("HTTP_COOKIE", "");
    EXPECT_EQ(frameOf(ask("GET", "/none")), "") << "a form without a token is of no use";
}

TEST_F(Routes, refusalsToOtherSitesShowNobody)
{
    logIn("anna");
    variables.set("HTTP_HOST", "evil.example");
    EXPECT_EQ(frameOf(ask("GET", "/none")), "");
    variables.set("HTTP_HOST", "127.0.0.1:8080");
    variables.set("HTTP_ORIGIN", "http://127.0.0.1:8081");
    EXPECT_EQ(frameOf(ask("POST", "/sync", "switch=off&token=" + formToken)), "");
}

TEST_F(Routes, headersAloneAreServed)
{
    logIn("anna");
    const std::string answer = ask("HEAD", "/sync");
    EXPECT_TRUE(answer.starts_with("Status: 200 OK\r\n"));
    EXPECT_TRUE(answer.ends_with("\r\n\r\n"));
}

TEST_F(Routes, scriptHasTheNonceOfItsAnswer)
{
    logIn("anna");
    const std::string one = ask("GET", "/setup");
    const std::string nonce = between(one, "'nonce-", "'");
    EXPECT_EQ(nonce.size(), 32U);
    EXPECT_TRUE(contains(one, "<script nonce=\"" + nonce + "\">"));
    EXPECT_NE(between(ask("GET", "/setup"), "'nonce-", "'"), nonce);
}

TEST_F(Routes, browserWithoutATokenGetsOneThatItsFormsCarry)
{
    const std::string answer = ask("GET", "/login");
    const std::string token = between(answer, "Set-Cookie: vokpage_token=", ";");
    EXPECT_EQ(token.size(), 32U);
    EXPECT_TRUE(contains(answer, "name=\"token\" value=\"" + token + "\""));
}

TEST_F(Routes, browserKeepsItsToken)
{
    showToken();
    const std::string answer = ask("GET", "/login");
    EXPECT_FALSE(contains(answer, "Set-Cookie"));
    EXPECT_TRUE(contains(answer, "name=\"token\" value=\"" + visits::kToken + "\""));
}

TEST_F(Routes, formWithItsTokenIsTaken)
{
    const FakeService service({kShareIsThere});
    logIn("anna");
    const std::string answer =
        ask("POST", "/setup",
            "language=german&host_name=new-box&share_name=x&next_page=3&token=" + formToken);
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
    logIn("anna");
    const std::string ofAnna = formToken;
    logIn("anna");
    for (const std::string& token :
         {std::string(), std::string(32, '0'), visits::kToken, session, ofAnna}) {
        expectRefused(token);
    }
    EXPECT_FALSE(root::exists("/stubs/told"));
    EXPECT_EQ(root::readFile("/etc/pelconfig/system_var"), "firsttime=1\n");
}

TEST_F(Routes, pageWithoutFormsTakesNone)
{
    logIn("anna");
    const std::string answer = ask("POST", "", "token=" + formToken);
    EXPECT_TRUE(answer.starts_with("Status: 405 Method Not Allowed\r\n"));
    EXPECT_TRUE(contains(answer, "\r\nAllow: GET, HEAD\r\n"));
    EXPECT_TRUE(contains(ask("GET", "/logout"), "\r\nAllow: POST\r\n"));
    EXPECT_TRUE(contains(answer, "<p>This page takes no forms.</p>"));
}

TEST_F(Routes, foreignNamesAreRefusedAndTheOwnIsNot)
{
    logIn("anna");
    variables.set("HTTP_HOST", "evil.example");
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 403 Forbidden\r\n"));
    variables.set("HTTP_HOST", "Box.local:8080");
    EXPECT_TRUE(ask("GET", "").starts_with("Status: 200 OK\r\n"));
}

TEST_F(Routes, settingsNameFurtherHosts)
{
    variables.set("HTTP_HOST", "nas.example");
    EXPECT_EQ(statusOf(ask("GET", "/login")), "403 Forbidden");
    configure("hosts = nas.example\nadministrators = anna\n");
    EXPECT_EQ(statusOf(ask("GET", "/login")), "200 OK");
}

TEST_F(Routes, settingsThatAreNotUnderstoodAreToldInTheLog)
{
    configure("hots = nas.example\n");
    const std::string answer = ask("GET", "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: /etc/vokcontrol.conf:2: \"hots\" is not a key of [pages]; known keys: "
              "administrators, hosts and trust-web-server\n");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(answer.starts_with("Status: 500 Internal Server Error\r\n"));
    EXPECT_TRUE(contains(answer,
                         "<p>The appliance&#39;s settings cannot be read, so nothing was done. "
                         "The web server&#39;s log tells what has to be corrected.</p>"));
    EXPECT_FALSE(contains(answer, "hots"));
}

TEST_F(Routes, webServerMaySayWhoAsks)
{
    configure("administrators = anna\ntrust-web-server = yes\n");
    EXPECT_TRUE(contains(ask("GET", ""), "<p>The web server has not said who you are."));
    variables.set("REMOTE_USER", "anna");
    EXPECT_EQ(statusOf(ask("GET", "/setup")), "200 OK");
    showToken();
    EXPECT_EQ(statusOf(ask("POST", "/setup", "token=" + formToken)), "200 OK");
    EXPECT_EQ(statusOf(ask("POST", "/setup", "token=" + std::string(32, '0'))), "403 Forbidden");
}

TEST_F(Routes, fewPagesAreMadeAtATime)
{
    std::vector<page::Descriptor> taken;
    while (std::optional<page::Descriptor> slot = page::takeSlot(true)) {
        taken.push_back(*std::move(slot));
    }
    const std::string answer = ask("GET", "/login");
    EXPECT_EQ(statusOf(answer), "503 Service Unavailable");
    EXPECT_TRUE(contains(answer, "\r\nRetry-After: 2\r\n"));
    EXPECT_TRUE(contains(answer, "<p>The appliance is busy with other requests. Try again.</p>"));
    logIn("anna");
    EXPECT_EQ(statusOf(ask("GET", "/setup")), "200 OK") << "strangers do not keep others out";
    taken.clear();
    showToken();
    EXPECT_EQ(statusOf(ask("GET", "/login")), "200 OK");
}

TEST_F(Routes, newNameShowsAtOnce)
{
    const FakeService service({kShareIsThere});
    logIn("anna");
    root::stub("php", "case $2 in\n"
                      "tovSetNmbdSysname) echo \"<nmbdSysname>$3</nmbdSysname>\" >/stubs/name ;;\n"
                      "tovGetNmbdSysname) cat /stubs/name >\"$3\" ;;\n"
                      "esac");
    root::writeFile("/stubs/name", "<nmbdSysname>box</nmbdSysname>\n");
    const std::string answer =
        ask("POST", "/setup",
            "language=german&host_name=new-box&share_name=x&next_page=3&token=" + formToken);
    EXPECT_TRUE(contains(answer, "<bdi>new-box</bdi></p>"));
}

TEST_F(Routes, nothingIsPrintedBeforeTheHeaders)
{
    logIn("anna");
    testing::internal::CaptureStdout();
    (void)ask("GET", "");
    (void)ask("GET", "/setup");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
