// SPDX-License-Identifier: MIT
#include "config/lines.h"

#include <algorithm>
#include <ini.h>
#include <vector>

#include "config/keys.h"

namespace config {
namespace {

constexpr std::string_view kBlanks = " \t\r";

/// Text of the file, for a complaint. A byte that is not printable ASCII becomes a question mark.
std::string quote(std::string_view text)
{
    std::string quoted = "\"" + std::string(text) + "\"";
    std::replace_if(
        quoted.begin(), quoted.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return quoted;
}

/// "a, b and c"
std::string enumerate(const std::vector<std::string>& names)
{
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        text += (i == 0) ? "" : (isLast ? " and " : ", ");
        text += names[i];
    }
    return text;
}

std::vector<std::string> sectionNames()
{
    std::vector<std::string> names;
    for (const Key& key : keys()) {
        const std::string name = "[" + std::string(key.section) + "]";
        if (names.empty() || names.back() != name) {
            names.push_back(name);
        }
    }
    return names;
}

std::vector<std::string> keyNames(std::string_view section)
{
    std::vector<std::string> names;
    for (const Key& key : keys()) {
        if (key.section == section) {
            names.emplace_back(key.name);
        }
    }
    return names;
}

/// The place of a key in the table; the table's size if there is no such key.
std::size_t findKey(std::string_view section, std::string_view name)
{
    const std::span<const Key> all = keys();
    const auto key = std::find_if(all.begin(), all.end(), [&](const Key& each) {
        return each.section == section && each.name == name;
    });
    return static_cast<std::size_t>(key - all.begin());
}

/// Reads a file's content with the parser, which takes the lines one by one and returns the key and
/// value of each. The parser cuts long lines and accepts unknown sections and keys, so lines are
/// checked here before it gets them, and keys afterwards.
class File {
  public:
    File(std::string name, std::string_view content) : name_(std::move(name)), rest_(content) {}

    Configuration read()
    {
        const int unparsed = ::ini_parse_stream(&File::nextLine, this, &File::takeKey, this);
        if (unparsed > 0 && (complaint_.empty() || unparsed < line_)) {
            line_ = unparsed;
            complain("this is neither \"key = value\" nor a [section]");
        }
        if (complaint_.empty()) {
            checkTogether();
        }
        if (!complaint_.empty()) {
            throw BadConfiguration(name_ + ":" + std::to_string(line_) + ": " + complaint_);
        }
        return configuration_;
    }

  private:
    /// Stores the next line in out, as fgets() does; returns null at the end, and after a
    /// complaint.
    static char* nextLine(char* out, int size, void* file)
    {
        return static_cast<File*>(file)->next(out, static_cast<std::size_t>(size));
    }

    /// @return 1 if the key is good
    static int takeKey(void* file, const char* section, const char* name, const char* value)
    {
        return static_cast<File*>(file)->take(section, name, value) ? 1 : 0;
    }

    char* next(char* out, std::size_t size)
    {
        if (rest_.empty() || !complaint_.empty()) {
            return nullptr;
        }
        ++line_;
        const std::string_view line = withoutComment(cutLine());
        if (!isGoodLine(line, size - 1)) {
            return nullptr;
        }
        *std::copy(line.begin(), line.end(), out) = '\0';
        return out;
    }

    /// Takes a line, without the blanks around it: the parser would take a line that begins with
    /// blanks for a part of the value above.
    std::string_view cutLine()
    {
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        return line.substr(0, line.find_last_not_of(kBlanks) + 1);
    }

    static std::string_view withoutComment(std::string_view line)
    {
        return (line.starts_with('#') || line.starts_with(';')) ? std::string_view() : line;
    }

    bool isGoodLine(std::string_view line, std::size_t most)
    {
        if (line.size() > most) {
            return complain("the line is longer than " + std::to_string(most) + " bytes");
        }
        if (line.find('\0') != std::string_view::npos) {
            return complain("the line contains a zero byte");
        }
        return !line.starts_with('[') || isGoodHeading(line);
    }

    bool isGoodHeading(std::string_view line)
    {
        const std::vector<std::string> names = sectionNames();
        return std::find(names.begin(), names.end(), line) != names.end() ||
               complain(quote(line) + " is not a section; known sections: " + enumerate(names));
    }

    bool take(std::string_view section, std::string_view name, std::string_view value)
    {
        const std::span<const Key> all = keys();
        const std::size_t place = findKey(section, name);
        if (place == all.size()) {
            return complainOfKey(section, name);
        }
        int& line = lines_[place];
        if (line > 0) {
            return complain(std::string(name) + " is set in line " + std::to_string(line) +
                            " already; remove one of the two lines");
        }
        line = line_;
        return config::take(all[place], value, configuration_) ||
               complain(std::string(name) + " must be " + allowedValue(all[place]));
    }

    bool complainOfKey(std::string_view section, std::string_view name)
    {
        if (section.empty()) {
            return complain("the key " + quote(name) +
                            " is before the first section; move it into a section");
        }
        return complain(quote(name) + " is not a key of [" + std::string(section) +
                        "]; known keys: " + enumerate(keyNames(section)));
    }

    /// Checks keys that depend on each other. A complaint names the later of the two lines.
    void checkTogether()
    {
        const Configuration& all = configuration_;
        if (all.fullWarning > all.fullCritical) {
            complainOfTwo("thresholds", "full-warning", "full-critical",
                          "full-warning must not be above full-critical");
        }
        if (all.goodStates.find_first_of(all.failedStates) != std::string::npos) {
            complainOfTwo("backup", "good-states", "failed-states",
                          "a state cannot be in both good-states and failed-states");
        }
    }

    void complainOfTwo(std::string_view section, std::string_view one, std::string_view other,
                       const std::string& complaint)
    {
        line_ = std::max(lines_[findKey(section, one)], lines_[findKey(section, other)]);
        complain(complaint);
    }

    bool complain(const std::string& complaint)
    {
        complaint_ = complaint;
        return false;
    }

    std::string name_;
    std::string_view rest_;
    int line_ = 0;
    std::vector<int> lines_ = std::vector<int>(keys().size()); ///< of each key; 0 if it is not set
    Configuration configuration_;
    std::string complaint_;
};

} // namespace

Configuration readLines(const std::string& file, std::string_view content)
{
    return File(file, content).read();
}

} // namespace config
