// SPDX-License-Identifier: MIT
#include "view/disk_judgement.h"

#include "view/wording.h"

namespace view {
namespace {

std::string joined(const std::vector<std::string>& names)
{
    std::string words;
    for (const std::string& name : names) {
        words += (words.empty() ? "" : ", ") + name;
    }
    return words;
}

Finding judgeStopped(const DiskArray& array)
{
    return {.level = Level::kCritical,
            .kind = "array-stopped",
            .sentence = "The disk array " + array.name +
                        " does not run: see that all of its disks are attached, then restart the "
                        "appliance."};
}

Finding judgeRebuild(const DiskArray& array, const ArrayTask& task)
{
    Finding finding = {.level = Level::kWarning, .kind = "array-rebuilding", .sentence = ""};
    if (task.isWaiting) {
        finding.sentence = "The disk array " + array.name +
                           " waits to be rebuilt: leave the appliance on. If another disk fails "
                           "before it is done, data may be lost.";
    } else if (task.minutes) {
        finding.sentence = "The disk array " + array.name + " is being rebuilt, " +
                           std::to_string(task.percent) + " % done, about " +
                           formatCount(*task.minutes, "minute", "minutes") +
                           " left: leave the appliance on. If another disk fails before it is "
                           "done, data may be lost.";
    } else {
        finding.sentence = "The disk array " + array.name + " is being rebuilt, " +
                           std::to_string(task.percent) +
                           " % done: leave the appliance on. If another disk fails before it is "
                           "done, data may be lost.";
    }
    return finding;
}

Finding judgeMissingDisk(const DiskArray& array)
{
    const std::string count =
        std::to_string(array.working) + " of " + formatCount(array.wanted, "disk", "disks");
    return {.level = Level::kCritical,
            .kind = "array-degraded",
            .sentence = array.failed.empty()
                            ? "The disk array " + array.name + " works with " + count +
                                  ": attach or replace the missing one. If another disk fails, "
                                  "data may be lost."
                            : "The disk array " + array.name + " works with " + count +
                                  ": replace " + joined(array.failed) +
                                  ", which has failed. If another disk fails, data may be lost."};
}

Finding judgeSpareUsed(const DiskArray& array)
{
    return {.level = Level::kWarning,
            .kind = "disk-failed",
            .sentence = "The disk array " + array.name + " has all the disks that it needs, but " +
                        joined(array.failed) + " has failed: replace it."};
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
