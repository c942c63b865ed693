// SPDX-License-Identifier: MIT
#include "service/peer.h"

#include <algorithm>
#include <array>
#include <grp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace service {
namespace {

/// The other groups of a peer; none on kernels that do not tell them.
std::vector<gid_t> groupsOf(int socket)
{
    std::vector<gid_t> groups(64);
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) {
        // Too small, it tells the size that is needed.
        groups.resize(size / sizeof(gid_t));
        if (::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) {
            return {};
        }
    }
    groups.resize(size / sizeof(gid_t));
    return groups;
}

} // namespace

std::optional<Peer> peerOf(int socket)
{
    ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return std::nullopt;
    }
    Peer peer{credentials.pid, credentials.uid, groupsOf(socket)};
    peer.groups.insert(peer.groups.begin(), credentials.gid);
    return peer;
}

Admission::Admission(const std::string& group, bool isRequired)
{
    if (const ::group* found = ::getgrnam(group.c_str())) {
        group_ = found->gr_gid;
    } else if (isRequired) {
        throw std::runtime_error("there is no group " + group + "; make it (groupadd --system " +
                                 group + "), or use --group");
    }
}

bool Admission::admits(const Peer& peer) const
{
    const bool isMember = group_ && std::ranges::find(peer.groups, *group_) != peer.groups.end();
    return peer.user == 0 || peer.user == ::geteuid() || isMember;
}

} // namespace service
