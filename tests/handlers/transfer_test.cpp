// SPDX-License-Identifier: MIT
#include "handlers/transfer.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/faults.h"
#include "tests/support/request.h"

namespace fs = std::filesystem;

namespace {

using request::exitTrace;
using request::frame;
using request::kCannotRemove;
using request::kGood;
using request::kMalformed;
using request::Lines;
using request::Outcome;
using root::closeFolder;
using root::join;
using root::le32;
using root::openFolder;
using root::sizeTrace;
using root::trace;

const std::string kBuildFile = "/etc/buildinfo.txt";
const std::string kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
const std::string& kSavedFile = request::kWorkFile;

constexpr std::size_t kBufferSize = 4096;

std::string errorAnswer(std::uint32_t code)
{
    return "erro " + le32(code);
}

/// The trace of bytes as text: up to their first zero, and at most 1999 characters.
std::string traceBytes(const std::string& message)
{
    constexpr std::size_t kLongestMessage = 1999;
    return trace(message.substr(0, std::min(message.find('\0'), kLongestMessage)));
}

/// Harmless text of a size, in which two neighbouring chunks always differ.
std::string text(std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += static_cast<char>('a' + i % 23);
    }
    return text;
}

/// Bytes of every value, a zero first, so that a trace shows no byte.
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

class Transfer : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        fs::remove_all(kBuildFile);
    }

    void TearDown() override
    {
        fs::remove_all(kBuildFile);
        request::Test::TearDown();
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
        return {sizeTrace(kBuildFile, fileSize),
                trace("end of file: idx=" + std::to_string(10 + line.size()))};
    }

    static void expectLine(const std::string& content, const std::string& line)
    {
        SCOPED_TRACE(content.size());
        root::writeFile(kBuildFile, content);
        expectReply(ask(), answer(line), goodCalls(content.size(), line));
    }

    /// The loaded request must end with an error, and take the work file away.
    static void expectError(std::uint32_t code, Lines calls)
    {
        root::writeFile(kSavedFile, "left over");
        calls.push_back(exitTrace(code));
        expectReply(request::run(), errorAnswer(code), calls);
        EXPECT_EQ(request::leftBehind(), Lines{});
    }
};

TEST_F(Version, linesAreJoined)
{
    expectLine("1.0\nbuild 7\n", "1.0 - build 7 - ");
    expectLine("1.0\nbuild 7", "1.0 - build 7");
    expectLine("\n\n", " -  - ");
    EXPECT_EQ(root::readFile(kBuildFile), "\n\n");
}

TEST_F(Version, everySizeUpToTheLargestIsAnswered)
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

TEST_F(Version, bytesAreAnsweredUnchanged)
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

/// The answer is never longer than the buffer: the line is cut before the first character (or the
/// three for a newline) that would leave no room for the last newline.
TEST_F(Version, lineIsCutIfNewlinesMakeItTooLong)
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
    expectReply(request::run(), answer(text(4085)), goodCalls(4, text(4085)));
}

TEST_F(Version, fileThatShrinksAfterItWasMeasuredIsAnsweredShorter)
{
    root::writeFile(kBuildFile, text(4000));
    request::load(frame("vers", 0));
    watch::after("echo \"file ", [] { root::writeFile(kBuildFile, ""); });
    expectReply(request::run(), answer(""), goodCalls(4000, ""));
}

TEST_F(Version, folderIsAnEmptyLine)
{
    fs::create_directory("/tmp/folder");
    root::writeFile("/tmp/folder/inside", "");
    fs::create_symlink("/tmp/folder", kBuildFile);
    expectReply(ask(), answer(""), goodCalls(sizeOf("/tmp/folder"), ""));
}

TEST_F(Version, earlierLongerAnswerLeavesNothing)
{
    expectLine(text(4085), text(4085));
    expectLine("1", "1");
}

TEST_F(Version, missingFileIsAnError)
{
    request::load(frame("vers", 0));
    expectError(0x40000003, {trace("cannot stat file " + kBuildFile)});
}

TEST_F(Version, unreadableFileIsAnError)
{
    root::writeFile(kBuildFile, "1.0\n");
    fs::permissions(kBuildFile, fs::perms(0));
    request::load(frame("vers", 0));
    expectError(0x40000001, {sizeTrace(kBuildFile, 4),
                             trace("cannot open file " + kBuildFile + ": Permission denied")});
}

TEST_F(Version, fileRemovedAfterItWasMeasuredIsAnError)
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
    const faults::Guard fault = faults::failFclose(kBuildFile);
    expectError(0x40000002,
                {sizeTrace(kBuildFile, 4), trace("end of file: idx=16"),
                 trace("cannot close file " + kBuildFile + ": " + root::kBadDescriptor)});
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
        Lines calls = {sizeTrace(kPrivateFile, content.size())};
        for (std::size_t start = 0; start < content.size(); start += kBufferSize) {
            calls.push_back(sendTrace(content.substr(start, kBufferSize)));
        }
        return calls;
    }

    static void expectSent(const std::string& content)
    {
        SCOPED_TRACE(content.size());
        root::writeFile(kPrivateFile, content);
        expectReply(ask(), head(content.size()) + content, goodCalls(content));
        EXPECT_EQ(root::readFile(kPrivateFile), content);
    }

    /// The loaded request must end with an error, and take the work file away.
    static void expectError(std::uint32_t code, Lines calls)
    {
        root::writeFile(kSavedFile, "left over");
        calls.push_back(exitTrace(code));
        expectReply(request::run(), errorAnswer(code), calls);
        EXPECT_FALSE(root::exists(kSavedFile));
    }
};

TEST_F(Download, everySizeIsSentWhole)
{
    for (const std::size_t size : {1U, 5U, 1984U, 1985U, 4095U, 4096U, 4097U, 8192U, 10000U}) {
        expectSent(text(size));
    }
}

TEST_F(Download, answerToFiveBytesHasTwenty)
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

TEST_F(Download, traceOfAShortChunkShowsNothingOfThePreviousOne)
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
    expectReply(outcome, head(10000) + content.substr(0, 5000) + std::string(5000, '\0'),
                {sizeTrace(kPrivateFile, 10000), sendTrace(content.substr(0, 4096)), failure,
                 sendTrace(content.substr(4096, 904)), failure, sendTrace("")});
}

TEST_F(Download, fileThatGrowsWhileItIsSentKeepsItsAnnouncedSize)
{
    const std::string content = text(5000);
    root::writeFile(kPrivateFile, content);
    request::load(frame("gpvt", 0));
    watch::after("echo \"file ", [] { root::writeFile(kPrivateFile, text(9000)); });
    expectReply(request::run(), head(5000) + content, goodCalls(content));
}

TEST_F(Download, folderIsSentAsNothing)
{
    fs::create_directories(kPrivateFile + "/inside");
    const std::size_t size = sizeOf(kPrivateFile);
    expectReply(
        ask(), head(size) + std::string(size, '\0'),
        {sizeTrace(kPrivateFile, size), trace("cannot read file " + kPrivateFile), sendTrace("")});
}

TEST_F(Download, goodAnswerLeavesTheWorkFileAlone)
{
    root::writeFile(kSavedFile, "somebody's");
    expectSent("hello");
    EXPECT_EQ(root::readFile(kSavedFile), "somebody's");
}

TEST_F(Download, fileThatCannotBeClosedIsSent)
{
    root::writeFile(kPrivateFile, "hello");
    request::load(frame("gpvt", 0));
    const faults::Guard fault = faults::failFclose(kPrivateFile);
    Lines calls = goodCalls("hello");
    calls.push_back(trace("cannot close file " + kPrivateFile + ": " + root::kBadDescriptor));
    expectReply(request::run(), head(5) + "hello", calls);
}

TEST_F(Download, missingFileIsAnError)
{
    request::load(frame("gpvt", 0));
    expectError(0x70000001, {trace("cannot stat file " + kPrivateFile)});
}

TEST_F(Download, emptyFileIsAnError)
{
    root::writeFile(kPrivateFile, "");
    request::load(frame("gpvt", 0));
    expectError(0x70000002, {sizeTrace(kPrivateFile, 0)});
}

TEST_F(Download, unreadableFileIsAnError)
{
    root::writeFile(kPrivateFile, "hello");
    fs::permissions(kPrivateFile, fs::perms(0));
    request::load(frame("gpvt", 0));
    expectError(0x70000003, {sizeTrace(kPrivateFile, 5),
                             trace("cannot open file " + kPrivateFile + ": Permission denied")});
}

TEST_F(Download, fileRemovedAfterItWasMeasuredIsAnError)
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

    /// Compares the files in the folder of the private file, and those that an upload left in /tmp.
    static void expectFiles(const Lines& kept, const Lines& saved)
    {
        Lines names = root::list(root::kStatusFolder);
        std::erase(names, "__bksts");
        EXPECT_EQ(names, kept);
        EXPECT_EQ(request::leftBehind(), saved);
    }

    /// Expects a good upload: the private file is the new one, and no other file is left.
    static void expectStored(const Outcome& outcome, const std::string& content, const Lines& calls)
    {
        expectReply(outcome, le32(kGood), calls);
        EXPECT_EQ(root::readFile(kPrivateFile), content);
        expectFiles({"vokcontrol-private.txt"}, {});
    }

    static void expectUpload(const std::string& content)
    {
        SCOPED_TRACE(content.size());
        const auto size = static_cast<std::uint32_t>(content.size());
        const bool isFirst = !root::exists(kPrivateFile);
        expectStored(request::process(upload(content)), content,
                     join({sizeCalls(size),
                           isFirst ? Lines{} : Lines{kKeepTrace, kKeep},
                           {writeTrace(content)}}));
    }

    /// Expects a failed upload, with these calls before its last trace.
    static void expectFailure(const Outcome& outcome, std::uint32_t code, const Lines& calls)
    {
        expectReply(outcome, le32(code), join({calls, {exitTrace(code)}}));
    }

    /// The same, with the former file restored.
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

TEST_F(Upload, storedFileCanBeFetched)
{
    const std::string content = binary(4070);
    expectUpload(content);
    EXPECT_EQ(request::process(frame("gpvt", 0)).answer,
              "gprt " + le32(2) + "\n" + le32(4070) + "\n" + content);
}

TEST_F(Upload, traceShowsNothingOfAnEarlierRequest)
{
    expectUpload(text(4070));
    expectUpload("x");
}

/// The size's first byte is a double quote here, and the shell cannot parse the line with it.
TEST_F(Upload, lostTraceIsNoFailure)
{
    expectUpload(text(34));
    EXPECT_EQ(root::readFile(root::kTraceFile).find("_spvt"), std::string::npos);
}

TEST_F(Upload, bytesAfterTheLastNewlineAreNotRead)
{
    keepFormer();
    expectStored(request::process(upload("hello") + "more"), "hello",
                 join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

/// Neither mv, which must copy here, nor this process may read or write it.
TEST_F(Upload, unreadableFormerFileStays)
{
    keepFormer();
    fs::permissions(kPrivateFile, fs::perms(0));
    expectFailure(
        request::process(upload("hello")), 0x60000001,
        join({sizeCalls(5),
              {kKeepTrace, kKeep, reason("open", kPrivateFile, "Permission denied"), kRestore}}));
    fs::permissions(kPrivateFile, fs::perms(0600));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, savedFileOfAnEarlierCrashIsRemoved)
{
    root::writeFile(kSavedFile, "older");
    expectUpload("hello");
    root::writeFile(kSavedFile, "older");
    expectUpload("hello again");
}

TEST_F(Upload, childrenReapedElsewhereAreNoFailure)
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

TEST_F(Upload, sizeWithoutANewlineIsRefused)
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
    // The longest line in a request.
    const std::string line(4086, 'x');
    expectRestored(request::process(frame("spvt", 2, line)), kMalformed,
                   {traceBytes("_spvt: " + line)});
}

TEST_F(Upload, refusalRemovesTheSavedFile)
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
            join({sizeCalls(size),
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
            join({sizeCalls(size),
                  {kKeepTrace, kKeep,
                   trace("cannot receive " + number + " bytes from file fin_buf"), kRestore}}));
    }
}

TEST_F(Upload, withoutAFormerFileAnIncompleteNewOneStays)
{
    expectFailure(
        request::process(announce(4082, "hello\n")), 0x60000004,
        join({sizeCalls(4082), {trace("cannot receive 4082 bytes from file fin_buf"), kRestore}}));
    expectFiles({"vokcontrol-private.txt"}, {});
    EXPECT_EQ(root::readFile(kPrivateFile), "");
}

TEST_F(Upload, anyByteExceptANewlineAfterTheDataIsRefused)
{
    for (const std::string& end : Lines{std::string(1, '\0'), "x", "\r\n", " \n", "\xFF\n"}) {
        keepFormer();
        expectRestored(
            request::process(announce(5, "hello" + end)), 0x60000005,
            join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    }
}

TEST_F(Upload, requestThatEndsWithTheDataIsRefused)
{
    keepFormer();
    expectRestored(request::process(announce(4081, text(4081))), 0x60000005,
                   join({sizeCalls(4081),
                         {kKeepTrace, kKeep, writeTrace(text(4081)), kNoEndTrace, kRestore}}));
}

/// Zeros follow the sent bytes, so a zero follows the data.
TEST_F(Upload, sizeBeyondTheDataIsRefused)
{
    keepFormer();
    expectRestored(
        request::process(announce(100, "hello\n")), 0x60000005,
        join({sizeCalls(100), {kKeepTrace, kKeep, writeTrace("hello\n"), kNoEndTrace, kRestore}}));
}

TEST_F(Upload, withoutAFormerFileTheNewOneStaysEvenIfItsNewlineIsMissing)
{
    expectFailure(request::process(announce(5, "hellox")), 0x60000005,
                  join({sizeCalls(5), {writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {});
}

// ---- spvt: disks and folders that fail --------------------------------------------------------

const std::string kDisk = root::kStatusFolder;

TEST_F(Upload, fileThatCannotBeCreatedIsAFailure)
{
    closeFolder(kDisk);
    expectFailure(
        request::process(upload("hello")), 0x60000001,
        join({sizeCalls(5), {reason("open", kPrivateFile, "Permission denied"), kRestore}}));
    expectFiles({}, {});
    openFolder(kDisk);
    fs::remove_all(kDisk);
    expectFailure(request::process(upload("hello")), 0x60000001,
                  join({sizeCalls(5),
                        {reason("open", kPrivateFile, "No such file or directory"), kRestore}}));
    fs::create_directories(kDisk + "/__bksts");
}

TEST_F(Upload, formerFileIsBackIfTheNewOneCannotBeCreated)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after(kKeep, [] { closeFolder(kDisk); });
    watch::after("echo \"cannot open file", [] { openFolder(kDisk); });
    expectRestored(
        request::run(), 0x60000001,
        join({sizeCalls(5),
              {kKeepTrace, kKeep, reason("open", kPrivateFile, "Permission denied"), kRestore}}));
}

/// The disk fills up after the former file has been moved away.
TEST_F(Upload, formerFileIsBackIfTheDiskIsFullAtTheClose)
{
    keepFormer();
    request::load(upload(text(4070)));
    watch::after("echo \"writing buffer ", [] { root::fillDisk(kDisk); });
    watch::after("echo \"cannot close file ", [] { root::freeDisk(kDisk); });
    expectRestored(request::run(), 0x60000006,
                   join({sizeCalls(4070),
                         {kKeepTrace, kKeep, writeTrace(text(4070)),
                          reason("close", kPrivateFile, "No space left on device"), kRestore}}));
}

TEST_F(Upload, formerFileIsBackIfTheDiskIsFullAtTheWrite)
{
    keepFormer();
    request::load(upload(text(4070)));
    const faults::Guard fault = faults::failFwrite(kPrivateFile);
    expectRestored(request::run(), 0x60000003,
                   join({sizeCalls(4070),
                         {kKeepTrace, kKeep, writeTrace(text(4070)),
                          reason("write", kPrivateFile, "No space left on device"), kRestore}}));
}

TEST_F(Upload, formerFileIsBackIfTheNewOneCannotBeClosed)
{
    keepFormer();
    request::load(upload("hello"));
    const faults::Guard fault = faults::failFclose(kPrivateFile);
    expectRestored(request::run(), 0x60000006,
                   join({sizeCalls(5),
                         {kKeepTrace, kKeep, writeTrace("hello"),
                          reason("close", kPrivateFile, root::kBadDescriptor), kRestore}}));
}

TEST_F(Upload, emptyFolderInTheFilesPlaceIsRemoved)
{
    fs::create_directory(kPrivateFile);
    expectStored(request::process(upload("hello")), "hello",
                 join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

TEST_F(Upload, folderInTheFilesPlaceCannotBeRemoved)
{
    fs::create_directories(kPrivateFile + "/inside");
    expectFailure(request::process(upload("hello")), kCannotRemove,
                  join({sizeCalls(5),
                        {kKeepTrace, kKeep, writeTrace("hello"),
                         reason("remove", kSavedFile, "Directory not empty")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {kSavedFile});
}

TEST_F(Upload, folderInTheFilesPlaceIsBackAfterAFailure)
{
    fs::create_directories(kPrivateFile + "/inside");
    request::load(upload("hello"));
    watch::after(kKeep, [] { closeFolder(kDisk); });
    watch::after("echo \"cannot open file", [] { openFolder(kDisk); });
    expectFailure(
        request::run(), 0x60000001,
        join({sizeCalls(5),
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
                  join({sizeCalls(5),
                        {kKeepTrace, kKeep, writeTrace("hello"),
                         reason("remove", kSavedFile, "Permission denied")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    EXPECT_EQ(root::readFile(kSavedFile), kFormer);
}

TEST_F(Upload, folderInTheSavedFilesPlaceIsAFailure)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after("echo \"writing buffer ", [] { root::replaceByFolder(kSavedFile); });
    expectFailure(request::run(), kCannotRemove,
                  join({sizeCalls(5),
                        {kKeepTrace, kKeep, writeTrace("hello"),
                         reason("remove", kSavedFile, "Directory not empty")}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
}

TEST_F(Upload, closeIsCheckedBeforeTheLastNewline)
{
    keepFormer();
    request::load(announce(5, "hellox"));
    const faults::Guard fault = faults::failFclose(kPrivateFile);
    expectRestored(request::run(), 0x60000006,
                   join({sizeCalls(5),
                         {kKeepTrace, kKeep, writeTrace("hello"),
                          reason("close", kPrivateFile, root::kBadDescriptor), kRestore}}));
}

/// Records the open files each time the former file is moved back.
class WayBack {
  public:
    WayBack()
    {
        watch::after(kRestore, [this] { seen_.push_back(filesOpen()); });
    }

    [[nodiscard]] const std::vector<Lines>& seen() const { return seen_; }

  private:
    std::vector<Lines> seen_;

    /// Without the answer.
    static Lines filesOpen()
    {
        Lines paths = root::openFiles();
        std::erase(paths, "/tmp/outbuf7");
        return paths;
    }
};

TEST_F(Upload, newFileIsClosedBeforeTheFormerOneIsRestored)
{
    const std::vector<Lines> once = {{}};
    for (const std::string& request : {announce(4082, "hello\n"), announce(5, "hellox")}) {
        keepFormer();
        request::load(request);
        const WayBack wayBack;
        static_cast<void>(request::run());
        EXPECT_EQ(wayBack.seen(), once);
        EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
    }
}

TEST_F(Upload, newFileThatCannotBeWrittenIsClosedBeforeTheFormerOneIsRestored)
{
    keepFormer();
    request::load(upload(text(4070)));
    const WayBack wayBack;
    const faults::Guard fault = faults::failFwrite(kPrivateFile);
    EXPECT_EQ(request::run().answer, le32(0x60000003));
    EXPECT_EQ(wayBack.seen(), (std::vector<Lines>{{}}));
    EXPECT_EQ(root::readFile(kPrivateFile), kFormer);
}

// ---- spvt: an mv that fails -------------------------------------------------------------------

/// Each way in which mv does not move the former file: what mv does, and the private file after mv
/// was run again to restore it.
struct FailingMove {
    std::string script;
    std::string broughtBack;
};

const std::vector<FailingMove> kFailingMoves = {
    {"exit 1", "hello"},
    {"exit 127", "hello"},
    {"kill -9 $$", "hello"},
    {"head -c 3 \"$1\" >\"$2\"; exit 1", kFormer.substr(0, 3)},
    {"cp \"$1\" \"$2\"; exit 1", kFormer},
};

TEST_F(Upload, fileThatCannotBeMovedIsWrittenOver)
{
    for (const FailingMove& move : kFailingMoves) {
        SCOPED_TRACE(move.script);
        root::stub("mv", move.script);
        keepFormer();
        expectUpload("hello");
    }
}

TEST_F(Upload, fileIsWrittenOverIfNoShellCanStart)
{
    keepFormer();
    request::load(upload("hello"));
    watch::answer(kKeep, -1, EAGAIN);
    expectStored(request::run(), "hello",
                 join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello")}}));
}

TEST_F(Upload, formerFileIsRestoredOnlyByMv)
{
    for (const FailingMove& move : kFailingMoves) {
        SCOPED_TRACE(move.script);
        root::stub("mv", move.script);
        keepFormer();
        expectFailure(
            request::process(announce(5, "hellox")), 0x60000005,
            join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
        EXPECT_EQ(root::readFile(kPrivateFile), move.broughtBack);
        expectFiles({"vokcontrol-private.txt"}, {});
    }
}

TEST_F(Upload, formerFileIsLostIfItCannotBeRestored)
{
    root::stub("mv", "case $1 in /tmp/*) exit 1 ;; esac; exec /usr/bin/mv \"$@\"");
    keepFormer();
    expectFailure(
        request::process(announce(5, "hellox")), 0x60000005,
        join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, savedFileOfAnEarlierCrashIsRestoredByAFailure)
{
    root::writeFile(kSavedFile, "older");
    expectFailure(request::process(announce(5, "hellox")), 0x60000005,
                  join({sizeCalls(5), {writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(root::readFile(kPrivateFile), "older");
    expectFiles({"vokcontrol-private.txt"}, {});
}

// ---- spvt: something else in the file's place -------------------------------------------------

/// The calls before the failure if the private file cannot be opened.
Lines cannotOpen(const std::string& error)
{
    return {kKeepTrace, kKeep, trace("cannot open file " + kPrivateFile + ": " + error), kRestore};
}

TEST_F(Upload, folderThatCannotBeMovedStays)
{
    root::stub("mv", "exit 1");
    fs::create_directories(kPrivateFile + "/inside");
    expectFailure(request::process(upload("hello")), 0x60000001,
                  join({sizeCalls(5), cannotOpen("Is a directory")}));
    EXPECT_EQ(root::list(kPrivateFile), Lines{"inside"});
    expectFiles({"vokcontrol-private.txt"}, {});
}

/// The real mv moves no folder over a file, but moves a file into a folder.
TEST_F(Upload, savedFileOfAnEarlierCrashIsMovedIntoAFolderInTheFilesPlace)
{
    root::writeFile(kSavedFile, "older");
    fs::create_directory(kPrivateFile);
    expectFailure(request::process(upload("hello")), 0x60000001,
                  join({sizeCalls(5), cannotOpen("Is a directory")}));
    EXPECT_EQ(root::readFile(kPrivateFile + "/vokcontrol.tmp"), "older");
    expectFiles({"vokcontrol-private.txt"}, {});
}

/// A socket can be made here without privileges, and cannot be opened, like a device that is
/// missing.
TEST_F(Upload, deviceThatCannotBeMovedStays)
{
    root::stub("mv", "exit 1");
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    kPrivateFile.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    expectFailure(request::process(upload("hello")), 0x60000001,
                  join({sizeCalls(5), cannotOpen("No such device or address")}));
    EXPECT_TRUE(fs::is_socket(kPrivateFile));
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, deviceThatCannotBeMovedIsWritten)
{
    root::stub("mv", "exit 1");
    fs::create_symlink("/dev/full", kPrivateFile);
    expectFailure(request::process(upload("hello")), 0x60000006,
                  join({sizeCalls(5),
                        {kKeepTrace, kKeep, writeTrace("hello"),
                         reason("close", kPrivateFile, "No space left on device"), kRestore}}));
    EXPECT_EQ(fs::read_symlink(kPrivateFile), "/dev/full");
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, linkIsReplacedAndItsTargetStays)
{
    root::writeFile("/stubs/elsewhere", "somebody's");
    fs::create_symlink("/stubs/elsewhere", kPrivateFile);
    expectUpload("hello");
    EXPECT_FALSE(fs::is_symlink(kPrivateFile));
    EXPECT_EQ(root::readFile("/stubs/elsewhere"), "somebody's");
}

TEST_F(Upload, linkIsBackAfterAFailure)
{
    root::writeFile("/stubs/elsewhere", kFormer);
    fs::create_symlink("/stubs/elsewhere", kPrivateFile);
    expectRestored(
        request::process(announce(5, "hellox")), 0x60000005,
        join({sizeCalls(5), {kKeepTrace, kKeep, writeTrace("hello"), kNoEndTrace, kRestore}}));
    EXPECT_EQ(fs::read_symlink(kPrivateFile), "/stubs/elsewhere");
}

TEST_F(Upload, linkThatCannotBeMovedIsWrittenThrough)
{
    root::stub("mv", "exit 1");
    root::writeFile("/stubs/elsewhere", "somebody's");
    fs::create_symlink("/stubs/elsewhere", kPrivateFile);
    expectUpload("hello");
    EXPECT_EQ(fs::read_symlink(kPrivateFile), "/stubs/elsewhere");
    EXPECT_EQ(root::readFile("/stubs/elsewhere"), "hello");
}

// ---- spvt: two processes at once --------------------------------------------------------------

/// Neither upload detects the other: each runs its steps with the files that it finds.
TEST_F(Upload, secondUploadRemovesTheFormerFileOfTheFirst)
{
    keepFormer();
    request::load(announce(5, "hellox"));
    watch::after(kKeep, [] {
        root::inChild([] {
            EXPECT_EQ(request::process(upload("the other one"), 8).answer, le32(kGood));
            EXPECT_EQ(root::readFile(kPrivateFile), "the other one");
            EXPECT_FALSE(root::exists(kSavedFile));
        });
        fs::remove("/tmp/outbuf8");
        watch::restart();
    });
    EXPECT_EQ(request::run().answer, le32(0x60000005));
    EXPECT_EQ(watch::calls(),
              (Lines{writeTrace("hello"), kNoEndTrace, kRestore, exitTrace(0x60000005)}));
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {});
}

TEST_F(Upload, downloadDoesNotDisturbAnUploadInAnotherProcess)
{
    keepFormer();
    request::load(upload("hello"));
    watch::after("echo \"writing buffer ", [] {
        root::writeFile(kPrivateFile, "he");
        root::inChild([] {
            EXPECT_EQ(request::process(frame("gpvt", 0), 8).answer,
                      "gprt " + le32(2) + "\n" + le32(2) + "\nhe");
        });
        EXPECT_EQ(root::readFile(kSavedFile), kFormer);
        fs::remove("/tmp/outbuf8");
        watch::restart();
    });
    EXPECT_EQ(request::run().answer, le32(kGood));
    EXPECT_EQ(watch::calls(), Lines{});
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
    expectFiles({"vokcontrol-private.txt"}, {});
}

} // namespace
