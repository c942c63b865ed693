// SPDX-License-Identifier: MIT
#include "page/clock.h"

#include <ctime>

namespace page {

Time now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return Time(time.tv_sec);
}

} // namespace page
