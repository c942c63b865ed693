// SPDX-License-Identifier: MIT
#include "page/form.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

#include "vokcontrol.h"

namespace {

using page::Form;

TEST(DecodeUrl, readsWhatABrowserWrites)
{
    EXPECT_EQ(page::decodeUrl("a+b%20c%2Bd"), "a b c+d");
    EXPECT_EQ(page::decodeUrl("%C3%89conomies%3d"), "\xC3\x89"
                                                    "conomies=");
    EXPECT_EQ(page::decodeUrl("%00"), std::string(1, '\0'));
}

TEST(DecodeUrl, leavesAPercentSignThatIsNone)
{
    EXPECT_EQ(page::decodeUrl("100%"), "100%");
    EXPECT_EQ(page::decodeUrl("%4"), "%4");
    EXPECT_EQ(page::decodeUrl("%4x%zz"), "%4x%zz");
    EXPECT_EQ(page::decodeUrl("%-1"), "%-1");
    EXPECT_EQ(page::decodeUrl("%%41"), "%A");
}

TEST(FormFields, areReadByName)
{
    const Form form("a=1&b=x%26y&c=&d&=e&&a=2");
    EXPECT_EQ(form.value("a"), "1") << "the first counts";
    EXPECT_EQ(form.value("b"), "x&y");
    EXPECT_EQ(form.value("c"), "");
    EXPECT_NE(form.find("c"), nullptr);
    EXPECT_NE(form.find("d"), nullptr);
    EXPECT_EQ(form.value(""), "e");
    EXPECT_EQ(form.find("missing"), nullptr);
    EXPECT_EQ(form.value("missing"), "");
    EXPECT_EQ(Form("").find(""), nullptr);
}

TEST(FormFields, keepWhatStandsBehindTheFirstEquals)
{
    EXPECT_EQ(Form("a=b=c").value("a"), "b=c");
}

TEST(FormFields, canBeSet)
{
    Form form("a=1&a=2");
    form.set("a", "3");
    form.set("b", "4");
    EXPECT_EQ(form.value("a"), "3");
    EXPECT_EQ(form.value("b"), "4");
}

TEST(EncodeUrl, isReadBackAsItWas)
{
    EXPECT_EQ(page::encodeUrl("Aa09-._~"), "Aa09-._~");
    EXPECT_EQ(page::encodeUrl("a b+c&d=%/?#\"'<\xC3\x89"),
              "a%20b%2Bc%26d%3D%25%2F%3F%23%22%27%3C%C3%89");
    std::string all;
    for (int code = 0; code < 256; ++code) {
        all += static_cast<char>(code);
    }
    EXPECT_EQ(page::decodeUrl(page::encodeUrl(all)), all);
    EXPECT_EQ(Form("name=" + page::encodeUrl(all)).value("name"), all);
}

class Accessor : public testing::Test {
  protected:
    /// Reads a field into a buffer of a size, with marks behind it.
    static int read(const Form& form, const char* name, int size)
    {
        buffer.fill('#');
        const page::CurrentForm current(form);
        return ::cgiFormStringNoNewlines(name, buffer.data(), size);
    }

    inline static std::array<char, 512> buffer;
};

TEST_F(Accessor, copiesAField)
{
    EXPECT_EQ(read(Form("a=text"), "a", 5), 0);
    EXPECT_EQ(std::string(buffer.data(), 6), std::string("text\0#", 6));
}

TEST_F(Accessor, leavesNewlinesOut)
{
    EXPECT_EQ(read(Form("a=%0Ax%0D%0Ay%00z%0A"), "a", 10), 0);
    EXPECT_STREQ(buffer.data(), "xyz");
}

TEST_F(Accessor, cutsWhatDoesNotFitAndSaysSo)
{
    EXPECT_EQ(read(Form("a=text"), "a", 4), page::kFieldCut);
    EXPECT_EQ(std::string(buffer.data(), 5), std::string("tex\0#", 5));
    EXPECT_EQ(read(Form("a=text"), "a", 1), page::kFieldCut);
    EXPECT_STREQ(buffer.data(), "");
}

TEST_F(Accessor, sayWhereThereIsNothing)
{
    EXPECT_EQ(read(Form("a="), "a", 10), page::kFieldEmpty);
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(read(Form("a=%0A"), "a", 10), page::kFieldEmpty);
    EXPECT_EQ(read(Form("a=1"), "b", 10), page::kFieldMissing);
    EXPECT_STREQ(buffer.data(), "");
}

TEST_F(Accessor, writesNothingWithoutRoom)
{
    EXPECT_EQ(read(Form("a=1"), "a", 0), page::kFieldMissing);
    EXPECT_EQ(buffer[0], '#');
}

TEST_F(Accessor, knowsNoFieldWithoutAForm)
{
    buffer.fill('#');
    EXPECT_EQ(::cgiFormStringNoNewlines("a", buffer.data(), 10), page::kFieldMissing);
}

TEST_F(Accessor, readsTheInnermostForm)
{
    const Form outer("a=outer");
    const page::CurrentForm current(outer);
    EXPECT_EQ(read(Form("a=inner"), "a", 10), 0);
    EXPECT_STREQ(buffer.data(), "inner");
    EXPECT_EQ(::cgiFormStringNoNewlines("a", buffer.data(), 10), 0);
    EXPECT_STREQ(buffer.data(), "outer");
}

TEST_F(Accessor, isTheOneThatTheModuleCalls)
{
    const Form form("next_page=7");
    const page::CurrentForm current(form);
    testing::internal::CaptureStdout();
    EXPECT_EQ(::printNextPage(), 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "function this_page()\n{\n\treturn 7;\n}\n"
              "//<!-- printNextPage() this_page() { return 7;}-->\n");
}

} // namespace
