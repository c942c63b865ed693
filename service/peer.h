// SPDX-License-Identifier: MIT
//
// peer.h: who is at the other end of a connection, as the kernel tells it, and who may be.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace service {

struct Peer {
    pid_t process;
    uid_t user;
    std::vector<gid_t> groups; ///< its own one first, then the others it belongs to
};

/// @param socket  a connected Unix socket
/// @return nothing when the kernel does not tell
[[nodiscard]] std::optional<Peer> peerOf(int socket);

/// Who may ask: root, the service's own user, and the members of one group.
class Admission {
  public:
    /// @param group  its name; throws std::runtime_error where there is none and one is required
    Admission(const std::string& group, bool isRequired);

    [[nodiscard]] bool admits(const Peer& peer) const;

    /// The group that the socket is to belong to, where there is one.
    [[nodiscard]] std::optional<gid_t> group() const { return group_; }

  private:
    std::optional<gid_t> group_;
};

} // namespace service
