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
/// To readers the file goes blank with one write and carries the new payload with the next one, so
/// that there is no moment in between at which half a payload would stand there for long. A file
/// that can be neither opened nor created is passed over.
void publishStatus(std::string_view payload);

/// Takes one look at the start of the status file, in one read, so that what it sees is from one
/// moment.
/// @return false when the file cannot be opened, with errno set
[[nodiscard]] bool loadStatus(StatusImage& image);

} // namespace sharestatus
