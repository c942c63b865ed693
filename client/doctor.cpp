// SPDX-License-Identifier: MIT
#include "client/doctor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trn;

using Clock = std::chrono::steady_clock;

// ---- The check's process ----------------------------------------------------------------------

/// A diagnosis as bytes in a pipe: the sign, the reason, a zero byte, the remedy, a zero byte.
std::string encode(const Diagnosis& diagnosis)
{
    std::string bytes(1, static_cast<char>('0' + static_cast<int>(diagnosis.sign)));
    return bytes + diagnosis.reason + '\0' + diagnosis.remedy + '\0';
}

void writeAll(int pipe, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(pipe, bytes.data(), bytes.size());
        if (written <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

[[noreturn]] void examine(const Surroundings& surroundings, const Check& check, int pipe)
{
    // What the check starts is in its group, too, and ends with it.
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        writeAll(pipe, encode(check.examine(surroundings, check)));
    } catch (const std::exception& failure) {
        writeAll(pipe, encode(wrong(fill(tr("The check has failed: {}."), {failure.what()}),
                                    tr("correct that first, then try again"))));
    }
    ::_exit(0);
}

// ---- This process -----------------------------------------------------------------------------

/// Waits for bytes in a pipe or its end.
/// @return false at the end of the time
bool awaitBytes(int pipe, Clock::time_point end)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd wanted = {.fd = pipe, .events = POLLIN, .revents = 0};
    return left > 0 && ::poll(&wanted, 1, static_cast<int>(left)) > 0;
}

/// Reads to the end of a pipe.
/// @return false if the end did not come in time
bool readAll(int pipe, Clock::time_point end, std::string& bytes)
{
    std::array<char, 4096> piece;
    while (awaitBytes(pipe, end)) {
        const ssize_t got = ::read(pipe, piece.data(), piece.size());
        if (got <= 0) {
            return true;
        }
        bytes.append(piece.data(), static_cast<std::size_t>(got));
    }
    return false;
}

Diagnosis decode(std::string_view bytes)
{
    const std::size_t reasonEnd = bytes.find('\0');
    if (reasonEnd == std::string_view::npos || bytes.back() != '\0') {
        return wrong(tr("The check ended without a result."),
                     tr("try again; memory may have run out"));
    }
    const std::string_view remedy = bytes.substr(reasonEnd + 1);
    return {.sign = static_cast<Sign>(bytes[0] - '0'),
            .reason = std::string(bytes.substr(1, reasonEnd - 1)),
            .remedy = std::string(remedy.substr(0, remedy.size() - 1))};
}

Diagnosis collect(const Surroundings& surroundings, pid_t process, int pipe)
{
    std::string bytes;
    const bool isInTime =
        readAll(pipe, Clock::now() + std::chrono::seconds(surroundings.seconds), bytes);
    ::kill(-process, SIGKILL);
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    if (!isInTime) {
        return wrong(fill(trn("It did not answer within {} second.",
                              "It did not answer within {} seconds.", surroundings.seconds),
                          {std::to_string(surroundings.seconds)}),
                     tr("see what it waits for, or allow more with --timeout"));
    }
    return decode(bytes);
}

Diagnosis cannotStart()
{
    return wrong(tr("The check's process could not be started."),
                 tr("see whether there are too many processes or too little memory"));
}

// ---- The table --------------------------------------------------------------------------------

using Signs = std::map<std::string_view, Sign>;

bool isAskedFor(const Check& check, const std::vector<std::string>& names)
{
    return names.empty() || std::ranges::find(names, check.name) != names.end();
}

/// Whether any check that is asked for depends on this one, directly or through others.
bool isNeeded(const Check& check, std::span<const Check> table,
              const std::vector<std::string>& names)
{
    return isAskedFor(check, names) || std::ranges::any_of(table, [&](const Check& each) {
               return each.after != nullptr && std::string_view(each.after) == check.name &&
                      isNeeded(each, table, names);
           });
}

Diagnosis diagnose(const Surroundings& surroundings, const Check& check, const Signs& signs)
{
    if (check.needsRoot && !surroundings.isRoot) {
        return unchecked(tr("Not checked: run as root."));
    }
    if (check.after != nullptr && signs.at(check.after) == Sign::kUnneeded) {
        return unneeded(fill(tr("Not needed, as {} is not."), {check.after}));
    }
    if (check.after != nullptr && signs.at(check.after) != Sign::kGood) {
        return unchecked(fill(tr("Not checked: it depends on {}."), {check.after}));
    }
    return runCheck(surroundings, check);
}

} // namespace

const char* wordOf(Sign sign)
{
    constexpr auto kWords = std::to_array<const char*>({"good", "wrong", "unneeded", "unchecked"});
    return kWords.at(static_cast<std::size_t>(sign));
}

Diagnosis runCheck(const Surroundings& surroundings, const Check& check)
{
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return cannotStart();
    }
    const pid_t process = ::fork();
    if (process == 0) {
        ::close(pipe[0]);
        examine(surroundings, check, pipe[1]);
    }
    ::close(pipe[1]);
    // Here, too, as the check may not have got so far when it has to be killed.
    ::setpgid(process, process);
    Diagnosis diagnosis = (process > 0) ? collect(surroundings, process, pipe[0]) : cannotStart();
    ::close(pipe[0]);
    return diagnosis;
}

std::vector<Result> runChecks(const Surroundings& surroundings, std::span<const Check> table,
                              const std::vector<std::string>& names)
{
    std::vector<Result> results;
    Signs signs;
    for (const Check& check : table) {
        if (!isNeeded(check, table, names)) {
            continue;
        }
        Diagnosis diagnosis = diagnose(surroundings, check, signs);
        signs[check.name] = diagnosis.sign;
        if (isAskedFor(check, names)) {
            results.push_back({&check, std::move(diagnosis)});
        }
    }
    return results;
}

Diagnosis good(std::string reason)
{
    return {.sign = Sign::kGood, .reason = std::move(reason)};
}

Diagnosis wrong(std::string reason, std::string remedy)
{
    return {.sign = Sign::kWrong, .reason = std::move(reason), .remedy = std::move(remedy)};
}

std::string describeMissing(const std::string& path, int error)
{
    return (error == ENOENT) ? fill(tr("There is no {}."), {path})
                             : fill(tr("There is no {1}: {2}."), {path, std::strerror(error)});
}

Diagnosis unneeded(std::string reason)
{
    return {.sign = Sign::kUnneeded, .reason = std::move(reason)};
}

Diagnosis unchecked(std::string reason)
{
    return {.sign = Sign::kUnchecked, .reason = std::move(reason)};
}

} // namespace client
