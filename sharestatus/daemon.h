// SPDX-License-Identifier: MIT
#pragma once

namespace sharestatus {

/// One collection from claim to release: measures every internal share and publishes the result.
/// Does nothing while another collection runs.
void collectAndPublish();

} // namespace sharestatus
