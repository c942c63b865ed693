// SPDX-License-Identifier: MIT
//
// form.h: the fields of a form, as a browser sends them (application/x-www-form-urlencoded).
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace page {

class Form {
  public:
    Form() = default;

    /// Reads what a browser sent. Of fields with one name the first counts.
    explicit Form(std::string_view body);

    /// A field's value; empty where there is no such field.
    [[nodiscard]] std::string_view value(std::string_view name) const;

    /// The same; null where there is no such field.
    [[nodiscard]] const std::string* find(std::string_view name) const;

    void set(std::string_view name, std::string_view value);

  private:
    std::vector<std::pair<std::string, std::string>> fields_;
};

/// "+" and "%41" as what they stand for; a "%" that is not followed by two hexadecimal digits
/// stays.
[[nodiscard]] std::string decodeUrl(std::string_view text);

/// Any bytes as the value of a field in an address: "%20" for a blank.
[[nodiscard]] std::string encodeUrl(std::string_view bytes);

/// A text without the blanks and tabs around it.
[[nodiscard]] std::string_view trim(std::string_view text);

/// Makes a form the one that cgiFormStringNoNewlines reads, for as long as this object lives. That
/// is how the module's functions read a field.
class CurrentForm {
  public:
    explicit CurrentForm(const Form& form);
    ~CurrentForm();
    CurrentForm(const CurrentForm&) = delete;
    CurrentForm& operator=(const CurrentForm&) = delete;

  private:
    const Form* former_;
};

/// What cgiFormStringNoNewlines gives back. The buffer holds an empty text in all cases but the
/// first two.
enum FieldResult {
    kFieldCopied = 0,
    kFieldCut = 1,     ///< what fits was copied
    kFieldEmpty = 2,   ///< it is there, with nothing in it
    kFieldMissing = 3, ///< there is no such field
};

} // namespace page
