// SPDX-License-Identifier: MIT
#include "page/account_fields.h"

#include <algorithm>

#include "core/bytes.h"
#include "page/layout.h"
#include "page/sessions.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

bool isOfName(char c)
{
    return core::isAsciiAlphanumeric(core::byteOf(c)) || c == '-' || c == '_';
}

/// What neither a shell line nor the appliance's lists take for something else.
bool isOfPassword(char c)
{
    constexpr std::string_view kForbidden = "\"'\\`$\x7F";
    return core::byteOf(c) >= ' ' && kForbidden.find(c) == kForbidden.npos;
}

} // namespace

Credentials readCredentials(const Form& form)
{
    return {.name = std::string(trim(form.value("name"))),
            .password = std::string(form.value("password"))};
}

Html nameField(std::string_view value, std::string_view words)
{
    return Html()
           << R"(<p class="field"><label for="name">)" << Text{text::trc("of a user", "Name")}
           << R"(</label>
<input id="name" name="name" value=")"
           << Text{value}
           << R"(" required maxlength="64" autocomplete="username" autocapitalize="none" spellcheck="false")"
           << invalidMark("name-complaint", words) << "></p>\n"
           << complaint("name-complaint", words);
}

Html passwordField(Literal name, std::string_view label, Literal purpose, std::string_view words)
{
    return Html() << R"(<p class="field"><label for=")" << name << R"(">)" << Text{label}
                  << R"(</label>
<input id=")" << name
                  << R"(" name=")" << name
                  << R"(" type="password" required maxlength="64" autocomplete=")" << purpose
                  << R"(")" << invalidMark("password-complaint", words) << "></p>\n"
                  << complaint("password-complaint", words);
}

const char* ruleOfNewNames()
{
    return tr("A name has 1 to 32 characters: letters A to Z, digits, - and _.");
}

const char* ruleOfNewPasswords()
{
    return tr("A password has 8 to 32 characters: letters A to Z, digits, blanks and signs, but "
              "none of \" ' \\ ` $");
}

std::string_view complainOfNewName(std::string_view name)
{
    constexpr std::size_t kLongest = 32;
    const bool isGood = !name.empty() && name.size() <= kLongest && name.front() != '-' &&
                        std::ranges::all_of(name, isOfName);
    return isGood ? "" : ruleOfNewNames();
}

std::string_view complainOfNewPassword(std::string_view password)
{
    constexpr std::size_t kShortest = 8;
    constexpr std::size_t kLongest = 32;
    const bool isGood = password.size() >= kShortest && password.size() <= kLongest &&
                        std::ranges::all_of(password, isOfPassword);
    return isGood ? "" : ruleOfNewPasswords();
}

std::string askToWait(Time pause)
{
    return text::fill(tr("There were wrong passwords. Wait {} s, then try again."),
                      {std::to_string(pause.count())});
}

std::vector<Cookie> beginSession(const std::string& account)
{
    return {{kSessionCookie, Sessions().begin(account, now())}, {kTokenCookie, ""}};
}

} // namespace page
