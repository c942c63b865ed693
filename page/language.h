// SPDX-License-Identifier: MIT
//
// language.h: the language that a visitor is answered in. Visitors choose it at the foot of each
// page, and the browser keeps the choice in a cookie. Without a choice it is the appliance's
// language, and before the first setup the one that the browser prefers.
#pragma once

#include <string_view>

#include "core/languages.h"
#include "page/html.h"
#include "page/variables.h"

namespace page {

/// The language of a visitor. Reads the variables "firsttime" and "language_current" if the visitor
/// has chosen none.
[[nodiscard]] const core::Language& languageOfVisitor(const Variables& variables);

/// The same without the appliance's language, for answers that are made before the module may be
/// called.
[[nodiscard]] const core::Language& languageOfBrowser(const Variables& variables);

/// A form with a button for each language. It leads back to the page that it is on.
/// @param path, query  of that page's address
[[nodiscard]] Html languageForm(std::string_view token, std::string_view path,
                                std::string_view query);

} // namespace page
