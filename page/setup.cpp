// SPDX-License-Identifier: MIT
//
// The setup: a form of several steps. Each step carries the answers of those before it along, so
// that nothing is stored before the last.
#include <array>
#include <string>
#include <vector>

#include "core/languages.h"
#include "page/layout.h"
#include "page/pages.h"
#include "page/phrase.h"
#include "page/public_share.h"
#include "page/service.h"
#include "page/setup_apply.h"
#include "page/setup_form.h"
#include "text/translation.h"
#include "vokcontrol.h"

namespace page {
namespace {

using text::tr;

constexpr Literal kUrl = "/setup";

/// Where the setup stands.
struct Setup {
    SetupStep step;
    SetupValues values;
    bool isRefused;    ///< as in Standing, or as the appliance has it
    PublicShare share; ///< from the summary on
    std::vector<std::string> failures;
};

// ---- Steps ------------------------------------------------------------------------------------

/// The language that is chosen already. Before the first setup the appliance's own says nothing
/// about who sets it up; the one that the page is shown in does.
std::string languageToBegin()
{
    const bool isSetUp = ::getvar("firsttime")[0] == '0';
    return isSetUp ? ::kytegetSysVar("<language>", "tovGetLanguage") : text::spoken().name;
}

/// What the appliance has now stands in the fields that nobody has filled yet.
void fillIn(SetupValues& values)
{
    if (values.language.empty()) {
        values.language = languageToBegin();
    }
    if (values.hostName.empty()) {
        values.hostName = ::getvar("machine_name");
    }
    if (values.shareName.empty()) {
        values.shareName = ::getvar("pel_pubshare_name");
    }
}

/// Has the module say which step this is, to the page's script and to us.
SetupStep announce(const Form& form, SetupStep step)
{
    Form announced = form;
    announced.set("next_page", std::to_string(step));
    const CurrentForm current(announced);
    return static_cast<SetupStep>(::printNextPage());
}

/// Looks for the public share, and creates it at the end. With a name that cannot be taken the form
/// goes back to the step that asks for it, before anything is stored.
void provideShare(const Visit& visit, Setup& setup)
{
    if (setup.step < kSummary) {
        return;
    }
    const auto provide = (setup.step == kApplied) ? providePublicShare : findPublicShare;
    setup.share = provide(connectionOf(visit.settings), setup.values.shareName);
    if (setup.share.state == PublicShare::State::kBadName) {
        setup.step = kSharing;
        setup.isRefused = true;
    }
}

Setup currentStep(Visit& visit)
{
    return visit.script.run([&visit] {
        const Form& form = visit.request.form;
        const Standing standing = standingOf(form);
        Setup setup{};
        setup.step = standing.step;
        setup.isRefused = standing.isRefused;
        setup.values = readSetupValues(form);
        provideShare(visit, setup);
        setup.step = announce(form, setup.step);
        if (setup.step == kApplied) {
            setup.values.shareName = setup.share.name;
            setup.failures = applySetup(setup.values, setup.share);
        } else if (!setup.isRefused) {
            fillIn(setup.values);
        }
        return setup;
    });
}

// ---- Parts ------------------------------------------------------------------------------------

Html hidden(Literal name, std::string_view value)
{
    return Html() << R"(<input type="hidden" name=")" << name << R"(" value=")" << Text{value}
                  << "\">\n";
}

/// The first button is the one that the enter key presses.
Html buttons(Literal next, std::string_view nextLabel, Literal back)
{
    Html out;
    out << R"(<p class="buttons"><button class="main" name="next_page" value=")" << next << R"(">)"
        << Text{nextLabel} << "</button>";
    if (!back.view().empty()) {
        out << R"(<button name="next_page" value=")" << back << R"(" formnovalidate>)"
            << Text{tr("Back")} << "</button>";
    }
    out << "</p>\n</form>\n";
    return out;
}

Html languageField(const Setup& setup)
{
    const std::string_view words = setup.isRefused ? complainOfLanguage(setup.values.language) : "";
    Html out;
    out << R"(<p class="field"><label for="language">)" << Text{tr("Language")} << R"(</label>
<select id="language" name="language")"
        << invalidMark("language-complaint", words) << ">";
    for (const core::Language& language : core::kLanguages) {
        out << R"(<option value=")" << Text{language.name} << R"(")";
        if (language.name == setup.values.language) {
            out << " selected";
        }
        out << ">" << Text{language.ownName} << "</option>";
    }
    out << "</select></p>\n" << complaint("language-complaint", words);
    return out;
}

Html hostNameField(const Setup& setup)
{
    const std::string_view words = setup.isRefused ? complainOfHostName(setup.values.hostName) : "";
    return Html()
           << R"(<p class="field"><label for="host_name">)" << Text{tr("Name of the appliance")}
           << R"(</label>
<input id="host_name" name="host_name" value=")"
           << Text{setup.values.hostName}
           << R"(" required minlength="2" maxlength="32" pattern="[A-Za-z0-9\-]{2,32}"
autocomplete="off" autocapitalize="none" spellcheck="false" title=")"
           << Text{tr("Letters A to Z, digits and hyphens")} << R"(")"
           << invalidMark("host_name-complaint", words) << ">\n"
           << R"(<span class="quiet">)"
           << Text{tr("Letters A to Z, digits and hyphens. Other computers find the appliance by "
                      "this name.")}
           << "</span></p>\n"
           << complaint("host_name-complaint", words);
}

/// What is wrong with the share's name, as the page or the appliance has it.
std::string_view shareComplaint(const Setup& setup)
{
    if (!setup.isRefused) {
        return "";
    }
    const std::string_view words = complainOfShareName(setup.values.shareName);
    return words.empty() ? std::string_view(setup.share.words) : words;
}

Html shareNameField(const Setup& setup)
{
    const std::string_view words = shareComplaint(setup);
    return Html() << R"(<p class="field"><label for="share_name">)"
                  << Text{tr("Name of the public share")} << R"(</label>
<input id="share_name" name="share_name" value=")"
                  << Text{setup.values.shareName}
                  << R"(" required maxlength="64" autocomplete="off")"
                  << invalidMark("share_name-complaint", words) << ">\n"
                  << R"(<span class="quiet">)"
                  << Text{tr("Everybody in the network may read and write what is in it.")}
                  << "</span></p>\n"
                  << complaint("share_name-complaint", words);
}

/// The language's own name, which is read out in that language.
Html ownNameOf(std::string_view language)
{
    const core::Language* found = core::findLanguageByName(language);
    if (found == nullptr) {
        return {};
    }
    return Html() << R"(<span lang=")" << Text{found->tag} << R"(">)" << Text{found->ownName}
                  << "</span>";
}

Html summaryFacts(const SetupValues& values)
{
    return Html() << R"(<dl class="facts"><div><dt>)" << Text{tr("Language")} << "</dt><dd>"
                  << ownNameOf(values.language) << "</dd></div>\n"
                  << fact(tr("Name of the appliance"), values.hostName)
                  << fact(tr("Public share"), values.shareName) << "</dl>\n";
}

/// What the setup does, or has done, about the public share.
Html shareSentence(const PublicShare& share)
{
    using enum PublicShare::State;
    const auto name = std::to_array({share.name});
    switch (share.state) {
    case kNew:
        return phrase(tr("The public share {} will be created."), name);
    case kThere:
        return phrase(tr("The public share {} exists already and stays as it is."), name);
    case kCreated:
        return phrase(tr("The public share {} was created."), name);
    case kFailed:
        return phrase(
            tr("The pages cannot find out now whether the public share {} exists already."), name);
    case kBadName:
        break;
    }
    return {};
}

// ---- One function a step ----------------------------------------------------------------------

Html heading(std::string_view words)
{
    return Html() << "<h2>" << Text{words} << "</h2>\n";
}

Html naming(const Visit& visit, const Setup& setup)
{
    return Html() << heading(tr("Step 1 of 3: name and language")) << openForm(visit.token, kUrl)
                  << languageField(setup) << hostNameField(setup)
                  << hidden("share_name", setup.values.shareName) << buttons("1", tr("Next"), "");
}

Html sharing(const Visit& visit, const Setup& setup)
{
    return Html() << heading(tr("Step 2 of 3: public share")) << openForm(visit.token, kUrl)
                  << shareNameField(setup) << hidden("language", setup.values.language)
                  << hidden("host_name", setup.values.hostName) << buttons("2", tr("Next"), "0");
}

Html summary(const Visit& visit, const Setup& setup)
{
    return Html() << heading(tr("Step 3 of 3: check")) << "<p>"
                  << Text{tr("Nothing has been changed yet. Is this right?")} << "</p>\n"
                  << summaryFacts(setup.values) << "<p>" << shareSentence(setup.share) << "</p>\n"
                  << openForm(visit.token, kUrl) << hidden("language", setup.values.language)
                  << hidden("host_name", setup.values.hostName)
                  << hidden("share_name", setup.values.shareName) << buttons("3", tr("Apply"), "1");
}

Html outcome(const Setup& setup)
{
    if (setup.failures.empty()) {
        return notice(Mood::kGood, Html() << "<p>" << Text{tr("The setup is done.")} << "</p>");
    }
    Html content;
    content << "<p>" << Text{tr("Not everything could be stored:")} << "</p>\n<ul>";
    for (const std::string& failure : setup.failures) {
        content << "<li>" << Text{failure} << "</li>";
    }
    content << "</ul>\n<p>"
            << Text{tr("Everything else is stored as you chose it. You can repeat the setup.")}
            << "</p>";
    return notice(Mood::kBad, content);
}

Html applied(const Setup& setup)
{
    return Html() << outcome(setup) << summaryFacts(setup.values) << "<p>"
                  << shareSentence(setup.share) << "</p>\n"
                  << R"(<p class="buttons"><a class="button" href=")" << kProgramUrl << R"(">)"
                  << Text{tr("To the overview")} << "</a></p>\n";
}

Html content(const Visit& visit, const Setup& setup)
{
    switch (setup.step) {
    case kNaming:
        return naming(visit, setup);
    case kSharing:
        return sharing(visit, setup);
    case kSummary:
        return summary(visit, setup);
    case kApplied:
        break;
    }
    return applied(setup);
}

} // namespace

Page makeSetup(Visit& visit)
{
    const Setup setup = currentStep(visit);
    Page page;
    page.title = tr("Setup");
    page.body << setupSteps(false) << R"(<section class="card narrow">)" << content(visit, setup)
              << "</section>\n";
    return page;
}

} // namespace page
