// SPDX-License-Identifier: MIT
#include "client/numbers.h"

#include <limits>

#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::tr;

/// As the library reads it afterwards, so that no number passes only one of the two.
bool isFrom(const std::string& text, unsigned least, unsigned most)
{
    unsigned number = 0;
    return CLI::detail::lexical_cast(text, number) && number >= least && number <= most;
}

} // namespace

CLI::Validator numberFrom(const std::string& option, unsigned least, unsigned most)
{
    const std::string low = std::to_string(least);
    const std::string high = std::to_string(most);
    const auto complain = [=](const std::string& text) {
        return isFrom(text, least, most)
                   ? std::string()
                   : fill(tr("{1} needs a number from {2} to {3}."), {option, low, high});
    };
    return CLI::Validator(complain, "UINT in [" + low + " - " + high + "]");
}

CLI::Validator secondsAboveZero(const std::string& option)
{
    const auto complain = [option](const std::string& text) {
        constexpr unsigned kMost = std::numeric_limits<unsigned>::max();
        return isFrom(text, 1, kMost) ? std::string()
                                      : fill(tr("{} needs a number of seconds above 0."), {option});
    };
    return CLI::Validator(complain, "POSITIVE");
}

} // namespace client
