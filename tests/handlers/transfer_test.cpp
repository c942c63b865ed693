// SPDX-License-Identifier: MIT
#include "handlers/transfer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cmdsvc/channel.h"
#include "core/core.h"
#include "tests/support/request.h"
#include "tests/support/root.h"

namespace fs = std::filesystem;

namespace {

/// How many of the calls below this process lives through; negative: all.
int callsToLive = -1;

void passCall()
{
    if (callsToLive == 0) {
        ::kill(::getpid(), SIGKILL);
    }
    callsToLive -= (callsToLive > 0) ? 1 : 0;
}

template <class Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

// Whatever an upload does that lasts goes through one of these. They are the C library's (and the
// watch's), but the process may be killed right behind each.
extern "C" {

int system(const char* line)
{
    const int result = next<int(const char*)>("system")(line);
    passCall();
    return result;
}

FILE* fopen(const char* path, const char* mode)
{
    FILE* file = next<FILE*(const char*, const char*)>("fopen")(path, mode);
    passCall();
    return file;
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file)
{
    const std::size_t written = next<std::size_t(const void*, std::size_t, std::size_t, FILE*)>(
        "fwrite")(bytes, size, count, file);
    passCall();
    return written;
}

int fclose(FILE* file)
{
    const int result = next<int(FILE*)>("fclose")(file);
    passCall();
    return result;
}

int rename(const char* from, const char* to) noexcept
{
    const int result = next<int(const char*, const char*)>("rename")(from, to);
    passCall();
    return result;
}

int remove(const char* path) noexcept
{
    const int result = next<int(const char*)>("remove")(path);
    passCall();
    return result;
}

} // extern "C"

namespace {

using Lines = std::vector<std::string>;
using request::exitTrace;
using request::frame;
using request::opening;
using request::Outcome;
using root::le32;
using root::trace;

const std::string kBuildFile = "/etc/buildinfo.txt";
const std::string kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
const std::string kSavedFile = "/tmp/vokcontrol.tmp";
const std::string kAsideFile = kPrivateFile + ".old";

constexpr std::size_t kBufferSize = 4096;
constexpr std::uint32_t kGood = 0;
constexpr std::uint32_t kMalformed = 0xFF000003;
constexpr std::uint32_t kCannotRemove = 0xFF000006;

std::string errorAnswer(std::uint32_t code)
{
    return "erro " + le32(code);
}

/// A trace of bytes as text: up to their first zero, and no message is longer than 1999 characters.
std::string traceBytes(const std::string& message)
{
    constexpr std::size_t kLongestMessage = 1999;
    return trace(message.substr(0, std::min(message.find('\0'), kLongestMessage)));
}

std::string sizeTrace(const std::string& path, std::size_t size)
{
    return trace("file " + path + " size = " + std::to_string(size) + " bytes");
}

/// Harmless text of a size, of which no two neighbouring chunks are the same.
std::string text(std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += static_cast<char>('a' + i % 23);
    }
    return text;
}

/// Bytes of every value, a zero first, so that a trace shows none of them.
std::string binary(std::size_t size)
{
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes += static_cast<char>(i & 0xFFU);
    }
    return bytes;
}

std::size_t sizeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return static_cast<std::size_t>(status.st_size);
}

/// Closes the file in the current-file slot behind its stream's back, so that its close fails.
void breakCurrentFile()
{
    ::close(::fileno(cmdsvc::currentFile()));
}

class Transfer : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        fs::remove_all(kBuildFile);
    }

    void TearDown() override
    {
        fs::remove_all(kBuildFile);
        root::Test::TearDown();
    }

    static void expectOutcome(const Outcome& outcome, const std::string& answer, const Lines& calls)
    {
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.answer, answer);
        EXPECT_EQ(outcome.calls, calls);
        EXPECT_EQ(cmdsvc::currentFile(), nullptr);
        EXPECT_EQ(fout_buf, nullptr);
    }
};

// ---- vers -------------------------------------------------------------------------------------

class Version : public Transfer {
  protected:
    static std::string answer(const std::string& line)
    {
        return "vert " + le32(1) + "\n" + line + "\n";
    }

    static Outcome ask() { return request::process(frame("vers", 0)); }

    /// The calls of a good answer.
    static Lines goodCalls(std::size_t fileSize, const std::string& line)
    {
        return opening("vers", 0,
                       {sizeTrace(kBuildFile, fileSize),
                        trace("end of file: idx=" + std::to_string(10 + line.size()))});
    }

    static void expectLine(const std::string& content, const std::string& line)
    {
        SCOPED_TRACE(content.size());
        root::writeFile(kBuildFile, content);
        expectOutcome(ask(), answer(line), goodCalls(content.size(), line));
    }

    /// The loaded request must end with an error, and take the work file away.
    static void expectError(std::uint32_t code, Lines calls)
    {
        root::writeFile(kSavedFile, "left over");
        calls.push_back(exitTrace(code));
        expectOutcome(request::run(), errorAnswer(code), opening("vers", 0, calls));
        EXPECT_EQ(root::list("/tmp"), (Lines{"dbg_vokcontrol.txt", "outbuf7"}));
    }
};

TEST_F(Version, linesAreJoined)
{
    expectLine("1.0\nbuild 7\n", "1.0 - build 7 - ");
    expectLine("1.0\nbuild 7", "1.0 - build 7");
    expectLine("\n\n", " -  - ");
    EXPECT_EQ(root::readFile(kBuildFile), "\n\n");
}

TEST_F(Version, everySizeUpToTheLargest)
{
    for (const std::size_t size : {1U, 2U, 100U, 4084U, 4085U}) {
        expectLine(text(size), text(size));
    }
    EXPECT_EQ(ask().answer.size(), kBufferSize);
}

TEST_F(Version, emptyAndTooLargeFilesAreRefused)
{
    for (const std::size_t size : {0U, 4086U, 4096U, 100000U}) {
        SCOPED_TRACE(size);
        root::writeFile(kBuildFile, text(size));
        request::load(frame("vers", 0));
        expectError(0x40000004, {sizeTrace(kBuildFile, size)});
    }
}

TEST_F(Version, bytesComeAsTheyAre)
{
    std::string line = binary(255);
    line.erase(line.find('\n'), 1);
    expectLine(line, line);
}

TEST_F(Version, byteOfAllOnesEndsTheLine)
{
    expectLine("1.0\n\xFF\nbuild 7\n", "1.0 - ");
    expectLine("\xFF", "");
    expectLine("1.0\xFF", "1.0");
}

/// What is answered is never longer than the buffer: the line is cut before the first character (or
/// the first three, for a newline) that would not leave room for the last newline.
TEST_F(Version, lineIsCutWhereNewlinesMakeItTooLong)
{
    std::string hyphens;
    for (int i = 0; i < 1361; ++i) {
        hyphens += " - ";
    }
    expectLine(std::string(1361, '\n'), hyphens);
    for (const std::size_t size : {1362U, 4084U, 4085U}) {
        expectLine(std::string(size, '\n'), hyphens);
    }
    EXPECT_EQ(ask().answer.size(), 4094U);
    expectLine(text(4082) + "\n", text(4082) + " - ");
    EXPECT_EQ(ask().answer.size(), kBufferSize);
    expectLine(text(4083) + "\n", text(4083));
    expectLine(text(4084) + "\n", text(4084));
    expectLine("\n" + text(4084), " - " + text(4082));
    expectLine("\n" + text(4081) + "\nyz", " - " + text(4081));
    expectLine(text(4000) + std::string(85, '\n'), text(4000) + hyphens.substr(0, 28 * 3));
}

TEST_F(Version, fileThatGrowsAfterItWasMeasuredIsCut)
{
    root::writeFile(kBuildFile, "1.0\n");
    request::load(frame("vers", 0));
    watch::after("echo \"file ", [] { root::writeFile(kBuildFile, text(9000)); });
    expectOutcome(request::run(), answer(text(4085)), goodCalls(4, text(4085)));
}

TEST_F(Version, fileThatShrinksAfterItWasMeasuredIsAnsweredAsItIs)
{
    root::writeFile(kBuildFile, text(4000));
    request::load(frame("vers", 0));
    watch::after("echo \"file ", [] { root::writeFile(kBuildFile, ""); });
    expectOutcome(request::run(), answer(""), goodCalls(4000, ""));
}

TEST_F(Version, folderIsAnEmptyLine)
{
    fs::create_directory("/tmp/folder");
    root::writeFile("/tmp/folder/inside", "");
    fs::create_symlink("/tmp/folder", kBuildFile);
    expectOutcome(ask(), answer(""), goodCalls(sizeOf("/tmp/folder"), ""));
}

TEST_F(Version, earlierLongerAnswerLeavesNothingBehind)
{
    expectLine(text(4085), text(4085));
    expectLine("1", "1");
}

TEST_F(Version, missingFile)
{
    request::load(frame("vers", 0));
    expectError(0x40000003, {trace("cannot stat file " + kBuildFile)});
}

TEST_F(Version, unreadableFile)
{
    root::writeFile(kBuildFile, "1.0\n");
    fs::permissions(kBuildFile, fs::perms(0));
    request::load(frame("vers", 0));
    expectError(0x40000001, {sizeTrace(kBuildFile, 4),
                             trace("cannot open file " + kBuildFile + ": Permission denied")});
}

TEST_F(Version, fileThatIsGoneAfterItWasMeasured)
{
    root::writeFile(kBuildFile, "1.0\n");
    request::load(frame("vers", 0));
    watch::after("echo \"file ", [] { fs::remove(kBuildFile); });
    expectError(0x40000001, {sizeTrace(kBuildFile, 4), trace("cannot open file " + kBuildFile +
                                                             ": No such file or directory")});
}

TEST_F(Version, fileThatCannotBeClosedIsNotAnswered)
{
    root::writeFile(kBuildFile, "1.0\n");
    request::load(frame("vers", 0));
    watch::after("echo \"end of file", breakCurrentFile);
    expectError(0x40000002, {sizeTrace(kBuildFile, 4), trace("end of file: idx=16"),
                             trace("cannot close file " + kBuildFile + ": Bad file descriptor")});
}

TEST_F(Version, goodAnswerLeavesTheWorkFileAlone)
{
    root::writeFile(kSavedFile, "somebody's");
    expectLine("1", "1");
    EXPECT_EQ(root::readFile(kSavedFile), "somebody's");
}

// ---- gpvt -------------------------------------------------------------------------------------

class Download : public Transfer {
  protected:
    static std::string head(std::size_t size)
    {
        return "gprt " + le32(2) + "\n" + le32(static_cast<std::uint32_t>(size)) + "\n";
    }

    static Outcome ask() { return request::process(frame("gpvt", 0)); }

    static std::string sendTrace(const std::string& chunk)
    {
        return traceBytes("sending buffer " + chunk);
    }

    static Lines goodCalls(const std::string& content)
    {
        Lines calls = opening("gpvt", 0, {sizeTrace(kPrivateFile, content.size())});
        for (std::size_t start = 0; start < content.size(); start += kBufferSize) {
            calls.push_back(sendTrace(content.substr(start, kBufferSize)));
        }
        return calls;
    }

    static void expectSent(const std::string& content)
    {
        SCOPED_TRACE(content.size());
        root::writeFile(kPrivateFile, content);
        expectOutcome(ask(), head(content.size()) + content, goodCalls(content));
        EXPECT_EQ(root::readFile(kPrivateFile), content);
    }

    /// The loaded request must end with an error, and take the work file away.
    static void expectError(std::uint32_t code, Lines calls)
    {
        root::writeFile(kSavedFile, "left over");
        calls.push_back(exitTrace(code));
        expectOutcome(request::run(), errorAnswer(code), opening("gpvt", 0, calls));
        EXPECT_FALSE(root::exists(kSavedFile));
    }
};

TEST_F(Download, everySizeIsSentWhole)
{
    for (const std::size_t size : {1U, 5U, 1984U, 1985U, 4095U, 4096U, 4097U, 8192U, 10000U}) {
        expectSent(text(size));
    }
}

TEST_F(Download, fiveBytesMakeTwenty)
{
    expectSent("hello");
    EXPECT_EQ(ask().answer.size(), 20U);
}

TEST_F(Download, sizesWithANewlineByteAreSentToo)
{
    for (const std::size_t size : {10U, 266U, 2560U, 2570U}) {
        expectSent(text(size));
    }
}

TEST_F(Download, everyByteValueIsSent)
{
    expectSent(binary(1));
    expectSent(binary(256));
    expectSent(binary(10000));
    expectSent(std::string("text\0more", 9));
}

TEST_F(Download, traceOfAShortChunkShowsNothingOfTheOneBefore)
{
    const std::string content = text(4096) + "end";
    expectSent(content);
    EXPECT_EQ(watch::calls().back(), trace("sending buffer end"));
}

TEST_F(Download, largeFileIsSentChunkByChunk)
{
    expectSent(text(1 << 20));
}

TEST_F(Download, fileThatShrinksWhileItIsSentKeepsItsAnnouncedSize)
{
    const std::string content = text(10000);
    root::writeFile(kPrivateFile, content);
    request::load(frame("gpvt", 0));
    watch::after("echo \"sending buffer ", [] { fs::resize_file(kPrivateFile, 5000); });
    const Outcome outcome = request::run();
    const std::string failure = trace("cannot read file " + kPrivateFile);
    expectOutcome(outcome, head(10000) + content.substr(0, 5000) + std::string(5000, '\0'),
                  opening("gpvt", 0,
                          {sizeTrace(kPrivateFile, 10000), sendTrace(content.substr(0, 4096)),
                           failure, sendTrace(content.substr(4096, 904)), failure, sendTrace("")}));
}

TEST_F(Download, fileThatGrowsWhileItIsSentKeepsItsAnnouncedSize)
{
    const std::string content = text(5000);
    root::writeFile(kPrivateFile, content);
    request::load(frame("gpvt", 0));
    watch::after("echo \"file ", [] { root::writeFile(kPrivateFile, text(9000)); });
    expectOutcome(request::run(), head(5000) + content, goodCalls(content));
}

TEST_F(Download, folderIsSentAsNothing)
{
    fs::create_directories(kPrivateFile + "/inside");
    const std::size_t size = sizeOf(kPrivateFile);
    expectOutcome(ask(), head(size) + std::string(size, '\0'),
                  opening("gpvt", 0,
                          {sizeTrace(kPrivateFile, size), trace("cannot read file " + kPrivateFile),
                           sendTrace("")}));
}

TEST_F(Download, goodAnswerLeavesTheWorkFileAlone)
{
    root::writeFile(kSavedFile, "somebody's");
    expectSent("hello");
    EXPECT_EQ(root::readFile(kSavedFile), "somebody's");
}

TEST_F(Download, fileThatCannotBeClosedHasBeenSentAllTheSame)
{
    root::writeFile(kPrivateFile, "hello");
    request::load(frame("gpvt", 0));
    watch::after("echo \"sending buffer ", breakCurrentFile);
    Lines calls = goodCalls("hello");
    calls.push_back(trace("cannot close file " + kPrivateFile + ": Bad file descriptor"));
    expectOutcome(request::run(), head(5) + "hello", calls);
}

TEST_F(Download, missingFile)
{
    request::load(frame("gpvt", 0));
    expectError(0x70000001, {trace("cannot stat file " + kPrivateFile)});
}

TEST_F(Download, emptyFile)
{
    root::writeFile(kPrivateFile, "");
    request::load(frame("gpvt", 0));
    expectError(0x70000002, {sizeTrace(kPrivateFile, 0)});
}

TEST_F(Download, unreadableFile)
{
    root::writeFile(kPrivateFile, "hello");
    fs::permissions(kPrivateFile, fs::perms(0));
    request::load(frame("gpvt", 0));
    expectError(0x70000003, {sizeTrace(kPrivateFile, 5),
                             trace("cannot open file " + kPrivateFile + ": Permission denied")});
}

TEST_F(Download, fileThatIsGoneAfterItWasMeasured)
{
    root::writeFile(kPrivateFile, "hello");
    request::load(frame("gpvt", 0));
    watch::after("echo \"file ", [] { fs::remove(kPrivateFile); });
    expectError(0x70000003, {sizeTrace(kPrivateFile, 5), trace("cannot open file " + kPrivateFile +
                                                               ": No such file or directory")});
}

// ---- spvt -------------------------------------------------------------------------------------

const std::string kFormer = "the former file\n";
const std::string kKeepTrace =
    trace("file " + kPrivateFile + " already exists --> temporarily saving it as " + kSavedFile);
const std::string kKeep = "mv " + kPrivateFile + " " + kSavedFile;
const std::string kRestore = "mv " + kSavedFile + " " + kPrivateFile;
const std::string kNoEndTrace = trace("Did not receive a newline after " + kPrivateFile + " !");

/// An upload that announces a size.
std::string announce(std::uint32_t size, const std::string& rest)
{
    return frame("spvt", 2, le32(size) + "\n" + rest);
}

std::string upload(const std::string& content)
{
    return announce(static_cast<std::uint32_t>(content.size()), content + "\n");
}

class Upload : public Transfer {
  protected:
    /// The traces of the size.
    static Lines sizeCalls(std::uint32_t size)
    {
        return {traceBytes("_spvt: " + le32(size) + "\n"),
                trace("file size = " + std::to_string(static_cast<std::int32_t>(size)))};
    }

    static Lines concat(std::initializer_list<Lines> parts)
    {
        Lines all;
        for (const Lines& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    static std::string writeTrace(const std::string& content)
    {
        return traceBytes("writing buffer " + content);
    }

    static std::string reason(const std::string& what, const std::string& path,
                              const std::string& error)
    {
        return trace("cannot " + what + " file " + path + ": " + error);
    }

    static void keepFormer() { root::writeFile(kPrivateFile, kFormer); }

    /// Puts a folder where the former file is saved, so that nobody can remove it.
    static void blockSavedFile()
    {
        fs::remove(kSavedFile);
        fs::create_directories(kSavedFile + "/inside");
    }

    /// What the folder of the private file holds, and what of its own an upload has left in /tmp.
    static void expectFiles(const Lines& kept, const Lines& saved)
    {
        Lines names = root::list(root::kStatusFolder);
        std::erase(names, "__bksts");
        EXPECT_EQ(names, kept);
        names = root::list("/tmp");
        std::erase(names, "dbg_vokcontrol.txt");
        std::erase(names, "outbuf7");
        EXPECT_EQ(names, saved);
    }

    /// An upload that was good: the private file is the new one, and no other is left.
    static void expectStored(const Outcome& outcome, const std::string& content, const Lines& calls)
    {
        expectOutcome(outcome, le32(kGood), opening("spvt", 2, calls));
        EXPECT_EQ(root::readFile(kPrivateFile), content);
        expectFiles({"vokcontrol-private.txt"}, {});
    }

    static void expectUpload(const std::string& content)
    {
        SCOPED_TRACE(content.size());
        const auto size = static_cast<std::uint32_t>(content.size());
        const bool isFirst = !root::exists(kPrivateFile);
        expectStored(request::process(upload(content)), content,
                     concat({sizeCalls(size),
                             isFirst ? Lines{} : Lines{kKeepTrace, kKeep},
                             {writeTrace(content)}}));
    }

    /// An upload that failed, with these calls before its last trace.
    static void expectFailure(const Outcome& outcome, std::uint32_t code, const Lines& calls)
    {
        expectOutcome(outcome, le32(code), opening("spvt", 2, concat({calls, {exitTrace(code)}})));
    }

    /// The same, and the former file is back.
    static void expectRestored(const Outcome& outcome, std::uint32_t code, const Lines& calls)
    {
        expectFailure(outcome, code, calls);
        EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
        expectFiles({"vokcontrol-private.txt"}, {});
    }
};

// ---- spvt: good uploads -----------------------------------------------------------------------

TEST_F(Upload, firstFileIsStored)
{
    expectUpload("hello");
}

TEST_F(Upload, formerFileIsReplaced)
{
    keepFormer();
    expectUpload("hello");
    expectUpload("a longer one");
    expectUpload("x");
}

/// The larger ones hold bytes of every value.
TEST_F(Upload, everySizeIsStoredWhole)
{
    for (const std::size_t size :
         {1U,    2U,    9U,    11U,   33U,   127U,  128U,  254U,  255U,  256U,  257U,  1000U, 1984U,
          1985U, 1999U, 2047U, 2048U, 2559U, 2816U, 3000U, 3999U, 4069U, 4070U, 4079U, 4080U}) {
        expectUpload(text(size));
        expectUpload(binary(size));
    }
}

TEST_F(Upload, whatIsStoredComesBack)
{
    const std::string content = binary(4070);
    expectUpload(content);
    EXPECT_EQ(request::process(frame("gpvt", 0)).answer,
              "gprt " + le32(2) + "\n" + le32(4070) + "\n" + content);
}

TEST_F(Upload, traceShowsNothingOfWhatWasInTheBufferBefore)
{
    expectUpload(text(4070));
    expectUpload("x");
}

/// The size's first byte is a double quote here, and the shell cannot read the line with it.
TEST_F(Upload, lostTraceIsNoFailure)
{
    expectUpload(text(34));
    EXPECT_EQ(root::readFile(root::kTraceFile).find("_spvt"), std::string::npos);
}

TEST_F(Upload, bytesBehindTheEndMarkAreNotRead)
{
    keepFormer();
    expectStored(request::process(upload("hello") + "more"), "hello",
                 concat({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

TEST_F(Upload, unreadableFormerFileIsReplaced)
{
    keepFormer();
    fs::permissions(kPrivateFile, fs::perms(0));
    expectUpload("hello");
}

TEST_F(Upload, savedFileOfAnEarlierCrashIsRemoved)
{
    root::writeFile(kSavedFile, "older");
    expectUpload("hello");
    root::writeFile(kSavedFile, "older");
    expectUpload("hello again");
}

TEST_F(Upload, asideFileOfAKilledUploadIsRemoved)
{
    root::writeFile(kAsideFile, "");
    expectUpload("hello");
    root::writeFile(kAsideFile, "former");
    expectUpload("hello again");
}

TEST_F(Upload, childrenThatSomebodyElseReapsAreNoFailure)
{
    keepFormer();
    std::signal(SIGCHLD, SIG_IGN);
    expectUpload("hello");
}

// ---- spvt: malformed sizes --------------------------------------------------------------------

TEST_F(Upload, sizeWithANewlineByteIsRefused)
{
    keepFormer();
    for (const std::uint32_t size : {10U, 266U, 522U, 2560U, 2561U, 2570U, 2815U, 3850U, 0x0A0000U,
                                     0x0A000000U, 0xFFFFFF0AU}) {
        SCOPED_TRACE(size);
        const std::string word = le32(size);
        const std::string line = word.substr(0, word.find('\n') + 1);
        expectRestored(request::process(announce(size, text(4000) + "\n")), kMalformed,
                       {traceBytes("_spvt: " + line)});
    }
}

TEST_F(Upload, sizeThatNoNewlineFollowsIsRefused)
{
    const std::string five = le32(5);
    const Lines lines = {"",
                         "\n",
                         "\x05\n",
                         five.substr(0, 3) + "\n",
                         five,
                         five + "hello\n",
                         five + " \nhello\n",
                         "5\nhello\n"};
    for (const std::string& line : lines) {
        SCOPED_TRACE(line);
        keepFormer();
        const std::size_t end = line.find('\n');
        const std::string first = (end == std::string::npos) ? line : line.substr(0, end + 1);
        expectRestored(request::process(frame("spvt", 2, line)), kMalformed,
                       {traceBytes("_spvt: " + first)});
    }
}

TEST_F(Upload, endlessSizeLineIsRefused)
{
    keepFormer();
    // The line is as long as a request lets it be.
    const std::string line(4086, 'x');
    expectRestored(request::process(frame("spvt", 2, line)), kMalformed,
                   {traceBytes("_spvt: " + line)});
}

TEST_F(Upload, refusalTakesTheSavedFileAway)
{
    root::writeFile(kSavedFile, "older");
    expectFailure(request::process(announce(10, "")), kMalformed, {trace("_spvt: \n")});
    expectFiles({}, {});
}

TEST_F(Upload, emptyFileIsRefused)
{
    keepFormer();
    expectRestored(request::process(announce(0, "\n")), 0x60000002, sizeCalls(0));
}

// ---- spvt: sizes and contents that do not agree -----------------------------------------------

TEST_F(Upload, negativeSizeIsTooLittleData)
{
    for (const std::uint32_t size : {0xFFFFFFFFU, 0x80000000U, 0xFFFFF000U, 0xFFFFEFFFU}) {
        SCOPED_TRACE(size);
        keepFormer();
        const std::string number = std::to_string(static_cast<std::int32_t>(size));
        expectRestored(
            request::process(announce(size, "hello\n")), 0x60000004,
            concat({sizeCalls(size),
                    {kKeepTrace, kKeep,
                     trace("cannot receive " + number + " bytes from file fin_buf"), kRestore}}));
    }
}

TEST_F(Upload, sizeBeyondTheRequestIsTooLittleData)
{
    for (const std::uint32_t size : {4082U, 4095U, 4096U, 4097U, 100000U, 0x7FFFFFFFU}) {
        SCOPED_TRACE(size);
        keepFormer();
        const std::string number = std::to_string(std::min(size, 4096U));
        expectRestored(
            request::process(announce(size, text(4081))), 0x60000004,
            concat({sizeCalls(size),
                    {kKeepTrace, kKeep,
                     trace("cannot receive " + number + " bytes from file fin_buf"), kRestore}}));
    }
}

TEST_F(Upload, withoutAFormerFileTheNewOneStaysAsFarAsItCame)
{
    expectFailure(request::process(announce(4082, "hello\n")), 0x60000004,
                  concat({sizeCalls(4082),
                          {trace("cannot receive 4082 bytes from file fin_buf"), kRestore}}));
    expectFiles({"vokcontrol-private.txt"}, {});
    EXPECT_EQ(root::readFile(kPrivateFile), "");
}

TEST_F(Upload, anythingButANewlineBehindTheDataIsRefused)
{
    for (const std::string& end : Lines{std::string(1, '\0'), "x", "\r\n", " \n", "\xFF\n"}) {
        keepFormer();
        expectRestored(request::process(announce(5, "hello" + end)), 0x60000005,
                       concat({sizeCalls(5),
                               {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    }
}

TEST_F(Upload, requestThatEndsWithTheDataIsRefused)
{
    keepFormer();
    expectRestored(request::process(announce(4081, text(4081))), 0x60000005,
                   concat({sizeCalls(4081),
                           {kKeepTrace, kKeep, writeTrace(text(4081)), kNoEndTrace, kRestore}}));
}

/// Zeros follow what was sent, and so they are what comes where the data ends.
TEST_F(Upload, sizeBeyondTheDataIsRefused)
{
    keepFormer();
    expectRestored(request::process(announce(100, "hello\n")), 0x60000005,
                   concat({sizeCalls(100),
                           {kKeepTrace, kKeep, writeTrace("hello\n"), kNoEndTrace, kRestore}}));
}

TEST_F(Upload, withoutAFormerFileTheNewOneStaysWithoutItsEndMark)
{
    expectFailure(request::process(announce(5, "hellox")), 0x60000005,
                  concat({sizeCalls(5), {writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {});
}

// ---- spvt: disks and folders that fail --------------------------------------------------------

void openFolder(const std::string& folder)
{
    fs::permissions(folder, fs::perms(0755));
}

void closeFolder(const std::string& folder)
{
    fs::permissions(folder, fs::perms(0555));
}

const std::string kDisk = root::kStatusFolder;

void freeDisk()
{
    fs::remove(kDisk + "/filler");
}

TEST_F(Upload, fileThatCannotBeCreatedIsAFailure)
{
    closeFolder(kDisk);
    expectFailure(
        request::process(upload("hello")), 0x60000001,
        concat({sizeCalls(5), {reason("open", kPrivateFile, "Permission denied"), kRestore}}));
    expectFiles({}, {});
    openFolder(kDisk);
    fs::remove_all(kDisk);
    expectFailure(request::process(upload("hello")), 0x60000001,
                  concat({sizeCalls(5),
                          {reason("open", kPrivateFile, "No such file or directory"), kRestore}}));
    fs::create_directories(kDisk + "/__bksts");
}

TEST_F(Upload, formerFileIsBackWhereTheNewOneCannotBeCreated)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after(kKeep, [] { closeFolder(kDisk); });
    watch::after("echo \"cannot open file", [] { openFolder(kDisk); });
    expectRestored(
        request::run(), 0x60000001,
        concat({sizeCalls(5),
                {kKeepTrace, kKeep, reason("open", kPrivateFile, "Permission denied"), kRestore}}));
}

/// The disk fills up behind the former file's back.
TEST_F(Upload, formerFileIsBackWhenTheDiskIsFullAtTheClose)
{
    keepFormer();
    request::load(upload(text(4070)));
    watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
    watch::after("echo \"cannot close file ", freeDisk);
    expectRestored(request::run(), 0x60000006,
                   concat({sizeCalls(4070),
                           {kKeepTrace, kKeep, writeTrace(text(4070)),
                            reason("close", kPrivateFile, "No space left on device"), kRestore}}));
}

TEST_F(Upload, formerFileIsBackWhenTheDiskIsFullAtTheWrite)
{
    keepFormer();
    request::load(upload(text(4070)));
    watch::after("echo \"writing buffer ", [] {
        // The bytes go to the disk as they are written, not at the close.
        std::setvbuf(cmdsvc::currentFile(), nullptr, _IONBF, 0);
        root::fillDisk(kDisk);
    });
    watch::after("echo \"cannot write file ", freeDisk);
    expectRestored(request::run(), 0x60000003,
                   concat({sizeCalls(4070),
                           {kKeepTrace, kKeep, writeTrace(text(4070)),
                            reason("write", kPrivateFile, "No space left on device"), kRestore}}));
}

TEST_F(Upload, formerFileIsBackThoughTheDiskStaysFull)
{
    keepFormer();
    request::load(upload(text(4070)));
    watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
    const Outcome outcome = request::run();
    EXPECT_EQ(outcome.answer, le32(0x60000006));
    freeDisk();
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, formerFileIsBackWhenTheNewOneCannotBeClosed)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after("echo \"writing buffer ", breakCurrentFile);
    expectRestored(request::run(), 0x60000006,
                   concat({sizeCalls(5),
                           {kKeepTrace, kKeep, writeTrace("hello"),
                            reason("close", kPrivateFile, "Bad file descriptor"), kRestore}}));
}

TEST_F(Upload, emptyFolderInTheFilesPlaceGoes)
{
    fs::create_directory(kPrivateFile);
    expectStored(request::process(upload("hello")), "hello",
                 concat({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

TEST_F(Upload, folderInTheFilesPlaceCannotBeRemoved)
{
    fs::create_directories(kPrivateFile + "/inside");
    expectFailure(request::process(upload("hello")), kCannotRemove,
                  concat({sizeCalls(5),
                          {kKeepTrace, kKeep, writeTrace("hello"),
                           reason("remove", kSavedFile, "Directory not empty")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {"vokcontrol.tmp"});
}

TEST_F(Upload, folderInTheFilesPlaceIsBackAfterAFailure)
{
    fs::create_directories(kPrivateFile + "/inside");
    request::load(upload("hello"));
    watch::after(kKeep, [] { closeFolder(kDisk); });
    watch::after("echo \"cannot open file", [] { openFolder(kDisk); });
    expectFailure(
        request::run(), 0x60000001,
        concat({sizeCalls(5),
                {kKeepTrace, kKeep, reason("open", kPrivateFile, "Permission denied"), kRestore}}));
    EXPECT_TRUE(root::exists(kPrivateFile + "/inside"));
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, savedFileThatCannotBeRemovedIsAFailure)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after("echo \"writing buffer ", [] { closeFolder("/tmp"); });
    const Outcome outcome = request::run();
    openFolder("/tmp");
    expectFailure(outcome, kCannotRemove,
                  concat({sizeCalls(5),
                          {kKeepTrace, kKeep, writeTrace("hello"),
                           reason("remove", kSavedFile, "Permission denied")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    EXPECT_EQ(root::readFile(kSavedFile), kFormer);
}

TEST_F(Upload, folderInTheSavedFilesPlaceIsAFailure)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after("echo \"writing buffer ", blockSavedFile);
    expectFailure(request::run(), kCannotRemove,
                  concat({sizeCalls(5),
                          {kKeepTrace, kKeep, writeTrace("hello"),
                           reason("remove", kSavedFile, "Directory not empty")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
}

// ---- spvt: an mv that fails -------------------------------------------------------------------

/// Has mv do this. The real one is at /usr/bin/mv.
void stubMove(const std::string& script)
{
    root::stub("mv", script);
}

/// The same on the way back from /tmp alone.
std::string onTheWayBack(const std::string& script)
{
    return "case $1 in /tmp/*) " + script + " ;; esac; exec /usr/bin/mv \"$@\"";
}

/// Each way in which mv does not bring the former file to its place.
const Lines kFailingMoves = {
    "exit 1",
    "exit 127",
    "kill -9 $$",
    "head -c 3 \"$1\" >\"$2\"; exit 1",
    "cp \"$1\" \"$2\"; exit 1",
};

TEST_F(Upload, fileIsReplacedWithoutMv)
{
    for (const std::string& script : kFailingMoves) {
        SCOPED_TRACE(script);
        stubMove(script);
        keepFormer();
        expectUpload("hello");
    }
}

TEST_F(Upload, fileIsReplacedWhereNoShellCanStart)
{
    keepFormer();
    request::load(upload("hello"));
    watch::answer(kKeep, -1, EAGAIN);
    expectStored(request::run(), "hello",
                 concat({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

TEST_F(Upload, formerFileIsBackWithoutMv)
{
    for (const std::string& script : kFailingMoves) {
        SCOPED_TRACE(script);
        stubMove(script);
        keepFormer();
        expectRestored(request::process(announce(5, "hellox")), 0x60000005,
                       concat({sizeCalls(5),
                               {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    }
}

TEST_F(Upload, formerFileIsBackThoughMvFailsOnTheWayBackAlone)
{
    for (const std::string& script : kFailingMoves) {
        SCOPED_TRACE(script);
        stubMove(onTheWayBack(script));
        keepFormer();
        expectRestored(request::process(announce(5, "hellox")), 0x60000005,
                       concat({sizeCalls(5),
                               {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    }
}

TEST_F(Upload, failureBringsBackWhatAKilledUploadHadPutAside)
{
    root::writeFile(kPrivateFile, "a part");
    root::writeFile(kAsideFile, kFormer);
    expectFailure(
        request::process(announce(5, "hellox")), 0x60000005,
        concat({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    EXPECT_FALSE(root::exists(kAsideFile));
}

// ---- spvt: a process that is killed -----------------------------------------------------------

const std::string kNew = text(4070);

/// A request, and how what is around it behaves.
struct Kind {
    const char* name;
    std::string request;
    std::string mv = {};
    std::function<void()> around = [] {};
    bool hasFormer = true;
};

const std::vector<Kind> kKinds = {
    {"good", upload(kNew)},
    {"malformed size", announce(10, kNew)},
    {"empty", announce(0, "\n")},
    {"negative size", announce(0xFFFFFFFF, kNew + "\n")},
    {"too little data", announce(4082, kNew + "\n")},
    {"wrong end mark", announce(4070, kNew + "x")},
    {"cannot be created", upload(kNew), "",
     [] {
         watch::after(kKeep, [] { closeFolder(kDisk); });
         watch::after("echo \"cannot open file", [] { openFolder(kDisk); });
     }},
    {"disk full at the write", upload(kNew), "",
     [] {
         watch::after("echo \"writing buffer ", [] {
             std::setvbuf(cmdsvc::currentFile(), nullptr, _IONBF, 0);
             root::fillDisk(kDisk);
         });
         watch::after("echo \"cannot write file ", freeDisk);
     }},
    {"disk full at the close", upload(kNew), "",
     [] {
         watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
         watch::after("echo \"cannot close file ", freeDisk);
     }},
    {"saved file cannot be removed", upload(kNew), "",
     [] { watch::after("echo \"writing buffer ", [] { closeFolder("/tmp"); }); }},
    {"mv fails", upload(kNew), "exit 1"},
    {"mv copies a part", upload(kNew), "head -c 3 \"$1\" >\"$2\"; exit 1"},
    {"mv only copies", upload(kNew), "cp \"$1\" \"$2\"; exit 1"},
    {"mv fails, too little data", announce(4082, kNew + "\n"), "exit 1"},
    {"mv fails, wrong end mark", announce(4070, kNew + "x"), "exit 1"},
    {"mv copies a part, wrong end mark", announce(4070, kNew + "x"),
     "head -c 3 \"$1\" >\"$2\"; exit 1"},
    {"mv only copies, wrong end mark", announce(4070, kNew + "x"), "cp \"$1\" \"$2\"; exit 1"},
    {"mv fails, disk full at the close", upload(kNew), "exit 1",
     [] {
         watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
         watch::after("echo \"cannot close file ", freeDisk);
     }},
};

class KilledUpload : public Upload {
  protected:
    /// The starting point of each upload.
    static void prepare(const Kind& kind)
    {
        openFolder("/tmp");
        openFolder(kDisk);
        freeDisk();
        fs::remove_all(kSavedFile);
        fs::remove_all(kAsideFile);
        fs::remove_all(kPrivateFile);
        if (kind.hasFormer) {
            keepFormer();
        }
        if (!kind.mv.empty()) {
            stubMove(kind.mv);
        }
    }

    /// Uploads in a process that lives through so many of its calls.
    /// @return whether it came to its end
    static bool survives(const Kind& kind, int calls)
    {
        prepare(kind);
        const pid_t child = ::fork();
        if (child == 0) {
            request::load(kind.request);
            kind.around();
            callsToLive = calls;
            process_command(7);
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) || WTERMSIG(status) == SIGKILL);
        return WIFEXITED(status);
    }

    /// Kills an upload behind each of its calls, one after the other.
    static void expectWholeFile(const Kind& kind)
    {
        int calls = 0;
        bool isFinished = false;
        while (!isFinished) {
            isFinished = survives(kind, calls);
            EXPECT_TRUE(isWholeFileThere() || !kind.hasFormer)
                << kind.name << ", killed behind call " << calls << ", "
                << testing::PrintToString(watch::calls());
            expectWholeFileIsSent(kind, calls);
            ++calls;
        }
        // Opening the answer, at least three traces, and writing and closing the answer.
        EXPECT_GE(calls, 6) << kind.name;
        fs::remove("/stubs/mv");
    }

    /// The next download, once the disk is well again, gives no part of a file.
    static void expectWholeFileIsSent(const Kind& kind, int calls)
    {
        openFolder("/tmp");
        openFolder(kDisk);
        freeDisk();
        const std::string answer = request::process(frame("gpvt", 0)).answer;
        cmdsvc::closeCurrentFile();
        const std::string before = kind.hasFormer ? sent(kFormer) : "erro " + le32(0x70000001);
        EXPECT_TRUE(answer == before || answer == sent(kNew))
            << kind.name << ", killed behind call " << calls << ": " << answer.substr(0, 60);
        EXPECT_FALSE(root::exists(kAsideFile));
    }

    /// What a download answers.
    static std::string sent(const std::string& content)
    {
        return "gprt " + le32(2) + "\n" + le32(static_cast<std::uint32_t>(content.size())) + "\n" +
               content;
    }

    static bool isWholeFileThere()
    {
        return std::ranges::any_of(std::array{kPrivateFile, kSavedFile, kAsideFile},
                                   [](const std::string& path) {
                                       const std::string content = root::readFile(path);
                                       return content == kFormer || content == kNew;
                                   });
    }
};

TEST_F(KilledUpload, formerOrNewFileIsWholeWheneverTheProcessIsKilled)
{
    for (const Kind& kind : kKinds) {
        expectWholeFile(kind);
    }
}

TEST_F(KilledUpload, formerOrNewFileIsWholeThoughItCannotBePutBack)
{
    expectWholeFile({"mv fails on the way back", announce(4082, kNew), onTheWayBack("exit 1")});
    expectWholeFile({"disk stays full", upload(kNew), "", [] {
                         watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
                     }});
}

TEST_F(KilledUpload, firstFileIsWholeOrNotThere)
{
    expectWholeFile({.name = "first", .request = upload(kNew), .hasFormer = false});
}

/// Each kind ends as it is meant to: no walk has passed because all its uploads were good.
TEST_F(KilledUpload, kindsAreWhatTheyAreCalled)
{
    const std::vector<std::uint32_t> codes = {
        kGood,      kMalformed, 0x60000002, 0x60000004,    0x60000004, 0x60000005,
        0x60000001, 0x60000003, 0x60000006, kCannotRemove, kGood,      kGood,
        kGood,      0x60000004, 0x60000005, 0x60000005,    0x60000005, 0x60000006};
    ASSERT_EQ(codes.size(), kKinds.size());
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        EXPECT_TRUE(survives(kKinds[i], -1));
        EXPECT_EQ(root::readFile("/tmp/outbuf7"), le32(codes[i])) << kKinds[i].name;
        EXPECT_EQ(root::readFile(kPrivateFile),
                  (codes[i] == kGood || codes[i] == kCannotRemove) ? kNew : kFormer)
            << kKinds[i].name;
        fs::remove("/stubs/mv");
    }
}

} // namespace
