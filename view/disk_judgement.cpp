// SPDX-License-Identifier: MIT
#include "view/disk_judgement.h"

#include "text/translation.h"
#include "view/wording.h"

namespace view {
namespace {

using text::fill;
using text::tr;
using text::trn;

Finding judgeStopped(const DiskArray& array)
{
    return {.level = Level::kCritical,
            .kind = "array-stopped",
            .sentence = fill(tr("The disk array {} does not run: see that all of its disks are "
                                "attached, then restart the appliance."),
                             {array.name})};
}

std::string formatRebuild(const DiskArray& array, const ArrayTask& task)
{
    const std::string percent = std::to_string(task.percent);
    if (task.isWaiting) {
        return fill(tr("The disk array {} waits to be rebuilt: leave the appliance on. If another "
                       "disk fails before it is done, data may be lost."),
                    {array.name});
    }
    if (!task.minutes) {
        return fill(tr("The disk array {1} is being rebuilt, {2} % done: leave the appliance on. "
                       "If another disk fails before it is done, data may be lost."),
                    {array.name, percent});
    }
    return fill(trn("The disk array {1} is being rebuilt, {2} % done, about {3} minute left: leave "
                    "the appliance on. If another disk fails before it is done, data may be lost.",
                    "The disk array {1} is being rebuilt, {2} % done, about {3} minutes left: "
                    "leave the appliance on. If another disk fails before it is done, data may be "
                    "lost.",
                    *task.minutes),
                {array.name, percent, std::to_string(*task.minutes)});
}

Finding judgeRebuild(const DiskArray& array, const ArrayTask& task)
{
    return {.level = Level::kWarning,
            .kind = "array-rebuilding",
            .sentence = formatRebuild(array, task)};
}

std::string formatMissingDisk(const DiskArray& array)
{
    const std::string working = std::to_string(array.working);
    const std::string wanted = std::to_string(array.wanted);
    if (array.failed.empty()) {
        return fill(trn("The disk array {1} works with {2} of {3} disk: attach or replace the "
                        "missing one. If another disk fails, data may be lost.",
                        "The disk array {1} works with {2} of {3} disks: attach or replace the "
                        "missing one. If another disk fails, data may be lost.",
                        array.wanted),
                    {array.name, working, wanted});
    }
    return fill(trn("The disk array {1} works with {2} of {3} disk. Replace what has failed: {4}. "
                    "If another disk fails, data may be lost.",
                    "The disk array {1} works with {2} of {3} disks. Replace what has failed: {4}. "
                    "If another disk fails, data may be lost.",
                    array.wanted),
                {array.name, working, wanted, formatNames(array.failed)});
}

Finding judgeMissingDisk(const DiskArray& array)
{
    return {
        .level = Level::kCritical, .kind = "array-degraded", .sentence = formatMissingDisk(array)};
}

Finding judgeSpareUsed(const DiskArray& array)
{
    return {.level = Level::kWarning,
            .kind = "disk-failed",
            .sentence = fill(tr("The disk array {1} has all the disks that it needs. Replace "
                                "what has failed: {2}."),
                             {array.name, formatNames(array.failed)})};
}

bool isRebuilding(const DiskArray& array)
{
    return array.task && array.task->kind == ArrayTask::Kind::kRebuild;
}

void judgeArray(const DiskArray& array, std::vector<Finding>& out)
{
    if (!array.isRunning) {
        out.push_back(judgeStopped(array));
    } else if (isRebuilding(array)) {
        out.push_back(judgeRebuild(array, *array.task));
    } else if (array.isDegraded()) {
        out.push_back(judgeMissingDisk(array));
    } else if (!array.failed.empty()) {
        out.push_back(judgeSpareUsed(array));
    }
}

} // namespace

void judgeArrays(const std::vector<DiskArray>& arrays, std::vector<Finding>& out)
{
    for (const DiskArray& array : arrays) {
        judgeArray(array, out);
    }
}

} // namespace view
