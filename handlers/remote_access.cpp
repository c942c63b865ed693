// SPDX-License-Identifier: MIT
#include "handlers/remote_access.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "core/bytes.h"
#include "handlers/handler.h"

namespace handlers {
namespace {

constexpr const char* kSwitchProgram = "/usr/bin/ra-enabled";
constexpr const char* kRegisterProgram = "/usr/bin/ractl";

/// A shell line for the switch program; it is cut at 255 bytes.
using SwitchLine = std::array<char, 256>;

/// How a program ended: its exit status, or nothing if it was killed or never ran.
using ExitStatus = std::optional<int>;

ExitStatus exitStatusOf(int waitStatus)
{
    return WIFEXITED(waitStatus) ? ExitStatus(WEXITSTATUS(waitStatus)) : std::nullopt;
}

// ---- The register program ---------------------------------------------------------------------

/// The register program's arguments.
struct Registration {
    ParameterLine user;
    ParameterLine first;
    ParameterLine second;

    [[nodiscard]] bool isWhole() const
    {
        return !user.isMissing && !first.isMissing && !second.isMissing;
    }
};

/// Waits for one child.
/// @return false with errno set if it cannot be waited for
bool waitFor(pid_t child, int& status)
{
    pid_t ended = 0;
    do {
        ended = ::waitpid(child, &status, 0);
    } while (ended == -1 && errno == EINTR);
    return ended == child;
}

/// Becomes the register program. If that cannot be started, ends the child without flushing or
/// closing the parent's files.
[[noreturn]] void becomeRegisterProgram(const Registration& registration, bool isTraced)
{
    constexpr int kCannotStart = 127;
    ::execl(kRegisterProgram, kRegisterProgram, "registerUser", registration.user.text(),
            registration.first.text(), registration.second.text(), nullptr);
    if (isTraced) {
        dbg_trace("execl %s failed!", kRegisterProgram);
    }
    ::_exit(kCannotStart);
}

/// Runs the register program, without a shell.
/// @param isTraced  whether to trace that the program cannot be started or waited for
/// @return its wait status, or nothing if it could not be started or waited for
std::optional<int> runRegisterProgram(const Registration& registration, bool isTraced)
{
    const pid_t child = ::fork();
    if (child == -1) {
        return std::nullopt;
    }
    if (child == 0) {
        becomeRegisterProgram(registration, isTraced);
    }
    int ended = 0;
    if (waitFor(child, ended)) {
        return ended;
    }
    if (isTraced) {
        dbg_trace("wasu waitpid %s", std::strerror(errno));
    }
    return std::nullopt;
}

void answerDone(Channel& channel)
{
    channel.write(channel.tag());
    channel.write({"\0\n\0\n", 4});
}

// ---- getv -------------------------------------------------------------------------------------

Status takeKey(Channel& channel, std::string_view& key)
{
    key = channel.request().takeBytes(cmdsvc::kWordSize);
    if (key.size() < cmdsvc::kWordSize) {
        dbg_trace("getv: failed to read key: %s", std::strerror(0));
        return kRemoteFailed;
    }
    if (channel.request().takeBytes(1) != "\n") {
        dbg_trace("getv: no trailing newline");
        return kRemoteFailed;
    }
    return kGood;
}

/// The value of a key.
/// @return null for an unknown key
const char* valueOf(std::int32_t key)
{
    switch (key) {
    case 1:
        return getvar("ra_signUpUrl");
    case 2:
        return getvar("ra_signInUrl");
    case 3:
        return "2";
    default:
        return nullptr;
    }
}

Status answerValue(Channel& channel, std::string_view key)
{
    const auto number =
        static_cast<std::int32_t>(core::getU32(std::span(key).first<cmdsvc::kWordSize>()));
    dbg_trace("key is %d", number);
    const char* value = valueOf(number);
    if (value == nullptr) {
        return kRemoteBadRequest;
    }
    if (value[0] == '\0') {
        return kRemoteRefused;
    }
    dbg_trace("getv returning %s", value);
    channel.write(channel.tag());
    channel.write(key);
    std::fprintf(fout_buf, "\n%s\n", value);
    return kGood;
}

Status answerKey(Channel& channel)
{
    std::string_view key;
    const Status status = takeKey(channel, key);
    return (status == kGood) ? answerValue(channel, key) : status;
}

// ---- wags -------------------------------------------------------------------------------------

void answerSwitch(Channel& channel, const char* entity, bool isOn)
{
    channel.write(channel.tag());
    std::fprintf(fout_buf, "%s\n", entity);
    channel.write(isOn ? std::string_view("\1\n", 2) : std::string_view("\0\n", 2));
}

Status answerSystemAccess(Channel& channel)
{
    const char* value = getvar("raclient_raenabled");
    dbg_trace("wags system on: %s", value);
    answerSwitch(channel, "system", value[0] == '1');
    return kGood;
}

Status answerUserAccess(Channel& channel)
{
    ParameterLine user = channel.takeLine(cmdsvc::parameter("wags", "user"));
    if (user.isMissing) {
        return kRemoteBadRequest;
    }
    user.cutNewline();
    SwitchLine line;
    core::formatBounded(line, "%s get \"%s\"", kSwitchProgram, user.text());
    const ExitStatus status = exitStatusOf(core::runShellLine(line.data()).result);
    const bool isOn = status == 0;
    const bool isOff = status == 1;
    if (isOn || isOff) {
        answerSwitch(channel, "user", isOn);
        return kGood;
    }
    return (status == 2) ? kRemoteRefused : kRemoteBadRequest;
}

Status answerAccess(Channel& channel)
{
    ParameterLine entity = channel.takeLine(cmdsvc::parameter("wags", "entity"));
    if (entity.isMissing) {
        dbg_trace("failed to fgets entity %d", 0);
        return kRemoteBadRequest;
    }
    entity.cutNewline();
    dbg_trace("wags entity: %s", entity.text());
    const std::string_view text = entity.text();
    if (text == "system") {
        return answerSystemAccess(channel);
    }
    return (text == "user") ? answerUserAccess(channel) : kRemoteBadRequest;
}

// ---- warp -------------------------------------------------------------------------------------

Status takeNewRegistration(Channel& channel, Registration& registration)
{
    registration.user = channel.takeLine(cmdsvc::parameter("warp", "user"));
    registration.first = channel.takeLine(cmdsvc::parameter("warp", "first value"));
    registration.second = channel.takeLine(cmdsvc::parameter("warp", "second value"));
    registration.user.cutNewline();
    return registration.isWhole() ? kGood : kRemoteFailed;
}

Status signUp(Channel& channel)
{
    Registration registration;
    const Status taken = takeNewRegistration(channel, registration);
    if (taken != kGood) {
        return taken;
    }
    const std::optional<int> ended = runRegisterProgram(registration, false);
    const ExitStatus status = ended ? exitStatusOf(*ended) : std::nullopt;
    if (!status) {
        return kRemoteFailed;
    }
    if (*status != 0) {
        return kRemoteRefused;
    }
    answerDone(channel);
    return kGood;
}

// ---- wasu -------------------------------------------------------------------------------------

enum class Switch { kOff = 0, kOn = 1, kOther };

struct SwitchRequest {
    Registration registration;
    Switch wanted = Switch::kOther;
};

Status takeSwitch(Channel& channel, Switch& wanted)
{
    const std::string_view flag = channel.request().takeBytes(1);
    if (flag.empty() || channel.request().takeBytes(1) != "\n") {
        return kRemoteFailed;
    }
    const std::uint8_t value = core::byteOf(flag[0]);
    wanted = (value == 0 || value == 1) ? static_cast<Switch>(value) : Switch::kOther;
    return kGood;
}

Status takeSwitchRequest(Channel& channel, SwitchRequest& request)
{
    Registration& registration = request.registration;
    registration.user = channel.takeLine(cmdsvc::parameter("wasu", "user"));
    registration.first = channel.takeLine(cmdsvc::parameter("wasu", "first value"));
    registration.second = channel.takeLine(cmdsvc::parameter("wasu", "second value"));
    if (!registration.isWhole()) {
        return kRemoteFailed;
    }
    for (ParameterLine* line : {&registration.user, &registration.first, &registration.second}) {
        line->cutNewline();
    }
    return takeSwitch(channel, request.wanted);
}

Status switchOn(Channel& channel, const Registration& registration)
{
    const std::optional<int> ended = runRegisterProgram(registration, true);
    if (!ended) {
        return kRemoteFailed;
    }
    const ExitStatus status = exitStatusOf(*ended);
    if (!status) {
        dbg_trace("wasu %s did not exit cleanly", kRegisterProgram);
        return kRemoteFailed;
    }
    if (*status != 0) {
        dbg_trace("wasu %s exits with status %d", kRegisterProgram, *status);
        return kRemoteRefused;
    }
    answerDone(channel);
    dbg_trace("wasu success");
    return kGood;
}

Status switchOff(Channel& channel, const char* user)
{
    SwitchLine line;
    core::formatBounded(line, "%s set \"%s\" %s", kSwitchProgram, user, "off");
    dbg_trace("wasu system %s", line.data());
    const ExitStatus status = exitStatusOf(core::runShellLine(line.data()).result);
    if (!status) {
        dbg_trace("wasu did not exit cleanly");
        return kRemoteFailed;
    }
    dbg_trace("wasu exited with status %d", *status);
    if (*status == 0) {
        answerDone(channel);
        return kGood;
    }
    return (*status == 2) ? kRemoteRefused : kRemoteFailed;
}

Status switchAccess(Channel& channel)
{
    SwitchRequest request;
    const Status status = takeSwitchRequest(channel, request);
    if (status != kGood) {
        return status;
    }
    const Registration& registration = request.registration;
    dbg_trace("wasu %s %s", registration.user.text(), registration.first.text());
    switch (request.wanted) {
    case Switch::kOn:
        return switchOn(channel, registration);
    case Switch::kOff:
        return switchOff(channel, registration.user.text());
    case Switch::kOther:
        break;
    }
    return kGood; // without any answer
}

} // namespace
} // namespace handlers

void cmd_getv(void)
{
    cmdsvc::serve(cmdsvc::command("getv"), handlers::answerKey);
}

void cmd_wags(void)
{
    cmdsvc::serve(cmdsvc::command("wags"), handlers::answerAccess);
}

void cmd_warp(void)
{
    cmdsvc::serve(cmdsvc::command("warp"), handlers::signUp);
}

void cmd_wasu(void)
{
    cmdsvc::serve(cmdsvc::command("wasu"), handlers::switchAccess);
}
