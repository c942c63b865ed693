// SPDX-License-Identifier: MIT
#include "text/translation.h"

#include <array>
#include <filesystem>
#include <optional>

#include "text/catalogue.h"
#include "text/places.h"

namespace text {
namespace {

struct Spoken {
    const core::Language* language = &core::kEnglish;
    std::optional<Catalogue> catalogue = std::nullopt;
};

Spoken& current()
{
    static Spoken spoken;
    return spoken;
}

/// Where catalogues may be: beside a program that was just built, in the folder that belongs to the
/// installed program's, and in the system's.
std::array<std::filesystem::path, 4> folders()
{
    std::error_code none;
    const std::filesystem::path program =
        std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
    return {program / "locale", program / "../share/locale", program / "../../share/locale",
            VOKCONTROL_LOCALE_FOLDER};
}

std::optional<Catalogue> findCatalogue(const core::Language& language)
{
    for (const std::filesystem::path& folder : folders()) {
        const std::filesystem::path file =
            folder / language.locale / "LC_MESSAGES" / "vokcontrol.mo";
        if (std::optional<Catalogue> catalogue = Catalogue::read(file.string())) {
            return catalogue;
        }
    }
    return std::nullopt;
}

const char* orEnglish(const char* translation, const char* english)
{
    return (translation != nullptr) ? translation : english;
}

} // namespace

void speak(const core::Language& language)
{
    current() = Spoken();
    if (&language == current().language) {
        return;
    }
    if (std::optional<Catalogue> catalogue = findCatalogue(language)) {
        current() = {&language, std::move(catalogue)};
    }
}

const core::Language& spoken()
{
    return *current().language;
}

const char* tr(const char* sentence)
{
    const std::optional<Catalogue>& catalogue = current().catalogue;
    return catalogue ? orEnglish(catalogue->find(sentence), sentence) : sentence;
}

const char* trn(const char* one, const char* many, std::uint64_t count)
{
    const std::optional<Catalogue>& catalogue = current().catalogue;
    const char* english = (count == 1) ? one : many;
    return catalogue ? orEnglish(catalogue->find(one, count), english) : english;
}

const char* trc(const char* context, const char* word)
{
    const std::optional<Catalogue>& catalogue = current().catalogue;
    return catalogue ? orEnglish(catalogue->find(std::string(context) + '\4' + word), word) : word;
}

std::string fill(std::string_view sentence, std::initializer_list<std::string_view> texts)
{
    std::string out;
    splitAtPlaces(
        sentence, [&out](std::string_view words) { out += words; },
        [&out, texts](std::size_t place) {
            out += (place < texts.size()) ? *(texts.begin() + place) : std::string_view();
        });
    return out;
}

} // namespace text
