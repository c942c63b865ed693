// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "sharestatus/status_format.h"

namespace sharestatus {

/// Whether a status file is there to be read.
[[nodiscard]] bool hasStatusFile();

/// Publishes a payload of at most 4096 bytes in the status file: in place, never by rename, so that
/// readers keep the file they have open. The file is 1 MiB afterwards.
///
/// The file goes blank with one write and carries the new payload with the next one: half a
/// payload never stands there for longer than the second takes. A file that can be neither opened
/// nor created is passed over.
void publishStatus(std::string_view payload);

/// Reads the start of the status file as it was at one moment. A read may run into a rewrite, and
/// the check, four bits wide, lets one in sixteen of such mixtures pass; so two looks must agree.
/// Where they never do, the image is empty.
/// @return false when the file cannot be opened, with errno set
[[nodiscard]] bool loadStatus(StatusImage& image);

} // namespace sharestatus
