// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;

/// The form field of the page engine below, and the calls that it got.
struct Engine {
    std::optional<std::string> field;
    Lines questions;
};

Engine engine;

/// Result codes of a page engine.
constexpr int kSuccess = 0;
constexpr int kCut = 1;
constexpr int kEmpty = 4;
constexpr int kNotFound = 5;

} // namespace

extern "C" int cgiFormStringNoNewlines(const char* name, char* buffer, int size)
{
    engine.questions.push_back(std::string(name) + " " + std::to_string(size));
    if (!engine.field) {
        return kNotFound;
    }
    const std::string& field = *engine.field;
    const std::size_t copied = field.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[copied] = '\0';
    if (field.empty()) {
        return kEmpty;
    }
    return (copied < field.size()) ? kCut : kSuccess;
}

namespace {

std::string script(const std::string& number)
{
    return "function this_page()\n{\n\treturn " + number + ";\n}\n" +
           "//<!-- printNextPage() this_page() { return " + number + ";}-->\n";
}

class NextPage : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        engine = {};
    }

    static void expectPage(const std::optional<std::string>& field, int page)
    {
        watch::restart();
        engine = {};
        engine.field = field;
        testing::internal::CaptureStdout();
        EXPECT_EQ(printNextPage(), page) << field.value_or("none");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), script(std::to_string(page)));
        EXPECT_EQ(engine.questions, Lines{"next_page 256"});
        EXPECT_EQ(watch::calls(), Lines{});
    }
};

TEST_F(NextPage, fieldIsThePage)
{
    expectPage("3", 3);
    expectPage("0", 0);
    expectPage("12", 12);
    expectPage("-4", -4);
    expectPage("2147483647", 2147483647);
}

TEST_F(NextPage, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectPage("2147483648", -2147483647 - 1);
    expectPage("4294967299", 3);
    expectPage("99999999999", 1215752191);
}

TEST_F(NextPage, numberMayHaveTextBeforeOrAfterIt)
{
    expectPage(" 7", 7);
    expectPage("7 of 9", 7);
    expectPage("08", 8);
    expectPage("0x11", 0);
    expectPage("2.9", 2);
}

TEST_F(NextPage, textWithoutANumberIsZero)
{
    expectPage("x", 0);
    expectPage("x3", 0);
    expectPage(" ", 0);
    expectPage("-", 0);
}

TEST_F(NextPage, missingOrEmptyFieldIsZero)
{
    expectPage(std::nullopt, 0);
    expectPage("", 0);
}

TEST_F(NextPage, fieldOf255CharactersIsWhole)
{
    expectPage("78" + std::string(253, 'a'), 78);
    expectPage(std::string(254, '0') + "5", 5);
}

TEST_F(NextPage, fieldThatWasCutBeginsWithZero)
{
    expectPage("78" + std::string(254, 'a'), 8);
    expectPage("78" + std::string(298, 'a'), 8);
    expectPage("x" + std::string(299, ' '), 0);
    expectPage("-9" + std::string(298, 'a'), 9);
    expectPage(std::string(253, '0') + "1234", 12);
}

TEST_F(NextPage, scriptIsPrintedBeforeTheFunctionReturns)
{
    engine.field = "3";
    testing::internal::CaptureStdout();
    printNextPage();
    ASSERT_EQ(::write(STDOUT_FILENO, "behind\n", 7), 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), script("3") + "behind\n");
}

TEST_F(NextPage, withoutAPageEngineItIsZero)
{
    engine.field = "3";
    void* library = ::dlopen(root::built("libvokcontrol.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    auto* libraryPrintNextPage =
        reinterpret_cast<decltype(&printNextPage)>(::dlsym(library, "printNextPage"));
    ASSERT_NE(libraryPrintNextPage, nullptr);
    testing::internal::CaptureStdout();
    EXPECT_EQ(libraryPrintNextPage(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), script("0"));
    EXPECT_EQ(engine.questions, Lines{});
    ::dlclose(library);
}

} // namespace
