// SPDX-License-Identifier: MIT
//
// The layout of the file: seven numbers of 32 bits (mark, version, count of rows, where the tables
// of originals and of translations begin, two of a hash table), and two tables of rows with a
// length and an offset. Each text has a zero behind it. The originals are sorted by their bytes.
#include "text/catalogue.h"

#include <array>
#include <cstring>
#include <fstream>
#include <sstream>

namespace text {
namespace {

constexpr std::uint32_t kMark = 0x950412DE;
constexpr std::size_t kCountAt = 8;
constexpr std::size_t kOriginalsAt = 12;
constexpr std::size_t kTranslationsAt = 16;
constexpr std::size_t kHeaderSize = 28;
constexpr std::size_t kRowSize = 8;

struct NamedRule {
    std::string_view words;
    std::size_t (*formOf)(std::uint64_t count);
};

constexpr auto kPluralRules = std::to_array<NamedRule>({
    {"nplurals=1; plural=0;", [](std::uint64_t) -> std::size_t { return 0; }},
    {"nplurals=2; plural=(n != 1);", [](std::uint64_t n) -> std::size_t { return n != 1; }},
    {"nplurals=2; plural=(n > 1);", [](std::uint64_t n) -> std::size_t { return n > 1; }},
});

/// A file's bytes; none if it cannot be read.
std::string contentOf(const std::string& path)
{
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

} // namespace

std::optional<Catalogue> Catalogue::read(const std::string& path)
{
    Catalogue catalogue(contentOf(path));
    if (!catalogue.isWhole() || !catalogue.takePluralRule()) {
        return std::nullopt;
    }
    return catalogue;
}

std::uint32_t Catalogue::number(std::size_t offset) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, content_.data() + offset, sizeof value);
    return value;
}

std::string_view Catalogue::row(std::size_t table, std::size_t index) const
{
    const std::size_t place = table + index * kRowSize;
    const std::size_t size = number(place);
    const std::size_t start = number(place + sizeof(std::uint32_t));
    const bool isInside = start < content_.size() && size < content_.size() - start;
    return (isInside && content_[start + size] == '\0')
               ? std::string_view(content_).substr(start, size)
               : std::string_view();
}

bool Catalogue::isWhole() const
{
    if (content_.size() < kHeaderSize || number(0) != kMark) {
        return false;
    }
    const std::uint64_t tableSize = std::uint64_t{number(kCountAt)} * kRowSize;
    return number(kOriginalsAt) + tableSize <= content_.size() &&
           number(kTranslationsAt) + tableSize <= content_.size();
}

bool Catalogue::takePluralRule()
{
    constexpr std::string_view kField = "Plural-Forms: ";
    // The translation of nothing is the catalogue's description.
    const std::string_view description = translation("").value_or("");
    const std::size_t field = description.find(kField);
    if (field == description.npos) {
        return false;
    }
    const std::string_view rest = description.substr(field + kField.size());
    for (const NamedRule& rule : kPluralRules) {
        if (rest.substr(0, rest.find('\n')) == rule.words) {
            formOf_ = rule.formOf;
            return true;
        }
    }
    return false;
}

std::optional<std::string_view> Catalogue::translation(std::string_view key) const
{
    std::size_t first = 0;
    std::size_t end = number(kCountAt);
    while (first < end) {
        const std::size_t middle = first + (end - first) / 2;
        // The plural follows the singular, with a zero between them.
        const std::string_view original = row(number(kOriginalsAt), middle);
        const int order = original.substr(0, original.find('\0')).compare(key);
        if (order == 0) {
            return row(number(kTranslationsAt), middle);
        }
        (order < 0 ? first : end) = (order < 0) ? middle + 1 : middle;
    }
    return std::nullopt;
}

const char* Catalogue::find(std::string_view key) const
{
    const std::optional<std::string_view> found = translation(key);
    return (found && !found->empty()) ? found->data() : nullptr;
}

const char* Catalogue::find(std::string_view key, std::uint64_t count) const
{
    std::string_view forms = translation(key).value_or("");
    for (std::size_t form = formOf_(count); form > 0 && !forms.empty(); --form) {
        const std::size_t end = forms.find('\0');
        forms = (end != forms.npos) ? forms.substr(end + 1) : std::string_view();
    }
    return forms.empty() ? nullptr : forms.data();
}

} // namespace text
