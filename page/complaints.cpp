// SPDX-License-Identifier: MIT
#include "page/complaints.h"

#include <algorithm>

#include "page/layout.h"
#include "page/service.h"
#include "text/translation.h"

namespace page {

void Complaints::add(std::string_view field, std::string_view sentence)
{
    if (!sentence.empty() && about(field).empty()) {
        entries_.push_back({std::string(field), std::string(sentence)});
    }
}

void Complaints::add(const client::Failure& failure, std::span<const BlamedField> fields)
{
    std::string_view field;
    if (const auto* refused = dynamic_cast<const client::Refused*>(&failure)) {
        const auto blamed = std::ranges::find(fields, refused->status(), &BlamedField::status);
        field = (blamed != fields.end()) ? blamed->field : "";
    }
    add(field, explain(failure));
}

std::string_view Complaints::about(std::string_view field) const
{
    const auto found = std::ranges::find(entries_, field, &Entry::field);
    return (found != entries_.end()) ? std::string_view(found->sentence) : std::string_view();
}

Html Complaints::summary() const
{
    if (areNone()) {
        return {};
    }
    Html content;
    content << "<p>" << Text{text::tr("That did not work:")} << "</p>\n<ul>";
    for (const Entry& entry : entries_) {
        if (entry.field.empty()) {
            content << "<li>" << Text{entry.sentence} << "</li>";
        } else {
            content << R"(<li><a href="#)" << Text{entry.field} << R"(">)" << Text{entry.sentence}
                    << "</a></li>";
        }
    }
    content << "</ul>";
    return notice(Mood::kBad, content);
}

} // namespace page
