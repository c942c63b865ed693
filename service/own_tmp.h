// SPDX-License-Identifier: MIT
//
// own_tmp.h: a /tmp for the service only. The module's work files have fixed names in /tmp. Another
// account that makes a file, a link or a FIFO with such a name could forge answers or stop the
// service.
#pragma once

#include <stdexcept>
#include <string>

#include "service/upload.h"

namespace service {

/// The service cannot have a /tmp of its own. The message says why, and what to do about it.
class NoOwnTmp : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Gives this process, and all that it starts from now on, FOLDER/tmp as its /tmp: it unshares its
/// mounts and binds that folder over /tmp. No other process sees that. This process sees what
/// others mount later, but not the other way round. If /tmp is FOLDER/tmp already, as in systemd's
/// units, nothing is done.
///
/// Makes FOLDER and FOLDER/tmp if they do not exist, both with mode 0700. Each must be a folder,
/// not a link; it must belong to this user, and others must not be able to write to it. FOLDER/tmp
/// gets mode 0700.
///
/// If this user is not root, /tmp is not changed, and the log says so. If root may not mount, as in
/// a container, /tmp is not changed either, if only root can write to it. Throws NoOwnTmp if others
/// can write to it, or if one of the folders is not as described.
///
/// A socket in /tmp has to be made before: a later one would not be visible to other processes.
void useOwnTmp(const std::string& folder = kRunFolder);

} // namespace service
