// SPDX-License-Identifier: MIT
//
// complaints.h: what is wrong with a form that was sent, field by field.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "client/failure.h"
#include "page/html.h"

namespace page {

/// The field that a status code of a command is about, by its id.
struct BlamedField {
    cmdsvc::Status status;
    std::string_view field;
};

class Complaints {
  public:
    /// Adds a sentence about a field, unless there is one already.
    /// @param field     the field's id; empty if it is about the form as a whole
    /// @param sentence  nothing is added if it is empty
    void add(std::string_view field, std::string_view sentence);

    /// Adds why the service has refused, with the field that is to blame if the table has one.
    void add(const client::Failure& failure, std::span<const BlamedField> fields);

    /// The sentence about a field; empty if there is none.
    [[nodiscard]] std::string_view about(std::string_view field) const;

    [[nodiscard]] bool areNone() const { return entries_.empty(); }

    /// All of them for the top of the page, each with a link to its field; nothing if there is
    /// none.
    [[nodiscard]] Html summary() const;

  private:
    struct Entry {
        std::string field;
        std::string sentence;
    };
    std::vector<Entry> entries_;
};

} // namespace page
