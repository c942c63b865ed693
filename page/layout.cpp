// SPDX-License-Identifier: MIT
#include "page/layout.h"

#include "page/form.h"
#include "page/language.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;
using text::trc;

Html head(const Frame& frame, const Page& page)
{
    Html out;
    out << R"(<!DOCTYPE html>
<html lang=")"
        << Text{text::spoken().tag} << R"(">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>)"
        << Text{page.title};
    if (!frame.applianceName.empty()) {
        out << " &middot; " << Text{frame.applianceName};
    }
    out << R"(</title>
<link rel="icon" href="/icon.svg" type="image/svg+xml">
<link rel="stylesheet" href="/style.css">
)" << page.head;
    return out;
}

/// What the module's functions printed; the page's own script file comes behind it and may call it.
Html scripts(const Frame& frame, const Script& script)
{
    Html out;
    if (!script.text().empty()) {
        out << R"(<script nonce=")" << Text{frame.nonce} << "\">\n" << script << "</script>\n";
    }
    out << R"(<script src="/page.js" defer></script>
</head>
)";
    return out;
}

/// The pages that the visitor may read.
Html navigation(const Frame& frame)
{
    if (frame.visitor.account.empty()) {
        return {};
    }
    Html out;
    out << R"(<nav aria-label=")" << Text{tr("Pages")} << R"("><ul>)";
    for (const PageEntry& entry : frame.pages) {
        if (!entry.isListed || !entry.read || !admits(*entry.read, frame.visitor)) {
            continue;
        }
        out << R"(<li><a href=")" << kProgramUrl << Text{entry.path} << R"(")";
        if (entry.path == frame.path) {
            out << R"( aria-current="page")";
        }
        out << ">" << Text{tr(entry.label)} << "</a></li>";
    }
    out << "</ul></nav>\n";
    return out;
}

/// Who has logged in, and the way out of a session of ours.
Html login(const Frame& frame)
{
    Html out;
    if (frame.visitor.hasSession) {
        out << openForm(frame.token, "/logout") << R"(<p class="who"><bdi>)"
            << Text{frame.visitor.account} << "</bdi> <button>" << Text{tr("Log out")}
            << "</button></p>\n</form>\n";
    } else if (!frame.visitor.account.empty()) {
        out << R"(<p class="who"><bdi>)" << Text{frame.visitor.account} << "</bdi></p>\n";
    }
    return out;
}

Html banner(const Frame& frame)
{
    Html out;
    out << R"(<body>
<a class="skip" href="#main">)"
        << Text{tr("Skip to the content")} << R"(</a>
<header><div class="wide">
<p class="brand"><img src="/icon.svg" alt="" width="28" height="28"><bdi>)";
    if (frame.applianceName.empty()) {
        out << Text{tr("Storage appliance")};
    } else {
        out << Text{frame.applianceName};
    }
    out << "</bdi></p>\n" << navigation(frame) << login(frame) << "</div></header>\n";
    return out;
}

/// The languages, unless the visitor is not known, and what to do about messages.
Html foot(const Frame& frame)
{
    Html out;
    out << R"(<footer><div class="wide">
)";
    if (!frame.token.empty()) {
        out << languageForm(frame.token, frame.path, frame.query);
    }
    out << R"(<p class="about"><a href=")" << kProgramUrl << R"(/help">)"
        << Text{tr("Troubleshooting")} << "</a>";
    // A version tells a stranger which faults to look for.
    if (!frame.visitor.account.empty()) {
        out << " <span>vokcontrol " << Literal(VOKPAGE_VERSION) << "</span>";
    }
    return out << "</p>\n</div></footer>\n";
}

} // namespace

Html layOut(const Frame& frame, const Page& page, const Script& script)
{
    return Html() << head(frame, page) << scripts(frame, script) << banner(frame)
                  << R"(<main id="main" class="wide">
<h1>)" << Text{page.title}
                  << "</h1>\n"
                  << page.body << "</main>\n"
                  << foot(frame) << "</body>\n</html>\n";
}

Html openForm(std::string_view token, Literal path)
{
    return Html() << R"(<form method="post" action=")" << kProgramUrl << path << R"(">
<input type="hidden" name="token" value=")"
                  << Text{token} << "\">\n";
}

Html shareLink(std::string_view name)
{
    return Html() << R"(<a href=")" << kProgramUrl << "/share?name=" << Text{encodeUrl(name)}
                  << R"("><bdi>)" << Text{name} << "</bdi></a>";
}

Html fact(std::string_view label, std::string_view value)
{
    Html out;
    out << "<div><dt>" << Text{label} << "</dt><dd>";
    if (value.empty()) {
        out << R"(<span class="quiet">)" << Text{tr("not known")} << "</span>";
    } else {
        out << "<bdi>" << Text{value} << "</bdi>";
    }
    out << "</dd></div>\n";
    return out;
}

Html badge(Literal colour, Literal sign, std::string_view word)
{
    return Html() << R"(<span class="badge )" << colour << R"("><span aria-hidden="true">)" << sign
                  << "</span> " << Text{word} << "</span>";
}

Html setupSteps(bool isFirstTime)
{
    Html out;
    out << R"(<ol class="steps">)";
    if (isFirstTime) {
        out << "\n<li aria-current=\"step\">" << Text{tr("Administrator")} << "</li>";
    }
    return out << R"(
<li data-step="0">)"
               << Text{tr("Name and language")} << R"(</li>
<li data-step="1">)"
               << Text{tr("Public share")} << R"(</li>
<li data-step="2">)"
               << Text{trc("step of the setup", "Check")} << "</li>\n</ol>\n";
}

std::string nameRule(std::size_t mostBytes)
{
    return text::fill(tr("The name has at most {} bytes. Letters A to Z, digits, blanks, dots, "
                         "hyphens and underscores take one each, accented letters two, Chinese "
                         "characters three."),
                      {std::to_string(mostBytes)});
}

Html complaint(Literal id, std::string_view words)
{
    if (words.empty()) {
        return {};
    }
    return Html() << R"(<p class="complaint" id=")" << id
                  << R"("><span aria-hidden="true">&#10005;</span> )" << Text{words} << "</p>\n";
}

Html invalidMark(Literal id, std::string_view words)
{
    if (words.empty()) {
        return {};
    }
    return Html() << R"( aria-invalid="true" aria-describedby=")" << id << R"(")";
}

Html notice(Mood mood, const Html& content)
{
    Html out;
    if (mood == Mood::kBad) {
        out << R"(<div class="notice bad" role="alert">)";
    } else if (mood == Mood::kGood) {
        out << R"(<div class="notice good" role="status">)";
    } else {
        out << R"(<div class="notice">)";
    }
    out << content << "</div>\n";
    return out;
}

} // namespace page
