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

/// The other groups of a peer; none on kernels that do not report them.
std::vector<gid_t> groupsOf(int socket)
{
    std::vector<gid_t> groups(64);
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) {
        // If there was too little room, size is now what is needed.
        groups.resize(size / sizeof(gid_t));
        if (::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) {
            return {};
        }
    }
    groups.resize(size / sizeof(gid_t));
    return groups;
}

std::optional<gid_t> findGroup(const GroupName& group, const std::string& option)
{
    if (const ::group* found = ::getgrnam(group.name.c_str())) {
        return found->gr_gid;
    }
    if (group.isRequired) {
        throw std::runtime_error("there is no group " + group.name +
                                 "; make it (groupadd --system " + group.name + "), or use " +
                                 option);
    }
    return std::nullopt;
}

bool isIn(std::optional<gid_t> group, const Peer& peer)
{
    return group && std::ranges::find(peer.groups, *group) != peer.groups.end();
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

Admission::Admission(const GroupName& members, const GroupName& viewers)
    : members_(findGroup(members, "--group")), viewers_(findGroup(viewers, "--view-group"))
{}

bool Admission::isMember(const Peer& peer) const
{
    return peer.user == 0 || peer.user == ::geteuid() || isIn(members_, peer);
}

bool Admission::isViewer(const Peer& peer) const
{
    return isIn(viewers_, peer);
}

bool Admission::admits(const Peer& peer) const
{
    return isMember(peer) || isViewer(peer);
}

bool Admission::permits(const Peer& peer, const cmdsvc::Command* command) const
{
    const bool isForViewers = command != nullptr && command->right == cmdsvc::Right::kView;
    return isMember(peer) || (isForViewers && isViewer(peer));
}

} // namespace service
