// SPDX-License-Identifier: MIT
#include "client/doctor_forms.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "core/languages.h"
#include "guard/values.h"
#include "view/wording.h"

namespace client {
namespace {

using Lines = std::vector<std::string_view>;

// ---- Lines and values -------------------------------------------------------------------------

Lines linesOf(std::string_view text)
{
    Lines lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        lines.push_back(line);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

/// The text between two marks, both of which are in one line.
std::optional<std::string_view> between(std::string_view line, std::string_view open,
                                        std::string_view close)
{
    const std::size_t start = line.find(open);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = line.substr(start + open.size());
    const std::size_t end = rest.find(close);
    return (end == std::string_view::npos) ? std::nullopt : std::optional(rest.substr(0, end));
}

/// The text after a mark, in the first line that has it.
std::optional<std::string_view> after(std::string_view text, std::string_view mark)
{
    for (const std::string_view line : linesOf(text)) {
        const std::size_t at = line.find(mark);
        if (at != std::string_view::npos) {
            return line.substr(at + mark.size());
        }
    }
    return std::nullopt;
}

bool startsWithDigit(std::string_view text)
{
    return !text.empty() && guard::isDigit(text[0]);
}

bool startsWithAddress(std::string_view text)
{
    return startsWithDigit(text) && text.find('.') != std::string_view::npos;
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t kMost = 60;
    return "\"" + std::string(text.substr(0, kMost)) + "\"";
}

Diagnosis misread(std::string reason, const std::string& form)
{
    return wrong(std::move(reason), "have it print " + form + "; porting.md has an example");
}

std::string inLine(std::size_t index)
{
    return "Line " + std::to_string(index + 1);
}

// ---- Shares -----------------------------------------------------------------------------------

constexpr const char* kShareForm =
    "a line each for <sharename>, <shareproperty>, <sharelocation> and </shareinfo>, in this order";

/// One block of the share script's list, as far as it has been read.
struct ShareBlock {
    bool hasName = false;
    bool hasProperty = false;
    bool hasLocation = false;

    [[nodiscard]] bool isWhole() const { return hasName && hasProperty && hasLocation; }
};

/// What the module would misread in a line; empty if there is nothing.
std::string misreadIn(std::string_view line, ShareBlock& block)
{
    const auto has = [line](std::string_view tag) { return line.find(tag) != line.npos; };
    if (has("<sharename>")) {
        block.hasName = true;
        return between(line, "<sharename>", "</sharename>") ? "" : "has no </sharename>";
    }
    if (has("<shareproperty>")) {
        const bool isNext = block.hasName && !block.hasProperty && !block.hasLocation;
        block.hasProperty = true;
        if (!isNext) {
            return "has a property that does not follow the name";
        }
        return line.starts_with("  <shareproperty>") ? "" : "does not begin with two blanks";
    }
    if (has("<sharelocation>")) {
        block.hasLocation = true;
        return block.hasName ? "" : "has a location before the name";
    }
    return "";
}

std::string describeShares(std::size_t shares, std::size_t internal)
{
    return "It lists " + view::formatCount(shares, "share", "shares") + ", " +
           std::to_string(internal) + " of them internal.";
}

// ---- Users ------------------------------------------------------------------------------------

bool isUserLine(std::string_view line)
{
    return line.find("username") != std::string_view::npos;
}

std::optional<std::string_view> nameIn(std::string_view line)
{
    return isUserLine(line) ? between(line, "name>", "</") : std::nullopt;
}

// ---- Devices ----------------------------------------------------------------------------------

constexpr const char* kDeviceForm =
    "<HDDInfo>, <hddIndex>, <modelDevName> and </HDDInfo> on lines of their own for each internal "
    "disk";

struct DiskBlock {
    bool isOpen = false;
    bool hasIndex = false;
    bool hasName = false;
};

void readDisk(std::string_view line, DiskBlock& disk)
{
    const auto index = between(line, "<hddIndex>", "</hddIndex>");
    disk.hasIndex = disk.hasIndex || (index && startsWithDigit(*index));
    const auto name = between(line, "<modelDevName>", "</modelDevName>");
    disk.hasName = disk.hasName || (name && !name->empty());
}

// ---- Language ---------------------------------------------------------------------------------

/// The module takes the value from the last line that has the tag.
std::string lastValue(std::string_view text, std::string_view tag)
{
    std::string value;
    for (const std::string_view line : linesOf(text)) {
        value = between(line, tag, "<").value_or(value);
    }
    return value;
}

} // namespace

Diagnosis judgeShareList(std::string_view text)
{
    ShareBlock block;
    std::size_t shares = 0;
    std::size_t internal = 0;
    const Lines lines = linesOf(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string complaint = misreadIn(lines[i], block);
        if (!complaint.empty()) {
            return misread(inLine(i) + " " + complaint + ".", kShareForm);
        }
        internal += (lines[i].find("<sharelocation>int") != std::string_view::npos) ? 1 : 0;
        if (lines[i].find("</shareinfo>") != std::string_view::npos) {
            if (!block.isWhole()) {
                return misread(inLine(i) + " ends a share without name, property or location.",
                               kShareForm);
            }
            block = {};
            ++shares;
        }
    }
    const bool isOver = !block.hasName && (shares > 0 || text.empty() || text[0] == '<');
    return isOver ? good(describeShares(shares, internal))
                  : misread("The list does not end with </shareinfo>.", kShareForm);
}

std::vector<std::string> usersIn(std::string_view text)
{
    std::vector<std::string> users;
    for (const std::string_view line : linesOf(text)) {
        if (const auto name = nameIn(line)) {
            users.emplace_back(*name);
        }
    }
    return users;
}

Diagnosis judgeUserList(std::string_view text)
{
    constexpr const char* kForm = "a line <username>NAME</username> for each user";
    const Lines lines = linesOf(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (isUserLine(lines[i]) && !nameIn(lines[i])) {
            return misread(inLine(i) + R"( has no name between "name>" and "</".)", kForm);
        }
    }
    const std::size_t users = usersIn(text).size();
    if (users == 0 && !text.empty() && text[0] != '<') {
        return misread("It is no list of users: " + quoted(lines[0]) + ".", kForm);
    }
    return good("It lists " + view::formatCount(users, "user", "users") + ".");
}

Diagnosis judgeDevices(std::string_view text)
{
    DiskBlock disk;
    std::size_t disks = 0;
    const Lines lines = linesOf(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].find("<HDDInfo>") != std::string_view::npos) {
            disk = {.isOpen = true};
        } else if (disk.isOpen && lines[i].find("</HDDInfo>") != std::string_view::npos) {
            if (!disk.hasIndex || !disk.hasName) {
                return misread(inLine(i) + " ends a disk without index or name.", kDeviceForm);
            }
            disk = {};
            ++disks;
        } else {
            readDisk(lines[i], disk);
        }
    }
    if (disk.isOpen || disks == 0) {
        return misread(disk.isOpen ? "The last disk does not end with </HDDInfo>."
                                   : "It names no internal disk.",
                       kDeviceForm);
    }
    return good("It names " + view::formatCount(disks, "internal disk", "internal disks") + ".");
}

Diagnosis judgeLanguage(std::string_view text)
{
    constexpr const char* kForm =
        "<languag>NAME</languag> and <language>NAME</language>, a line each, with a name such as "
        "english";
    for (const char* tag : {"<languag>", "<language>"}) {
        const std::string name = lastValue(text, tag);
        if (core::findLanguageByName(name) == nullptr) {
            return misread(std::string("After ") + tag +
                               " there is no language that the module "
                               "knows, but " +
                               quoted(name) + ".",
                           kForm);
        }
    }
    return good("It is " + lastValue(text, "<languag>") + ".");
}

Diagnosis judgeMachineName(std::string_view text)
{
    const std::string name = lastValue(text, "<nmbdSysname>");
    if (name.empty()) {
        return misread("It has no name after <nmbdSysname>.", "<nmbdSysname>NAME</nmbdSysname>");
    }
    return good("It is " + name + ".");
}

Diagnosis judgeWebHook(std::string_view text)
{
    const auto list = after(text, "return");
    if (!list) {
        return misread("Its answer to share_info has no line with \"return\".",
                       R"(a line such as return ["NAME","NAME"])");
    }
    return good("It answers share_info.");
}

std::optional<unsigned> driveCountIn(std::string_view text)
{
    unsigned count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    return (error == std::errc()) ? std::optional(count) : std::nullopt;
}

Diagnosis judgeDriveCount(std::string_view text)
{
    const std::optional<unsigned> count = driveCountIn(text);
    if (!count || *count == 0) {
        return misread("It printed " + quoted(text.substr(0, text.find('\n'))) +
                           " instead of the number of internal drives.",
                       "that number in its first line");
    }
    return good("It counts " + view::formatCount(*count, "internal drive", "internal drives") +
                ".");
}

Diagnosis judgeDu(std::string_view text)
{
    return startsWithDigit(text) ? good("It measures a folder.")
                                 : misread("Its first line has no number in front: " +
                                               quoted(text.substr(0, text.find('\n'))) + ".",
                                           "the KiB first");
}

Diagnosis judgeFdisk(std::string_view text)
{
    constexpr const char* kForm = "a line such as \"Disk /dev/sda: 500 GB\"";
    const std::string_view size = after(text, "/dev/sda: ").value_or("");
    if (!startsWithDigit(size)) {
        return misread("No line has a size after \"/dev/sda: \".", kForm);
    }
    const std::string_view words = size.substr(0, size.find(','));
    if (!words.ends_with(" GB")) {
        return misread("The size is " + quoted(words) + ", but it is read as GB.", kForm);
    }
    return good("The first disk has " + std::string(words) + ".");
}

Diagnosis judgeMdadm(std::string_view text)
{
    constexpr std::size_t kToNextSize = 1;
    const std::string_view size = after(text, "GiB").value_or("");
    if (size.size() <= kToNextSize || !startsWithDigit(size.substr(kToNextSize))) {
        return misread("No line has a size in GB after one in GiB.",
                       "a line such as \"Array Size : 488386583 (465.76 GiB 500.11 GB)\"");
    }
    return good("The mirror has " +
                std::string(size.substr(kToNextSize, size.find(')') - kToNextSize)) + ".");
}

Diagnosis judgePs(std::string_view text)
{
    for (const std::string_view line : linesOf(text)) {
        const std::string_view words =
            line.substr(std::min(line.find_first_not_of(' '), line.size()));
        if (words.starts_with("1 ")) {
            return good("It lists every process.");
        }
    }
    return misread("It does not list process 1, so it leaves out others, too.",
                   "every process without any options, as busybox's ps does");
}

Diagnosis judgeIfconfig(std::string_view text)
{
    constexpr const char* kForm = R"("addr:", "Mask:" and "HWaddr" as busybox's ifconfig does)";
    const Lines lines = linesOf(text);
    const bool hasCard = std::ranges::any_of(lines, [](std::string_view line) {
        return !line.empty() && line[0] != ' ' && !line.starts_with("lo");
    });
    if (!startsWithAddress(after(text, "inet addr:").value_or(""))) {
        return misread("No line has an address after \"inet addr:\".", kForm);
    }
    if (!startsWithAddress(after(text, "Mask:").value_or(""))) {
        return misread("No line has a mask after \"Mask:\".", kForm);
    }
    if (hasCard && !after(text, "HWaddr ")) {
        return misread("No line has a hardware address after \"HWaddr\".", kForm);
    }
    return good(hasCard ? "It has addresses." : "It has addresses, but there is no network card.");
}

Diagnosis judgeRoute(std::string_view text)
{
    constexpr const char* kForm = R"("0.0.0.0", the gateway and its flags "UG" in one line)";
    constexpr std::size_t kAfterDestination = 8;
    if (!after(text, "Destination")) {
        return misread("It does not print a table of routes.", kForm);
    }
    for (const std::string_view line : linesOf(text)) {
        if (line.starts_with("0.0.0.0") && line.find("UG") != std::string_view::npos) {
            const std::size_t start = line.find_first_of("0123456789", kAfterDestination);
            const std::string_view gateway = line.substr(std::min(start, line.size()));
            return gateway.empty() ? misread("A line with UG has no gateway.", kForm)
                                   : good("The gateway is " +
                                          std::string(gateway.substr(0, gateway.find(' '))) + ".");
        }
    }
    return good("No gateway is set.");
}

Diagnosis judgeDate(std::string_view text)
{
    constexpr std::size_t kDigits = 8;
    const std::string_view line = text.substr(0, text.find('\n'));
    if (line.size() != kDigits || !std::ranges::all_of(line, guard::isDigit)) {
        return misread("It printed " + quoted(line) + " for +%m%d%Y.", "the eight digits MMDDYYYY");
    }
    return good("It prints the date.");
}

} // namespace client
