// SPDX-License-Identifier: MIT
#include "page/phrase.h"

#include <string_view>

namespace page {

Html phrase(Literal sentence, std::span<const std::string> texts)
{
    constexpr std::string_view kPlace = "{}";
    Html out;
    std::string_view rest = sentence.view();
    for (std::size_t place = rest.find(kPlace); place != rest.npos; place = rest.find(kPlace)) {
        out << Text{rest.substr(0, place)};
        if (!texts.empty()) {
            out << "<bdi>" << Text{texts.front()} << "</bdi>";
            texts = texts.subspan(1);
        }
        rest.remove_prefix(place + kPlace.size());
    }
    return out << Text{rest};
}

} // namespace page
