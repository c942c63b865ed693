// SPDX-License-Identifier: MIT
#include "page/deed.h"

#include <algorithm>

#include "core/bytes.h"
#include "page/form.h"
#include "page/layout.h"
#include "page/phrase.h"
#include "text/translation.h"

namespace page {
namespace {

/// Every byte as "%41": a cookie takes few characters as they are.
std::string encode(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        out += '%';
        core::appendHex(out, std::string_view(&c, 1));
    }
    return out;
}

} // namespace

Cookie cookieOf(const Deed& deed)
{
    std::string value = "kind=" + encode(deed.kind);
    for (std::size_t at = 0; at < deed.names.size(); ++at) {
        value += "&" + std::to_string(at) + "=" + encode(deed.names[at]);
    }
    return {.name = kDeedCookie, .value = value};
}

Page leadTo(std::string_view path, const Deed& deed)
{
    Page page;
    page.next = path;
    page.cookies = {cookieOf(deed)};
    return page;
}

std::optional<Deed> readDeed(std::string_view cookie)
{
    const Form fields(cookie);
    if (fields.value("kind").empty()) {
        return std::nullopt;
    }
    Deed deed{.kind = std::string(fields.value("kind")), .names = {}};
    while (const std::string* name = fields.find(std::to_string(deed.names.size()))) {
        deed.names.push_back(*name);
    }
    return deed;
}

Html tellDeed(const Request& request, std::span<const DeedSentence> sentences,
              std::vector<Cookie>& cookies)
{
    const std::optional<Deed> deed = readDeed(request.deed);
    if (!deed) {
        return {};
    }
    const auto told = std::ranges::find(sentences, deed->kind, &DeedSentence::kind);
    if (told == sentences.end()) {
        return {};
    }
    cookies.push_back({.name = kDeedCookie, .value = ""});
    return notice(Mood::kGood,
                  Html() << "<p>" << phrase(text::tr(told->sentence), deed->names) << "</p>");
}

} // namespace page
