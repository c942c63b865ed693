// SPDX-License-Identifier: MIT
#include "page/overview_arrays.h"

#include <string>

#include "page/layout.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using text::fill;
using text::tr;
using text::trn;
using view::ArrayTask;
using view::DiskArray;

bool isRebuilding(const DiskArray& array)
{
    return array.task && array.task->kind == ArrayTask::Kind::kRebuild;
}

Html stateBadge(const DiskArray& array)
{
    if (!array.isRunning) {
        return badge("old", "&#10005;", tr("Stopped"));
    }
    if (isRebuilding(array)) {
        return badge("ageing", "!", tr("Rebuilding"));
    }
    if (array.isDegraded()) {
        return badge("old", "&#10005;", tr("Degraded"));
    }
    if (!array.failed.empty()) {
        return badge("ageing", "!", tr("Disk failed"));
    }
    return badge("recent", "&#10003;", tr("Healthy"));
}

Html disksAtWork(const DiskArray& array)
{
    if (array.wanted == 0) {
        return {};
    }
    const char* sentence =
        trn("{1} of {2} disk at work.", "{1} of {2} disks at work.", array.wanted);
    return Html() << " "
                  << Text{fill(sentence,
                               {std::to_string(array.working), std::to_string(array.wanted)})};
}

const char* nameOf(ArrayTask::Kind kind)
{
    switch (kind) {
    case ArrayTask::Kind::kRebuild:
        return tr("Rebuilding");
    case ArrayTask::Kind::kReshape:
        return tr("Being reshaped");
    case ArrayTask::Kind::kCheck:
        break;
    }
    return tr("Being checked");
}

std::string taskWords(const ArrayTask& task)
{
    const std::string name = nameOf(task.kind);
    if (task.isWaiting) {
        return fill(tr("{}: waits for its turn."), {name});
    }
    const std::string percent = std::to_string(task.percent);
    if (!task.minutes) {
        return fill(tr("{1}: {2} % done."), {name, percent});
    }
    return fill(trn("{1}: {2} % done, about {3} minute left.",
                    "{1}: {2} % done, about {3} minutes left.", *task.minutes),
                {name, percent, std::to_string(*task.minutes)});
}

Html taskPart(const ArrayTask& task, std::size_t number)
{
    const std::string id = "task-" + std::to_string(number);
    Html out;
    out << R"(<p class="quiet" id=")" << Text{id} << R"(">)" << Text{taskWords(task)} << "</p>";
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
<h2 id="arrays">)"
        << Text{tr("Disk health")} << R"(</h2>
<ul class="devices">)";
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        out << arrayItem(arrays[i], i);
    }
    out << "\n</ul>\n</section>\n";
    return out;
}

} // namespace page
