// SPDX-License-Identifier: MIT
#include "page/public_share.h"

#include <algorithm>

#include "client/failure.h"
#include "client/lists.h"
#include "core/bytes.h"
#include "page/service.h"
#include "page/share_form.h"
#include "text/translation.h"

namespace page {
namespace {

using enum PublicShare::State;

PublicShare judge(const client::Share& share)
{
    if (share.property == client::kPublicProperty) {
        return {.state = kThere, .name = share.name};
    }
    return {.state = kBadName,
            .name = share.name,
            .words = text::tr("There is a share of this name already, but not everybody may use "
                              "it. Choose another name.")};
}

/// Whether another name would do.
bool isAboutTheName(const client::Failure& failure)
{
    const auto* refused = dynamic_cast<const client::Refused*>(&failure);
    if (refused == nullptr) {
        return false;
    }
    return refused->status() == cmdsvc::kMalformed ||
           refused->status() == cmdsvc::kShareNameTaken ||
           refused->status() == cmdsvc::kShareNameTooLong;
}

} // namespace

PublicShare findPublicShare(const client::Connection& connection, const std::string& name)
{
    try {
        const client::ShareList list = client::fetchShares(connection);
        const auto found = std::ranges::find_if(list.shares, [&name](const client::Share& share) {
            return core::equalIgnoringCase(share.name, name);
        });
        return (found != list.shares.end()) ? judge(*found)
                                            : PublicShare{.state = kNew, .name = name};
    } catch (const client::Failure& failure) {
        return {.state = kFailed, .name = name, .words = explain(failure)};
    }
}

PublicShare providePublicShare(const client::Connection& connection, const std::string& name)
{
    PublicShare found = findPublicShare(connection, name);
    if (found.state != kNew) {
        return found;
    }
    try {
        createShare(connection, {.name = name, .access = Access::kEverybody, .user = {}});
        return {.state = kCreated, .name = name};
    } catch (const client::Failure& failure) {
        return {.state = isAboutTheName(failure) ? kBadName : kFailed,
                .name = name,
                .words = explain(failure)};
    }
}

} // namespace page
