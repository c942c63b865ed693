// SPDX-License-Identifier: MIT
#pragma once

namespace sharestatus {

/// Does one collection: claims the semaphore, measures every internal share, publishes the result,
/// and releases the semaphore. Does nothing while another collection runs.
void collectAndPublish();

} // namespace sharestatus
