// SPDX-License-Identifier: MIT
#include "service/password_pauses.h"

#include <algorithm>
#include <array>
#include <span>

#include "cmdsvc/protocol.h"
#include "cmdsvc/request_reader.h"

namespace service {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kCheck = "wall";

bool isWrongPassword(std::string_view answer)
{
    if (answer.size() != cmdsvc::kErrorTag.size() + cmdsvc::kWordSize ||
        !answer.starts_with(cmdsvc::kErrorTag)) {
        return false;
    }
    const auto code = std::span(answer).last<cmdsvc::kWordSize>();
    return core::getU32(code) == cmdsvc::wordOf(cmdsvc::kNotVerified);
}

} // namespace

const PasswordPauses::Failures* PasswordPauses::failuresOf(uid_t user, Clock::time_point now) const
{
    const auto found = failures_.find(user);
    const bool isRemembered = found != failures_.end() && now - found->second.last < kMemory;
    return isRemembered ? &found->second : nullptr;
}

milliseconds PasswordPauses::remaining(uid_t user, Clock::time_point now) const
{
    const Failures* failures = failuresOf(user, now);
    if (failures == nullptr) {
        return milliseconds::zero();
    }
    const auto rest = failures->last + failures->pause - now;
    return std::max(std::chrono::ceil<milliseconds>(rest), milliseconds::zero());
}

void PasswordPauses::judge(uid_t user, std::string_view answer, Clock::time_point now)
{
    if (answer.starts_with(kCheck)) {
        failures_.erase(user);
    } else if (isWrongPassword(answer)) {
        const Failures* former = failuresOf(user, now);
        const milliseconds next = (former == nullptr) ? kFirst : 2 * former->pause;
        failures_[user] = {std::min(next, longest_), now};
    }
}

bool isPasswordCheck(std::string_view request)
{
    return cmdsvc::codeOf(request) == cmdsvc::codeWord(kCheck);
}

} // namespace service
