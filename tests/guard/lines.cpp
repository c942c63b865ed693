// SPDX-License-Identifier: MIT
//
// usage: guard_lines COUNT SEED SHELL...
//
// Makes random lines from the guard's shapes, with values that try to leave their places, until the
// guard has accepted COUNT of them. Each shell runs each of these, with functions in place of the
// appliance's programs. Their arguments must be exactly those on the line, nothing else may run,
// and no other file may change. Otherwise it prints the line and ends with 1.
//
// It needs a root of its own (lines_test.sh).
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "guard/shapes.h"

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

constexpr std::size_t kBatch = 2000;
constexpr const char* kScript = "/work/script";
constexpr const char* kRecord = "/work/record";
constexpr const char* kErrors = "/work/errors";
constexpr const char* kFolder = "/work/folder";

std::mt19937& dice()
{
    static std::mt19937 engine;
    return engine;
}

std::size_t roll(std::size_t sides)
{
    return dice()() % sides;
}

// ---- Lines ------------------------------------------------------------------------------------

/// Texts that try to leave a place or to mean something else, and texts that only look so.
const Words kPieces = {"fire",
                       ";fire;",
                       "|fire",
                       "|fire|",
                       "&fire&",
                       "&&fire",
                       "||fire",
                       "`fire`",
                       "$(fire)",
                       "${x:-`fire`}",
                       "$((`fire`))",
                       "$HOME",
                       "$$",
                       "$",
                       "\"",
                       "\"\"",
                       "\";fire;\"",
                       "\"|fire|\"",
                       "'",
                       "''",
                       "';fire;'",
                       "'\"'",
                       "\\",
                       "\\\\",
                       "\\\"",
                       "\\'",
                       "\\\n",
                       "\n",
                       "\nfire\n",
                       ">canary",
                       ">>canary",
                       ">|canary",
                       "2>canary",
                       "<>canary",
                       "<&0",
                       ">&9",
                       "<(fire)",
                       "<<x",
                       "#",
                       " #",
                       "*",
                       "?",
                       "[a-z]*",
                       "/*",
                       "~",
                       "~root",
                       "{a,b}",
                       "{1..9}",
                       "!",
                       "!!",
                       "!fire",
                       "^a^b",
                       "=",
                       "a=b",
                       "PATH=.",
                       "-n",
                       "-",
                       " -",
                       "--help",
                       " -rf",
                       "/",
                       "//",
                       "..",
                       "/etc/passwd",
                       " /tmp/x",
                       ":",
                       "%",
                       "%s%n",
                       "%1",
                       "@",
                       "@(a)",
                       "+",
                       ",",
                       ".",
                       " ",
                       "  ",
                       "\t",
                       "\r",
                       "\v",
                       "\f",
                       "\x7F",
                       "\xC2\xA0",
                       "\xE3\x80\x80",
                       "\xE2\x80\x99;fire;",
                       "\xEF\xBC\x9B",
                       "\xC0\xA7",
                       "\xC3\xA9lise",
                       "0",
                       "4711",
                       "2",
                       "a",
                       "Tom & Jerry",
                       "if",
                       "then",
                       "fi",
                       " done",
                       "}",
                       "{ fire;}",
                       "(",
                       ")",
                       "(fire)",
                       "esac",
                       "[[",
                       "$'\\x60'",
                       "$\"x\"",
                       "\x01",
                       "\x02",
                       "\x08",
                       "\x1B",
                       "\x81",
                       "\x82",
                       "\x83",
                       "\x84",
                       "\x85",
                       "\x86",
                       "\x87",
                       "\x88",
                       "\xFF",
                       "\xA0"};

/// Whether a place with this sign may hold a character, by this test's own rule.
bool mayHold(char sign, char c)
{
    const bool isDigit = c >= '0' && c <= '9';
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    switch (sign) {
    case '"':
        return std::string_view("\"$`\\\n").find(c) == std::string_view::npos;
    case '\'':
        return c != '\'' && c != '\n';
    case '#':
        return isDigit;
    case '_':
        return isDigit || isLetter;
    default:
        return isDigit || isLetter || static_cast<unsigned char>(c) >= 0x80 ||
               std::string_view(" .,_-+@%=:/").find(c) != std::string_view::npos;
    }
}

const std::string& choosePiece()
{
    return kPieces[roll(kPieces.size())];
}

/// Half of the values are harmless in their place, so that their lines run. Most others have only
/// one piece that is not allowed.
std::string makeValue(char sign)
{
    std::string value = (sign == '/') ? "/" : (sign == '#' || sign == '_') ? "1" : "";
    for (std::size_t pieces = roll(6); pieces > 0; --pieces) {
        value += (roll(5) == 0) ? std::string(1, static_cast<char>(1 + roll(255))) : choosePiece();
    }
    const std::size_t way = roll(10);
    if (way > 0) {
        std::erase_if(value, [sign](char c) { return !mayHold(sign, c); });
    }
    if (way > 5) {
        value.insert(roll(value.size() + 1), choosePiece());
    }
    return value;
}

std::string fill(std::string_view words)
{
    std::string line;
    while (!words.empty()) {
        if (words[0] == '{') {
            line += makeValue(words[1]);
            words.remove_prefix(words.find('}') + 1);
        } else {
            line += words[0];
            words.remove_prefix(1);
        }
    }
    return line;
}

/// Changes a line in one random place.
void damage(std::string& line)
{
    const std::size_t at = roll(line.size() + 1);
    line.replace(at, roll(3), choosePiece());
}

/// Whether a shape has a place for more than a number.
bool takesText(const guard::Shape& shape)
{
    const std::size_t at = shape.words.find('{');
    return at != std::string_view::npos && shape.words[at + 1] != '#';
}

const guard::Shape& chooseShape()
{
    const guard::Shape* shape = nullptr;
    do {
        shape = &guard::shapes()[roll(guard::shapes().size())];
    } while (!takesText(*shape) && roll(4) != 0);
    return *shape;
}

std::string makeLine()
{
    std::string line = fill(chooseShape().words);
    if (roll(5) == 0) {
        damage(line);
    }
    return line;
}

// ---- What a line may do -----------------------------------------------------------------------

/// The programs that a line names with their arguments, sorted; and the files that it writes.
struct Effect {
    std::vector<Words> programs;
    std::set<std::string> files;
};

/// Reads a line as if only the characters of the shapes had a meaning.
class LineReader {
  public:
    Effect read(const std::string& line)
    {
        for (const char c : line) {
            take(c);
        }
        endProgram();
        std::ranges::sort(effect_.programs);
        return effect_;
    }

  private:
    void take(char c)
    {
        if (quote_ != 0) {
            takeQuoted(c);
        } else if (c == '"' || c == '\'') {
            quote_ = c;
            isWord_ = true;
        } else if (c == '|') {
            endProgram();
        } else if (c == '>') {
            endWord();
            isFile_ = true;
        } else if (c == ' ') {
            endWord();
        } else {
            word_ += c;
            isWord_ = true;
        }
    }

    void takeQuoted(char c)
    {
        if (c == quote_) {
            quote_ = 0;
        } else {
            word_ += c;
        }
    }

    void endWord()
    {
        if (!isWord_) {
            return;
        }
        if (isFile_) {
            effect_.files.insert(fs::path(kFolder) / word_);
        } else {
            program_.push_back(word_);
        }
        isFile_ = isWord_ = false;
        word_.clear();
    }

    void endProgram()
    {
        endWord();
        effect_.programs.push_back(program_);
        program_.clear();
    }

    Effect effect_;
    Words program_;
    std::string word_;
    char quote_ = 0;
    bool isWord_ = false;
    bool isFile_ = false;
};

// ---- A batch of lines in a shell --------------------------------------------------------------

const Words kPrograms = {"sudo",  "ifconfig", "grep",      "route", "du",
                         "ps",    "startapp", "echo",      "cat",   "date",
                         "fdisk", "mdadm",    "pelstatus", "mv",    "runwebhooks"};

/// A program with a full path cannot be a function of the shell.
void makeProgram(const std::string& path)
{
    std::ofstream(path) << "#!/bin/sh\nprintf '%s\\0' $(($# + 1)) \"$0\" \"$@\" >>" << kRecord
                        << "\n";
    fs::permissions(path, fs::perms(0755));
}

void writeScript(const Words& lines)
{
    std::ofstream script(kScript, std::ios::binary);
    script << "cd " << kFolder << " && exec 9>>" << kRecord << " </dev/null >/dev/null 2>"
           << kErrors
           << "\nnote() { printf '%s\\0' $# \"$@\" >&9; }\nfire() { note fire \"$@\"; }\n";
    for (const std::string& program : kPrograms) {
        script << program << "() { note " << program << " \"$@\"; }\n";
    }
    for (const std::string& line : lines) {
        script << line << "\nnote end\n";
    }
}

/// Every file's size and time, except the tool's own files.
std::map<std::string, std::string> everything()
{
    std::map<std::string, std::string> files;
    const std::set<std::string> passedOver = {"/proc", "/dev", "/build", "/usr/lib", "/usr/lib64"};
    for (auto it = fs::recursive_directory_iterator("/"); it != fs::end(it); ++it) {
        const std::string path = it->path();
        if (passedOver.contains(path)) {
            it.disable_recursion_pending();
        } else if (path != kRecord && path != kErrors && it->is_regular_file() &&
                   !it->is_symlink()) {
            files[path] = std::to_string(it->file_size()) + " " +
                          std::to_string(it->last_write_time().time_since_epoch().count());
        }
    }
    return files;
}

void runScript(const std::string& shell)
{
    fs::remove(kRecord);
    const pid_t child = ::fork();
    if (child == 0) {
        ::clearenv();
        ::setenv("LC_ALL", "C", 1);
        ::setenv("PATH", "/usr/bin", 1);
        ::setenv("HOME", "/root", 1);
        ::execl(shell.c_str(), "sh", kScript, nullptr);
        ::_exit(127);
    }
    ::waitpid(child, nullptr, 0);
}

std::string readAll(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The programs that the shell has run for one line.
std::optional<std::vector<Words>> readNext(std::istream& record)
{
    std::vector<Words> programs;
    std::string text;
    while (std::getline(record, text, '\0')) {
        Words program(static_cast<std::size_t>(std::atoi(text.c_str())));
        for (std::string& word : program) {
            std::getline(record, word, '\0');
        }
        if (program == Words{"end"}) {
            std::ranges::sort(programs);
            return programs;
        }
        programs.push_back(program);
    }
    return std::nullopt;
}

std::string show(const std::string& line)
{
    std::string shown;
    for (const char c : line) {
        const auto byte = static_cast<unsigned char>(c);
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), (byte < ' ' || byte > '~') ? "\\x%02x" : "%c",
                      byte);
        shown += text.data();
    }
    return shown;
}

bool complain(const std::string& shell, const std::string& what)
{
    std::cout << shell << ": " << what << "\n" << show(readAll(kErrors)) << "\n";
    return false;
}

bool haveRun(const std::string& shell, const Words& lines)
{
    std::ifstream record(kRecord, std::ios::binary);
    for (const std::string& line : lines) {
        if (readNext(record) != LineReader().read(line).programs) {
            return complain(shell, "something else has run: " + show(line));
        }
    }
    return readNext(record).has_value() ? complain(shell, "more has run") : true;
}

/// Whether only the files that the lines write have changed. Removes these.
bool areFilesKept(const std::string& shell, const std::map<std::string, std::string>& before,
                  const Words& lines)
{
    std::map<std::string, std::string> after = everything();
    for (const std::string& line : lines) {
        for (const std::string& file : LineReader().read(line).files) {
            after.erase(file);
            fs::remove(file);
        }
    }
    return after == before || complain(shell, "another file has come, gone or changed");
}

bool passes(const std::string& shell, const Words& lines)
{
    const auto before = everything();
    runScript(shell);
    return haveRun(shell, lines) && areFilesKept(shell, before, lines) &&
           (readAll(kErrors).empty() || complain(shell, "a shell complains"));
}

Words makeBatch(std::size_t count, std::size_t& refused)
{
    Words lines;
    while (lines.size() < count) {
        std::string line = makeLine();
        if (guard::judge(line).isKnown) {
            lines.push_back(std::move(line));
        } else {
            ++refused;
        }
    }
    return lines;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::cerr << "usage: guard_lines COUNT SEED SHELL...\n";
        return 2;
    }
    const auto count = static_cast<std::size_t>(std::atol(argv[1]));
    dice().seed(static_cast<unsigned>(std::atol(argv[2])));
    fs::create_directories(kFolder);
    makeProgram("/usr/bin/ra-enabled");
    makeProgram("/usr/bin/fire");
    std::size_t refused = 0;
    for (std::size_t done = 0; done < count; done += kBatch) {
        const Words lines = makeBatch(std::min(kBatch, count - done), refused);
        writeScript(lines);
        for (int i = 3; i < argc; ++i) {
            if (!passes(argv[i], lines)) {
                return 1;
            }
        }
    }
    std::cout << count << " lines passed the guard and did what they say in each shell; " << refused
              << " were refused\n";
    return 0;
}
