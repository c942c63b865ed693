// SPDX-License-Identifier: MIT
#include "page/html.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>

#include "page/script.h"

namespace {

using page::Html;
using page::Text;

template <class Part>
concept Streamable = requires(Html& html, Part part)
{
    html << part;
};

// What is known only at run time has to say that it is text.
static_assert(!Streamable<std::string>);
static_assert(!Streamable<std::string_view>);
static_assert(!Streamable<const char*>);
static_assert(Streamable<Text>);

TEST(HtmlParts, joinInOrder)
{
    const std::string name = "<b>";
    Html inner;
    inner << "<i>" << Text{name} << "</i>";
    Html outer;
    outer << "<p>" << inner << "</p>";
    EXPECT_EQ(outer.text(), "<p><i>&lt;b&gt;</i></p>");
}

TEST(HtmlParts, takeScriptAsItIs)
{
    page::Script script;
    script.add("function tov_hdds()\n{\n\treturn 2;\n}\n");
    Html html;
    html << script;
    EXPECT_EQ(html.text(), "function tov_hdds()\n{\n\treturn 2;\n}\n");
}

} // namespace
