// SPDX-License-Identifier: MIT
#include "page/overview_findings.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "page/layout.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

Html levelBadge(view::Level level)
{
    return (level == view::Level::kCritical) ? badge("old", "&#10005;", tr("Critical"))
                                             : badge("ageing", "!", tr("Warning"));
}

/// A narrow window may break a path after each slash.
Html breakable(std::string_view sentence)
{
    Html out;
    while (!sentence.empty()) {
        const std::size_t slash = sentence.find('/');
        const std::size_t end = std::min(slash, sentence.size() - 1) + 1;
        out << Text{sentence.substr(0, end)} << (end == slash + 1 ? Literal("<wbr>") : Literal(""));
        sentence.remove_prefix(end);
    }
    return out;
}

Html findingItem(const view::Finding& finding)
{
    return Html() << "\n<li>" << levelBadge(finding.level) << " <bdi>"
                  << breakable(finding.sentence) << "</bdi></li>";
}

std::string heading(std::size_t count)
{
    return text::fill(text::trn("{} thing needs attention", "{} things need attention", count),
                      {std::to_string(count)});
}

} // namespace

Html findingsNotice(const std::vector<view::Finding>& findings)
{
    if (findings.empty()) {
        return Html() << R"(<p class="notice good"><span aria-hidden="true">&#10003;</span> )"
                      << Text{tr("Nothing needs attention.")} << "</p>\n";
    }
    const bool isBad = view::worstOf(findings) == view::Level::kCritical;
    Html out;
    out << R"(<section class="notice )" << (isBad ? Literal("bad") : Literal("warn"))
        << R"(" aria-labelledby="attention">
<h2 id="attention">)"
        << Text{heading(findings.size())} << R"(</h2>
<ul class="findings">)";
    for (const view::Finding& finding : findings) {
        out << findingItem(finding);
    }
    out << "\n</ul>\n</section>\n";
    return out;
}

} // namespace page
