// SPDX-License-Identifier: MIT
//
// vokpage as a web server runs it.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "page/administrators.h"
#include "page/private_files.h"
#include "page/sessions.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using visits::contains;

class Program : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetNmbdSysname", "<nmbdSysname>box</nmbdSysname>\n");
        root::writeFile("/stubs/tovGetLanguage", "<language>german</language>\n");
        root::writeFile("/etc/pelconfig/system_var", "firsttime=1\n");
        std::filesystem::create_directories(page::kKeptFolder);
        std::filesystem::permissions(page::kKeptFolder, std::filesystem::perms::owner_all);
        page::replacePrivateFile(page::kAdministratorsFile, "anna\n");
        session_ = page::Sessions().begin("anna", page::now());
        formToken_ = page::Sessions().find(session_, page::now())->formToken;
    }

    std::string session_;
    std::string formToken_;

    /// Runs it through a shell, behind a prefix, with an administrator's request for the setup.
    root::Ended serve(const std::string& command, const std::string& body = "")
    {
        root::writeFile("/tmp/body", body);
        return root::run(
            {"/usr/bin/sh", "-c",
             "export REQUEST_METHOD=" + std::string(body.empty() ? "GET" : "POST") +
                 " PATH_INFO=/setup HTTP_HOST=localhost CONTENT_LENGTH=" +
                 std::to_string(body.size()) +
                 " CONTENT_TYPE=application/x-www-form-urlencoded HTTP_COOKIE=vokpage_session=" +
                 session_ + "; " + command});
    }
};

TEST_F(Program, answersOnStandardOutput)
{
    const root::Ended ended = serve("vokpage </tmp/body");
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.output.starts_with("Status: 200 OK\r\n"));
    EXPECT_TRUE(ended.output.ends_with("</html>\n"));
    EXPECT_TRUE(contains(ended.output, "function this_page()\n{\n\treturn 0;\n}\n"));
    EXPECT_EQ(ended.errors, "");
}

TEST_F(Program, readsTheFormThatTheModuleAsksFor)
{
    const root::Ended ended =
        serve("vokpage </tmp/body", "language=german&host_name=box&next_page=1"
                                    "&token=" +
                                        formToken_);
    EXPECT_TRUE(contains(ended.output, "function this_page()\n{\n\treturn 1;\n}\n"));
}

TEST_F(Program, serverThatIgnoresItsChildrenMakesNoDifference)
{
    root::writeFile(config::kDefaultFile,
                    std::string("[service]\nsocket = ") + FakeService::kSocket + "\n");
    const FakeService service({"lsst " + root::le32(1) + "\nx\npublic\n"});
    const root::Ended ended =
        serve("trap '' CHLD; vokpage </tmp/body",
              "language=german&host_name=box&share_name=x&next_page=3&token=" + formToken_);
    std::filesystem::remove(config::kDefaultFile);
    EXPECT_TRUE(contains(ended.output, "The setup is done."));
}

TEST_F(Program, withoutARequestItRefuses)
{
    const root::Ended ended = root::run({"/usr/bin/sh", "-c", "env -i /build/vokpage </dev/null"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.output.starts_with("Status: 405 Method Not Allowed\r\n"));
}

TEST_F(Program, doesNotStartWithoutTheLibrary)
{
    std::filesystem::create_directory("/tmp/libraries");
    root::writeFile("/tmp/libraries/libvokcontrol.so.0", "");
    const root::Ended ended = serve("LD_LIBRARY_PATH=/tmp/libraries vokpage </tmp/body");
    EXPECT_EQ(ended.exitCode, 127);
    EXPECT_EQ(ended.output, "");
    EXPECT_TRUE(contains(ended.errors, "/tmp/libraries/libvokcontrol.so.0: file too short"))
        << ended.errors;
}

TEST_F(Program, refusesToWorkWhereOthersCanWriteToItsTmp)
{
    std::filesystem::permissions("/tmp", std::filesystem::perms::all);
    const root::Ended ended = serve("vokpage </etc/passwd");
    std::filesystem::permissions("/tmp", std::filesystem::perms(0755));
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.output.starts_with("Status: 500 Internal Server Error\r\n"));
    EXPECT_TRUE(contains(ended.output,
                         "<p>Others on this appliance can write to its /tmp, and so "
                         "could forge what the pages show and do. Nothing was done."));
    EXPECT_EQ(ended.errors,
              "vokpage: others can write to /tmp, and a /tmp of the pages' own cannot "
              "be had: Operation not permitted\n");
    EXPECT_FALSE(root::exists(root::kTraceFile)) << "the module was not called";
}

TEST_F(Program, pageThatIsNotReadyInTimeEndsWithItsScripts)
{
    root::stub("php", "sleep 100");
    const auto start = std::chrono::steady_clock::now();
    // Its output ends when the script does that has it open, too.
    const root::Ended ended = serve("vokpage </tmp/body");
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, std::chrono::seconds(29));
    EXPECT_LT(taken, std::chrono::seconds(60));
    EXPECT_EQ(ended.exitCode, 128 + SIGKILL);
    EXPECT_TRUE(ended.output.starts_with("Status: 504 Gateway Timeout\r\n"));
    EXPECT_TRUE(contains(ended.output, "\r\nX-Frame-Options: DENY\r\n"));
    EXPECT_TRUE(ended.output.ends_with("</html>\n"));
}

TEST_F(Program, outputThatCannotBeWrittenIsAFailure)
{
    EXPECT_EQ(serve("vokpage </tmp/body >/dev/full").exitCode, 1);
}

} // namespace
