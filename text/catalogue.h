// SPDX-License-Identifier: MIT
//
// catalogue.h: a compiled gettext catalogue, the file that msgfmt makes. It is read by our own few
// lines, since the C library translates only if a locale of the language is installed, and a small
// appliance has none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace text {

class Catalogue {
  public:
    /// Reads a catalogue whole. Returns nothing if the file cannot be read, is no catalogue for
    /// machines of this byte order, or has a plural rule that none of our languages has.
    [[nodiscard]] static std::optional<Catalogue> read(const std::string& path);

    /// A sentence's translation; null if the catalogue has none.
    /// @param key  the sentence; before it, if it has one, the context and the byte 4
    [[nodiscard]] const char* find(std::string_view key) const;

    /// The form of a sentence's translation that suits a number; null if there is none.
    /// @param key  as above, of the sentence in the singular
    [[nodiscard]] const char* find(std::string_view key, std::uint64_t count) const;

  private:
    using PluralRule = std::size_t (*)(std::uint64_t count);

    explicit Catalogue(std::string content) : content_(std::move(content)) {}

    [[nodiscard]] std::uint32_t number(std::size_t offset) const;
    /// What a row of one of the two tables stands for; empty if it reaches out of the file.
    [[nodiscard]] std::string_view row(std::size_t table, std::size_t index) const;
    [[nodiscard]] std::optional<std::string_view> translation(std::string_view key) const;
    [[nodiscard]] bool isWhole() const;
    [[nodiscard]] bool takePluralRule();

    std::string content_;
    PluralRule formOf_ = nullptr;
};

} // namespace text
