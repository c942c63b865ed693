// SPDX-License-Identifier: MIT
#include "page/setup_apply.h"

#include "core/languages.h"
#include "text/translation.h"
#include "vokcontrol.h"

namespace page {

using text::tr;

std::vector<std::string> applySetup(const SetupValues& values, const PublicShare& share)
{
    std::vector<std::string> failures;
    const auto note = [&failures](int result, const char* complaint) {
        if (result != 0) {
            failures.emplace_back(complaint);
        }
    };
    note(::setSysVar(values.language.c_str(), "tovSetLanguage"),
         tr("The appliance did not take the language."));
    note(::setvar("language_current", core::findLanguageByName(values.language)->code),
         tr("The language could not be remembered."));
    note(::setSysVar(values.hostName.c_str(), "tovSetHostname"),
         tr("The appliance did not take the name."));
    note(::setSysVar(values.hostName.c_str(), "tovSetNmbdSysname"),
         tr("The appliance did not take the name for its shares."));
    if (share.state == PublicShare::State::kFailed) {
        failures.push_back(text::fill(tr("The public share was not created. {}"), {share.words}));
    } else {
        note(::setvar("pel_pubshare_name", share.name.c_str()),
             tr("The name of the public share could not be stored."));
    }
    if (failures.empty()) {
        note(::setvar("firsttime", "0"), tr("The end of the setup could not be stored."));
    }
    return failures;
}

} // namespace page
