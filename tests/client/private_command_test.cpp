// SPDX-License-Identifier: MIT
//
// "vokctl private" as people and scripts call it.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

namespace fs = std::filesystem;

const std::string kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
const std::string kReplaced = "vokctl: the private file was replaced\n";
const std::string kMine = "/stubs/mine";

/// Bytes of every value, a zero first.
std::string binary(std::size_t size)
{
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes += static_cast<char>(i & 0xFFU);
    }
    return bytes;
}

class PrivateCommand : public root::AnsweringTest {
  protected:
    /// Calls vokctl with these bytes on standard input.
    static root::Ended callWithInput(const Strings& arguments, const std::string& input)
    {
        root::writeFile("/stubs/input", input);
        Strings whole = {"/usr/bin/sh", "-c", "exec \"$@\" </stubs/input", "sh",
                         root::built("vokctl")};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        whole.insert(whole.end(), {"--socket", "/tmp/socket"});
        return root::run(whole);
    }

    static root::Ended put(const std::string& content)
    {
        root::writeFile(kMine, content);
        return vokctl({"private", "put", kMine});
    }

    static void expectStored(const std::string& content)
    {
        SCOPED_TRACE(content.size());
        expectEnd(put(content), 0, "", kReplaced);
        EXPECT_EQ(root::readFile(kPrivateFile), content);
        EXPECT_FALSE(root::exists("/tmp/vokcontrol.tmp"));
        EXPECT_EQ(root::readFile(kMine), content);
    }

    static void expectWrongUsage(const root::Ended& ended, const std::string& sentence)
    {
        expectEnd(ended, 2, "", "vokctl: " + sentence + "\n");
    }

    static void expectRefusal(const root::Ended& ended, const std::string& sentence)
    {
        expectEnd(ended, 1, "", "vokctl: " + sentence + "\n");
    }

    static std::string sent(std::uint32_t announced, const std::string& content)
    {
        return "gprt " + le32(2) + "\n" + le32(announced) + "\n" + content;
    }
};

// ---- There and back ---------------------------------------------------------------------------

TEST_F(PrivateCommand, framesAreExact)
{
    root::writeFile(kMine, "hello");
    const Exchange putting = exchange({"private", "put", kMine}, {le32(0)});
    EXPECT_EQ(putting.frames, Strings{"spvt " + le32(2) + "\n" + le32(5) + "\nhello\n"});
    expectEnd(putting.ended, 0, "", kReplaced);
    const Exchange getting = exchange({"private", "get", "-"}, {sent(5, "hello")});
    EXPECT_EQ(getting.frames, Strings{"gpvt " + le32(0) + "\n"});
    expectEnd(getting.ended, 0, "hello", "");
}

TEST_F(PrivateCommand, everySizeComesBackByteForByte)
{
    for (const std::size_t size : {1U, 2U, 5U, 9U, 11U, 33U, 255U, 256U, 257U, 1000U, 1999U, 2559U,
                                   2816U, 4000U, 4069U, 4070U}) {
        expectStored(binary(size));
        expectEnd(vokctl({"private", "get", "/stubs/back"}), 0, "", "");
        EXPECT_EQ(root::readFile("/stubs/back"), binary(size));
        expectEnd(vokctl({"private", "get", "-"}), 0, binary(size), "");
    }
}

TEST_F(PrivateCommand, textComesBackToo)
{
    const std::string content = "name = Anna's box\nkey = 7f;3a|[x] (y) {z} <w> & 100%\n";
    expectStored(content);
    expectEnd(vokctl({"private", "get", "-"}), 0, content, "");
    const std::string newlines(33, '\n');
    expectStored(newlines);
    expectEnd(vokctl({"private", "get", "-"}), 0, newlines, "");
}

TEST_F(PrivateCommand, oneByteOfEachValueComesBack)
{
    for (const int value : {0x00, 0x01, 0x0A, 0x0D, 0x20, 0x27, 0x61, 0x7F, 0x80, 0xFF}) {
        const std::string content(1, static_cast<char>(value));
        expectStored(content);
        expectEnd(vokctl({"private", "get", "-"}), 0, content, "");
    }
}

TEST_F(PrivateCommand, standardInputIsAFile)
{
    expectEnd(callWithInput({"private", "put", "-"}, binary(4070)), 0, "", kReplaced);
    EXPECT_EQ(root::readFile(kPrivateFile), binary(4070));
}

/// What was put there by others may be larger than what can be sent, and of any size.
TEST_F(PrivateCommand, largerFileIsFetchedWhole)
{
    for (const std::size_t size : {10U, 2560U, 4096U, 10000U, 100000U}) {
        root::writeFile(kPrivateFile, binary(size));
        expectEnd(vokctl({"private", "get", "/stubs/back"}), 0, "", "");
        EXPECT_EQ(root::readFile("/stubs/back"), binary(size));
    }
}

// ---- get --------------------------------------------------------------------------------------

TEST_F(PrivateCommand, fetchedFileReplacesOneThatIsThere)
{
    root::writeFile(kPrivateFile, "new");
    fs::create_directory("/stubs/folder");
    root::writeFile("/stubs/folder/back", "an older and longer one");
    expectEnd(vokctl({"private", "get", "/stubs/folder/back"}), 0, "", "");
    EXPECT_EQ(root::readFile("/stubs/folder/back"), "new");
    EXPECT_EQ(root::list("/stubs/folder"), Strings{"back"});
}

TEST_F(PrivateCommand, fileThatCannotBeWrittenIsAFailureAndStays)
{
    root::writeFile(kPrivateFile, "new");
    root::writeFile("/etc/pelconfig/back", "old");
    root::fillDisk("/etc/pelconfig");
    expectEnd(vokctl({"private", "get", "/etc/pelconfig/back"}), 8, "",
              "vokctl: cannot write /etc/pelconfig/back: No space left on device\n");
    EXPECT_EQ(root::readFile("/etc/pelconfig/back"), "old");
    EXPECT_EQ(root::list("/etc/pelconfig"),
              (Strings{"back", "filler", "system_var_lck", "vokcontrol"}));
}

/// Whoever runs it as root may run it in a folder that others can write.
TEST_F(PrivateCommand, whatOthersLaidBesideTheTargetStays)
{
    root::writeFile(kPrivateFile, "new");
    root::writeFile("/stubs/victim", "theirs");
    fs::create_directory("/stubs/folder");
    fs::create_symlink("/stubs/victim", "/stubs/folder/back.part");
    expectEnd(vokctl({"private", "get", "/stubs/folder/back"}), 0, "", "");
    EXPECT_EQ(root::readFile("/stubs/folder/back"), "new");
    EXPECT_EQ(fs::status("/stubs/folder/back").permissions(), fs::perms(0600));
    EXPECT_TRUE(fs::is_symlink("/stubs/folder/back.part"));
    EXPECT_EQ(root::readFile("/stubs/victim"), "theirs");
    EXPECT_EQ(root::list("/stubs/folder"), (Strings{"back", "back.part"}));
}

TEST_F(PrivateCommand, placeThatTakesNoBytesIsRefusedBeforeAnythingIsFetched)
{
    fs::create_symlink("/stubs/victim", "/stubs/link");
    expectEnd(
        root::run(
            {root::built("vokctl"), "private", "get", "/stubs/link", "--socket", "/tmp/none"}),
        2, "",
        "vokctl: /stubs/link is a symbolic link; name the file that it leads to, or \"-\" for "
        "standard output\n");
    EXPECT_FALSE(root::exists("/stubs/victim"));
}

TEST_F(PrivateCommand, standardOutputThatIsFullIsAFailure)
{
    root::writeFile(kPrivateFile, "new");
    const root::Ended ended =
        root::run({"/usr/bin/sh", "-c", "exec \"$@\" >/dev/full", "sh", root::built("vokctl"),
                   "private", "get", "-", "--socket", "/tmp/socket"});
    expectEnd(ended, 8, "", "vokctl: cannot write to standard output\n");
}

TEST_F(PrivateCommand, refusedFetchIsSaidInWordsAndMakesNoFile)
{
    const auto get = [] { return vokctl({"private", "get", "/stubs/back"}); };
    expectRefusal(get(), "There is no private file on the appliance. (0x70000001)");
    root::writeFile(kPrivateFile, "");
    expectRefusal(get(), "The private file on the appliance is empty. (0x70000002)");
    root::writeFile(kPrivateFile, "hello");
    fs::permissions(kPrivateFile, fs::perms(0));
    expectRefusal(get(), "The private file on the appliance cannot be read. (0x70000003)");
    EXPECT_FALSE(root::exists("/stubs/back"));
}

TEST_F(PrivateCommand, fetchedBytesThatDoNotAddUpCannotBeRead)
{
    const Strings answers = {
        "",
        le32(0),
        "gprt " + le32(2) + "\n",
        "gprt " + le32(2) + "\n" + le32(5),
        sent(5, "hell"),
        sent(5, "hello!"),
        sent(0, "hello"),
        sent(0xFFFFFFFF, "hello"),
        "gprt " + le32(2) + "\n" + le32(5) + " hello",
        "gprt " + le32(1) + "\n" + le32(5) + "\nhello",
        "gprx " + le32(2) + "\n" + le32(5) + "\nhello",
    };
    for (const std::string& answer : answers) {
        const root::Ended ended = exchange({"private", "get", "/stubs/back"}, {answer}).ended;
        EXPECT_EQ(ended.exitCode, 7) << testing::PrintToString(answer);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors.find("vokctl: the answer cannot be read: "), 0U) << ended.errors;
    }
    EXPECT_FALSE(root::exists("/stubs/back"));
}

/// A private file may hold the nine bytes of an error.
TEST_F(PrivateCommand, contentThatLooksLikeAnErrorIsNone)
{
    root::writeFile(kPrivateFile, "erro " + le32(0x70000001));
    expectEnd(vokctl({"private", "get", "-"}), 0, "erro " + le32(0x70000001), "");
    root::writeFile(kPrivateFile, "serv " + le32(0x53000005) + std::string(1, '\0'));
    expectEnd(vokctl({"private", "get", "-"}), 0, "serv " + le32(0x53000005) + std::string(1, '\0'),
              "");
}

// ---- put --------------------------------------------------------------------------------------

TEST_F(PrivateCommand, sizesThatCannotBeSentAreWrongUsage)
{
    root::writeFile(kPrivateFile, "former");
    for (const std::size_t size : {0U, 4071U, 4096U, 100000U}) {
        const std::string sentence =
            "a private file has 1 to 4070 bytes; this one has " + std::to_string(size);
        expectWrongUsage(put(binary(size)), sentence);
        expectWrongUsage(callWithInput({"private", "put", "-"}, binary(size)), sentence);
    }
    for (const std::size_t size : {10U, 266U, 522U, 2560U, 2561U, 2815U, 3850U}) {
        expectWrongUsage(
            put(binary(size)),
            "a file of " + std::to_string(size) +
                " bytes cannot be sent, because its size contains a newline byte. Make it longer "
                "or shorter.");
    }
    EXPECT_EQ(root::readFile(kPrivateFile), "former");
}

TEST_F(PrivateCommand, fileLargerThanMemoryIsRefusedAtOnce)
{
    root::writeFile(kMine, "hello");
    fs::resize_file(kMine, std::uintmax_t{1} << 40U);
    expectWrongUsage(vokctl({"private", "put", kMine}),
                     "a private file has 1 to 4070 bytes; this one has 1099511627776");
}

TEST_F(PrivateCommand, fileThatCannotBeReadIsWrongUsage)
{
    expectWrongUsage(vokctl({"private", "put", "/stubs/none"}), "cannot read /stubs/none");
    expectWrongUsage(vokctl({"private", "put", "/stubs"}), "cannot read /stubs");
    root::writeFile(kMine, "hello");
    fs::permissions(kMine, fs::perms(0));
    expectWrongUsage(vokctl({"private", "put", kMine}), "cannot read " + kMine);
    EXPECT_FALSE(root::exists(kPrivateFile));
}

TEST_F(PrivateCommand, contentThatWouldSpeakToTheShellIsRefused)
{
    root::writeFile(kPrivateFile, "former");
    for (const char* content :
         {"`touch /tmp/harm`", "$(touch /tmp/harm)", "\"; touch /tmp/harm; \""}) {
        expectRefusal(
            put(content),
            "A private file of this size or with this content cannot be kept. (0xFF000003)");
    }
    EXPECT_FALSE(root::exists("/tmp/harm"));
    EXPECT_EQ(root::readFile(kPrivateFile), "former");
}

TEST_F(PrivateCommand, uploadsThatFailAreSaidInWords)
{
    fs::permissions(root::kStatusFolder, fs::perms(0555));
    expectRefusal(put("hello"), "The private file cannot be made; a file from before is unchanged. "
                                "See whether the appliance's disk is full. (0x60000001)\n"
                                "vokctl: The appliance says: mv: can't rename "
                                "'/tmp/vokcontrol.tmp': No such file or directory");
    fs::permissions(root::kStatusFolder, fs::perms(0755));
    fs::create_directories(kPrivateFile + "/inside");
    expectRefusal(put("hello"),
                  "The new private file was kept, but the former one could not be removed. "
                  "(0xFF000006)");
    EXPECT_EQ(root::readFile(kPrivateFile), "hello");
}

TEST_F(PrivateCommand, formerFileIsStillThereWhenTheDiskIsFull)
{
    root::writeFile(kPrivateFile, "former");
    // The disk is full as soon as the former file is out of the way, until it comes back.
    root::stub("mv", "filler=/etc/pelconfig/filler\n"
                     "rm -f $filler\n"
                     "/usr/bin/mv \"$@\" || exit\n"
                     "case $2 in /tmp/*) dd if=/dev/zero of=$filler bs=4k 2>/dev/null ;; esac");
    expectRefusal(put("hello"), "The private file cannot be written; a file from before is "
                                "unchanged. See whether the appliance's disk is full. "
                                "(0x60000006)");
    EXPECT_EQ(root::readFile(kPrivateFile), "former");
}

/// What a client of its own making would be told; this one never sends such requests.
TEST_F(PrivateCommand, otherRefusalsAreSaidInWords)
{
    root::writeFile(kMine, "hello");
    const std::vector<std::pair<std::uint32_t, std::string>> refusals = {
        {0x60000002, "An empty file cannot be kept. (0x60000002)"},
        {0x60000003, "The private file cannot be written; a file from before is unchanged. See "
                     "whether the appliance's disk is full. "
                     "(0x60000003)"},
        {0x60000004, "The file did not arrive whole; a file from before is unchanged. Send it "
                     "again. (0x60000004)"},
        {0x60000005, "The file did not end where its size says; a file from before is unchanged. "
                     "Send it again. "
                     "(0x60000005)"},
        {0x60000007, "This client does not know the answer's meaning. (0x60000007)"},
    };
    for (const auto& [code, sentence] : refusals) {
        expectRefusal(exchange({"private", "put", kMine}, {le32(code)}).ended, sentence);
    }
}

TEST_F(PrivateCommand, answersToUploadsThatCannotBeRead)
{
    root::writeFile(kMine, "hello");
    for (const std::string& answer : Strings{"", "x", le32(0) + "\n", sent(5, "hello")}) {
        EXPECT_EQ(exchange({"private", "put", kMine}, {answer}).ended.exitCode, 7);
    }
}

// ---- Both -------------------------------------------------------------------------------------

TEST_F(PrivateCommand, unreachableServiceAndWrongUsage)
{
    root::writeFile(kMine, "hello");
    for (const char* command : {"get", "put"}) {
        expectEnd(
            root::run({root::built("vokctl"), "private", command, kMine, "--socket", "/tmp/none"}),
            3, "",
            "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
            "vokserve running?\n");
        EXPECT_EQ(vokctl({"private", command}).exitCode, 2);
        EXPECT_EQ(vokctl({"private", command, kMine, "extra"}).exitCode, 2);
    }
    EXPECT_EQ(root::readFile(kMine), "hello");
    EXPECT_EQ(vokctl({"private"}).exitCode, 2);
    EXPECT_EQ(vokctl({"private", "show", kMine}).exitCode, 2);
}

} // namespace
