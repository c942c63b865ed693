// SPDX-License-Identifier: MIT
#include "view/judgement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "sharestatus/semaphore_format.h"
#include "text/translation.h"
#include "view/disk_judgement.h"
#include "view/share_folders.h"
#include "view/unmeasured.h"

namespace view {
namespace {

using config::Configuration;
using Findings = std::vector<Finding>;
using Names = std::vector<std::string>;
using text::fill;
using text::mark;
using text::tr;
using text::trn;

// ---- Words ------------------------------------------------------------------------------------

/// The first few of some names.
std::string formatFirst(const Names& names)
{
    constexpr std::size_t kMost = 5;
    if (names.size() <= kMost) {
        return formatNames(names);
    }
    const std::size_t more = names.size() - kMost;
    // Translators: 1 is a list of names, 2 the number of names that are left out.
    return fill(trn("{1} and {2} more", "{1} and {2} more", more),
                {formatNames({names.begin(), names.begin() + kMost}), std::to_string(more)});
}

/// "3 of 8 shares", "1 of 1 share"
std::string formatPart(const Names& names, std::size_t all)
{
    // Translators: begins a sentence such as "{1} have never been backed up".
    return fill(trn("{1} of {2} share", "{1} of {2} shares", all),
                {std::to_string(names.size()), std::to_string(all)});
}

// ---- The disk ---------------------------------------------------------------------------------

void judgeCapacity(const Situation& situation, const Configuration& configuration, Findings& out)
{
    if (!situation.capacity) {
        return;
    }
    const unsigned percent = situation.capacity->percentFull();
    if (percent < configuration.fullWarning) {
        return;
    }
    const bool isCritical = percent >= configuration.fullCritical;
    out.push_back(
        {.level = isCritical ? Level::kCritical : Level::kWarning,
         .kind = "full",
         .sentence = fill(tr("The disk is {1} % full, with {2} free: delete what is not "
                             "needed, or move it elsewhere."),
                          {std::to_string(percent), formatKibibytes(situation.capacity->free)})});
}

// ---- The collection ---------------------------------------------------------------------------

void judgeResult(const PublishedStatus& status, Findings& out)
{
    using enum PublishedStatus::Result;
    if (status.error != 0 && status.error != ENOENT) {
        out.push_back({.level = Level::kWarning,
                       .kind = "status-unreadable",
                       .sentence = fill(tr("The share status cannot be read: {}."),
                                        {std::strerror(status.error)})});
        return;
    }
    switch (status.result) {
    case kNone:
        out.push_back({.level = Level::kWarning,
                       .kind = "no-status",
                       .sentence = tr("No share has been measured yet: start a collection.")});
        break;
    case kDamaged:
        out.push_back(
            {.level = Level::kWarning,
             .kind = "damaged",
             .sentence = tr("The share status is damaged: start a collection, which replaces "
                            "it.")});
        break;
    case kNoList:
        out.push_back(
            {.level = Level::kCritical,
             .kind = "no-list",
             .sentence = tr("The last collection could not get the list of shares: see that "
                            "the appliance's share script works, then start another "
                            "one.")});
        break;
    case kComplete:
        break;
    }
}

void judgeAge(const Situation& situation, const Configuration& configuration, Findings& out)
{
    constexpr std::time_t kHour = 3600;
    const std::time_t limit = static_cast<std::time_t>(configuration.stale) * kHour;
    const std::time_t published = situation.status.published;
    if (published == 0 || situation.now - published <= limit) {
        return;
    }
    out.push_back({.level = Level::kWarning,
                   .kind = "stale",
                   .sentence = fill(tr("The shares were last measured {}: start a collection, and "
                                       "see why none has ended since."),
                                    {formatElapsed(published, situation.now)})});
}

std::string formatInterruption(const std::string& began, std::time_t secondsLeft)
{
    if (secondsLeft <= 0) {
        return fill(tr("The collection that began {} was interrupted: start another one."),
                    {began});
    }
    const std::uint64_t minutes = static_cast<std::uint64_t>(secondsLeft) / 60 + 1;
    return fill(trn("The collection that began {1} was interrupted. Another one can start in {2} "
                    "minute, or at once if root first removes {3}.",
                    "The collection that began {1} was interrupted. Another one can start in {2} "
                    "minutes, or at once if root first removes {3}.",
                    minutes),
                {began, std::to_string(minutes), sharestatus::kSemaphoreFile});
}

void judgeInterruption(const Situation& situation, Findings& out)
{
    const PublishedStatus& status = situation.status;
    if (const std::optional<std::time_t> end = blockedUntil(status)) {
        const std::string began = formatElapsed(*status.collectingSince, situation.now);
        out.push_back({.level = Level::kWarning,
                       .kind = "interrupted",
                       .sentence = formatInterruption(began, *end - situation.now)});
    }
}

// ---- Shares -----------------------------------------------------------------------------------

/// Each finding names all shares; its sentence names one share, or the first ones of many.
struct ObstacleWords {
    Obstacle obstacle;
    const char* kind;
    const char* one;
    const char* many;
};

constexpr auto kObstacles = std::to_array<ObstacleWords>({
    {Obstacle::kShellCharacter, "must-be-renamed",
     mark("{} is not measured: its name could run a command in a shell. Rename it, without any of "
          "\" $ `, a backslash or a newline."),
     mark("{} are not measured: each name could run a command in a shell. Rename them, without any "
          "of \" $ `, a backslash or a newline.")},
    {Obstacle::kSeparator, "must-be-renamed",
     mark("{} is not measured: its name has a comma or the bracket ]. Rename it."),
     mark("{} are not measured: each name has a comma or the bracket ]. Rename them.")},
    {Obstacle::kFirstCharacter, "must-be-renamed",
     mark("{} is not measured: its name begins with a character that the collector passes over. "
          "Rename it, with a letter or a digit at the start."),
     mark("{} are not measured: each name begins with a character that the collector passes over. "
          "Rename them, with a letter or a digit at the start.")},
    {Obstacle::kFailed, "unmeasured",
     mark("{} is not measured: its folder could not be measured. See whether it is in /share."),
     mark("{} are not measured: their folders could not be measured. See whether they are in "
          "/share.")},
    {Obstacle::kNoRoom, "unmeasured",
     mark("{} is not measured: a status has 4096 bytes, and there is no room left for it. Give "
          "shares shorter names, or have fewer."),
     mark("{} are not measured: a status has 4096 bytes, and there is no room left for them. Give "
          "shares shorter names, or have fewer.")},
});

void judgeUnmeasured(const Situation& situation, Findings& out)
{
    const std::vector<Unmeasured> all = findUnmeasured(situation.status.shares, situation.listed);
    for (const ObstacleWords& words : kObstacles) {
        Names names;
        for (const Unmeasured& each : all) {
            if (each.obstacle == words.obstacle) {
                names.push_back(each.name);
            }
        }
        if (!names.empty()) {
            std::string sentence =
                fill(tr(names.size() == 1 ? words.one : words.many), {formatFirst(names)});
            out.push_back({Level::kWarning, words.kind, std::move(names), std::move(sentence)});
        }
    }
}

// ---- Backups ----------------------------------------------------------------------------------

/// The sentences for one share and for more; the first place is for "1 of 8 shares".
struct BackupWords {
    Backup backup;
    const char* kind;
    const char* one;
    const char* many;
};

constexpr auto kBackups = std::to_array<BackupWords>({
    {Backup::kUnreadable, "backup-unreadable",
     mark("{1} has a backup report that cannot be read: {2}. What to do: have the backup reported "
          "again."),
     mark("{1} have a backup report that cannot be read: {2}. What to do: have the backup reported "
          "again.")},
    {Backup::kInFuture, "backup-in-future",
     mark("{1} has a backup of a day that is still to come: {2}. What to do: set the clock right, "
          "then back up again."),
     mark("{1} have a backup of a day that is still to come: {2}. What to do: set the clock right, "
          "then back up again.")},
    {Backup::kOld, "backup-old", mark("{1} has an old backup: {2}. What to do: back up again."),
     mark("{1} have an old backup: {2}. What to do: back up again.")},
    {Backup::kNone, "no-backup",
     mark("{1} has never been backed up: {2}. What to do: set up a backup."),
     mark("{1} have never been backed up: {2}. What to do: set up a backup.")},
});

void judgeBackups(const Situation& situation, const Configuration& configuration, Findings& out)
{
    const std::vector<ShareRow>& shares = situation.status.shares;
    for (const BackupWords& words : kBackups) {
        Names names;
        for (const ShareRow& share : shares) {
            if (judgeBackup(share, configuration, dayOf(situation.now)) == words.backup) {
                names.push_back(share.name);
            }
        }
        if (!names.empty()) {
            std::string sentence = fill(tr(names.size() == 1 ? words.one : words.many),
                                        {formatPart(names, shares.size()), formatFirst(names)});
            out.push_back({Level::kWarning, words.kind, std::move(names), std::move(sentence)});
        }
    }
}

void judgeFailedBackups(const Situation& situation, const Configuration& configuration,
                        Findings& out)
{
    for (const ShareRow& share : situation.status.shares) {
        if (judgeBackup(share, configuration, dayOf(situation.now)) == Backup::kFailed) {
            out.push_back({.level = Level::kCritical,
                           .kind = "backup-failed",
                           .shares = {share.name},
                           .sentence = fill(tr("The backup of {1} on {2} has failed with state "
                                               "{3}: see why, and back up again."),
                                            {share.name, formatDate(*share.backupDay),
                                             formatState(*share.backupState, configuration)})});
        }
    }
}

bool isAmong(int state, const std::string& digits)
{
    return digits.find(static_cast<char>('0' + state)) != std::string::npos;
}

} // namespace

const char* wordOf(Level level)
{
    constexpr auto kWords = std::to_array<const char*>({"fine", "warning", "critical"});
    return kWords.at(static_cast<std::size_t>(level));
}

Situation readSituation(PublishedStatus status)
{
    return {.status = std::move(status),
            .capacity = readCapacity(),
            .listed = listShareFolders(),
            .arrays = readDiskArrays(),
            .now = std::time(nullptr)};
}

Findings judge(const Situation& situation, const Configuration& configuration)
{
    Findings findings;
    judgeArrays(situation.arrays, findings);
    judgeCapacity(situation, configuration, findings);
    judgeResult(situation.status, findings);
    judgeInterruption(situation, findings);
    judgeAge(situation, configuration, findings);
    judgeFailedBackups(situation, configuration, findings);
    judgeBackups(situation, configuration, findings);
    if (situation.status.result == PublishedStatus::Result::kComplete) {
        judgeUnmeasured(situation, findings);
    }
    std::ranges::stable_sort(findings, std::ranges::greater(), &Finding::level);
    return findings;
}

Level worstOf(const Findings& findings)
{
    const auto worst = std::ranges::max_element(findings, {}, &Finding::level);
    return (worst != findings.end()) ? worst->level : Level::kFine;
}

Backup judgeBackup(const ShareRow& share, const Configuration& configuration,
                   std::chrono::sys_days today)
{
    switch (share.report) {
    case BackupReport::kNone:
        return Backup::kNone;
    case BackupReport::kUnreadable:
        return Backup::kUnreadable;
    case BackupReport::kNewer:
        return Backup::kNewer;
    case BackupReport::kRead:
        break;
    }
    const std::chrono::days age = today - *share.backupDay;
    if (share.backupState && isAmong(*share.backupState, configuration.failedStates)) {
        return Backup::kFailed;
    }
    // Clocks and zones of clients differ by less than a day.
    if (age < std::chrono::days(-1)) {
        return Backup::kInFuture;
    }
    if (age > std::chrono::days(configuration.backupAge)) {
        return Backup::kOld;
    }
    const bool isGood = share.backupState && isAmong(*share.backupState, configuration.goodStates);
    return isGood ? Backup::kGood : Backup::kUnexplained;
}

std::string formatState(int state, const Configuration& configuration)
{
    const std::string& word = configuration.words.at(static_cast<std::size_t>(state));
    return std::to_string(state) + (word.empty() ? "" : " (" + word + ")");
}

} // namespace view
