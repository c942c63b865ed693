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

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"

namespace handlers {
namespace {

using cmdsvc::kRemoteBadRequest;
using cmdsvc::kRemoteFailed;
using cmdsvc::kRemoteRefused;

constexpr const char* kSwitchProgram = "/usr/bin/ra-enabled";
constexpr const char* kRegisterProgram = "/usr/bin/ractl";

/// A parameter line, or a shell line for the switch program; each is cut at 255 bytes.
using Line = std::array<char, 256>;

/// Each step gives back the code of the error that the command ends with, or kGood.
void endUnlessGood(std::uint32_t code)
{
    if (code != cmdsvc::kGood) {
        cmdsvc::endWithError(code);
    }
}

/// How a program ended: its exit status, or nothing where it was killed or never ran.
using ExitStatus = std::optional<int>;

ExitStatus exitStatusOf(int waitStatus)
{
    return WIFEXITED(waitStatus) ? ExitStatus(WEXITSTATUS(waitStatus)) : std::nullopt;
}

// ---- Signing up -------------------------------------------------------------------------------

/// What the register program is given.
struct Registration {
    Line user;
    Line first;
    Line second;
};

/// @param room  of each line's buffer
bool readRegistration(Registration& registration, std::size_t room)
{
    FILE* request = cmdsvc::requestStream();
    return core::readLine(request, std::span(registration.user).first(room)) &&
           core::readLine(request, std::span(registration.first).first(room)) &&
           core::readLine(request, std::span(registration.second).first(room));
}

/// Becomes the register program; comes back only where that cannot be started.
void becomeRegisterProgram(const Registration& registration)
{
    ::execl(kRegisterProgram, kRegisterProgram, "registerUser", registration.user.data(),
            registration.first.data(), registration.second.data(), nullptr);
}

/// Leaves a child without touching what its parent has open.
[[noreturn]] void leaveChild()
{
    constexpr int kCannotStart = 127;
    ::_exit(kCannotStart);
}

/// Waits for one child.
/// @return false with errno set when it cannot be waited for
bool waitFor(pid_t child, int& status)
{
    pid_t ended = 0;
    do {
        ended = ::waitpid(child, &status, 0);
    } while (ended == -1 && errno == EINTR);
    return ended == child;
}

void answerDone(std::string_view tag)
{
    cmdsvc::writeAnswer(tag);
    cmdsvc::writeAnswer({" \0\n\0\n", 5});
}

// ---- getv -------------------------------------------------------------------------------------

using KeyBytes = std::array<char, cmdsvc::kWordSize>;

bool readKey(KeyBytes& key)
{
    FILE* request = cmdsvc::requestStream();
    errno = 0;
    if (std::fread(key.data(), 1, key.size(), request) < key.size()) {
        dbg_trace("getv: failed to read key: %s", std::strerror(errno));
        return false;
    }
    if (std::fgetc(request) != '\n') {
        dbg_trace("getv: no trailing newline");
        return false;
    }
    return true;
}

/// The value behind a key.
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

std::uint32_t tellValue()
{
    KeyBytes bytes;
    if (!readKey(bytes)) {
        return kRemoteFailed;
    }
    const auto key = static_cast<std::int32_t>(core::getU32(bytes));
    dbg_trace("key is %d", key);
    const char* value = valueOf(key);
    if (value == nullptr) {
        return kRemoteBadRequest;
    }
    if (value[0] == '\0') {
        return kRemoteRefused;
    }
    dbg_trace("getv returning %s", value);
    cmdsvc::writeAnswer("getv ");
    cmdsvc::writeAnswer({bytes.data(), bytes.size()});
    std::fprintf(fout_buf, "\n%s\n", value);
    return cmdsvc::kGood;
}

// ---- wags -------------------------------------------------------------------------------------

void answerSwitch(const char* entity, bool isOn)
{
    std::fprintf(fout_buf, "wags %s\n", entity);
    cmdsvc::writeAnswer(isOn ? std::string_view("\1\n", 2) : std::string_view("\0\n", 2));
}

std::uint32_t tellSystemAccess()
{
    const char* value = getvar("raclient_raenabled");
    dbg_trace("wags system on: %s", value);
    answerSwitch("system", value[0] == '1');
    return cmdsvc::kGood;
}

std::uint32_t tellUserAccess()
{
    Line user;
    if (!core::readLine(cmdsvc::requestStream(), user)) {
        return kRemoteBadRequest;
    }
    cmdsvc::cutNewline(user.data());
    Line line;
    core::formatBounded(line, "%s get \"%s\"", kSwitchProgram, user.data());
    const ExitStatus status = exitStatusOf(core::runShellLine(line.data()).result);
    const bool isOn = status == 0;
    const bool isOff = status == 1;
    if (isOn || isOff) {
        answerSwitch("user", isOn);
        return cmdsvc::kGood;
    }
    return (status == 2) ? kRemoteRefused : kRemoteBadRequest;
}

std::uint32_t tellAccess()
{
    Line entity;
    errno = 0;
    if (!core::readLine(cmdsvc::requestStream(), entity)) {
        dbg_trace("failed to fgets entity %d", errno);
        return kRemoteBadRequest;
    }
    cmdsvc::cutNewline(entity.data());
    dbg_trace("wags entity: %s", entity.data());
    const std::string_view text = entity.data();
    if (text == "system") {
        return tellSystemAccess();
    }
    return (text == "user") ? tellUserAccess() : kRemoteBadRequest;
}

// ---- warp -------------------------------------------------------------------------------------

std::uint32_t signUp()
{
    // Its lines have always been a byte shorter than those of the other commands.
    constexpr std::size_t kRoom = std::tuple_size_v<Line> - 1;
    Registration registration;
    if (!readRegistration(registration, kRoom)) {
        return kRemoteFailed;
    }
    cmdsvc::cutNewline(registration.user.data());
    const pid_t child = ::fork();
    if (child == 0) {
        becomeRegisterProgram(registration);
        leaveChild();
    }
    int ended = 0;
    if (child == -1 || !waitFor(child, ended)) {
        return kRemoteFailed;
    }
    const ExitStatus status = exitStatusOf(ended);
    if (!status) {
        return kRemoteFailed;
    }
    if (*status != 0) {
        return kRemoteRefused;
    }
    answerDone("warp");
    return cmdsvc::kGood;
}

// ---- wasu -------------------------------------------------------------------------------------

enum class Switch { kOff = 0, kOn = 1, kOther };

struct SwitchRequest {
    Registration registration;
    Switch wanted;
};

bool readSwitch(SwitchRequest& request)
{
    Registration& registration = request.registration;
    if (!readRegistration(registration, std::tuple_size_v<Line>)) {
        return false;
    }
    const int flag = std::fgetc(cmdsvc::requestStream());
    if (flag == EOF || std::fgetc(cmdsvc::requestStream()) != '\n') {
        return false;
    }
    request.wanted = (flag == 0 || flag == 1) ? static_cast<Switch>(flag) : Switch::kOther;
    for (Line* line : {&registration.user, &registration.first, &registration.second}) {
        cmdsvc::cutNewline(line->data());
    }
    return true;
}

std::uint32_t judgeRegistering(int ended)
{
    const ExitStatus status = exitStatusOf(ended);
    if (!status) {
        dbg_trace("wasu %s did not exit cleanly", kRegisterProgram);
        return kRemoteFailed;
    }
    if (*status != 0) {
        dbg_trace("wasu %s exits with status %d", kRegisterProgram, *status);
        return kRemoteRefused;
    }
    answerDone("wasu");
    dbg_trace("wasu success");
    return cmdsvc::kGood;
}

std::uint32_t switchOn(const Registration& registration)
{
    const pid_t child = ::fork();
    if (child == -1) {
        return kRemoteFailed;
    }
    if (child == 0) {
        becomeRegisterProgram(registration);
        dbg_trace("execl %s failed!", kRegisterProgram);
        leaveChild();
    }
    int ended = 0;
    if (!waitFor(child, ended)) {
        dbg_trace("wasu waitpid %s", std::strerror(errno));
        return kRemoteFailed;
    }
    return judgeRegistering(ended);
}

std::uint32_t switchOff(const char* user)
{
    Line line;
    core::formatBounded(line, "%s set \"%s\" %s", kSwitchProgram, user, "off");
    dbg_trace("wasu system %s", line.data());
    const ExitStatus status = exitStatusOf(core::runShellLine(line.data()).result);
    if (!status) {
        dbg_trace("wasu did not exit cleanly");
        return kRemoteFailed;
    }
    dbg_trace("wasu exited with status %d", *status);
    if (*status == 0) {
        answerDone("wasu");
        return cmdsvc::kGood;
    }
    return (*status == 2) ? kRemoteRefused : kRemoteFailed;
}

std::uint32_t switchAccess()
{
    SwitchRequest request;
    if (!readSwitch(request)) {
        return kRemoteFailed;
    }
    const Registration& registration = request.registration;
    dbg_trace("wasu %s %s", registration.user.data(), registration.first.data());
    switch (request.wanted) {
    case Switch::kOn:
        return switchOn(registration);
    case Switch::kOff:
        return switchOff(registration.user.data());
    case Switch::kOther:
        break;
    }
    return cmdsvc::kGood; // and no answer at all
}

} // namespace
} // namespace handlers

void cmd_getv(void)
{
    handlers::endUnlessGood(handlers::tellValue());
}

void cmd_wags(void)
{
    handlers::endUnlessGood(handlers::tellAccess());
}

void cmd_warp(void)
{
    handlers::endUnlessGood(handlers::signUp());
}

void cmd_wasu(void)
{
    handlers::endUnlessGood(handlers::switchAccess());
}
