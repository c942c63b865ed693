// SPDX-License-Identifier: MIT
//
// peer.h: who is at the other end of a connection, as the kernel tells it, and who may be.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "cmdsvc/commands.h"

namespace service {

struct Peer {
    pid_t process;
    uid_t user;
    std::vector<gid_t> groups; ///< its own one first, then the others it belongs to
};

/// @param socket  a connected Unix socket
/// @return nothing when the kernel does not tell
[[nodiscard]] std::optional<Peer> peerOf(int socket);

/// A group that opens the service to its members, and whether there has to be such a group.
struct GroupName {
    std::string name;
    bool isRequired = false;
};

/// Who may ask, and for what: root, the service's own user and the members of one group for
/// everything, the members of another group for what changes nothing.
class Admission {
  public:
    /// Throws std::runtime_error if there is no group that is required.
    Admission(const GroupName& members, const GroupName& viewers);

    /// Whether a peer may ask for anything at all.
    [[nodiscard]] bool admits(const Peer& peer) const;

    /// Whether a peer may send a command.
    /// @param command  null for one that nobody knows, which takes the full right
    [[nodiscard]] bool permits(const Peer& peer, const cmdsvc::Command* command) const;

    /// The group that the socket is to belong to, if there is one.
    [[nodiscard]] std::optional<gid_t> group() const { return members_; }

    /// The mode of the socket. A file has one group only: to let a second one in, the socket lets
    /// everybody connect, and strangers are sent away by what the kernel tells of them.
    [[nodiscard]] mode_t socketMode() const { return viewers_ ? 0666 : 0660; }

  private:
    [[nodiscard]] bool isMember(const Peer& peer) const;
    [[nodiscard]] bool isViewer(const Peer& peer) const;

    std::optional<gid_t> members_;
    std::optional<gid_t> viewers_;
};

} // namespace service
