// SPDX-License-Identifier: MIT
//
// account_fields.h: the fields of forms that ask for an account, and the session that follows them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "page/accounts.h"
#include "page/clock.h"
#include "page/form.h"
#include "page/html.h"
#include "page/pages.h"

namespace page {

/// The fields "name" and "password"; blanks around the name do not count.
[[nodiscard]] Credentials readCredentials(const Form& form);

[[nodiscard]] Html nameField(std::string_view value, std::string_view complaint);

/// @param purpose  what the browser's keeper of passwords takes it for
[[nodiscard]] Html passwordField(Literal name, std::string_view label, Literal purpose,
                                 std::string_view complaint);

// What the name and the password of an account have to be, in words.
[[nodiscard]] const char* ruleOfNewNames();
[[nodiscard]] const char* ruleOfNewPasswords();

// What is wrong with an account to be made, in words; empty if nothing is.
[[nodiscard]] std::string_view complainOfNewName(std::string_view name);
[[nodiscard]] std::string_view complainOfNewPassword(std::string_view password);

/// The sentence that asks somebody to wait after wrong passwords.
[[nodiscard]] std::string askToWait(Time pause);

/// Begins a session.
/// @return the cookies that the browser keeps of it
[[nodiscard]] std::vector<Cookie> beginSession(const std::string& account);

} // namespace page
