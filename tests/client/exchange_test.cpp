// SPDX-License-Identifier: MIT
//
// Requests and answers, against a service of the test's own that answers what it is told.
#include "client/exchange.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <random>
#include <set>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "client/failure.h"
#include "cmdsvc/commands.h"
#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace {

using client::Connection;
using cmdsvc::command;
using root::le32;
using Strings = std::vector<std::string>;

constexpr const char* kSocket = "/tmp/socket";
constexpr const char* kFrames = "/stubs/frames";

const std::string kZero(1, '\0');
const std::string kUnreadable = "7: the answer cannot be read: ";
const std::string kNoShape = kUnreadable + "of a shape that this client does not know";
const std::string kEmptyAnswer =
    kUnreadable + "empty: the command was ignored, is not known, or failed before it answered";

const client::Request kCreate = {command("shar"), {"anna", "Music"}};
const client::Request kShares = {command("lsts")};
const client::Request kFile = {command("gpvt")};
const client::Request kPublicName = {command("gpsn")};

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
    client::askToDo(connection(), {command("sgss")});
    EXPECT_EQ(received(), "sgss " + le32(0) + "\n");
}

TEST_F(Exchange, valueThatCannotBeSentIsNotSent)
{
    answer({le32(0)});
    EXPECT_EQ(failureOf([] {
                  client::askToDo(connection(), {command("shar"), {"anna", "Mu\nsic"}});
              }),
              "2: a name or a value cannot contain a newline or a zero byte");
    EXPECT_FALSE(root::exists(kFrames));
}

TEST_F(Exchange, codeThatIsGoodInsteadOfZero)
{
    const auto check = [] { client::askToDo(connection(), {command("grst")}); };
    answer({le32(0xD0000001)});
    EXPECT_EQ(failureOf(check), "");
    answer({le32(0xFF000004)});
    EXPECT_EQ(failureOf(check),
              "1: The number of drives cannot be read; vokctl doctor may say why. (0xFF000004)");
    answer({le32(0)});
    EXPECT_EQ(failureOf(check), "1: Good. (0x00000000)");
}

TEST_F(Exchange, statusOfZeroIsDone)
{
    const auto report = [] { client::askToDo(connection(), {command("subs"), {" \1anna"}}); };
    answer({"subs " + le32(0) + kZero});
    EXPECT_EQ(failureOf(report), "");
    EXPECT_EQ(received(), "subs \x06 \1anna\n");
    answer({"subs " + le32(0xC2000002) + kZero + "subs " + le32(0) + kZero});
    EXPECT_EQ(failureOf(report), "1: The report could not be stored; see whether the appliance's "
                                 "disk is full. (0xC2000002)");
}

TEST_F(Exchange, everyOtherAnswerIsNotDone)
{
    const std::vector<Case> cases = {
        {le32(0x20000001),
         "1: A share of this name exists already, or the name is reserved. (0x20000001)"},
        {le32(0xABCDEF01), "1: This client does not know the answer's meaning. (0xABCDEF01)"},
        {"", kEmptyAnswer},
        {"shar " + le32(0) + kZero, kNoShape},
        {"erro " + le32(0x20000001), kNoShape},
        {"lsst " + le32(1) + "\nM\x1B[2J\n", kNoShape},
        {"abc", kNoShape},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] { client::askToDo(connection(), kCreate); }), each.failure);
    }
}

TEST_F(Exchange, refusalIsSaidInTheWordsOfItsCommand)
{
    const std::vector<std::pair<client::Request, std::string>> words = {
        {{command("lstu")}, "1: The command takes another number of parameters. (0xFF000003)"},
        {{command("wall")}, "1: The name or the password is missing. (0xFF000003)"},
        {{command("host")},
         "1: A setting has a character that cannot be used, such as a quote. (0xFF000003)"},
    };
    for (const auto& [request, sentence] : words) {
        answer({le32(0xFF000003)});
        EXPECT_EQ(failureOf([&request = request] { client::askToDo(connection(), request); }),
                  sentence);
    }
}

TEST_F(Exchange, refusalSaysWhoseStatusItIs)
{
    const std::vector<std::pair<std::string, std::string>> refusals = {
        {le32(0x20000006), "shar 0x20000006"},
        {"serv " + le32(0x53000006) + kZero, "serv 0x53000006"}};
    for (const auto& [bytes, expected] : refusals) {
        answer({bytes});
        try {
            client::askToDo(connection(), kCreate);
            ADD_FAILURE() << "it was not refused";
        } catch (const client::Refused& refusal) {
            std::ostringstream said;
            said << refusal.command() << " 0x" << std::hex << cmdsvc::wordOf(refusal.status());
            EXPECT_EQ(said.str(), expected);
        }
    }
}

// ---- Asking for lines -------------------------------------------------------------------------

TEST_F(Exchange, linesFollowTheirHeader)
{
    answer({"lsst " + le32(7) + "\nMusic\npublic\n"});
    const client::Listing listing = client::askForLines(connection(), kShares);
    EXPECT_EQ(listing.answer.count, 7U);
    EXPECT_EQ(listing.lines, (Strings{"Music", "public"}));
    EXPECT_EQ(received(), "lsts " + le32(0) + "\n");

    answer({"lsst " + le32(0) + "\n"});
    EXPECT_EQ(client::askForLines(connection(), kShares).lines, Strings{});
}

TEST_F(Exchange, everyOtherAnswerHoldsNoLines)
{
    const std::vector<Case> cases = {
        {"lsut " + le32(1) + "\nanna\n", kNoShape},
        {"lsts " + le32(0) + "\n", kNoShape},
        {"lsst " + le32(0) + kZero, kNoShape},
        {le32(0), kNoShape},
        {le32(0xFF000004), kNoShape},
        {"lsts " + le32(0xFF000004) + kZero, kNoShape},
        {"lsst ", kNoShape},
        {"", kEmptyAnswer},
        {"erro " + le32(0xFF000004), "1: A script or a tool of the appliance has failed; vokctl "
                                     "doctor may say why. (0xFF000004)"},
        {"lsst " + le32(2) + "\nMusic\npublic\nerro " + le32(0xFF000006),
         "1: The appliance's work file cannot be removed; see whether the disk for its work files "
         "is full. (0xFF000006)"},
        {"lsst " + le32(2) + "\nerro " + le32(0xABCDEF01),
         "1: This client does not know the answer's meaning. (0xABCDEF01)"},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] { static_cast<void>(client::askForLines(connection(), kShares)); }),
                  each.failure);
    }
}

// ---- Asking for bytes -------------------------------------------------------------------------

TEST_F(Exchange, bytesFollowTheirTag)
{
    const std::string bytes = "erro " + le32(3) + "\n" + std::string(3, '\0') + "\xFF";
    for (const std::string& rest : {bytes, std::string(), std::string(100000, 'x')}) {
        answer({"gpsn " + rest});
        EXPECT_EQ(client::askForBytes(connection(), kPublicName), rest);
        EXPECT_EQ(received(), "gpsn " + le32(0) + "\n");
        answer({"gpsn ab" + rest});
        EXPECT_EQ(client::askForBytes(connection(), kPublicName, "ab"), rest);
    }
}

TEST_F(Exchange, bytesOfAHeaderFollowItsCount)
{
    answer({"gprt " + le32(2) + "\nfile\nerro " + le32(1)});
    const client::Answer answer = client::ask(connection(), kFile);
    EXPECT_EQ(answer.count, 2U);
    EXPECT_EQ(answer.body, "file\nerro " + le32(1));
}

TEST_F(Exchange, everyOtherAnswerHoldsNoBytes)
{
    const std::vector<Case> cases = {
        {"gps", kNoShape},
        {"gpsr " + le32(0) + "\n", kNoShape},
        {"erro " + le32(0xFF000001), kNoShape},
        {le32(0xFF000003), kNoShape},
        {"gpsn other\n\x1B", kUnreadable + "\"gpsn\" and\n  other\n  \\u{1b}"},
        {"gpsn ", kUnreadable + "\"gpsn\" and nothing more"},
        {"", kEmptyAnswer},
    };
    for (const Case& each : cases) {
        answer({each.answer});
        EXPECT_EQ(failureOf([] {
                      static_cast<void>(client::askForBytes(connection(), kPublicName, "ab"));
                  }),
                  each.failure);
    }
}

// ---- The service's own answers ----------------------------------------------------------------

TEST_F(Exchange, statusOfTheServicesOwnIsNoAnswerOfTheCommands)
{
    const std::vector<Case> cases = {
        {"serv " + le32(0x53000001) + kZero, "5: The request took too long and was ended. What was "
                                             "done before that was not undone. (0x53000001)"},
        {"serv " + le32(0x53000002) + kZero,
         "7: The request's process failed before it answered; see the service's log. (0x53000002)"},
        {"serv " + le32(0x53000003) + kZero,
         "7: The appliance could not start another process; try again. (0x53000003)"},
        {"serv " + le32(0x53000004) + kZero,
         "2: The request is longer than 4096 bytes. (0x53000004)"},
        {"serv " + le32(0x53000005) + kZero,
         "4: This account may not ask for that. Members of the group vokcontrol may ask for "
         "everything, members of vokcontrol-view only for what changes nothing; ask root to add "
         "you. (0x53000005)"},
        {"serv " + le32(0x53000006) + kZero, "7: The service is stopping; try again. (0x53000006)"},
    };
    for (const Case& each : cases) {
        answer({each.answer, each.answer, each.answer});
        EXPECT_EQ(failureOf([] { client::askToDo(connection(), kCreate); }), each.failure);
        EXPECT_EQ(failureOf([] { static_cast<void>(client::askForLines(connection(), kShares)); }),
                  each.failure);
        EXPECT_EQ(
            failureOf([] { static_cast<void>(client::askForBytes(connection(), kPublicName)); }),
            each.failure);
    }
}

TEST_F(Exchange, requestMayBeTurnedDownBeforeAllOfItIsRead)
{
    const std::string refusal =
        "4: This account may not ask for that. Members of the group vokcontrol may ask for "
        "everything, members of vokcontrol-view only for what changes nothing; ask root to add "
        "you. (0x53000005)";
    for (const std::size_t size : {10U, 10000U, 10000000U}) {
        turnDown("serv " + le32(0x53000005) + kZero);
        EXPECT_EQ(failureOf([&] {
                      client::askToDo(connection(), {command("pshr"), {std::string(size, 'x')}});
                  }),
                  refusal);
    }
}

// ---- Without an answer ------------------------------------------------------------------------

TEST_F(Exchange, serviceThatIsAwayClosedOrSilentIsAFailure)
{
    const std::string away = "cannot reach the service at /tmp/socket: ";
    EXPECT_EQ(failureOf([] { client::askToDo(connection(), {command("sgss")}); }),
              "3: " + away + "No such file or directory. Is vokserve running?");
    answer({le32(0)});
    std::filesystem::permissions(kSocket, std::filesystem::perms(0));
    EXPECT_EQ(failureOf([] { static_cast<void>(client::askForLines(connection(), kShares)); }),
              "4: " + away +
                  "Permission denied. Ask root to add you to the group vokcontrol, or try again as "
                  "root.");
    answer({});
    EXPECT_EQ(failureOf([] { static_cast<void>(client::askForBytes(connection(1), kPublicName)); }),
              "5: the service has not answered within 1 second. It may be busy; try again, or "
              "raise --timeout.");
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
        {"shares create Music --public", "pshr " + le32(0) + "\n",
         "of a shape that this client does not know"},
        {"users list", "lsut " + le32(2) + "\nanna\n", "\"lsut\" with count 2\n  anna"},
        {"users list", "lsut " + le32(0) + "\nanna\n", "\"lsut\" with count 0\n  anna"},
        {"service restart", "sgss " + le32(0) + "\n", "of a shape that this client does not know"},
    };
    for (const NonsenseRow& row : rows) {
        answer({row.answer});
        const root::Ended ended = vokctl(row.line);
        EXPECT_EQ(ended.exitCode, 7) << row.line;
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "vokctl: the answer cannot be read: " + row.description + "\n");
    }
}

// ---- Hostile answers --------------------------------------------------------------------------

/// Answers that begin as the command's may, and go on with anything.
class Hostile {
  public:
    explicit Hostile(const cmdsvc::Command& row)
        : starts_{"",
                  "erro ",
                  "serv ",
                  std::string(row.code) + " ",
                  std::string(row.answer.tag),
                  std::string(row.answer.tag) + " " + le32(1) + "\n",
                  std::string(row.answer.tag) + " " + le32(2) + "\n"}
    {}

    std::string next()
    {
        std::string bytes(random_() % 16, '\0');
        std::ranges::generate(bytes, [this] { return "\0\n\1\3SK\xFF "[random_() % 8]; });
        return starts_[random_() % starts_.size()] + bytes;
    }

  private:
    std::mt19937 random_{20261122};
    Strings starts_;
};

TEST(HostileAnswer, isGoodOrEndsWithACodeAndASentence)
{
    const std::set<std::string> codes = {"", "1: ", "2: ", "4: ", "5: ", "7: "};
    for (const cmdsvc::Command& row : cmdsvc::kCommands) {
        Hostile hostile(row);
        for (int i = 0; i < 1000; ++i) {
            const std::string bytes = hostile.next();
            const std::string failure =
                failureOf([&] { static_cast<void>(client::acceptAnswer(row, bytes)); });
            EXPECT_TRUE(codes.contains(failure.substr(0, 3))) << failure;
            EXPECT_NE(failure.size(), 3U) << failure;
        }
    }
}

TEST_F(Exchange, everyCommandEndsWithASentenceWhateverIsAnswered)
{
    const std::vector<std::pair<std::string, const cmdsvc::Command&>> rows = {
        {"backup list", command("gub1")},
        {"private get -", command("gpvt")},
        {"remote status", command("wags")},
        {"remote urls", command("getv")},
        {"setup quick", command("qlps")},
        {"shares list", command("lsts")},
        {"shares public-name", command("gps1")},
        {"shares show Music", command("gsp1")},
        {"users list", command("lstu")},
        {"users verify anna", command("wall")},
        {"version", command("vers")},
    };
    const std::set<int> codes = {0, 1, 6, 7};
    for (const auto& [line, row] : rows) {
        Hostile hostile(row);
        Strings answers(40);
        std::ranges::generate(answers, [&] { return hostile.next(); });
        answer(answers);
        // Some of them ask twice.
        for (std::size_t i = 0; i < answers.size() / 2; ++i) {
            const root::Ended ended = vokctl(line, "secret\n");
            EXPECT_TRUE(codes.contains(ended.exitCode)) << line << ended.exitCode;
            EXPECT_EQ(ended.errors.starts_with("vokctl: "),
                      ended.exitCode != 0 || line == "users verify anna")
                << line << ended.errors;
        }
    }
}

// ---- How long an answer may be ----------------------------------------------------------------

TEST_F(Exchange, answerIsNotLongerThanItsCommandMayAnswer)
{
    struct Longest {
        const char* command;
        client::Request request;
        std::size_t size;
    };
    const std::vector<Longest> all = {
        {"no answer", {command("gubs")}, 20},
        {"a word", {command("sgss")}, 20},
        {"a status", {command("subs"), {"  anna"}}, 20},
        {"lines", kShares, 1048576},
        {"text", {command("gub1")}, 1048576},
        {"the private file", kFile, 16777216},
    };
    for (const Longest& each : all) {
        SCOPED_TRACE(each.command);
        const std::string tooLong = "7: the answer is longer than " + std::to_string(each.size) +
                                    " bytes, more than a good answer can have";
        answer({std::string(each.size, 'a')});
        EXPECT_NE(failureOf([&] { static_cast<void>(client::ask(connection(), each.request)); }),
                  tooLong);
        answer({std::string(each.size + 1, 'a')});
        EXPECT_EQ(failureOf([&] { static_cast<void>(client::ask(connection(), each.request)); }),
                  tooLong);
    }
}

} // namespace
