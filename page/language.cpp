// SPDX-License-Identifier: MIT
#include "page/language.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <string>

#include "page/layout.h"
#include "page/pages.h"
#include "page/request.h"
#include "page/routes.h"
#include "page/script.h"
#include "text/choice.h"
#include "text/translation.h"
#include "vokcontrol.h"

namespace page {
namespace {

using core::Language;
using text::tr;

constexpr std::string_view kLanguageCookie = "vokpage_language";
constexpr std::chrono::seconds kYear = std::chrono::hours(365 * 24);

/// What the visitor has chosen; null if nothing, or if another site has added a cookie of that
/// name.
const Language* chosenLanguage(const Variables& variables)
{
    try {
        return text::languageOf(cookieValue(variables["HTTP_COOKIE"], kLanguageCookie));
    } catch (const Refusal&) {
        return nullptr;
    }
}

const Language* preferredLanguage(const Variables& variables)
{
    return text::preferredLanguage(variables["HTTP_ACCEPT_LANGUAGE"]);
}

/// The language that the setup has stored; null before the first setup.
const Language* languageOfAppliance()
{
    Script unused;
    return unused.run([]() -> const Language* {
        const bool isSetUp = ::getvar("firsttime")[0] == '0';
        return isSetUp ? core::findLanguage(::getvar("language_current")) : nullptr;
    });
}

const Language& orEnglish(const Language* language)
{
    return (language != nullptr) ? *language : core::kEnglish;
}

/// Whether a query has only what browsers leave as it is in one.
bool isQuery(std::string_view query)
{
    constexpr std::string_view kAllowed = "-._~%=&+*0123456789abcdefghijklmnopqrstuvwxyz"
                                          "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return query.find_first_not_of(kAllowed) == query.npos;
}

/// Leads to the page that the form was on, and nowhere else than to a page of ours.
Page leadBack(std::string_view from)
{
    const std::size_t end = std::min(from.find('?'), from.size());
    const std::span<const PageEntry> all = pages();
    const auto entry = std::ranges::find(all, from.substr(0, end), &PageEntry::path);
    Page page;
    page.next = "";
    if (entry == all.end() || !entry->read) {
        return page;
    }
    page.next = entry->path;
    if (end < from.size() && isQuery(from.substr(end + 1))) {
        page.nextQuery = from.substr(end);
    }
    return page;
}

Html languageButton(const Language& language)
{
    Html out;
    out << R"(<li><button name="language" value=")" << Text{language.tag} << R"(" lang=")"
        << Text{language.tag} << R"(")";
    if (&language == &text::spoken()) {
        out << R"( aria-current="true")";
    }
    return out << ">" << Text{language.ownName} << "</button></li>\n";
}

} // namespace

const Language& languageOfBrowser(const Variables& variables)
{
    const Language* chosen = chosenLanguage(variables);
    return orEnglish((chosen != nullptr) ? chosen : preferredLanguage(variables));
}

const Language& languageOfVisitor(const Variables& variables)
{
    if (const Language* chosen = chosenLanguage(variables)) {
        return *chosen;
    }
    const Language* set = languageOfAppliance();
    return orEnglish((set != nullptr) ? set : preferredLanguage(variables));
}

Html languageForm(std::string_view token, std::string_view path, std::string_view query)
{
    Html out;
    out << openForm(token, "/language") << R"(<input type="hidden" name="from" value=")"
        << Text{path} << Text{query.empty() ? "" : "?"} << Text{query} << R"(">
<ul class="languages" aria-label=")"
        << Text{tr("Language")} << "\">\n";
    for (const Language& language : core::kLanguages) {
        out << languageButton(language);
    }
    return out << "</ul>\n</form>\n";
}

Page makeLanguage(Visit& visit)
{
    const Language* language = text::languageOf(visit.request.form.value("language"));
    if (language == nullptr) {
        throw Refusal(kBadRequest, tr("Choose one of the languages."));
    }
    Page page = leadBack(visit.request.form.value("from"));
    page.cookies = {{.name = kLanguageCookie, .value = language->tag, .kept = kYear}};
    return page;
}

} // namespace page
