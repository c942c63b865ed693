// SPDX-License-Identifier: MIT
#include "bench/request.h"

#include <algorithm>
#include <iterator>

#include "vokcontrol.h"

std::string bench::frame(std::string_view code)
{
    return std::string(code) + " " + std::string(4, '\0') + "\n";
}

void bench::load(std::string_view frame)
{
    std::ranges::fill(fin_buf, '\0');
    frame.copy(std::data(fin_buf), std::size(fin_buf));
}
