// SPDX-License-Identifier: MIT
//
// own_tmp.h: a /tmp of the service's own. The module's work files have fixed names there, and
// whoever can lay down a file, a link or a FIFO of such a name could put words into its mouth, or
// stop it.
#pragma once

#include <stdexcept>
#include <string>

#include "service/upload.h"

namespace service {

/// There is no /tmp of the service's own. The message says why, and what to do about it.
class NoOwnTmp : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Gives this process, and all that it starts from now on, FOLDER/tmp for a /tmp: it unshares its
/// mounts from everybody else's and binds that folder over /tmp. Nobody else sees that. What others
/// mount later arrives here; what is mounted here stays here. If /tmp is FOLDER/tmp already, as
/// systemd's units have it, nothing is done.
///
/// Makes FOLDER and FOLDER/tmp if they are not there, both with mode 0700. Each must be a folder
/// and no link, belong to this user, and be closed to others' writing; FOLDER/tmp gets mode 0700.
///
/// A user who is not root cannot do that: then /tmp stays what it is, and the log says so. Throws
/// NoOwnTmp if root cannot, if a folder is not as it must be, or for a socket in /tmp, where nobody
/// else would find it.
///
/// @param socket  the path of a socket that is still to be made
void useOwnTmp(const std::string& socket, const std::string& folder = kRunFolder);

} // namespace service
