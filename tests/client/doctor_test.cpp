// SPDX-License-Identifier: MIT
#include "client/doctor.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>

namespace {

using namespace client;

using Names = std::vector<std::string>;

Diagnosis sayYes(const Surroundings& /*surroundings*/, const Check& check)
{
    return good(std::string("It is ") + check.name + ".");
}

Diagnosis sayNo(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    return wrong("It is not.", "mend it");
}

Diagnosis doWithout(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    return unneeded("None.");
}

Diagnosis hang(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    ::pause();
    return {};
}

Diagnosis die(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    ::raise(SIGKILL);
    return {};
}

Diagnosis fail(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    throw std::runtime_error("no paper");
}

constexpr Check kRows[] = {
    {"a", false, nullptr, sayYes}, {"b", false, "a", sayNo},  {"c", false, "b", sayYes},
    {"d", true, nullptr, sayYes},  {"e", false, "c", sayYes}, {"f", false, nullptr, doWithout},
    {"g", false, "f", sayYes},
};
constexpr std::span<const Check> kTable(kRows);

/// "NAME: WORD: REASON REMEDY" of each result.
Names said(const std::vector<Result>& results)
{
    Names lines;
    for (const auto& [check, diagnosis] : results) {
        lines.push_back(std::string(check->name) + ": " + wordOf(diagnosis.sign) + ": " +
                        diagnosis.reason + " " + diagnosis.remedy);
    }
    return lines;
}

TEST(Doctor, reasonIsSaidOnlyIfTheFileMayBeThere)
{
    EXPECT_EQ(describeMissing("/run/x", ENOENT), "There is no /run/x.");
    EXPECT_EQ(describeMissing("/run/x", EACCES), "There is no /run/x: Permission denied.");
}

TEST(Doctor, checksAreInTheOrderOfTheTable)
{
    const Names all = {"a: good: It is a. ",
                       "b: wrong: It is not. mend it",
                       "c: unchecked: Not checked: it depends on b. ",
                       "d: good: It is d. ",
                       "e: unchecked: Not checked: it depends on c. ",
                       "f: unneeded: None. ",
                       "g: unneeded: Not needed, as f is not. "};
    EXPECT_EQ(said(runChecks({.isRoot = true}, kTable, {})), all);
}

TEST(Doctor, onlyRootCanCheckSome)
{
    EXPECT_EQ(said(runChecks({.isRoot = false}, kTable, {"d"})),
              Names{"d: unchecked: Not checked: run as root. "});
}

TEST(Doctor, checkThatIsAskedForRunsThoseThatItDependsOn)
{
    EXPECT_EQ(said(runChecks({}, kTable, {"e"})),
              Names{"e: unchecked: Not checked: it depends on c. "});
    EXPECT_EQ(said(runChecks({}, kTable, {"c", "a"})),
              (Names{"a: good: It is a. ", "c: unchecked: Not checked: it depends on b. "}));
}

TEST(Doctor, checkThatHangsIsEnded)
{
    EXPECT_EQ(runCheck({.seconds = 1}, {"a", false, nullptr, hang}),
              wrong("It did not answer within 1 second.",
                    "see what it waits for, or allow more with --timeout"));
}

TEST(Doctor, checkThatFailsEndsNoOther)
{
    EXPECT_EQ(runCheck({}, {"a", false, nullptr, die}),
              wrong("The check ended without a result.", "try again; memory may have run out"));
    EXPECT_EQ(runCheck({}, {"a", false, nullptr, fail}),
              wrong("The check has failed: no paper.", "correct that first, then try again"));
}

TEST(Doctor, diagnosisMayBeLong)
{
    const auto sayMuch = [](const Surroundings& /*surroundings*/, const Check& /*check*/) {
        return wrong(std::string(100000, 'r'), std::string(100000, 'm'));
    };
    EXPECT_EQ(runCheck({}, {"a", false, nullptr, sayMuch}),
              wrong(std::string(100000, 'r'), std::string(100000, 'm')));
}

} // namespace
