// SPDX-License-Identifier: MIT
//
// share_form.h: the form that creates a share.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "client/connection.h"
#include "page/complaints.h"
#include "page/form.h"
#include "page/html.h"
#include "page/pages.h"

namespace page {

/// Who may read and write what is in a share.
enum class Access { kEverybody, kOneUser };

/// What the form asks for. Nobody decides by oversight who may use a share, so there is a way to
/// have said nothing.
struct NewShare {
    std::string name;
    std::optional<Access> access;
    std::string user; ///< of kOneUser
};

/// The fields "name", "access" and "user"; blanks around the name do not count.
[[nodiscard]] NewShare readNewShare(const Form& form);

/// What is missing; the rest is for the service to judge.
[[nodiscard]] Complaints complaintsOf(const NewShare& share);

/// Has the service create the share ("pshr" or "shar"). Nothing may be missing.
/// @throws client::Failure
void createShare(const client::Connection& connection, const NewShare& share);

/// The users whom a share can be for, or a sentence that says why nobody knows them.
struct Candidates {
    std::vector<std::string> users;
    std::string failure;
};

/// The form, with what was typed into it before and what is wrong with that.
[[nodiscard]] Html shareForm(const Visit& visit, const Candidates& candidates,
                             const Complaints& complaints);

} // namespace page
