// SPDX-License-Identifier: MIT
#include "page/backup_words.h"

#include "page/layout.h"
#include "view/wording.h"

namespace page {
namespace {

using config::Configuration;
using view::Backup;
using view::ShareRow;

/// The digit without a sign: nobody has said whether it is good.
Html unexplained(const ShareRow& share, const Configuration& configuration)
{
    if (!share.backupState) {
        return {};
    }
    return Html() << R"(<span class="badge none">State )"
                  << Text{view::formatState(*share.backupState, configuration)} << "</span>";
}

Html backupBadge(Backup backup, const ShareRow& share, const Configuration& configuration)
{
    switch (backup) {
    case Backup::kNone:
        return badge("none", "&ndash;", "Never");
    case Backup::kUnreadable:
        return badge("ageing", "!", "Unreadable report");
    case Backup::kNewer:
        return badge("none", "+", "Reported since");
    case Backup::kFailed:
        return badge("old", "&#10005;", "Failed");
    case Backup::kInFuture:
        return badge("ageing", "!", "In the future");
    case Backup::kOld:
        return badge("ageing", "!", "Old");
    case Backup::kUnexplained:
        return unexplained(share, configuration);
    case Backup::kGood:
        break;
    }
    return badge("recent", "&#10003;", "Recent");
}

Html backupDay(std::chrono::sys_days day, std::chrono::sys_days today)
{
    return Html() << R"( <time datetime=")" << Text{view::formatIsoDate(day)} << R"(">)"
                  << Text{view::formatAge(day, today)} << "</time> "
                  << R"(<span class="quiet">)" << Text{view::formatDate(day)};
}

} // namespace

Html backupWords(const ShareRow& share, const Configuration& configuration,
                 std::chrono::sys_days today)
{
    const Backup backup = view::judgeBackup(share, configuration, today);
    Html out;
    out << backupBadge(backup, share, configuration);
    if (share.backupDay) {
        out << backupDay(*share.backupDay, today);
        if (share.backupState && backup != Backup::kUnexplained) {
            out << ", state " << Text{view::formatState(*share.backupState, configuration)};
        }
        out << "</span>";
    }
    return out;
}

} // namespace page
