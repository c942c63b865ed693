// SPDX-License-Identifier: MIT
//
// Checks a request with the gate, and its text in every place of a shell line.
#include "fuzz/fuzz.h"
#include "service/gate.h"
#include "service/shell_text.h"
#include "vokcontrol.h"

namespace {

void checkRefusal(const service::Refusal& refusal)
{
    fuzz::require(!refusal.parameter.empty() && !refusal.answer.empty());
}

void judgeText(std::string_view text)
{
    using enum cmdsvc::ShellContext;
    for (const cmdsvc::ShellContext context :
         {kNowhere, kDoubleQuotes, kSingleQuotes, kName, kNameLine, kNewUser, kWord, kClock,
          kEscaped, kSize}) {
        [[maybe_unused]] const bool isHarmless = service::isHarmless(text, context);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view request = fuzz::textOf(data, size).substr(0, VOK_REQUEST_SIZE);
    if (const auto refusal = service::examine(request)) {
        checkRefusal(*refusal);
    }
    judgeText(request);
    return 0;
}
