// SPDX-License-Identifier: MIT
//
// vokctl itself: help, version, wrong usage.
#include <array>
#include <gtest/gtest.h>
#include <unistd.h>

#include "client/commands.h"
#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace {

class Client : public root::UntracedTest {
  protected:
    static root::Ended vokctl(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), root::built("vokctl"));
        return root::run(arguments);
    }

    static void expectParts(const std::string& text, const std::vector<std::string>& parts)
    {
        for (const std::string& part : parts) {
            EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
        }
    }
};

/// The help of the whole program, which names each subcommand and its purpose.
std::string help()
{
    std::string text =
        "Talks to the appliance's control module.\n"
        "Usage: vokctl [OPTIONS] [SUBCOMMAND]\n"
        "\n"
        "Options:\n"
        "  -h,--help                   Print this help message and exit\n"
        "  --version                   Display program version information and exit\n"
        "\n"
        "Subcommands:\n";
    for (const client::Subcommand& each : client::kSubcommands) {
        std::string name = each.name;
        name.resize(28, ' ');
        text += "  " + name + each.purpose + "\n";
    }
    return text +
           "\n\"vokctl COMMAND --help\" explains a command. The options --socket, --timeout, "
           "--config,\n--any-server and --json can be before the command, too.\n"
           "What to do about a message: /usr/share/doc/vokcontrol/troubleshooting.md\n";
}

TEST_F(Client, helpGoesToStandardOutput)
{
    for (const char* option : {"--help", "-h"}) {
        const root::Ended ended = vokctl({option});
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, help());
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(Client, helpBeforeACommandIsTheCommandsOwn)
{
    for (const char* command : {"status", "users", "raw"}) {
        const root::Ended ended = vokctl({"--help", command});
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, vokctl({command, "--help"}).output);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(Client, groupsOfCommandsNameTheirCommands)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> groups = {
        {"shares", {"\n  list ", "\n  show ", "\n  public-name ", "\n  create "}},
        {"users", {"\n  list ", "\n  create ", "\n  verify "}},
        {"backup", {"\n  report ", "\n  list "}},
        {"drives", {"\n  check "}},
        {"host", {"\n  set "}},
        {"private", {"\n  get ", "\n  put "}},
        {"setup", {"\n  pending ", "\n  quick "}},
        {"remote", {"\n  urls ", "\n  status ", "\n  register ", "\n  enable ", "\n  disable "}},
        {"service", {"\n  restart "}},
    };
    for (const auto& [group, commands] : groups) {
        const root::Ended ended = vokctl({group, "--help"});
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.errors, "");
        expectParts(ended.output, commands);
        EXPECT_EQ(vokctl({group}).exitCode, 2);
    }
}

struct CommandHelp {
    std::vector<std::string> command;
    std::vector<std::string> parts;
};

TEST_F(Client, everyCommandHasHelpWithExamples)
{
    const std::vector<CommandHelp> commands = {
        {{"status"}, {"--json", "--max-age SECONDS", "--wait SECONDS", "--watch", "--config PATH"}},
        {{"history"}, {"SHARE", "--since TIME", "--json", "--csv", "--remember"}},
        {{"notify"}, {"--test", "--config PATH"}},
        {{"metrics"}, {"--output PATH", "--config PATH"}},
        {{"collect"}, {"--wait SECONDS", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"check"}, {"--full PERCENT", "--backup-age DAYS", "--stale HOURS", "--config PATH"}},
        {{"doctor"},
         {"CHECK", "--list", "--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"shares", "list"}, {"--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"shares", "show"},
         {"NAME", "--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"shares", "public-name"}, {"--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"shares", "create"},
         {"NAME", "--public", "--for USER", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"users", "list"}, {"--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"users", "create"}, {"NAME", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"users", "verify"}, {"NAME", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"backup", "report"},
         {"USER", "--state N", "--as-variable", "--socket PATH", "--timeout SECONDS",
          "--config PATH"}},
        {{"backup", "list"}, {"--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"drives", "check"},
         {"--socket PATH", "--timeout SECONDS", "--config PATH", "--any-server"}},
        {{"host", "set"},
         {"--time TIME", "--name NAME", "--workgroup NAME", "--language CODE", "--socket PATH"}},
        {{"version"}, {"--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"private", "get"}, {"FILE", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"private", "put"}, {"FILE", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"setup", "pending"}, {"--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"setup", "quick"}, {"--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"remote", "urls"}, {"--json", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"remote", "status"}, {"USER", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"remote", "register"}, {"USER", "FIRST", "SECOND", "--socket PATH"}},
        {{"remote", "enable"}, {"USER", "FIRST", "SECOND", "--socket PATH"}},
        {{"remote", "disable"}, {"USER", "--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"service", "restart"}, {"--socket PATH", "--timeout SECONDS", "--config PATH"}},
        {{"raw"},
         {"CODE", "--count", "--line TEXT", "--hex BYTES", "--frame FILE", "--socket PATH"}},
    };
    for (const CommandHelp& each : commands) {
        std::vector<std::string> arguments = each.command;
        arguments.emplace_back("--help");
        const root::Ended ended = vokctl(arguments);
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.errors, "");
        std::string example = "Examples:\n  vokctl";
        for (const std::string& word : each.command) {
            example += " " + word;
        }
        expectParts(ended.output, each.parts);
        expectParts(ended.output, {example});
    }
}

TEST_F(Client, settingsThatAreNotUnderstoodAreWrongUsage)
{
    root::writeFile("/tmp/settings", "[client]\ntimeout = soon\n");
    const root::Ended ended = vokctl({"shares", "list", "--config", "/tmp/settings"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "vokctl: /tmp/settings:2: timeout must be a whole number from 1 to 86400\n");
}

TEST_F(Client, passwordsCannotStandOnTheCommandLine)
{
    for (const char* command : {"create", "verify"}) {
        EXPECT_EQ(vokctl({"users", command, "carla", "secret"}).exitCode, 2);
        EXPECT_EQ(vokctl({"users", command, "carla", "--password", "secret"}).exitCode, 2);
    }
}

TEST_F(Client, versionIsPrinted)
{
    const root::Ended ended = vokctl({"--version"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output, "vokctl " VOKCTL_VERSION "\n");
}

TEST_F(Client, withoutACommandHelpIsWrongUsage)
{
    const root::Ended ended = vokctl({});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, help());
}

TEST_F(Client, unknownCommandIsNamed)
{
    const root::Ended ended = vokctl({"stauts"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "vokctl: \"vokctl\" has no command \"stauts\"; did you mean \"status\"?\n"
              "See \"vokctl --help\".\n");
}

TEST_F(Client, commandBehindAnotherHasItsOptionsToo)
{
    const root::Ended ended = vokctl(
        {"version", "--socket", "/tmp/none", "users", "list", "--json", "--socket", "/tmp/other"});
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
              "vokserve running?\n");
}

TEST_F(Client, optionsOfCommandsMayStandBeforeThem)
{
    const std::string away = "vokctl: cannot reach the service at /tmp/none: No such file or "
                             "directory. Is vokserve running?\n";
    const std::vector<std::vector<std::string>> lines = {
        {"--socket", "/tmp/none", "users", "list"},
        {"--socket=/tmp/none", "--json", "users", "list"},
        {"--json", "--timeout", "5", "--any-server", "--socket", "/tmp/none", "users", "list"},
        {"--timeout=5", "users", "list", "--json", "--socket", "/tmp/none"},
        {"--socket", "/tmp/none", "shares", "show", "--", "--json"},
    };
    for (const std::vector<std::string>& line : lines) {
        const root::Ended ended = vokctl(line);
        EXPECT_EQ(ended.exitCode, 3) << testing::PrintToString(line);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, away);
    }
    EXPECT_EQ(vokctl({"--socket"}).exitCode, 2);
    EXPECT_EQ(vokctl({"--socket", "/tmp/none"}).exitCode, 2);
    EXPECT_EQ(vokctl({"--timeout", "soon", "users", "list"}).exitCode, 2);
    EXPECT_EQ(vokctl({"--json", "drives", "check"}).exitCode, 2) << "it has no such option";
    EXPECT_EQ(vokctl({"--unknown", "users", "list"}).exitCode, 2);
}

TEST_F(Client, failureIsOneSentenceOnStandardErrorAndAnExitCode)
{
    const root::Ended ended = vokctl({"users", "list", "--socket", "/tmp/none"});
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
              "vokserve running?\n");
}

/// Whoever made the socket before the service could would be told passwords.
TEST_F(Client, serviceOfAnotherUserIsAskedOnlyIfThatIsWanted)
{
    const int listener = root::listenAt("/tmp/other");
    root::writeFile("/stubs/peer", "credentials 4711 4242 0\n");
    const std::vector<std::string> command = {"/usr/bin/env",
                                              "LD_PRELOAD=" + root::built("libstranger.so"),
                                              root::built("vokctl"),
                                              "drives",
                                              "check",
                                              "--timeout",
                                              "1",
                                              "--socket",
                                              "/tmp/other"};
    const root::Ended refused = root::run(command);
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(refused.errors,
              "vokctl: the service at /tmp/other is run by user 4242, neither by root nor by you, "
              "so nothing was sent. To use it anyway: --any-server\n");
    std::vector<std::string> anyServer = command;
    anyServer.emplace_back("--any-server");
    EXPECT_EQ(root::run(anyServer).errors,
              "vokctl: the service has not answered within 1 second. It may be busy; try again, or "
              "raise --timeout.\n");
    ::close(listener);
}

TEST_F(Client, outputThatCannotBeWrittenIsAFailure)
{
    const root::Ended ended =
        root::run({"/usr/bin/sh", "-c", root::built("vokctl") + " --help >/dev/full"});
    EXPECT_EQ(ended.exitCode, 8);
    EXPECT_EQ(ended.errors, "vokctl: cannot write to standard output\n");
}

/// What vokctl does in an environment of a language.
root::Ended inLanguage(const char* locale, std::vector<std::string> arguments)
{
    const auto words = std::to_array<std::string>(
        {"/usr/bin/env", "-u", "LC_ALL", "-u", "LC_MESSAGES", "-u", "LANGUAGE",
         std::string("LANG=") + locale, root::built("vokctl")});
    arguments.insert(arguments.begin(), words.begin(), words.end());
    return root::run(arguments);
}

/// A command line whose output a program would read, and that does not depend on the moment.
std::vector<std::string> lineForPrograms(const std::string& command)
{
    if (command == "metrics") {
        return {command, "--output", "/nowhere/metrics"};
    }
    if (command == "doctor") {
        return {command, "settings", "pelstatus", "--json"};
    }
    const bool isAlways = command == "notify" || command == "raw";
    return isAlways ? std::vector{command} : std::vector{command, std::string("--json")};
}

TEST_F(Client, programsGetTheSameInEveryLanguage)
{
    for (const client::Subcommand& each : client::kSubcommands) {
        const std::vector<std::string> line = lineForPrograms(each.name);
        const root::Ended english = inLanguage("C", line);
        const root::Ended german = inLanguage("de_DE.UTF-8", line);
        EXPECT_EQ(german.exitCode, english.exitCode) << each.name;
        EXPECT_EQ(german.output, english.output) << each.name;
        EXPECT_EQ(german.errors, english.errors) << each.name;
    }
}

} // namespace
