// SPDX-License-Identifier: MIT
#include "client/wrong_usage.h"

#include <gtest/gtest.h>

#include "client/numbers.h"

namespace {

/// A command with every kind of option, and a group of options, which has no name.
void addReport(CLI::App& program)
{
    static unsigned number = 0;
    static std::string text;
    static bool flag = false;
    CLI::App* report = program.add_subcommand("report", "");
    report->add_option("USER", text)->required();
    report->add_option("--state", number)
        ->type_name("N")
        ->check(client::numberFrom("--state", 0, 255));
    report->add_option("--wait", number)->type_name("SECONDS");
    CLI::App* group = report->add_option_group("Form");
    CLI::Option* json = group->add_flag("--json", flag);
    group->add_flag("--csv", flag)->excludes(json);
}

/// What a program with a command, and a group of two, says about a command line.
std::string saidAbout(const std::string& line)
{
    CLI::App program("For a test.", "vokctl");
    bool json = false;
    std::string name;
    program.add_subcommand("status", "")->add_flag("--json", json);
    CLI::App* shares = program.add_subcommand("shares", "");
    shares->require_subcommand(1);
    shares->add_subcommand("list", "")->add_flag("-j,--json", json);
    shares->add_subcommand("show", "")->add_option("NAME", name)->required();
    addReport(program);
    try {
        program.parse(line);
    } catch (const CLI::ParseError& error) {
        return client::wrongUsage(program, error);
    }
    return "";
}

TEST(WrongUsage, unknownCommandComesWithTheOneThatWasMeant)
{
    EXPECT_EQ(saidAbout("statsu"), "vokctl: \"vokctl\" has no command \"statsu\"; did you mean "
                                   "\"status\"?\nSee \"vokctl --help\".\n");
    EXPECT_EQ(saidAbout("shares lst"), "vokctl: \"vokctl shares\" has no command \"lst\"; did you "
                                       "mean \"list\"?\nSee \"vokctl shares --help\".\n");
    EXPECT_EQ(saidAbout("everything"), "vokctl: \"vokctl\" has no command \"everything\".\n"
                                       "See \"vokctl --help\".\n");
}

TEST(WrongUsage, unknownOptionComesWithTheOneThatWasMeant)
{
    EXPECT_EQ(saidAbout("status --josn"),
              "vokctl: \"vokctl status\" has no option \"--josn\"; did you mean \"--json\"?\n"
              "See \"vokctl status --help\".\n");
    EXPECT_EQ(saidAbout("shares list --everything"),
              "vokctl: \"vokctl shares list\" has no option \"--everything\".\n"
              "See \"vokctl shares list --help\".\n");
}

TEST(WrongUsage, whatACommandDoesNotTakeIsNamed)
{
    EXPECT_EQ(saidAbout("shares list Music"),
              "vokctl: \"vokctl shares list\" does not take \"Music\".\n"
              "See \"vokctl shares list --help\".\n");
}

TEST(WrongUsage, groupWithoutACommandListsItsCommands)
{
    EXPECT_EQ(saidAbout("shares"), "vokctl: \"vokctl shares\" needs a command: list, show.\n"
                                   "See \"vokctl shares --help\".\n");
}

TEST(WrongUsage, whatIsMissingIsSaid)
{
    EXPECT_EQ(saidAbout("shares show"), "vokctl: NAME is required.\n"
                                        "See \"vokctl shares show --help\".\n");
}

TEST(WrongUsage, optionOfACommandThatIsMissingIsNotUnknown)
{
    const std::string see = "See \"vokctl --help\".\n";
    EXPECT_EQ(saidAbout("--socket"), "vokctl: --socket needs a value.\n" + see);
    const std::string noCommand = " is an option of a command, but no command is given.\n" + see;
    EXPECT_EQ(saidAbout("--socket /run/other"), "vokctl: --socket" + noCommand);
    EXPECT_EQ(saidAbout("--socket=/run/other"), "vokctl: --socket" + noCommand);
    EXPECT_EQ(saidAbout("--json"), "vokctl: --json" + noCommand);
    EXPECT_EQ(saidAbout("--jsn"),
              "vokctl: \"vokctl\" has no option \"--jsn\"; did you mean \"--json\"?\n" + see);
}

TEST(WrongUsage, wordsAfterTheEndOfTheOptionsAreNoOptions)
{
    const std::string see = "See \"vokctl report --help\".\n";
    EXPECT_EQ(saidAbout("report --state 999 -- x"),
              "vokctl: --state needs a number from 0 to 255.\n" + see);
    EXPECT_EQ(saidAbout("report -- x --state"),
              "vokctl: \"vokctl report\" does not take \"--state\".\n" + see);
}

TEST(WrongUsage, whatTheLibrarySaysIsSaidInOurWords)
{
    const std::string see = "See \"vokctl report --help\".\n";
    EXPECT_EQ(saidAbout("report"), "vokctl: USER is required.\n" + see);
    EXPECT_EQ(saidAbout("report anna --state abc"),
              "vokctl: --state needs a number from 0 to 255.\n" + see);
    EXPECT_EQ(saidAbout("report anna --state -1"),
              "vokctl: --state needs a number from 0 to 255.\n" + see);
    EXPECT_EQ(saidAbout("report anna --wait abc"), "vokctl: --wait does not take \"abc\".\n" + see);
    EXPECT_EQ(saidAbout("report anna --wait"), "vokctl: --wait needs a value.\n" + see);
    EXPECT_EQ(saidAbout("report anna --wait 1 --wait 2"),
              "vokctl: --wait can be given only once.\n" + see);
    EXPECT_EQ(saidAbout("report anna --csv --json"),
              "vokctl: --json and --csv cannot be given together.\n" + see);
}

} // namespace
