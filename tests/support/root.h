// SPDX-License-Identifier: MIT
//
// root.h: what tests do with the root that they run in: files, stubs, programs, and the starting
// point that every test finds.
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

// What the C library calls these errors.
inline const std::string kAgain = "Resource temporarily unavailable";
inline const std::string kNoChild = "No child processes";
inline const std::string kNotThere = "No such file or directory";
inline const std::string kDenied = "Permission denied";
inline const std::string kBadDescriptor = "Bad file descriptor";

void writeFile(const std::string& path, std::string_view content);
[[nodiscard]] std::string readFile(const std::string& path);
[[nodiscard]] bool exists(const std::string& path);

/// Whether this process has a file open, even one that was removed since.
[[nodiscard]] bool isOpen(const std::string& path);

/// The files of /tmp and /etc that this process has open.
[[nodiscard]] std::vector<std::string> openFiles();

/// Nothing can be created in a folder or removed from it, until it is opened again.
void closeFolder(const std::string& folder = "/tmp");
void openFolder(const std::string& folder = "/tmp");

/// Puts a folder, with something in it, in a file's place.
void replaceByFolder(const std::string& path);

void makeUnreadable(const std::string& path);

/// What a function prints to standard output, what its shell lines print among it.
[[nodiscard]] std::string printed(const std::function<void()>& function);

/// What a function prints to standard output, in the pieces in which it leaves the process: one for
/// each flush. What shell lines print comes as pieces of its own.
[[nodiscard]] std::vector<std::string> printedPieces(const std::function<void()>& function);

/// The names in a folder, in order.
[[nodiscard]] std::vector<std::string> list(const std::string& folder);

/// Puts a shell script in front of a command.
void stub(const std::string& command, const std::string& script);

/// Has the share script write this listing from now on.
void stubListing(std::string_view listing);

/// One block of the share script's listing.
[[nodiscard]] std::string shareBlock(const std::string& name,
                                     const std::string& location = "internal");

/// Has du print these kibibytes for a share; for other shares it fails as du does.
void stubUsage(const std::string& share, const std::string& kibibytes);

/// Fills the file system that a folder is on to the last byte, with a file in that folder.
void fillDisk(const std::string& folder = "/tmp");
/// Removes that file.
void freeDisk(const std::string& folder = "/tmp");

/// Two bytes of a number, least significant first; four likewise.
[[nodiscard]] std::string le16(unsigned value);
[[nodiscard]] std::string le32(std::uint32_t value);

/// So many zero bytes.
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

/// Lists, one behind the other.
[[nodiscard]] std::vector<std::string> join(const std::vector<std::vector<std::string>>& lists);

/// ASCII letters in upper case.
[[nodiscard]] std::string upper(std::string text);

/// What the appliance lets nobody and nothing be called.
inline const std::vector<std::string> kReserved = {
    ".", "..", "config", "lost+found", "__mediabolic", "__mt-daapd", "__raclient", "__autoupdate"};

/// Texts with characters that mean something to a shell, a list or a format, but leave a line
/// between single quotes whole.
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
    int exitCode; ///< 128 and the number where a signal ended it
    std::string output;
    std::string errors;
};

/// A program that was started; both its output streams go to files of their own.
class Program {
  public:
    Program(const std::vector<std::string>& command, bool isWatched = false);

    [[nodiscard]] int pid() const { return pid_; }

    /// Waits for the program and for everything it left behind that still holds its output open.
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

/// Runs a function in a child process, where nothing has been traced yet if nothing has been here.
void inChild(const std::function<void()>& function);

/// Clears the root and starts the watch. One trace has been made in the test's process, so that
/// trace() tells every further one.
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
