// SPDX-License-Identifier: MIT
#include "page/form.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "vokcontrol.h"

namespace page {
namespace {

const Form* currentForm = nullptr;

/// Two hexadecimal digits as a character.
/// @return false where they are not
bool decodeDigits(std::string_view digits, char& character)
{
    constexpr std::size_t kDigits = 2;
    unsigned code = 0;
    const char* end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, code, 16);
    character = static_cast<char>(code);
    return digits.size() == kDigits && read.ec == std::errc() && read.ptr == end;
}

std::pair<std::string, std::string> decodeField(std::string_view field)
{
    const std::size_t equals = std::min(field.find('='), field.size());
    const std::size_t value = std::min(equals + 1, field.size());
    return {decodeUrl(field.substr(0, equals)), decodeUrl(field.substr(value))};
}

FieldResult copyField(const std::string* value, char* buffer, std::size_t size)
{
    buffer[0] = '\0';
    if (value == nullptr) {
        return kFieldMissing;
    }
    std::string text = *value;
    // A zero byte would end the text for whoever reads the buffer.
    std::erase_if(text, [](char c) { return c == '\n' || c == '\r' || c == '\0'; });
    const std::size_t copied = text.copy(buffer, size - 1);
    buffer[copied] = '\0';
    if (text.empty()) {
        return kFieldEmpty;
    }
    return (copied < text.size()) ? kFieldCut : kFieldCopied;
}

} // namespace

std::string decodeUrl(std::string_view text)
{
    constexpr std::size_t kDigits = 2;
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char decoded = '\0';
        if (text[at] == '+') {
            out += ' ';
        } else if (text[at] == '%' && decodeDigits(text.substr(at + 1, kDigits), decoded)) {
            out += decoded;
            at += kDigits;
        } else {
            out += text[at];
        }
    }
    return out;
}

std::string encodeUrl(std::string_view bytes)
{
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                        "0123456789-._~";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string out;
    for (const char c : bytes) {
        if (kPlain.find(c) != kPlain.npos) {
            out += c;
            continue;
        }
        const auto code = static_cast<unsigned char>(c);
        out += '%';
        out += kDigits[code / 16];
        out += kDigits[code % 16];
    }
    return out;
}

std::string_view trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

Form::Form(std::string_view body)
{
    while (!body.empty()) {
        const std::size_t end = std::min(body.find('&'), body.size());
        if (end > 0) {
            fields_.push_back(decodeField(body.substr(0, end)));
        }
        body.remove_prefix(std::min(end + 1, body.size()));
    }
}

const std::string* Form::find(std::string_view name) const
{
    const auto found = std::ranges::find(
        fields_, name, [](const auto& field) { return std::string_view(field.first); });
    return (found != fields_.end()) ? &found->second : nullptr;
}

std::string_view Form::value(std::string_view name) const
{
    const std::string* found = find(name);
    return (found != nullptr) ? std::string_view(*found) : std::string_view();
}

void Form::set(std::string_view name, std::string_view value)
{
    std::erase_if(fields_, [name](const auto& field) { return field.first == name; });
    fields_.emplace_back(name, value);
}

CurrentForm::CurrentForm(const Form& form) : former_(currentForm)
{
    currentForm = &form;
}

CurrentForm::~CurrentForm()
{
    currentForm = former_;
}

} // namespace page

int cgiFormStringNoNewlines(const char* name, char* buffer, int size)
{
    using namespace page;

    if (size < 1) {
        return kFieldMissing;
    }
    const std::string* value = (currentForm != nullptr) ? currentForm->find(name) : nullptr;
    return copyField(value, buffer, static_cast<std::size_t>(size));
}
