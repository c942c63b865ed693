// SPDX-License-Identifier: MIT
#include "page/backup_words.h"

#include <string>

#include "page/layout.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using config::Configuration;
using text::tr;
using view::Backup;
using view::ShareRow;

/// The digit without a sign: nobody has said whether it is good.
Html unexplained(const ShareRow& share, const Configuration& configuration)
{
    if (!share.backupState) {
        return {};
    }
    const std::string words =
        text::fill(tr("State {}"), {view::formatState(*share.backupState, configuration)});
    return Html() << R"(<span class="badge none">)" << Text{words} << "</span>";
}

Html backupBadge(Backup backup, const ShareRow& share, const Configuration& configuration)
{
    switch (backup) {
    case Backup::kNone:
        return badge("none", "&ndash;", tr("Never"));
    case Backup::kUnreadable:
        return badge("ageing", "!", tr("Unreadable report"));
    case Backup::kNewer:
        return badge("none", "+", tr("Newer report"));
    case Backup::kFailed:
        return badge("old", "&#10005;", tr("Failed"));
    case Backup::kInFuture:
        return badge("ageing", "!", tr("In the future"));
    case Backup::kOld:
        return badge("ageing", "!", tr("Old"));
    case Backup::kUnexplained:
        return unexplained(share, configuration);
    case Backup::kGood:
        break;
    }
    return badge("recent", "&#10003;", tr("Recent"));
}

Html backupDay(std::chrono::sys_days day, const std::string& words, std::chrono::sys_days today)
{
    return Html() << R"( <time datetime=")" << Text{view::formatIsoDate(day)} << R"(">)"
                  << Text{view::formatAge(day, today)} << R"(</time> <span class="quiet">)"
                  << Text{words} << "</span>";
}

/// A badge that is the state itself has said it.
std::string dayAndState(const ShareRow& share, Backup backup, const Configuration& configuration)
{
    std::string day = view::formatDate(*share.backupDay);
    if (!share.backupState || backup == Backup::kUnexplained) {
        return day;
    }
    return text::fill(tr("{1}, state {2}"),
                      {day, view::formatState(*share.backupState, configuration)});
}

} // namespace

Html backupWords(const ShareRow& share, const Configuration& configuration,
                 std::chrono::sys_days today)
{
    const Backup backup = view::judgeBackup(share, configuration, today);
    Html out;
    out << backupBadge(backup, share, configuration);
    if (share.backupDay) {
        out << backupDay(*share.backupDay, dayAndState(share, backup, configuration), today);
    }
    return out;
}

} // namespace page
