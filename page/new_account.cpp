// SPDX-License-Identifier: MIT
#include "page/new_account.h"

#include "page/account_fields.h"
#include "text/translation.h"

namespace page {

using text::tr;

Complaints complaintsOfAccount(const Form& form, std::string_view aboutName)
{
    const Credentials credentials = readCredentials(form);
    Complaints complaints;
    complaints.add("name", aboutName);
    complaints.add("password", complainOfNewPassword(credentials.password));
    if (complaints.about("password").empty() && form.value("repeated") != credentials.password) {
        complaints.add("repeated", tr("The two passwords differ."));
    }
    return complaints;
}

Html accountFields(const Form& form, const Complaints& complaints)
{
    return Html() << nameField(form.value("name"), complaints.about("name"))
                  << passwordField("password", tr("Password"), "new-password",
                                   complaints.about("password"))
                  << passwordField("repeated", tr("The password once more"), "new-password",
                                   complaints.about("repeated"));
}

} // namespace page
