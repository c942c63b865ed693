// SPDX-License-Identifier: MIT
#include "page/phrase.h"

#include "text/places.h"

namespace page {

Html apart(std::string_view text)
{
    return Html() << "<bdi>" << Text{text} << "</bdi>";
}

Html phrase(std::string_view sentence, std::initializer_list<Html> parts)
{
    Html out;
    text::splitAtPlaces(
        sentence, [&out](std::string_view words) { out << Text{words}; },
        [&out, parts](std::size_t place) {
            out << ((place < parts.size()) ? *(parts.begin() + place) : Html());
        });
    return out;
}

Html phrase(std::string_view sentence, std::span<const std::string> texts)
{
    Html out;
    text::splitAtPlaces(
        sentence, [&out](std::string_view words) { out << Text{words}; },
        [&out, texts](std::size_t place) {
            out << ((place < texts.size()) ? apart(texts[place]) : Html());
        });
    return out;
}

} // namespace page
