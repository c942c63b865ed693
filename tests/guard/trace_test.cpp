// SPDX-License-Identifier: MIT
#include "guard/trace.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "guard/guard.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

class GuardTrace : public root::UntracedTest {};

std::string textOf(const std::string& line)
{
    const std::optional<guard::Trace> trace = guard::readTrace(line);
    return trace ? (trace->isFirst ? "first: " : "later: ") + std::string(trace->text) : "none";
}

TEST_F(GuardTrace, textIsAllBetweenTheFirstQuoteAndTheLast)
{
    EXPECT_EQ(textOf(root::trace("")), "later: ");
    EXPECT_EQ(textOf(root::firstTrace("")), "first: ");
    EXPECT_EQ(textOf(root::trace("a b")), "later: a b");
    for (const std::string text : {"a \"b\" c", "\"", "\" > /tmp/dbg_vokcontrol.txt", "\" >", "`x`",
                                   "$(x)", "two\nlines", "\" >> /tmp/x \"", "-n"}) {
        EXPECT_EQ(textOf(root::firstTrace(text)), "first: " + text);
        EXPECT_EQ(textOf(root::trace(text)), "later: " + text);
    }
}

TEST_F(GuardTrace, otherLinesAreNoTraces)
{
    for (const std::string line :
         {"", "echo", "echo \"", "echo \" > /tmp/dbg_vokcontrol.txt",
          "echo \" >> /tmp/dbg_vokcontrol.txt", "echo \"a\" > /tmp/dbg_vokcontrol.txt ",
          "echo \"a\" > /tmp/dbg_vokcontrol.tx", " echo \"a\" > /tmp/dbg_vokcontrol.txt",
          "echo  \"a\" > /tmp/dbg_vokcontrol.txt", "echo 'a' > /tmp/dbg_vokcontrol.txt",
          "echo \"a\"> /tmp/dbg_vokcontrol.txt", "echo \"a\" >>> /tmp/dbg_vokcontrol.txt",
          "echo \"a\" >  /tmp/dbg_vokcontrol.txt", "echo \"a\" > /tmp/dbg_vokcontrol.txt2",
          "echo \"a\" > /tmp/other"}) {
        EXPECT_EQ(textOf(line), "none") << line;
    }
}

TEST_F(GuardTrace, firstEmptiesTheFileAndLaterOnesAppend)
{
    root::writeFile(root::kTraceFile, "another process's story\n");
    EXPECT_EQ(guard::writeTrace({"one", true}), 0);
    EXPECT_EQ(guard::writeTrace({"two", false}), 0);
    EXPECT_EQ(guard::writeTrace({"", false}), 0);
    EXPECT_EQ(guard::writeTrace({"thr\nee", false}), 0);
    EXPECT_EQ(root::readFile(root::kTraceFile), "one\ntwo\n\nthr\nee\n");
}

/// The effect of a line: its result, errno, and the files in /tmp.
std::string effectOf(int (*run)(const char*), const std::string& line, int& result)
{
    errno = 0;
    result = run(line.c_str());
    EXPECT_EQ(errno, 0) << line;
    return root::readFile(root::kTraceFile);
}

struct Condition {
    const char* name;
    void (*make)();
};

void makeNothing() {}
void makeOldFile()
{
    root::writeFile(root::kTraceFile, "old\n");
    ::chmod(root::kTraceFile, 0640);
}
void makeFolder()
{
    ::mkdir(root::kTraceFile, 0755);
}
void makeLink()
{
    root::writeFile("/tmp/target", "target\n");
    EXPECT_EQ(::symlink("/tmp/target", root::kTraceFile), 0);
}
void makeDanglingLink()
{
    EXPECT_EQ(::symlink("/tmp/target", root::kTraceFile), 0);
}
void makeFullDisk()
{
    root::writeFile(root::kTraceFile, "old\n");
    root::fillDisk("/tmp");
}

constexpr auto kConditions = std::to_array<Condition>({
    {"no file", makeNothing},
    {"an old file", makeOldFile},
    {"a folder", makeFolder},
    {"a link", makeLink},
    {"a link to nothing", makeDanglingLink},
    {"a full disk", makeFullDisk},
});

std::string describe(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) {
        return "none";
    }
    return std::to_string(status.st_mode) + " " + std::to_string(status.st_size) + " " +
           root::readFile(path);
}

std::string describeAll()
{
    return describe(root::kTraceFile) + "|" + describe("/tmp/target");
}

/// The result and the files of a line under a condition.
std::string outcomeOf(int (*run)(const char*), const Condition& condition, const std::string& line)
{
    for (const std::string& name : root::list("/tmp")) {
        std::filesystem::remove_all("/tmp/" + name);
    }
    condition.make();
    int result = 0;
    effectOf(run, line, result);
    return std::to_string(result) + " " + describeAll();
}

TEST_F(GuardTrace, doesWhatTheShellDoes)
{
    const std::string longest(1999, 'm');
    for (const mode_t mask : {mode_t{022}, mode_t{0}, mode_t{077}}) {
        ::umask(mask);
        for (const Condition& condition : kConditions) {
            for (const std::string& text : {std::string(), std::string("a  b\tc"), longest}) {
                for (const std::string& line : {root::firstTrace(text), root::trace(text)}) {
                    EXPECT_EQ(outcomeOf(guard::carryOut, condition, line),
                              outcomeOf(::system, condition, line))
                        << condition.name << ", umask " << mask << ", " << line.substr(0, 40);
                }
            }
        }
    }
    ::umask(022);
}

TEST_F(GuardTrace, everyPlainByteIsWrittenAsTheShellPrintsIt)
{
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (std::string_view("\"$`\\").find(c) != std::string_view::npos) {
            continue;
        }
        const std::string line = root::firstTrace(std::string("a") + c + "b" + c);
        const Condition none{"no file", makeNothing};
        EXPECT_EQ(outcomeOf(guard::carryOut, none, line), outcomeOf(::system, none, line)) << byte;
    }
}

TEST_F(GuardTrace, textThatAShellWouldChangeIsWrittenUnchanged)
{
    const Lines texts = {
        "a \"quoted  word\" here", "half a \" quote",  "$HOME", "`touch /tmp/fire`",
        "$(touch /tmp/fire)",      "back\\slash\\n",   "-n",    "-e a",
        "\";touch /tmp/fire;\"",   "\" > /tmp/fire \""};
    std::string all;
    for (const std::string& text : texts) {
        EXPECT_EQ(guard::carryOut(root::trace(text).c_str()), 0) << text;
        all += text + "\n";
    }
    EXPECT_EQ(root::readFile(root::kTraceFile), all);
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(GuardTrace, doesNotChangeErrno)
{
    errno = ENOSPC;
    EXPECT_EQ(guard::carryOut(root::trace("a").c_str()), 0);
    EXPECT_EQ(errno, ENOSPC);
    ::unlink(root::kTraceFile);
    makeFolder();
    EXPECT_EQ(guard::carryOut(root::trace("a").c_str()), 2 << 8);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(GuardTrace, startsNoProcess)
{
    // With SIGCHLD ignored, a shell would return -1.
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(guard::carryOut(root::trace("a").c_str()), 0);
}

} // namespace
