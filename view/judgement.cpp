// SPDX-License-Identifier: MIT
#include "view/judgement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "sharestatus/semaphore_format.h"
#include "view/disk_judgement.h"
#include "view/share_folders.h"
#include "view/unmeasured.h"

namespace view {
namespace {

using config::Configuration;
using Findings = std::vector<Finding>;
using Names = std::vector<std::string>;

// ---- Words ------------------------------------------------------------------------------------

/// The first few of some names.
std::string formatNames(const Names& names)
{
    constexpr std::size_t kMost = 5;
    std::string words;
    for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i) {
        words += (i == 0 ? "" : ", ") + names[i];
    }
    const std::size_t more = names.size() - std::min(names.size(), kMost);
    return words + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

/// "3 of 8 shares", "1 of 1 share"
std::string formatPart(const Names& names, std::size_t all)
{
    return std::to_string(names.size()) + " of " + formatCount(all, "share", "shares");
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
    out.push_back({.level = isCritical ? Level::kCritical : Level::kWarning,
                   .kind = "full",
                   .sentence = "The disk is " + std::to_string(percent) + " % full, with " +
                               formatKibibytes(situation.capacity->free) +
                               " free: delete what is not needed, or move it elsewhere."});
}

// ---- The collection ---------------------------------------------------------------------------

void judgeResult(const PublishedStatus& status, Findings& out)
{
    using enum PublishedStatus::Result;
    if (status.error != 0 && status.error != ENOENT) {
        out.push_back({.level = Level::kWarning,
                       .kind = "status-unreadable",
                       .sentence = std::string("The share status cannot be read: ") +
                                   std::strerror(status.error) + "."});
        return;
    }
    switch (status.result) {
    case kNone:
        out.push_back({.level = Level::kWarning,
                       .kind = "no-status",
                       .sentence = "No share has been measured yet: start a collection."});
        break;
    case kDamaged:
        out.push_back({.level = Level::kWarning,
                       .kind = "damaged",
                       .sentence =
                           "The share status is damaged: start a collection, which replaces "
                           "it."});
        break;
    case kNoList:
        out.push_back({.level = Level::kCritical,
                       .kind = "no-list",
                       .sentence = "The last collection could not get the list of shares: see that "
                                   "the appliance's share script works, then start another one."});
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
                   .sentence = "The shares were last measured " +
                               formatElapsed(published, situation.now) +
                               ": start a collection, and see why none has ended since."});
}

void judgeInterruption(const Situation& situation, Findings& out)
{
    const PublishedStatus& status = situation.status;
    const std::optional<std::time_t> end = blockedUntil(status);
    if (!end) {
        return;
    }
    const std::string advice =
        (situation.now >= *end)
            ? ": start another one."
            : ". Another one can start in " +
                  formatCount(static_cast<std::uint64_t>(*end - situation.now) / 60 + 1, "minute",
                              "minutes") +
                  ", or at once if root first removes " + sharestatus::kSemaphoreFile + ".";
    out.push_back({.level = Level::kWarning,
                   .kind = "interrupted",
                   .sentence = "The collection that began " +
                               formatElapsed(*status.collectingSince, situation.now) +
                               " was interrupted" + advice});
}

// ---- Shares -----------------------------------------------------------------------------------

struct ObstacleWords {
    Obstacle obstacle;
    const char* kind;
    const char* reason;
    const char* advice;
};

constexpr auto kObstacles = std::to_array<ObstacleWords>({
    {Obstacle::kShellCharacter, "must-be-renamed", "could run in a shell by its name",
     "rename it, without any of \" $ `, a backslash or a newline"},
    {Obstacle::kSeparator, "must-be-renamed", "has a comma or a closing bracket in its name",
     "rename it"},
    {Obstacle::kFirstCharacter, "must-be-renamed",
     "begins with a character that the collector passes over",
     "rename it, with a letter or a digit at the start"},
    {Obstacle::kFailed, "unmeasured", "has a folder that could not be measured",
     "see that /share has it"},
    {Obstacle::kNoRoom, "unmeasured", "comes after the end of the 4096 bytes of a status",
     "give shares shorter names, or have fewer"},
});

/// Each sentence tells of one share, or of the first of many; all of them are named.
std::string formatObstacle(const ObstacleWords& words, const Names& names)
{
    const bool isOne = names.size() == 1;
    return formatNames(names) + (isOne ? " is" : " are") +
           " not measured: " + (isOne ? "it " : "each ") + words.reason + "; " + words.advice + ".";
}

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
            std::string sentence = formatObstacle(words, names);
            out.push_back({Level::kWarning, words.kind, std::move(names), std::move(sentence)});
        }
    }
}

// ---- Backups ----------------------------------------------------------------------------------

struct BackupWords {
    Backup backup;
    const char* kind;
    const char* one; ///< what follows "1 of 8 shares"
    const char* many;
    const char* advice;
};

constexpr auto kBackups = std::to_array<BackupWords>({
    {Backup::kUnreadable, "backup-unreadable", "has a backup report that cannot be read",
     "have a backup report that cannot be read", "have the backup reported again"},
    {Backup::kInFuture, "backup-in-future", "has a backup of a day that is still to come",
     "have a backup of a day that is still to come", "set the clock right, then back up again"},
    {Backup::kOld, "backup-old", "has an old backup", "have an old backup", "back up again"},
    {Backup::kNone, "no-backup", "has never been backed up", "have never been backed up",
     "set up a backup"},
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
            std::string sentence = formatPart(names, shares.size()) + " " +
                                   (names.size() == 1 ? words.one : words.many) + ": " +
                                   formatNames(names) + ". What to do: " + words.advice + ".";
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
                           .sentence = "The backup of " + share.name + " on " +
                                       formatDate(*share.backupDay) + " has failed with state " +
                                       formatState(*share.backupState, configuration) +
                                       ": see why, and back up again."});
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
