// SPDX-License-Identifier: MIT
#include "client/wrong_usage.h"

#include <gtest/gtest.h>

namespace {

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
                                   "\"status\"?\n\"vokctl --help\" tells more.\n");
    EXPECT_EQ(saidAbout("shares lst"), "vokctl: \"vokctl shares\" has no command \"lst\"; did you "
                                       "mean \"list\"?\n\"vokctl shares --help\" tells more.\n");
    EXPECT_EQ(saidAbout("everything"), "vokctl: \"vokctl\" has no command \"everything\".\n"
                                       "\"vokctl --help\" tells more.\n");
}

TEST(WrongUsage, unknownOptionComesWithTheOneThatWasMeant)
{
    EXPECT_EQ(saidAbout("status --josn"),
              "vokctl: \"vokctl status\" has no option \"--josn\"; did you mean \"--json\"?\n"
              "\"vokctl status --help\" tells more.\n");
    EXPECT_EQ(saidAbout("shares list --everything"),
              "vokctl: \"vokctl shares list\" has no option \"--everything\".\n"
              "\"vokctl shares list --help\" tells more.\n");
}

TEST(WrongUsage, whatACommandDoesNotTakeIsNamed)
{
    EXPECT_EQ(saidAbout("shares list Music"),
              "vokctl: \"vokctl shares list\" does not take \"Music\".\n"
              "\"vokctl shares list --help\" tells more.\n");
}

TEST(WrongUsage, groupWithoutACommandListsItsCommands)
{
    EXPECT_EQ(saidAbout("shares"), "vokctl: \"vokctl shares\" needs a command: list, show.\n"
                                   "\"vokctl shares --help\" tells more.\n");
}

TEST(WrongUsage, whatIsMissingIsSaid)
{
    EXPECT_EQ(saidAbout("shares show"), "vokctl: NAME is required.\n"
                                        "\"vokctl shares show --help\" tells more.\n");
}

} // namespace
