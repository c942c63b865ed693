// SPDX-License-Identifier: MIT
#include "page/overview_arrays.h"

#include <string>

#include "page/layout.h"
#include "view/wording.h"

namespace page {
namespace {

using view::ArrayTask;
using view::DiskArray;

bool isRebuilding(const DiskArray& array)
{
    return array.task && array.task->kind == ArrayTask::Kind::kRebuild;
}

Html stateBadge(const DiskArray& array)
{
    if (!array.isRunning) {
        return badge("old", "&#10005;", "Stopped");
    }
    if (isRebuilding(array)) {
        return badge("ageing", "!", "Rebuilding");
    }
    if (array.isDegraded()) {
        return badge("old", "&#10005;", "Degraded");
    }
    if (!array.failed.empty()) {
        return badge("ageing", "!", "Disk failed");
    }
    return badge("recent", "&#10003;", "Healthy");
}

Html disksAtWork(const DiskArray& array)
{
    if (array.wanted == 0) {
        return {};
    }
    return Html() << " " << Text{std::to_string(array.working)} << " of "
                  << Text{view::formatCount(array.wanted, "disk", "disks")} << " at work.";
}

Literal nameOf(ArrayTask::Kind kind)
{
    switch (kind) {
    case ArrayTask::Kind::kRebuild:
        return "Rebuilding";
    case ArrayTask::Kind::kReshape:
        return "Getting its new shape";
    case ArrayTask::Kind::kCheck:
        break;
    }
    return "Being checked";
}

Html taskWords(const ArrayTask& task)
{
    Html out;
    out << nameOf(task.kind);
    if (task.isWaiting) {
        out << ": waits for its turn.";
        return out;
    }
    out << ": " << Text{std::to_string(task.percent)} << " % done";
    if (task.minutes) {
        out << ", about " << Text{view::formatCount(*task.minutes, "minute", "minutes")} << " left";
    }
    out << ".";
    return out;
}

Html taskPart(const ArrayTask& task, std::size_t number)
{
    const std::string id = "task-" + std::to_string(number);
    Html out;
    out << R"(<p class="quiet" id=")" << Text{id} << R"(">)" << taskWords(task) << "</p>";
    if (!task.isWaiting) {
        out << R"(<progress aria-labelledby=")" << Text{id} << R"(" max="100" value=")"
            << Text{std::to_string(task.percent)} << R"("></progress>)";
    }
    return out;
}

Html arrayItem(const DiskArray& array, std::size_t number)
{
    Html out;
    out << "\n<li><div><h3><bdi>" << Text{array.name} << R"(</bdi> <span class="quiet">)"
        << Text{array.level} << "</span></h3><p>" << stateBadge(array) << disksAtWork(array)
        << "</p>";
    if (array.task) {
        out << taskPart(*array.task, number);
    }
    out << "</div></li>";
    return out;
}

} // namespace

Html arraysCard(const std::vector<DiskArray>& arrays)
{
    if (arrays.empty()) {
        return {};
    }
    Html out;
    out << R"(<section class="card" aria-labelledby="arrays">
<h2 id="arrays">Disk health</h2>
<ul class="devices">)";
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        out << arrayItem(arrays[i], i);
    }
    out << "\n</ul>\n</section>\n";
    return out;
}

} // namespace page
