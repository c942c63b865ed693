// SPDX-License-Identifier: MIT
//
// usage: gate_attempts send SOCKET
//        gate_attempts carry
//
// Tries to make the appliance's shell run a program, "fire NUMBER", by way of every parameter of
// every command. Wherever that is run, a file /tmp/canary... is left.
//
//   send   every attempt, through the service. Prints how many there were. Ends with 1, and the
//   attempt,
//          as soon as there is a canary, or no service any more.
//   carry  some attempts for each parameter that a shell sees, past the service: straight to the
//          dispatcher. Prints each parameter and whether one of its attempts has left a canary.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "vokcontrol.h"

namespace {

const std::string kZero(1, '\0');

// ---- Ways out of a shell's word ---------------------------------------------------------------

std::string replaceAll(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// What would run a program, where nothing is quoted.
const std::vector<std::string>& cores()
{
    static const std::vector<std::string> all = {";@;",  "|@|",   "&@&",      "||@ #",   "`@`",
                                                 "$(@)", "\n@\n", ">canary#", "$\\\n(@)"};
    return all;
}

/// What could leave the quotes first.
const std::vector<std::string>& openers()
{
    static const std::vector<std::string> all = {"",     "'",     "\"",    "\\",   "\\\\",
                                                 "'\"'", "\"'\"", "a b\"", "\x81", kZero};
    return all;
}

/// Ways that are none of the above put together.
const std::vector<std::string>& specials()
{
    static const std::vector<std::string> all = {
        // Expansions.
        "${x:-`@`}", "${x:=$(@)}", "$((`@`))", "$[`@`]", "$'\\x60@\\x60'", "$\"`@`\"", "${IFS}@",
        ";fire${IFS}#;", "$HOME", "$$", "`", "$0 -c '@'", "( @ )", "{ @;}",
        // Redirections.
        "<>canary#", ">>canary#", ">|canary#", "2>canary#", "<(@)", "<<x\n`@`\nx\n",
        ">/tmp/canary#",
        // Globs and what else is rewritten.
        "*", "?", "[a-z]*", "~", "{a,b}", "!fire", "^a^b", " # ", "%s%n%x",
        // Options and paths.
        "-rf", "--help", "-c '@'", " -rf", "..", "../canary#", "/tmp/canary#",
        "x/../../../../../tmp/canary#",
        // Backslashes at the end, escapes.
        "a\\", "\\`@\\`", "\\\\`@`", "\\\\\";@;\"", "$\\\n\\\n(@)", "a\\\n;@;",
        // Bytes that look like others to some.
        "\xE2\x80\x98;@;\xE2\x80\x99", "\xEF\xBC\x9B@", "\xC0\xA7;@;", "\xFF`@`\xFF",
        "\x80\x82\x84\x88$(@)", "\xA0@", "\x0B;@", "\x0C;@", "\x7F;@", "\r\n@\r\n",
        // Zero bytes.
        "a" + kZero + "`@`", kZero + "\n;@;\n", "`@" + kZero + "`",
        // Assignments, functions, keywords.
        "x=`@`", "PATH=. @", "a(){ @;};a", "\";if @;then :;fi;\"", "\";exec fire #;\"",
        "\";trap 'fire #' 0;\"",
        // Texts that are cut on their way.
        std::string(255, 'a') + "`@`", std::string(255, 'a') + "\";@;\"",
        std::string(230, 'a') + "\";@;\"", std::string(64, 'a') + "';@;'",
        std::string(31, 'a') + "';@;'", std::string(510, 'a') + "\";@;\"",
        std::string(1980, 'a') + "\";@;\"", std::string(2020, 'a') + "';@;'",
        std::string(4000, 'a') + "`@`"};
    return all;
}

/// Every way; "@" stands for the program with its number, "#" for the number.
std::vector<std::string> allWays()
{
    std::vector<std::string> ways = specials();
    for (const std::string& core : cores()) {
        for (const std::string& opener : openers()) {
            ways.push_back(opener + core + opener);
        }
    }
    return ways;
}

std::string aim(const std::string& way, int number)
{
    return replaceAll(replaceAll(way, "@", "fire #"), "#", std::to_string(number));
}

// ---- Parameters -------------------------------------------------------------------------------

std::string le32(std::uint32_t value)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
    return bytes;
}

std::string frame(const std::string& code, std::uint32_t count, const std::string& rest)
{
    return code + " " + le32(count) + "\n" + rest;
}

std::string withFile(const std::string& content)
{
    return frame("spvt", 2,
                 le32(static_cast<std::uint32_t>(content.size())) + "\n" + content + "\n");
}

struct Parameter {
    std::string name;
    bool isSeenByShell;
    std::function<std::string(const std::string& text)> make;
};

std::vector<Parameter> allParameters()
{
    const auto lines = [](const char* code, std::uint32_t count, const std::string& before,
                          const std::string& behind) {
        return [=](const std::string& text) { return frame(code, count, before + text + behind); };
    };
    const auto raw = [](const std::string& before, const std::string& behind) {
        return [=](const std::string& text) { return before + text + behind; };
    };
    return {
        {"crat user", true, lines("crat", 2, "", "\nword\n")},
        {"crat password", true, lines("crat", 2, "carla\n", "\n")},
        {"gsp1 share", true, lines("gsp1", 1, "", "\n")},
        // A name that is too long is traced, and nothing else happens; the next row has short ones.
        {"gspc share", true, raw("gspc \xFF", std::string(65, 'a') + "\n")},
        {"gspc share behind a length of 10", true, raw("gspc \nL", "\n")},
        {"host time", true, lines("host", 4, "", "\nnas\nhome\nen\n")},
        {"host host name", true, lines("host", 4, "112115302026.45\n", "\nhome\nen\n")},
        {"host work group", true, lines("host", 4, "112115302026.45\nnas\n", "\nen\n")},
        {"host language", true, lines("host", 4, "112115302026.45\nnas\nhome\n", "\n")},
        // A name that stands alone loses its last character.
        {"pshr guest", true, lines("pshr", 3, "", "x\nMusic\n")},
        {"pshr share", true, lines("pshr", 3, "guest\n", "\n")},
        {"shar user", true, lines("shar", 3, "", "\nMusic\n")},
        {"shar share", true, lines("shar", 3, "anna\n", "\n")},
        {"spvt size", true, lines("spvt", 2, "", "\ncontent\n")},
        {"spvt content", true, withFile},
        {"sub1 user", true, lines("sub1", 2, "\1\n", "\n")},
        {"subs user", true, raw(std::string("subs \7\0\1", 8), "\n")},
        {"subs user behind a length of 10", true, raw(std::string("subs \n\0\1", 8), "\n")},
        {"wags entity", true, lines("wags", 2, "", "\nanna\n")},
        {"wags user", true, lines("wags", 2, "user\n", "\n")},
        {"wasu user", true, lines("wasu", 4, "", "\nfirst\nsecond\n" + kZero + "\n")},
        {"wasu first value", true, lines("wasu", 4, "anna\n", "\nsecond\n\2\n")},
        {"wasu second value", false, lines("wasu", 4, "anna\nfirst\n", "\n\2\n")},
        {"wasu switch", false, lines("wasu", 4, "anna\nfirst\nsecond\n", "\n")},
        {"getv key", false, lines("getv", 1, "", "\n")},
        {"sub1 state", false, lines("sub1", 2, "", "\nanna\n")},
        {"wall user", false, lines("wall", 2, "", "\nword\n")},
        {"wall password", false, lines("wall", 2, "anna\n", "\n")},
        {"warp all three", false,
         [](const std::string& text) {
             return frame("warp", 3, text + "\n" + text + "\n" + text + "\n");
         }},
        {"count", false, raw("crat ", "\nanna\nword\n")},
        {"code", false, raw("", " " + le32(0) + "\n")},
        {"behind a request without parameters", false, lines("gubs", 0, "", "\n")},
    };
}

// ---- Attempts ---------------------------------------------------------------------------------

/// What attempts have left in /tmp: in the service's, as others see that, or in everybody's.
std::vector<std::filesystem::path> findCanaries()
{
    std::vector<std::filesystem::path> found;
    for (const char* folder : {"/run/vokcontrol/tmp", "/tmp"}) {
        std::error_code isMissing;
        for (const auto& entry : std::filesystem::directory_iterator(folder, isMissing)) {
            if (entry.path().filename().string().starts_with("canary")) {
                found.push_back(entry.path());
            }
        }
    }
    return found;
}

bool hasCanary()
{
    return !findCanaries().empty();
}

void removeCanaries()
{
    for (const auto& path : findCanaries()) {
        std::filesystem::remove_all(path);
    }
}

std::string show(const std::string& request)
{
    std::string shown;
    for (const char c : request) {
        constexpr std::string_view kHexDigits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        shown += {kHexDigits[byte >> 4U], kHexDigits[byte & 0x0FU]};
    }
    return shown;
}

/// Sends a request and reads the answer up to its end.
/// @return false when there is no service
bool exchange(const char* path, std::string_view request)
{
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    const bool isConnected =
        ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    const ssize_t sent = ::send(socket, request.data(), request.size(), MSG_NOSIGNAL);
    ::shutdown(socket, SHUT_WR);
    std::array<char, 4096> piece{};
    while (::recv(socket, piece.data(), piece.size(), 0) > 0) {
    }
    ::close(socket);
    return isConnected && sent == static_cast<ssize_t>(request.size());
}

int sendAll(const char* path)
{
    const std::vector<std::string> ways = allWays();
    int number = 0;
    for (const Parameter& parameter : allParameters()) {
        for (const std::string& way : ways) {
            std::string request = parameter.make(aim(way, ++number));
            request.resize(std::min<std::size_t>(request.size(), VOK_REQUEST_SIZE));
            if (!exchange(path, request)) {
                std::cout << "no service: " << parameter.name << ", " << show(request) << "\n";
                return 1;
            }
            if (hasCanary()) {
                std::cout << "executed: " << parameter.name << ", " << show(request) << "\n";
                return 1;
            }
        }
    }
    // What was started in the background has had its time.
    ::usleep(300000);
    std::cout << number << " attempts, " << (hasCanary() ? "executed" : "nothing executed") << "\n";
    return hasCanary() ? 1 : 0;
}

/// Has the dispatcher run a request, in a process like those of the service.
void carry(const std::string& request)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(nowhere, stream);
        }
        if (::chdir("/tmp") == 0) {
            request.copy(static_cast<char*>(fin_buf), VOK_REQUEST_SIZE);
            process_command(1000000);
        }
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
}

int carryAll()
{
    const std::vector<std::string> ways = {"`@`", "\";@;\"", "';@;'", "$(@)"};
    // A size has four bytes: a program with a name of one.
    const std::vector<std::string> waysOfFourBytes = {"`f`\n", "$(f)"};
    for (const Parameter& parameter : allParameters()) {
        if (!parameter.isSeenByShell) {
            continue;
        }
        const bool isSize = parameter.name == "spvt size";
        int number = 0;
        for (const std::string& way : isSize ? waysOfFourBytes : ways) {
            carry(parameter.make(aim(way, ++number)));
        }
        std::cout << parameter.name << ": " << (hasCanary() ? "executed" : "nothing executed")
                  << "\n";
        removeCanaries();
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string action = (argc > 1) ? argv[1] : "";
    if (action == "send" && argc == 3) {
        return sendAll(argv[2]);
    }
    if (action == "carry" && argc == 2) {
        return carryAll();
    }
    std::cerr << "usage: gate_attempts send SOCKET | carry\n";
    return 2;
}
