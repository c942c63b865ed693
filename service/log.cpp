// SPDX-License-Identifier: MIT
#include "service/log.h"

#include <algorithm>
#include <array>
#include <unistd.h>

#include "cmdsvc/request_reader.h"
#include "core/bytes.h"

namespace service {
namespace {

using cmdsvc::kCodeSize;

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string_view showEnding(Ending ending)
{
    switch (ending) {
    case Ending::kFinished:
        return "";
    case Ending::kFailed:
        return " (its process failed)";
    case Ending::kTimedOut:
        return " (took too long and was ended)";
    case Ending::kNotStarted:
        return " (could not be started)";
    case Ending::kRefused:
        return " (refused)";
    }
    return "";
}

} // namespace

std::string describeCommand(std::string_view request)
{
    const std::string_view code = request.substr(0, kCodeSize);
    if (code.size() == kCodeSize && std::ranges::all_of(code, isPlain)) {
        return std::string(code);
    }
    std::string shown = "0x";
    core::appendHex(shown, code);
    return shown;
}

std::string describe(int number, std::string_view request, const Outcome& outcome,
                     std::chrono::milliseconds taken)
{
    return std::to_string(number) + " " + describeCommand(request) +
           " count=" + std::to_string(cmdsvc::countOf(request)) +
           " answer=" + std::to_string(outcome.answer.size()) +
           " ms=" + std::to_string(taken.count()) + std::string(showEnding(outcome.ending));
}

std::string describe(const std::optional<Peer>& peer)
{
    return peer ? "uid=" + std::to_string(peer->user) + " pid=" + std::to_string(peer->process)
                : "uid=? pid=?";
}

void log(const std::optional<Peer>& peer, const std::string& line)
{
    log(describe(peer) + ": " + line);
}

void logRefusal(const Peer& peer, int number, std::string_view parameter)
{
    log(peer,
        "request " + std::to_string(number) + ": its " + std::string(parameter) + " was refused");
}

void logRequest(const Peer& peer, int number, std::string_view request, const Outcome& outcome,
                std::chrono::milliseconds taken)
{
    log(peer, describe(number, request, outcome, taken));
    if (!outcome.reasons.text().empty()) {
        log(peer, "request " + std::to_string(number) +
                      ": its programs said: " + describeReasons(outcome.reasons.text(), request));
    }
}

void log(const std::string& line)
{
    const std::string whole = "vokserve: " + line + "\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, whole.data(), whole.size());
}

} // namespace service
