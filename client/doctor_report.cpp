// SPDX-License-Identifier: MIT
#include "client/doctor_report.h"

#include <algorithm>
#include <array>

#include "client/json_text.h"
#include "client/text_table.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trc;

const char* signOf(Sign sign)
{
    const auto signs = std::to_array<const char*>(
        {trc("sign of a check", "ok"), trc("sign of a check", "WRONG"), "-", "?"});
    return signs.at(static_cast<std::size_t>(sign));
}

auto count(const std::vector<Result>& results, Sign sign)
{
    return std::ranges::count(results, sign,
                              [](const Result& result) { return result.diagnosis.sign; });
}

TableRow makeRow(const Result& result)
{
    const auto& [sign, reason, remedy] = result.diagnosis;
    const std::string sentence =
        // Translators: 1 is a whole sentence; 2 a command line, or advice without a full stop.
        remedy.empty() ? reason : fill(tr("{1} What to do: {2}."), {reason, remedy});
    return {view::makePrintable(signOf(sign)), view::makePrintable(result.check->name),
            view::makePrintable(sentence)};
}

} // namespace

std::string renderDoctorText(const std::vector<Result>& results)
{
    using enum Align;
    constexpr auto kColumns = std::to_array<Align>({kLeft, kLeft, kLeft});
    std::vector<TableRow> rows;
    std::ranges::transform(results, std::back_inserter(rows), makeRow);
    return layOutTable(kColumns, rows) + "\n" +
           fill(tr("Wrong: {1}, not checked: {2}, checks in all: {3}."),
                {std::to_string(count(results, Sign::kWrong)),
                 std::to_string(count(results, Sign::kUnchecked)),
                 std::to_string(results.size())}) +
           "\n";
}

std::string renderDoctorJson(const std::vector<Result>& results)
{
    Json list = Json::array();
    for (const Result& result : results) {
        const auto& [sign, reason, remedy] = result.diagnosis;
        Json check;
        check["name"] = result.check->name;
        check["result"] = wordOf(sign);
        check["reason"] = reason;
        check["remedy"] = remedy.empty() ? Json() : Json(remedy);
        list.push_back(check);
    }
    Json json;
    json["wrong"] = count(results, Sign::kWrong);
    json["unchecked"] = count(results, Sign::kUnchecked);
    json["checks"] = list;
    return renderJson(json);
}

ExitCode exitCodeOf(const std::vector<Result>& results)
{
    return (count(results, Sign::kWrong) > 0) ? kRefused : kGood;
}

} // namespace client
