// SPDX-License-Identifier: MIT
//
// vokpage as a web server runs it.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

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
    }

    /// Runs it through a shell, behind a prefix, with a request for the setup.
    static root::Ended serve(const std::string& command, const std::string& body = "")
    {
        root::writeFile("/tmp/body", body);
        return root::run(
            {"/usr/bin/sh", "-c",
             "export REQUEST_METHOD=" + std::string(body.empty() ? "GET" : "POST") +
                 " PATH_INFO=/setup HTTP_HOST=localhost CONTENT_LENGTH=" +
                 std::to_string(body.size()) +
                 " CONTENT_TYPE=application/x-www-form-urlencoded HTTP_COOKIE=vokpage_token=" +
                 visits::kToken + "; " + command});
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
                                        visits::kToken);
    EXPECT_TRUE(contains(ended.output, "function this_page()\n{\n\treturn 1;\n}\n"));
}

TEST_F(Program, serverThatIgnoresItsChildrenMakesNoDifference)
{
    const root::Ended ended =
        serve("trap '' CHLD; vokpage </tmp/body",
              "language=german&host_name=box&share_name=x&next_page=3&token=" + visits::kToken);
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

TEST_F(Program, outputThatCannotBeWrittenIsAFailure)
{
    EXPECT_EQ(serve("vokpage </tmp/body >/dev/full").exitCode, 1);
}

} // namespace
