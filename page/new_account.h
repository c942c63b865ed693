// SPDX-License-Identifier: MIT
//
// new_account.h: the fields of forms that make an account: a name, and a password twice.
#pragma once

#include <array>
#include <string_view>

#include "page/complaints.h"
#include "page/form.h"
#include "page/html.h"

namespace page {

/// What the service refuses ("crat"). The page has checked the password by then, so that it is the
/// name which holds a character that it must not hold.
inline constexpr auto kBlamedInAccount = std::to_array<BlamedField>({
    {cmdsvc::kMalformed, "name"},
    {cmdsvc::kUserNameTaken, "name"},
    {cmdsvc::kUserNameTooLong, "name"},
    {cmdsvc::kUserNotCreated, "name"},
    {cmdsvc::kPasswordTooLong, "password"},
});

/// What is wrong with the fields "name", "password" and "repeated".
/// @param aboutName  what is wrong with the name; empty if nothing is
[[nodiscard]] Complaints complaintsOfAccount(const Form& form, std::string_view aboutName);

/// The three fields, with the name that was typed before; passwords are typed anew.
[[nodiscard]] Html accountFields(const Form& form, const Complaints& complaints);

} // namespace page
