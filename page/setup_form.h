// SPDX-License-Identifier: MIT
//
// setup_form.h: what the steps of the setup ask, and which answers are good. Computed on values
// alone.
#pragma once

#include <string>
#include <string_view>

#include "page/form.h"

namespace page {

/// The steps, as the field "next_page" counts them.
enum SetupStep {
    kNaming = 0,  ///< language and host name
    kSharing = 1, ///< the public share's name
    kSummary = 2,
    kApplied = 3,
};

struct SetupValues {
    std::string language; ///< by its name in core/languages.h
    std::string hostName;
    std::string shareName;
};

/// The fields "language", "host_name" and "share_name"; blanks around the two names do not count.
[[nodiscard]] SetupValues readSetupValues(const Form& form);

// What is wrong with a value, in words; empty where nothing is. Language and host name go unquoted
// to a shell line, so that these are also the checks that keep foreign commands out.
[[nodiscard]] std::string_view complainOfLanguage(std::string_view name);
[[nodiscard]] std::string_view complainOfHostName(std::string_view name);
[[nodiscard]] std::string_view complainOfShareName(std::string_view name);

/// Where a form is.
struct Standing {
    SetupStep step;
    bool isRefused; ///< whether an answer of that step kept the form from the step that it asks for
};

/// A form is at the step that it asks for, or at the first before it whose answers are not good.
/// One that asks for nothing or for nonsense is at the first.
[[nodiscard]] Standing standingOf(const Form& form);

} // namespace page
