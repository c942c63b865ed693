// SPDX-License-Identifier: MIT
#include "page/overview_collection.h"

#include <algorithm>
#include <charconv>

#include "page/layout.h"
#include "page/phrase.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using text::tr;

Html startTime(std::time_t since)
{
    std::tm local = {};
    ::localtime_r(&since, &local);
    return Html() << Text{view::formatTime("%H:%M", local)};
}

Html number(std::uint64_t value)
{
    return Html() << Text{std::to_string(value)};
}

/// "Measuring Media, share 3 of 8, since 18:56."
Html progressWords(const view::Progress& progress)
{
    const Html name = apart(progress.share);
    const Html since = startTime(progress.since.value_or(0));
    if (progress.place > 0) {
        return phrase(tr("Measuring {1}, share {2} of {3}, since {4}."),
                      {name, number(progress.place), number(progress.count), since});
    }
    if (!progress.share.empty()) {
        return phrase(tr("Measuring {1}, since {2}."), {name, since});
    }
    return phrase(tr("Measuring since {}."), {since});
}

/// As long as the shares that have been measured.
Html progressBar(const view::Progress& progress)
{
    if (progress.place == 0) {
        return {};
    }
    return Html() << R"(<progress aria-labelledby="progress" max=")"
                  << Text{std::to_string(progress.count)} << R"(" value=")"
                  << Text{std::to_string(progress.place - 1)} << "\"></progress>\n";
}

/// Twice as long each time, and at most 5 minutes.
unsigned readWait(std::string_view text)
{
    constexpr unsigned kFirst = 3;
    constexpr unsigned kLongest = 300;
    unsigned seconds = kFirst;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return (read.ec == std::errc()) ? std::clamp(seconds, kFirst, kLongest) : kFirst;
}

} // namespace

view::Progress findProgress(const view::PublishedStatus& status)
{
    return status.isCollecting
               ? view::findProgress(view::findCollector(view::listProcesses()), status)
               : view::Progress();
}

Html collectionState(const view::PublishedStatus& status, const view::Progress& progress)
{
    if (status.isCollecting) {
        return Html() << R"(<p id="progress" data-collecting>)" << progressWords(progress)
                      << "</p>\n"
                      << progressBar(progress);
    }
    if (status.isInterrupted) {
        return Html() << "<p>" << Text{tr("The last collection was interrupted.")} << "</p>\n";
    }
    return Html() << R"(<p class="quiet">)" << Text{tr("No collection is running.")} << "</p>\n";
}

Html measureForm(std::string_view token, const ShareOrder& order)
{
    return Html() << openForm(token, "/collection") << R"(<input type="hidden" name="sort" value=")"
                  << Text{order.key} << R"(">
<button class="main" id="measure">)"
                  << Text{tr("Measure now")} << "</button>\n</form>\n";
}

Html reloadWithoutScript(const ShareOrder& order, std::string_view wait)
{
    const unsigned seconds = readWait(wait);
    return Html() << R"(<noscript><meta http-equiv="refresh" content=")"
                  << Text{std::to_string(seconds)} << ";url=" << kProgramUrl
                  << "?sort=" << Text{order.key}
                  << "&amp;wait=" << Text{std::to_string(2 * seconds)} << "\"></noscript>\n";
}

} // namespace page
