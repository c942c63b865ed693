// SPDX-License-Identifier: MIT
//
// root.h: for tests in their root: files, stubs, programs, and the state in which every test
// starts.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/system_watch.h"

namespace root {

inline constexpr const char* kTraceFile = "/tmp/dbg_vokcontrol.txt";
inline constexpr const char* kStatusFolder = "/etc/pelconfig/vokcontrol";
inline constexpr const char* kStatusFile = "/etc/pelconfig/vokcontrol/__shrStatus";
inline constexpr const char* kSemaphoreFile = "/etc/pelconfig/vokcontrol/__shrsem";
inline constexpr const char* kCollectorFile = "/tmp/pelsts1.tmp";
inline const std::string kVariables = "/etc/pelconfig/system_var";

// The C library's texts for these errors.
inline const std::string kAgain = "Resource temporarily unavailable";
inline const std::string kNoChild = "No child processes";
inline const std::string kNotThere = "No such file or directory";
inline const std::string kDenied = "Permission denied";
inline const std::string kBadDescriptor = "Bad file descriptor";

void writeFile(const std::string& path, std::string_view content);
[[nodiscard]] std::string readFile(const std::string& path);
[[nodiscard]] bool exists(const std::string& path);

/// Whether this process has a file open, even a removed one.
[[nodiscard]] bool isOpen(const std::string& path);

/// The files of /tmp and /etc that this process has open.
[[nodiscard]] std::vector<std::string> openFiles();

/// Makes a folder read-only until openFolder().
void closeFolder(const std::string& folder = "/tmp");
void openFolder(const std::string& folder = "/tmp");

/// Replaces a file by a folder that is not empty.
void replaceByFolder(const std::string& path);

void makeUnreadable(const std::string& path);

/// What a function and its shell lines print to standard output.
[[nodiscard]] std::string printed(const std::function<void()>& function);

/// What a function prints to standard output, one piece per flush. Output of shell lines is in
/// pieces of its own.
[[nodiscard]] std::vector<std::string> printedPieces(const std::function<void()>& function);

/// The names in a folder, in order.
[[nodiscard]] std::vector<std::string> list(const std::string& folder);

/// Replaces a command by a shell script.
void stub(const std::string& command, const std::string& script);

/// Makes the share script write this listing from now on.
void stubListing(std::string_view listing);

/// One block of the share script's listing.
[[nodiscard]] std::string shareBlock(const std::string& name,
                                     const std::string& location = "internal");

/// Makes du print this size in KiB for a share; for other shares it fails as du does.
void stubUsage(const std::string& share, const std::string& kibibytes);

/// Fills the file system of a folder to the last byte, with a file in that folder.
void fillDisk(const std::string& folder = "/tmp");
/// Removes that file.
void freeDisk(const std::string& folder = "/tmp");

/// The two or four bytes of a number, least significant first.
[[nodiscard]] std::string le16(unsigned value);
[[nodiscard]] std::string le32(std::uint32_t value);

/// COUNT zero bytes.
[[nodiscard]] std::string zeros(std::size_t count);

/// The shell line of a trace that is not its process's first.
[[nodiscard]] std::string trace(const std::string& message);
/// The shell line of a process's first trace.
[[nodiscard]] std::string firstTrace(const std::string& message);

/// "/tmp/NAME" and this process's id.
[[nodiscard]] std::string workFile(const std::string& name);

/// The shell line of a trace whose message may be too long for its buffer.
[[nodiscard]] std::string cutTrace(const std::string& message);

/// What is printed when the variables cannot be read.
[[nodiscard]] std::string unreadVariable(const std::string& reason);

/// The shell line of the trace that a file has a size, in bytes.
[[nodiscard]] std::string sizeTrace(const std::string& path, std::size_t size);

/// This process's id, in decimal.
[[nodiscard]] std::string pid();

/// The lists in one list.
[[nodiscard]] std::vector<std::string> join(const std::vector<std::vector<std::string>>& lists);

/// ASCII letters in upper case.
[[nodiscard]] std::string upper(std::string text);

/// The names that users and shares must not have.
inline const std::vector<std::string> kReserved = {
    ".", "..", "config", "lost+found", "__mediabolic", "__mt-daapd", "__raclient", "__autoupdate"};

/// Texts with characters that mean something to a shell, a list or a format, but not between single
/// quotes.
inline const std::vector<std::string> kOddTexts = {"\xC3\xA9lise \xE6\x97\xA5\xE6\x9C\xAC",
                                                   "a \"quoted\" b",
                                                   "%s%n%d",
                                                   "$HOME",
                                                   "a;b",
                                                   " blanks ",
                                                   "back\\slash",
                                                   "tab\there",
                                                   "cr\r",
                                                   "\xFF\x80"};

struct Ended {
    int exitCode; ///< 128 and the number if a signal ended it
    std::string output;
    std::string errors;
};

/// A started program; each of its two output streams goes to a file.
class Program {
  public:
    Program(const std::vector<std::string>& command, bool isWatched = false);

    [[nodiscard]] int pid() const { return pid_; }

    /// Waits for the program and for all processes that hold its output open.
    [[nodiscard]] Ended wait();

  private:
    int pid_;
    int lifeline_;
    std::string output_;
    std::string errors_;
};

[[nodiscard]] Ended run(const std::vector<std::string>& command, bool isWatched = false);

/// The path of a program of this build.
[[nodiscard]] std::string built(const std::string& program);

/// Runs a function in a child process. The child has not traced yet if this process has not.
void inChild(const std::function<void()>& function);

/// Clears the root and starts the watch. The test's process has traced once, so that trace() gives
/// the line of every further trace.
class Test : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
};

/// The same, but this process has not traced anything.
class UntracedTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace root
