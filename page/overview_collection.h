// SPDX-License-Identifier: MIT
//
// overview_collection.h: the collection that runs now, on the overview: how far it is, and a button
// that starts one. Sending the button's form is in collection.cpp.
#pragma once

#include <string>

#include "page/html.h"
#include "page/overview_shares.h"
#include "page/request.h"
#include "view/progress.h"
#include "view/published_status.h"

namespace page {

/// Looks at the processes if a collection runs.
[[nodiscard]] view::Progress findProgress(const view::PublishedStatus& status);

/// Which share is being measured, or that nothing is. The overview's script replaces it while a
/// collection runs.
[[nodiscard]] Html collectionState(const view::PublishedStatus& status,
                                   const view::Progress& progress);

/// A form that starts a collection, and leads back to the overview in the same order.
[[nodiscard]] Html measureForm(std::string_view token, const ShareOrder& order);

/// For the page's head: without script the overview loads itself again while a collection runs,
/// each time after twice as long.
/// @param wait  the field "wait" of the page's address, in seconds
[[nodiscard]] Html reloadWithoutScript(const ShareOrder& order, std::string_view wait);

} // namespace page
