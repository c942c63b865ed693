// SPDX-License-Identifier: MIT
#include "guard/guard.h"

#include <cerrno>
#include <optional>

#include "guard/log.h"
#include "guard/run.h"
#include "guard/shapes.h"
#include "guard/trace.h"

namespace {

// The wait status of a shell that cannot parse its line.
constexpr int kRefused = 2 << 8;

int writeQuietly(const guard::Trace& trace)
{
    const int callersError = errno;
    const int result = guard::writeTrace(trace);
    errno = callersError;
    return result;
}

int refuse(const guard::Verdict& verdict)
{
    const int callersError = errno;
    guard::logRefusal(verdict);
    errno = callersError;
    return kRefused;
}

} // namespace

int guard::carryOut(const char* line)
{
    if (line == nullptr) {
        return 1;
    }
    if (const std::optional<Trace> trace = readTrace(line)) {
        return writeQuietly(*trace);
    }
    const Verdict verdict = judge(line);
    return verdict.isKnown ? runShell(line) : refuse(verdict);
}
