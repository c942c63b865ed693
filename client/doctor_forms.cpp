// SPDX-License-Identifier: MIT
#include "client/doctor_forms.h"

#include <algorithm>
#include <charconv>

#include "client/doctor_lines.h"
#include "core/languages.h"
#include "guard/values.h"
#include "text/translation.h"

namespace client {
namespace {

using text::fill;
using text::mark;
using text::tr;
using text::trn;

// ---- Values -----------------------------------------------------------------------------------

bool startsWithDigit(std::string_view text)
{
    return !text.empty() && guard::isDigit(text[0]);
}

bool startsWithAddress(std::string_view text)
{
    return startsWithDigit(text) && text.find('.') != std::string_view::npos;
}

Diagnosis misread(std::string reason, const std::string& form)
{
    return wrong(std::move(reason),
                 fill(tr("have it print {}; porting.md has an example"), {form}));
}

/// A sentence about a line; lines count from 1.
std::string aboutLine(const char* sentence, std::size_t index)
{
    return fill(tr(sentence), {std::to_string(index + 1)});
}

// ---- Shares -----------------------------------------------------------------------------------

constexpr const char* kShareForm = mark("a line each for <sharename>, <shareproperty>, "
                                        "<sharelocation> and </shareinfo>, in this order");

/// One block of the share script's list, as far as it has been read.
struct ShareBlock {
    bool hasName = false;
    bool hasProperty = false;
    bool hasLocation = false;

    [[nodiscard]] bool isWhole() const { return hasName && hasProperty && hasLocation; }
};

/// What the module would misread in a line; null if there is nothing.
const char* misreadIn(std::string_view line, ShareBlock& block)
{
    const auto has = [line](std::string_view tag) { return line.find(tag) != line.npos; };
    if (has("<sharename>")) {
        block.hasName = true;
        return between(line, "<sharename>", "</sharename>") ? nullptr
                                                            : mark("Line {} has no </sharename>.");
    }
    if (has("<shareproperty>")) {
        const bool isNext = block.hasName && !block.hasProperty && !block.hasLocation;
        block.hasProperty = true;
        if (!isNext) {
            return mark("Line {} has a property that does not follow the name.");
        }
        return line.starts_with("  <shareproperty>")
                   ? nullptr
                   : mark("Line {} does not begin with two blanks.");
    }
    if (has("<sharelocation>")) {
        block.hasLocation = true;
        return block.hasName ? nullptr : mark("Line {} has a location before the name.");
    }
    return nullptr;
}

std::string describeShares(std::size_t shares, std::size_t internal)
{
    return fill(trn("It lists {1} share, {2} of them internal.",
                    "It lists {1} shares, {2} of them internal.", shares),
                {std::to_string(shares), std::to_string(internal)});
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

constexpr const char* kDeviceForm = mark("<HDDInfo>, <hddIndex>, <modelDevName> and </HDDInfo> on "
                                         "lines of their own for each internal disk");

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
        if (const char* complaint = misreadIn(lines[i], block)) {
            return misread(aboutLine(complaint, i), tr(kShareForm));
        }
        internal += (lines[i].find("<sharelocation>int") != std::string_view::npos) ? 1 : 0;
        if (lines[i].find("</shareinfo>") != std::string_view::npos) {
            if (!block.isWhole()) {
                return misread(
                    aboutLine(mark("Line {} ends a share without name, property or location."), i),
                    tr(kShareForm));
            }
            block = {};
            ++shares;
        }
    }
    const bool isOver = !block.hasName && (shares > 0 || text.empty() || text[0] == '<');
    return isOver ? good(describeShares(shares, internal))
                  : misread(tr("The list does not end with </shareinfo>."), tr(kShareForm));
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
    const char* form = tr("a line <username>NAME</username> for each user");
    const Lines lines = linesOf(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (isUserLine(lines[i]) && !nameIn(lines[i])) {
            return misread(aboutLine(mark("Line {} has no name between \"name>\" and \"</\"."), i),
                           form);
        }
    }
    const std::size_t users = usersIn(text).size();
    if (users == 0 && !text.empty() && text[0] != '<') {
        return misread(fill(tr("It is not a list of users: {}."), {quoteStart(lines[0])}), form);
    }
    return good(
        fill(trn("It lists {} user.", "It lists {} users.", users), {std::to_string(users)}));
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
                return misread(aboutLine(mark("Line {} ends a disk without index or name."), i),
                               tr(kDeviceForm));
            }
            disk = {};
            ++disks;
        } else {
            readDisk(lines[i], disk);
        }
    }
    if (disk.isOpen || disks == 0) {
        return misread(disk.isOpen ? tr("The last disk does not end with </HDDInfo>.")
                                   : tr("It names no internal disk."),
                       tr(kDeviceForm));
    }
    return good(fill(trn("It names {} internal disk.", "It names {} internal disks.", disks),
                     {std::to_string(disks)}));
}

Diagnosis judgeLanguage(std::string_view text)
{
    const char* form = tr("<languag>NAME</languag> and <language>NAME</language>, a line each, "
                          "with a name such as english");
    for (const char* tag : {"<languag>", "<language>"}) {
        const std::string name = lastValue(text, tag);
        if (core::findLanguageByName(name) == nullptr) {
            return misread(fill(tr("The value after {1} is {2}, which is not a language that the "
                                   "module knows."),
                                {tag, quoteStart(name)}),
                           form);
        }
    }
    return good(fill(tr("The language is {}."), {lastValue(text, "<languag>")}));
}

Diagnosis judgeMachineName(std::string_view text)
{
    const std::string name = lastValue(text, "<nmbdSysname>");
    if (name.empty()) {
        return misread(tr("It has no name after <nmbdSysname>."),
                       "<nmbdSysname>NAME</nmbdSysname>");
    }
    return good(fill(tr("The name is {}."), {name}));
}

Diagnosis judgeWebHook(std::string_view text)
{
    const auto list = after(text, "return");
    if (!list) {
        return misread(tr("Its answer to share_info has no line with \"return\"."),
                       fill(tr("a line such as {}"), {R"(return ["NAME","NAME"])"}));
    }
    return good(tr("It answers share_info."));
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
        return misread(fill(tr("It printed {} instead of the number of internal drives."),
                            {quoteStart(text.substr(0, text.find('\n')))}),
                       tr("that number in its first line"));
    }
    return good(fill(trn("It counts {} internal drive.", "It counts {} internal drives.", *count),
                     {std::to_string(*count)}));
}

Diagnosis judgeDu(std::string_view text)
{
    return startsWithDigit(text) ? good(tr("It measures a folder."))
                                 : misread(fill(tr("Its first line has no number in front: {}."),
                                                {quoteStart(text.substr(0, text.find('\n')))}),
                                           tr("the KiB first"));
}

Diagnosis judgeFdisk(std::string_view text)
{
    const std::string form = fill(tr("a line such as {}"), {quoteStart("Disk /dev/sda: 500 GB")});
    const std::string_view size = after(text, "/dev/sda: ").value_or("");
    if (!startsWithDigit(size)) {
        return misread(tr("No line has a size after \"/dev/sda: \"."), form);
    }
    const std::string_view words = size.substr(0, size.find(','));
    if (!words.ends_with(" GB")) {
        return misread(fill(tr("The size is {}, but it is read as GB."), {quoteStart(words)}),
                       form);
    }
    return good(fill(tr("The first disk has {}."), {words}));
}

Diagnosis judgeMdadm(std::string_view text)
{
    constexpr std::size_t kToNextSize = 1;
    const std::string_view size = after(text, "GiB").value_or("");
    if (size.size() <= kToNextSize || !startsWithDigit(size.substr(kToNextSize))) {
        return misread(
            tr("No line has a size in GB after one in GiB."),
            fill(tr("a line such as {}"), {"\"Array Size : 488386583 (465.76 GiB 500.11 GB)\""}));
    }
    return good(
        fill(tr("The mirror has {}."), {size.substr(kToNextSize, size.find(')') - kToNextSize)}));
}

Diagnosis judgePs(std::string_view text)
{
    for (const std::string_view line : linesOf(text)) {
        const std::string_view words =
            line.substr(std::min(line.find_first_not_of(' '), line.size()));
        if (words.starts_with("1 ")) {
            return good(tr("It lists every process."));
        }
    }
    return misread(tr("It does not list process 1, so it leaves out others, too."),
                   tr("every process without any options, as busybox's ps does"));
}

Diagnosis judgeIfconfig(std::string_view text)
{
    const char* form = tr("\"addr:\", \"Mask:\" and \"HWaddr\" as busybox's ifconfig does");
    const Lines lines = linesOf(text);
    const bool hasCard = std::ranges::any_of(lines, [](std::string_view line) {
        return !line.empty() && line[0] != ' ' && !line.starts_with("lo");
    });
    if (!startsWithAddress(after(text, "inet addr:").value_or(""))) {
        return misread(tr("No line has an address after \"inet addr:\"."), form);
    }
    if (!startsWithAddress(after(text, "Mask:").value_or(""))) {
        return misread(tr("No line has a mask after \"Mask:\"."), form);
    }
    if (hasCard && !after(text, "HWaddr ")) {
        return misread(tr("No line has a hardware address after \"HWaddr\"."), form);
    }
    return good(hasCard ? tr("It has addresses.")
                        : tr("It has addresses, but there is no network card."));
}

Diagnosis judgeRoute(std::string_view text)
{
    const char* form = tr("\"0.0.0.0\", the gateway and its flags \"UG\" in one line");
    constexpr std::size_t kAfterDestination = 8;
    if (!after(text, "Destination")) {
        return misread(tr("It does not print a table of routes."), form);
    }
    for (const std::string_view line : linesOf(text)) {
        if (line.starts_with("0.0.0.0") && line.find("UG") != std::string_view::npos) {
            const std::size_t start = line.find_first_of("0123456789", kAfterDestination);
            const std::string_view gateway = line.substr(std::min(start, line.size()));
            return gateway.empty() ? misread(tr("A line with UG has no gateway."), form)
                                   : good(fill(tr("The gateway is {}."),
                                               {gateway.substr(0, gateway.find(' '))}));
        }
    }
    return good(tr("No gateway is set."));
}

Diagnosis judgeDate(std::string_view text)
{
    constexpr std::size_t kDigits = 8;
    const std::string_view line = text.substr(0, text.find('\n'));
    if (line.size() != kDigits || !std::ranges::all_of(line, guard::isDigit)) {
        return misread(fill(tr("It printed {} for +%m%d%Y."), {quoteStart(line)}),
                       tr("the eight digits MMDDYYYY"));
    }
    return good(tr("It prints the date."));
}

} // namespace client
