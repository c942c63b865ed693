// SPDX-License-Identifier: MIT
#include "page/script.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

using page::Script;

std::string inert(std::string_view printed)
{
    Script script;
    script.add(printed);
    return script.text();
}

const std::string kThisPage = "function this_page()\n{\n\treturn 3;\n}\n";
const std::string kDrives = "function tov_hdds()\n{\n\treturn -2;\n}\n";

TEST(ScriptText, keepsTheTwoFunctions)
{
    EXPECT_EQ(inert(kThisPage + kDrives), kThisPage + kDrives);
    EXPECT_EQ(inert(""), "");
}

TEST(ScriptText, keepsComments)
{
    const std::string comment = "//<!-- getDriveInfos() found modelCap:500.10-->\n";
    EXPECT_EQ(inert(comment + kDrives + comment), comment + kDrives + comment);
}

TEST(ScriptText, functionsThatDoAnythingElseBecomeComments)
{
    EXPECT_EQ(inert("function this_page()\n{\n\treturn alert(1);\n}\n"),
              "//<!-- function this_page()-->\n//<!-- {-->\n//<!-- \treturn alert(1);-->\n"
              "//<!-- }-->\n");
    EXPECT_EQ(inert("function other()\n"), "//<!-- function other()-->\n");
    EXPECT_EQ(inert("function this_page()\n{\n\treturn ;\n}\n").substr(0, 8), "//<!-- f");
    EXPECT_EQ(inert("function this_page()\n{\n\treturn -;\n}\n").substr(0, 8), "//<!-- f");
    EXPECT_EQ(inert("function this_page()\n{\n\treturn 1").substr(0, 8), "//<!-- f") << "cut short";
}

TEST(ScriptText, anyOtherLineBecomesAComment)
{
    EXPECT_EQ(inert("alert(1)\n"), "//<!-- alert(1)-->\n");
    EXPECT_EQ(inert("//<!-- value\n-->\n"), "//<!-- value-->\n//<!-- --&gt;-->\n")
        << "a value with a newline in it";
    EXPECT_EQ(inert("no newline"), "//<!-- no newline-->\n");
    EXPECT_EQ(inert("\n"), "//<!-- -->\n");
}

TEST(ScriptText, noValueBreaksOutOfAComment)
{
    EXPECT_EQ(inert("//<!-- a --> b <!-- c -->\n"), "//<!-- a --&gt; b &lt;!-- c -->\n");
    EXPECT_EQ(inert("//<!-- </script><script>alert(1)</script>-->\n"),
              "//<!-- &lt;/script&gt;&lt;script&gt;alert(1)&lt;/script&gt;-->\n");
    EXPECT_EQ(inert("//<!-- a\ralert(1)-->\n"), "//<!-- a\xEF\xBF\xBD"
                                                "alert(1)-->\n");
    EXPECT_EQ(inert("//<!-- a\xE2\x80\xA8"
                    "alert(1)-->\n"),
              "//<!-- a\xEF\xBF\xBD"
              "alert(1)-->\n");
}

TEST(Run, collectsWhatIsPrintedAndGivesBackTheResult)
{
    Script script;
    testing::internal::CaptureStdout();
    std::printf("before ");
    const int result = script.run([] {
        std::printf("function tov_hdds()\n{\n\treturn -2;\n}\n");
        return 5;
    });
    std::printf("behind");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "before behind");
    EXPECT_EQ(result, 5);
    EXPECT_EQ(script.text(), kDrives);
}

TEST(Run, collectsWhatCommandsPrintInOrder)
{
    Script script;
    script.run([] {
        std::printf("one\n");
        std::fflush(stdout);
        EXPECT_EQ(std::system("echo two"), 0);
        std::printf("three\n");
    });
    EXPECT_EQ(script.text(), "//<!-- one-->\n//<!-- two-->\n//<!-- three-->\n");
}

TEST(Run, doesNotWaitForWhatStaysInTheBackground)
{
    Script script;
    script.run([] { EXPECT_EQ(std::system("sleep 30 & echo $! >/tmp/sleeper"), 0); });
    EXPECT_EQ(std::system("kill $(cat /tmp/sleeper)"), 0) << "it still sleeps";
}

TEST(Run, endsTheCollectionWhenTheWorkFails)
{
    Script script;
    testing::internal::CaptureStdout();
    EXPECT_THROW(script.run([] {
        std::printf("said\n");
        throw std::runtime_error("failed");
    }),
                 std::runtime_error);
    std::printf("behind");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "behind");
    EXPECT_EQ(script.text(), "//<!-- said-->\n");
}

TEST(Run, collectsMoreThanOnePiece)
{
    Script script;
    const std::string line(1000, 'x');
    script.run([&line] {
        for (int count = 0; count < 20; ++count) {
            std::printf("%s\n", line.c_str());
        }
    });
    EXPECT_EQ(script.text().size(), 20 * (line.size() + 11));
}

} // namespace
