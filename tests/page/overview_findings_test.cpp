// SPDX-License-Identifier: MIT
#include "page/overview_findings.h"

#include <gtest/gtest.h>

namespace {

using view::Level;

TEST(FindingsNotice, saysWhenThereAreNone)
{
    EXPECT_EQ(page::findingsNotice({}).text(),
              "<p class=\"notice good\"><span aria-hidden=\"true\">&#10003;</span> Nothing needs "
              "attention.</p>\n");
}

TEST(FindingsNotice, hasAWordForEachLevel)
{
    EXPECT_EQ(page::findingsNotice({{.level = Level::kCritical, .kind = "x", .sentence = "One."},
                                    {.level = Level::kWarning, .kind = "x", .sentence = "Two."}})
                  .text(),
              R"(<section class="notice bad" aria-labelledby="attention">
<h2 id="attention">2 things need attention</h2>
<ul class="findings">
<li><span class="badge old"><span aria-hidden="true">&#10005;</span> Critical</span> <bdi>One.</bdi></li>
<li><span class="badge ageing"><span aria-hidden="true">!</span> Warning</span> <bdi>Two.</bdi></li>
</ul>
</section>
)");
}

TEST(FindingsNotice, isAsBadAsTheWorstAndEscapesNames)
{
    EXPECT_EQ(
        page::findingsNotice({{.level = Level::kWarning, .kind = "x", .sentence = "<b>"}}).text(),
        R"(<section class="notice warn" aria-labelledby="attention">
<h2 id="attention">1 thing needs attention</h2>
<ul class="findings">
<li><span class="badge ageing"><span aria-hidden="true">!</span> Warning</span> <bdi>&lt;b&gt;</bdi></li>
</ul>
</section>
)");
}

TEST(FindingsNotice, pathsCanBeBrokenAfterTheirSlashes)
{
    const auto sentenceOf = [](const char* sentence) {
        const std::string text =
            page::findingsNotice({{.level = Level::kWarning, .kind = "x", .sentence = sentence}})
                .text();
        const std::size_t start = text.find("<bdi>") + 5;
        return text.substr(start, text.find("</bdi>") - start);
    };
    EXPECT_EQ(sentenceOf("See /etc/a."), "See /<wbr>etc/<wbr>a.");
    EXPECT_EQ(sentenceOf("a/"), "a/<wbr>");
    EXPECT_EQ(sentenceOf(""), "");
}

} // namespace
