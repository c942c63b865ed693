// SPDX-License-Identifier: MIT
#include "view/unmeasured.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "guard/values.h"
#include "sharestatus/fragment_format.h"
#include "sharestatus/status_format.h"

namespace view {
namespace {

/// A name as it is written in the status.
std::string_view cut(std::string_view name)
{
    return name.substr(0, sharestatus::kMaxNameSize);
}

/// Whether the status is full: it has no room for a record with the longest name.
bool isFull(const std::vector<ShareRow>& shares)
{
    const std::size_t size =
        std::accumulate(shares.begin(), shares.end(), sharestatus::kHeaderSize,
                        [](std::size_t sum, const ShareRow& share) {
                            return sum + sharestatus::kNameOffset + share.name.size() + 1;
                        });
    return size + sharestatus::kWorkRecordSize >= sharestatus::kMaxPayloadSize;
}

/// What is wrong with a name, even if the share was measured.
std::optional<Obstacle> obstacleIn(std::string_view name)
{
    if (!guard::isMeasurable(name)) {
        return Obstacle::kShellCharacter;
    }
    if (std::ranges::any_of(name, sharestatus::isSeparator)) {
        return Obstacle::kSeparator;
    }
    const bool isStart =
        !name.empty() && sharestatus::startsName(name[0], (name.size() > 1) ? name[1] : '\0');
    return isStart ? std::nullopt : std::optional(Obstacle::kFirstCharacter);
}

std::optional<Obstacle> obstacleOf(const std::string& name, const std::vector<ShareRow>& shares)
{
    if (const std::optional<Obstacle> obstacle = obstacleIn(name)) {
        return obstacle;
    }
    const auto row = std::ranges::find(shares, cut(name), &ShareRow::name);
    if (row != shares.end()) {
        return row->used ? std::nullopt : std::optional(Obstacle::kFailed);
    }
    return isFull(shares) ? std::optional(Obstacle::kNoRoom) : std::nullopt;
}

/// Whether a row's name is a listed name or a piece of one.
bool isOf(const ShareRow& row, const std::string& name)
{
    const bool isInPieces = obstacleIn(name).has_value() || name.size() > cut(name).size();
    return row.name == name || (isInPieces && name.find(row.name) != std::string::npos);
}

bool isAccountedFor(const ShareRow& row, const std::vector<std::string>& names)
{
    return std::ranges::any_of(names, [&row](const std::string& name) { return isOf(row, name); });
}

} // namespace

std::vector<Unmeasured> findUnmeasured(const std::vector<ShareRow>& shares,
                                       const std::optional<std::vector<std::string>>& listed)
{
    const std::vector<std::string> names = listed.value_or(std::vector<std::string>{});
    std::vector<Unmeasured> all;
    for (const ShareRow& row : shares) {
        if (!row.used && !isAccountedFor(row, names)) {
            all.push_back({row.name, obstacleIn(row.name).value_or(Obstacle::kFailed)});
        }
    }
    for (const std::string& name : names) {
        if (const std::optional<Obstacle> obstacle = obstacleOf(name, shares)) {
            all.push_back({name, *obstacle});
        }
    }
    return all;
}

} // namespace view
