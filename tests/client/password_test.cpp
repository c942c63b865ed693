// SPDX-License-Identifier: MIT
//
// Passwords, from files and from a terminal of the test's own.
#include "client/password.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include "client/failure.h"
#include "tests/support/root.h"

namespace {

using client::readNewPassword;
using client::readPassword;

constexpr const char* kResult = "/stubs/result";

/// Writes down what a reader gives back, or how it fails.
void writeResult(std::string (*read)())
{
    try {
        root::writeFile(kResult, "<" + read() + ">");
    } catch (const client::Failure& failure) {
        root::writeFile(kResult, std::to_string(failure.code()) + ": " + failure.what());
    }
}

// ---- Standard input ---------------------------------------------------------------------------

class Password : public root::UntracedTest {
  protected:
    /// What a reader makes of these bytes on standard input.
    static std::string readFrom(const std::string& input, std::string (*read)())
    {
        root::writeFile("/stubs/input", input);
        root::inChild([read] {
            ::dup2(::open("/stubs/input", O_RDONLY), STDIN_FILENO);
            writeResult(read);
        });
        return root::readFile(kResult);
    }
};

TEST_F(Password, isTheFirstLineOfStandardInput)
{
    for (const auto read : {readPassword, readNewPassword}) {
        EXPECT_EQ(readFrom("a secret\nanother line\n", read), "<a secret>");
        EXPECT_EQ(readFrom("no newline", read), "<no newline>");
        EXPECT_EQ(readFrom(" 'blanks' \t\xC3\xA9\xFF \n", read), "< 'blanks' \t\xC3\xA9\xFF >");
        EXPECT_EQ(readFrom("\nanother line\n", read), "<>");
        EXPECT_EQ(readFrom(std::string(5000, 'x') + "\n", read),
                  "<" + std::string(5000, 'x') + ">");
    }
}

TEST_F(Password, noneOnStandardInputIsWrongUsage)
{
    for (const auto read : {readPassword, readNewPassword}) {
        EXPECT_EQ(readFrom("", read), "2: there is no password on standard input");
    }
}

// ---- A terminal -------------------------------------------------------------------------------

/// A terminal with a program at it, and somebody who types.
class Terminal {
  public:
    /// Starts something with the terminal as its three streams.
    template <class Function> explicit Terminal(Function program)
    {
        EXPECT_EQ(::openpty(&keyboard_, &line_, nullptr, nullptr, nullptr), 0);
        before_ = settings();
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(keyboard_);
            ::login_tty(line_);
            program();
            ::_exit(0);
        }
    }

    ~Terminal() { ::close(keyboard_); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the terminal has shown this last.
    void await(const std::string& text)
    {
        pollfd waiting = {.fd = keyboard_, .events = POLLIN, .revents = 0};
        while (!shown_.ends_with(text) && ::poll(&waiting, 1, 20000) > 0 && take()) {
        }
        EXPECT_TRUE(shown_.ends_with(text)) << shown_;
    }

    void type(const std::string& keys) const
    {
        EXPECT_EQ(::write(keyboard_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /// Waits for a prompt, and answers it unseen.
    void answer(const std::string& prompt, const std::string& keys)
    {
        await(prompt);
        EXPECT_FALSE(echoes());
        type(keys);
    }

    /// Waits for the program's end, and for all that it has left to be shown.
    /// @return its exit code
    int wait()
    {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        after_ = settings();
        ::close(line_);
        while (take()) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    [[nodiscard]] const std::string& shown() const { return shown_; }

    [[nodiscard]] bool echoes() const { return (settings().c_lflag & ECHO) != 0; }

    /// Whether it did before the program was started, which may turn it off at any moment.
    [[nodiscard]] bool echoedBefore() const { return (before_.c_lflag & ECHO) != 0; }

    /// Whether the program has left the terminal as it was.
    [[nodiscard]] bool isAsBefore() const
    {
        return after_.c_lflag == before_.c_lflag && after_.c_iflag == before_.c_iflag &&
               after_.c_oflag == before_.c_oflag && after_.c_cflag == before_.c_cflag;
    }

  private:
    [[nodiscard]] termios settings() const
    {
        termios now = {};
        EXPECT_EQ(::tcgetattr(line_, &now), 0);
        return now;
    }

    /// Takes in some of what the terminal shows, waiting for it.
    /// @return whether there was any
    bool take()
    {
        std::array<char, 4096> bytes;
        const ssize_t size = ::read(keyboard_, bytes.data(), bytes.size());
        shown_.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return size > 0;
    }

    int keyboard_ = -1;
    int line_ = -1;
    pid_t pid_ = -1;
    termios before_ = {};
    termios after_ = {};
    std::string shown_;
};

class PasswordPrompt : public root::UntracedTest {};

TEST_F(PasswordPrompt, whatIsTypedIsNotShown)
{
    Terminal terminal([] { writeResult(readPassword); });
    EXPECT_TRUE(terminal.echoedBefore());
    terminal.answer("Password: ", "a secret\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(root::readFile(kResult), "<a secret>");
    EXPECT_EQ(terminal.shown(), "Password: \r\n");
    EXPECT_TRUE(terminal.isAsBefore());
}

TEST_F(PasswordPrompt, newPasswordIsAskedForTwice)
{
    Terminal terminal([] { writeResult(readNewPassword); });
    terminal.answer("Password: ", "a secret\n");
    terminal.answer("Once more: ", "a secret\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(root::readFile(kResult), "<a secret>");
    EXPECT_EQ(terminal.shown(), "Password: \r\nOnce more: \r\n");
    EXPECT_TRUE(terminal.isAsBefore());
}

TEST_F(PasswordPrompt, twoThatDifferAreWrongUsage)
{
    Terminal terminal([] { writeResult(readNewPassword); });
    terminal.answer("Password: ", "a secret\n");
    terminal.answer("Once more: ", "a secret \n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(root::readFile(kResult), "2: the two passwords differ");
    EXPECT_TRUE(terminal.isAsBefore());
}

TEST_F(PasswordPrompt, endOfInputIsWrongUsage)
{
    for (const auto read : {readPassword, readNewPassword}) {
        Terminal terminal([read] { writeResult(read); });
        terminal.answer("Password: ", "\x04");
        EXPECT_EQ(terminal.wait(), 0);
        EXPECT_EQ(root::readFile(kResult), "2: there is no password on standard input");
        EXPECT_TRUE(terminal.isAsBefore());
    }
}

TEST_F(PasswordPrompt, interruptBringsTheEchoBack)
{
    for (const auto& [key, number] : {std::pair("\x03", SIGINT), std::pair("\x1C", SIGQUIT)}) {
        Terminal terminal([] { writeResult(readPassword); });
        terminal.answer("Password: ", std::string("half a secr") + key);
        EXPECT_EQ(terminal.wait(), 128 + number);
        EXPECT_TRUE(terminal.isAsBefore());
        EXPECT_FALSE(root::exists(kResult));
    }
}

TEST_F(PasswordPrompt, ignoredSignalStaysIgnored)
{
    Terminal terminal([] {
        std::signal(SIGINT, SIG_IGN);
        writeResult(readPassword);
        std::raise(SIGINT);
    });
    terminal.answer("Password: ", "half");
    terminal.type("\x03");
    terminal.type("a secret\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_TRUE(terminal.isAsBefore());
}

TEST_F(PasswordPrompt, whatWasTypedBeforeThePromptDoesNotCount)
{
    Terminal terminal([] {
        while (!root::exists("/stubs/typed")) {
            ::usleep(1000);
        }
        writeResult(readPassword);
    });
    terminal.type("too early\n");
    terminal.await("too early\r\n");
    root::writeFile("/stubs/typed", "");
    terminal.answer("Password: ", "in time\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(root::readFile(kResult), "<in time>");
}

TEST_F(PasswordPrompt, goesToStandardErrorAlone)
{
    Terminal terminal([] {
        ::dup2(::open("/stubs/output", O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
        writeResult(readPassword);
    });
    terminal.answer("Password: ", "a secret\n");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(terminal.shown(), "Password: \r\n");
    EXPECT_EQ(root::readFile("/stubs/output"), "");
}

/// vokctl at a terminal, without a service.
auto callUsers(const char* command)
{
    return [command] {
        ::execl(root::built("vokctl").c_str(), "vokctl", "users", command, "carla", "--socket",
                "/tmp/none", nullptr);
    };
}

const std::string kUnreachable = "vokctl: cannot reach the service at /tmp/none: No such file or "
                                 "directory. Is vokserve running?\r\n";

TEST_F(PasswordPrompt, usersCreateAsksTwiceBeforeItSendsAnything)
{
    Terminal same(callUsers("create"));
    same.answer("Password: ", "a secret\n");
    same.answer("Once more: ", "a secret\n");
    EXPECT_EQ(same.wait(), 3);
    EXPECT_EQ(same.shown(), "Password: \r\nOnce more: \r\n" + kUnreachable);
    EXPECT_TRUE(same.isAsBefore());

    Terminal other(callUsers("create"));
    other.answer("Password: ", "a secret\n");
    other.answer("Once more: ", "another\n");
    EXPECT_EQ(other.wait(), 2);
    EXPECT_EQ(other.shown(), "Password: \r\nOnce more: \r\nvokctl: the two passwords differ\r\n");
    EXPECT_TRUE(other.isAsBefore());
}

TEST_F(PasswordPrompt, usersVerifyAsksOnce)
{
    Terminal terminal(callUsers("verify"));
    terminal.answer("Password: ", "a secret\n");
    EXPECT_EQ(terminal.wait(), 3);
    EXPECT_EQ(terminal.shown(), "Password: \r\n" + kUnreachable);
    EXPECT_TRUE(terminal.isAsBefore());
}

} // namespace
