// SPDX-License-Identifier: MIT
//
// peer.h: the process at the other end of a connection, as the kernel reports it, and its rights.
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
    std::vector<gid_t> groups; ///< its first group, then its other groups
};

/// @param socket  a connected Unix socket
/// @return nothing if the kernel does not report it
[[nodiscard]] std::optional<Peer> peerOf(int socket);

/// A group whose members may use the service, and whether the group must exist.
struct GroupName {
    std::string name;
    bool isRequired = false;
};

/// Who may send which commands: root, the service's own user and the members of one group every
/// command; the members of another group only commands that change nothing.
class Admission {
  public:
    /// Throws std::runtime_error if a group that must exist does not.
    Admission(const GroupName& members, const GroupName& viewers);

    /// Whether there are commands that a peer may send.
    [[nodiscard]] bool admits(const Peer& peer) const;

    /// Whether a peer may send a command.
    /// @param command  null for an unknown command, which needs the full right
    [[nodiscard]] bool permits(const Peer& peer, const cmdsvc::Command* command) const;

    /// The group that the socket must have, if that group exists.
    [[nodiscard]] std::optional<gid_t> group() const { return members_; }

    /// The mode of the socket. A file has only one group, so if there are two, every account can
    /// connect, and the service refuses strangers by what the kernel reports about them.
    [[nodiscard]] mode_t socketMode() const { return viewers_ ? 0666 : 0660; }

  private:
    [[nodiscard]] bool isMember(const Peer& peer) const;
    [[nodiscard]] bool isViewer(const Peer& peer) const;

    std::optional<gid_t> members_;
    std::optional<gid_t> viewers_;
};

} // namespace service
