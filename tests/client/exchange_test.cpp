// SPDX-License-Identifier: MIT
//
// Requests and answers, against a service of the test's own that answers what it is told.
#include "client/exchange.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "client/failure.h"
#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace {

using client::Connection;
using root::le32;
using Strings = std::vector<std::string>;

constexpr const char* kSocket = "/tmp/socket";
constexpr const char* kFrames = "/stubs/frames";

const std::string kZero(1, '\0');
const std::string kUnreadable = "7: the answer cannot be read; it is ";
const std::string kEmptyAnswer =
    kUnreadable + "empty: the command was ignored, is not known, or failed before it answered";

const client::Request kCreate = {"shar", 3, "anna\nMusic\n"};

/// How something failed, as "CODE: SENTENCE"; empty where it did not.
template <class Function> std::string failureOf(Function function)
{
    try {
        function();
    } catch (const client::Failure& failure) {
        return std::to_string(failure.code()) + ": " + failure.what();
    }
    return "";
}

class Exchange : public root::UntracedTest {
  protected:
    void TearDown() override
    {
        stop();
        root::UntracedTest::TearDown();
    }

    /// Has the next requests answered so, one after the other; later ones wait in vain.
    void answer(const Strings& answers) { start(serve, answers); }

    /// Has the next request answered so as soon as some of it is there; the rest is not read.
    void turnDown(const std::string& bytes) { start(serveUnread, {bytes}); }

    /// What the service has received since it was told what to answer. A client has its answer only
    /// after that was written down.
    static std::string received() { return root::readFile(kFrames); }

    static Connection connection(unsigned timeout = 20)
    {
        return {.socket = kSocket, .timeout = timeout};
    }

  private:
    void start(void (*service)(int listener, const Strings& answers), const Strings& answers)
    {
        stop();
        const int listener = root::listenAt(kSocket);
        service_ = ::fork();
        if (service_ == 0) {
            service(listener, answers);
            ::_exit(0);
        }
        ::close(listener);
    }

    static void serve(int listener, const Strings& answers)
    {
        std::string frames;
        for (const std::string& bytes : answers) {
            const int socket = ::accept(listener, nullptr, nullptr);
            frames += root::receiveAll(socket);
            root::writeFile(kFrames, frames);
            [[maybe_unused]] const ssize_t sent = ::write(socket, bytes.data(), bytes.size());
            ::close(socket);
        }
        ::pause();
    }

    static void serveUnread(int listener, const Strings& answers)
    {
        const int socket = ::accept(listener, nullptr, nullptr);
        pollfd waiting = {.fd = socket, .events = POLLIN, .revents = 0};
        ::poll(&waiting, 1, -1);
        [[maybe_unused]] const ssize_t sent = ::write(socket, answers[0].data(), answers[0].size());
    }

    void stop()
    {
        if (service_ > 0) {
            ::kill(service_, SIGKILL);
            ::waitpid(service_, nullptr, 0);
        }
        service_ = -1;
        std::filesystem::remove(kSocket);
        std::filesystem::remove(kFrames);
    }

    pid_t service_ = -1;
};

/// An answer, and the failure that it makes.
struct Case {
    std::string answer;
    std::string failure;
};

// ---- Doing ------------------------------------------------------------------------------------

TEST_F(Exchange, requestIsSentAsOneFrame)
{
    answer({le32(0)});
    client::askToDo(connection(), kCreate);
    EXPECT_EQ(received(), "shar " + le32(3) + "\nanna\nMusic\n");
    answer({le32(0)});
    client::askToDo(connection(), {"sgss"});
    EXPECT_EQ(received(), "sgss " + le32(0) + "\n");
}

TEST_F(Exchange, firstLineOfARequestsOwnTakesTheCountsPlace)
{
    answer({le32(0)});
    client::askToDo(connection(), {.code = "subs", .line = "subs x\n"});
    EXPECT_EQ(received(), "subs x\n");
    answer({le32(0)});
    client::askToDo(connection(),
                    {.code = "subs", .count = 2, .parameters = "anna\n", .line = "subs x\n"});
    EXPECT_EQ(received(), "subs x\nanna\n");
}

TEST_F(Exchange, codeThatIsGoodInsteadOfZero)
{
    const auto check = [] { client::askToDo(connection(), {"grst"}, cmdsvc::kDriveCountReadable); };
    answer({le32(0xD0000001)});
    EXPECT_EQ(failureOf(check), "");
    answer({le32(0xFF000004)});
    EXPECT_EQ(failureOf(check),
              "1: the appliance cannot tell the number of its drives (0xFF000004)");
    answer({le32(0)});
    EXPECT_EQ(failureOf(check), "1: good (0x00000000)");
}

TEST_F(Exchange, wordOrStatusOfZeroIsDone)
{
    for (const std::string& good : {le32(0), "shar " + le32(0) + kZero}) {
        answer({good});
        EXPECT_EQ(failureOf([] { client::askToDo(connection(), kCreate); }), "");
    }
}

TEST_F(Exchange, everyOtherAnswerIsNotDone)
{
    const std::string taken =
        "1: a share of this name exists already, or the name is reserved (0x20000001)";
    const std::vector<Case> cases = {
        {le32(0x20000001), taken},
        {"shar " + le32(0x20000001) + kZero, taken},
        {"erro " + le32(0x20000001), taken},
        // An error is a refusal whatever its code says.
        {"erro " + le32(0), "1: good (0x00000000)"},
        {"lsst " + le32(1) + "\nMusic\nerro " + le32(0x20000001), taken},
        {le32(0xABCDEF01), "1: this client does not know the answer's meaning (0xABCDEF01)"},
        {"", kEmptyAnswer},
        {"lsst " + le32(1) + "\nM\x1B[2J\n", kUnreadable + "\"lsst\" with count 1\n  M\\u{1b}[2J"},
        {"abc", kUnreadable + "of no shape that this client knows"},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] { client::askToDo(connection(), kCreate); }), each.failure);
    }
}

TEST_F(Exchange, refusalIsSaidInTheWordsOfItsCommand)
{
    const std::vector<std::pair<std::string, std::string>> words = {
        {"lstu", "1: the command takes another number of parameters (0xFF000003)"},
        {"wall", "1: the name or the password is missing (0xFF000003)"},
        {"host", "1: a setting holds a character that the appliance does not take (0xFF000003)"},
    };
    for (const auto& [code, sentence] : words) {
        answer({le32(0xFF000003)});
        EXPECT_EQ(failureOf([&] { client::askToDo(connection(), {code}); }), sentence);
    }
}

// ---- Asking for lines -------------------------------------------------------------------------

TEST_F(Exchange, linesStandBehindTheirTag)
{
    answer({"lsst " + le32(7) + "\nMusic\npublic\n"});
    const client::Answer lines = client::askForLines(connection(), {"lsts"}, "lsst");
    EXPECT_EQ(lines.value, 7U);
    EXPECT_EQ(lines.lines, (Strings{"Music", "public"}));
    EXPECT_EQ(received(), "lsts " + le32(0) + "\n");

    answer({"lsst " + le32(0) + "\n"});
    EXPECT_EQ(client::askForLines(connection(), {"lsts"}, "lsst").lines, Strings{});
}

TEST_F(Exchange, everyOtherAnswerHoldsNoLines)
{
    const std::string failed = "1: a script or a tool of the appliance has failed (0xFF000004)";
    const std::vector<Case> cases = {
        {"lsut " + le32(1) + "\nanna\n", kUnreadable + "\"lsut\" with count 1\n  anna"},
        {"lsts " + le32(0) + "\n", kUnreadable + "\"lsts\" with count 0"},
        {"lsst " + le32(0) + kZero, kUnreadable + "\"lsst\" with status 0x00000000: good"},
        {le32(0), kUnreadable + "status 0x00000000: good"},
        {"", kEmptyAnswer},
        {"lsst ", kUnreadable + "of no shape that this client knows"},
        {"erro " + le32(0xFF000004), failed},
        {le32(0xFF000004), failed},
        {"lsts " + le32(0xFF000004) + kZero, failed},
        {"lsst " + le32(2) + "\nMusic\npublic\nerro " + le32(0xFF000006),
         "1: the appliance cannot remove its work file (0xFF000006)"},
        {"lsst " + le32(2) + "\nerro " + le32(0xFF000007),
         "1: the appliance cannot open its work file (0xFF000007)"},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] {
                      static_cast<void>(client::askForLines(connection(), {"lsts"}, "lsst"));
                  }),
                  each.failure);
    }
}

// ---- Asking for bytes -------------------------------------------------------------------------

TEST_F(Exchange, bytesStandBehindTheirStart)
{
    const std::string bytes = "erro " + le32(3) + "\n" + std::string(3, '\0') + "\xFF";
    for (const std::string& rest : {bytes, std::string(), std::string(100000, 'x')}) {
        answer({"gprt " + rest});
        EXPECT_EQ(client::askForBytes(connection(), {"gpvt"}, "gprt "), rest);
        EXPECT_EQ(received(), "gpvt " + le32(0) + "\n");
    }
}

TEST_F(Exchange, everyOtherAnswerHoldsNoBytes)
{
    const std::vector<Case> cases = {
        {"gpr", kUnreadable + "of no shape that this client knows"},
        {"gpvt " + le32(0) + "\n", kUnreadable + "\"gpvt\" with count 0"},
        {le32(0), kUnreadable + "status 0x00000000: good"},
        {"", kEmptyAnswer},
        {"erro " + le32(0xFF000001), "1: the appliance has run out of memory (0xFF000001)"},
        {le32(0xFF000003), "1: the command takes another number of parameters (0xFF000003)"},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] {
                      static_cast<void>(client::askForBytes(connection(), {"gpvt"}, "gprt "));
                  }),
                  each.failure);
    }
}

// ---- The service's own answers ----------------------------------------------------------------

TEST_F(Exchange, statusOfTheServicesOwnIsNoAnswerOfTheCommands)
{
    const std::vector<Case> cases = {
        {"serv " + le32(0x53000001) + kZero, "5: the request took too long and was ended; what it "
                                             "had done by then stays (0x53000001)"},
        {"serv " + le32(0x53000002) + kZero,
         "7: the request's process failed before it answered (0x53000002)"},
        {"serv " + le32(0x53000003) + kZero,
         "7: the appliance has no room for another process; try again (0x53000003)"},
        {"serv " + le32(0x53000004) + kZero,
         "2: the request is longer than 4096 bytes (0x53000004)"},
        {"serv " + le32(0x53000005) + kZero,
         "4: only root and the members of the service's group may ask (0x53000005)"},
    };
    for (const Case& each : cases) {
        answer({each.answer, each.answer, each.answer});
        EXPECT_EQ(failureOf([] { client::askToDo(connection(), kCreate); }), each.failure);
        EXPECT_EQ(failureOf([] {
                      static_cast<void>(client::askForLines(connection(), {"lsts"}, "lsst"));
                  }),
                  each.failure);
        EXPECT_EQ(failureOf([] {
                      static_cast<void>(client::askForBytes(connection(), {"gpvt"}, "gprt "));
                  }),
                  each.failure);
    }
}

TEST_F(Exchange, requestMayBeTurnedDownBeforeAllOfItIsRead)
{
    const std::string refusal =
        "4: only root and the members of the service's group may ask (0x53000005)";
    for (const std::size_t size : {10U, 10000U, 10000000U}) {
        turnDown("serv " + le32(0x53000005) + kZero);
        EXPECT_EQ(failureOf([&] {
                      client::askToDo(connection(), {"pshr", 3, std::string(size, 'x')});
                  }),
                  refusal);
    }
}

// ---- Without an answer ------------------------------------------------------------------------

TEST_F(Exchange, serviceThatIsAwayClosedOrSilentIsAFailure)
{
    const std::string away = "cannot reach the service at /tmp/socket: ";
    EXPECT_EQ(failureOf([] { client::askToDo(connection(), {"sgss"}); }),
              "3: " + away + "No such file or directory. Is vokserve running?");
    answer({le32(0)});
    std::filesystem::permissions(kSocket, std::filesystem::perms(0));
    EXPECT_EQ(
        failureOf([] { static_cast<void>(client::askForLines(connection(), {"lsts"}, "lsst")); }),
        "4: " + away + "Permission denied. Try again as root.");
    answer({});
    EXPECT_EQ(
        failureOf([] { static_cast<void>(client::askForBytes(connection(1), {"gpvt"}, "gprt ")); }),
        "5: the service has not answered within 1 seconds. It may be busy; try again, or "
        "raise --timeout.");
}

// ---- Parameter lines --------------------------------------------------------------------------

TEST(ParameterLine, isTheTextAndANewline)
{
    EXPECT_EQ(client::parameterLine(""), "\n");
    EXPECT_EQ(client::parameterLine("Tax papers"), "Tax papers\n");
    EXPECT_EQ(client::parameterLine("\xC3\x89\xFF'\"\\\t\r"), "\xC3\x89\xFF'\"\\\t\r\n");
}

TEST(ParameterLine, newlineOrZeroByteIsWrongUsage)
{
    for (const std::string& text :
         {std::string("a\nb"), std::string("\n"), std::string("a\n"), "a" + kZero + "b", kZero}) {
        EXPECT_EQ(failureOf([&] { static_cast<void>(client::parameterLine(text)); }),
                  "2: a name or a value cannot hold a newline or a zero byte");
    }
}

// ---- Commands ---------------------------------------------------------------------------------

/// Runs vokctl through a shell, with these bytes on standard input.
root::Ended vokctl(const std::string& line, const std::string& input = "")
{
    root::writeFile("/stubs/input", input);
    return root::run({"/usr/bin/sh", "-c",
                      root::built("vokctl") + " " + line + " --socket /tmp/socket </stubs/input"});
}

struct CommandRow {
    std::string line;
    std::string input;
    Strings answers;
    std::string frames;
};

TEST_F(Exchange, everyCommandSendsItsFrames)
{
    const std::string none = "lsst " + le32(0) + "\n";
    const std::string music = "lsst " + le32(1) + "\nMusic\npublic\n";
    const std::vector<CommandRow> rows = {
        {"shares list", "", {none}, "lsts " + le32(0) + "\n"},
        {"shares list --json", "", {none}, "lsts " + le32(0) + "\n"},
        {"shares show Music",
         "",
         {"gspr " + le32(1) + "\n\x02\n", music},
         "gsp1 " + le32(1) + "\nMusic\nlsts " + le32(0) + "\n"},
        {"shares public-name", "", {"gpsr " + le32(1) + "\nMusic\n"}, "gps1 " + le32(0) + "\n"},
        {"shares create 'Tax papers' --public",
         "",
         {le32(0)},
         "pshr " + le32(3) + "\nguest\nTax papers\n"},
        {"shares create guest --public", "", {le32(0)}, "pshr " + le32(3) + "\nguest\nguest\n"},
        {"shares create 'Tax papers' --for anna",
         "",
         {le32(0)},
         "shar " + le32(3) + "\nanna\nTax papers\n"},
        {"users list", "", {"lsut " + le32(0) + "\n"}, "lstu " + le32(0) + "\n"},
        {"users create carla",
         "a secret\nanother line\n",
         {le32(0)},
         "crat " + le32(2) + "\ncarla\na secret\n"},
        {"users verify carla",
         "a secret\nanother line\n",
         {"wall \n"},
         "wall " + le32(2) + "\ncarla\na secret\n"},
        {"service restart", "", {le32(0)}, "sgss " + le32(0) + "\n"},
    };
    for (const CommandRow& row : rows) {
        answer(row.answers);
        EXPECT_EQ(vokctl(row.line, row.input).exitCode, 0) << row.line;
        EXPECT_EQ(received(), row.frames) << row.line;
    }
}

struct NonsenseRow {
    std::string line;
    std::string answer;
    std::string description;
};

TEST_F(Exchange, answerThatHoldsTooLittleOrTooMuchCannotBeRead)
{
    const std::vector<NonsenseRow> rows = {
        {"shares list", "lsst " + le32(2) + "\nMusic\npublic\nMedia\n",
         "\"lsst\" with count 2\n  Music\n  public\n  Media"},
        {"shares show Music", "gspr " + le32(1) + "\n", "\"gspr\" with count 1"},
        {"shares show Music", "gspr " + le32(1) + "\n\x01\x02\n",
         "\"gspr\" with count 1\n  \\u{1}\\u{2}"},
        {"shares show Music", "gspr " + le32(1) + "\n\x01\n\x02\n",
         "\"gspr\" with count 1\n  \\u{1}\n  \\u{2}"},
        {"shares public-name", "gpsr " + le32(1) + "\n", "\"gpsr\" with count 1"},
        {"shares public-name", "gpsr " + le32(1) + "\nMusic\nMedia\n",
         "\"gpsr\" with count 1\n  Music\n  Media"},
        {"shares create Music --public", "pshr " + le32(0) + "\n", "\"pshr\" with count 0"},
        {"users list", "lsut " + le32(2) + "\nanna\n", "\"lsut\" with count 2\n  anna"},
        {"users list", "lsut " + le32(0) + "\nanna\n", "\"lsut\" with count 0\n  anna"},
        {"service restart", "sgss " + le32(0) + "\n", "\"sgss\" with count 0"},
    };
    for (const NonsenseRow& row : rows) {
        answer({row.answer});
        const root::Ended ended = vokctl(row.line);
        EXPECT_EQ(ended.exitCode, 7) << row.line;
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors,
                  "vokctl: the answer cannot be read; it is " + row.description + "\n");
    }
}

} // namespace
