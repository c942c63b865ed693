// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "sharestatus/status_format.h"

namespace sharestatus {

/// Whether the status file can be opened.
[[nodiscard]] bool hasStatusFile();

/// Publishes a payload of at most 4096 bytes in the status file: in place, never by rename, so that
/// readers with the file open see the new payload. The file is 1 MiB afterwards.
///
/// One write fills the file with zeros and the next one writes the payload, so that a reader finds
/// half a payload only during the second write. Does nothing if the file can be neither opened nor
/// created.
void publishStatus(std::string_view payload);

/// Reads the start of the status file as it was at one moment. A read may happen during a write,
/// and the checksum of four bits accepts one in sixteen of such mixtures; so two reads must agree.
/// If they never do, the image is empty.
/// @return false if the file cannot be opened, with errno set
[[nodiscard]] bool loadStatus(StatusImage& image);

} // namespace sharestatus
