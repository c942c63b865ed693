// SPDX-License-Identifier: MIT
#include "page/login_pauses.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "page/digest.h"
#include "page/private_files.h"

namespace page {
namespace {

constexpr const char* kAll = "all";

struct Failures {
    unsigned count = 0;
    Time last{};
};

/// By account; of names the file has nothing but a digest. What all have to wait keeps it small: no
/// more than some seventy attempts fit into the time that is remembered.
using Table = std::map<std::string, Failures, std::less<>>;

/// A second, doubled with each failure after the first.
Time pauseAfter(unsigned failures, Time longest)
{
    Time pause{failures > 0 ? 1 : 0};
    for (unsigned doubled = 1; doubled < failures && pause < longest; ++doubled) {
        pause *= 2;
    }
    return std::min(pause, longest);
}

/// What has been forgotten by now, and times to come, are left out.
Table readTable(const std::string& text, Time now)
{
    Table table;
    std::istringstream lines(text);
    std::string key;
    Failures failures;
    Time::rep last = 0;
    while (lines >> key >> failures.count >> last) {
        failures.last = Time(last);
        if (failures.last <= now && now - failures.last < LoginPauses::kMemory) {
            table[key] = failures;
        }
    }
    return table;
}

std::string writeTable(const Table& table)
{
    std::string text;
    for (const auto& [key, failures] : table) {
        text += key + " " + std::to_string(failures.count) + " " +
                std::to_string(failures.last.count()) + "\n";
    }
    return text;
}

Time remaining(const Failures& failures, Time pause, Time now)
{
    return std::max(failures.last + pause - now, Time(0));
}

/// The two accounts' names that the check of a password takes for the same have the same pauses.
std::string keyOf(std::string_view account)
{
    std::string name(account);
    std::ranges::transform(name, name.begin(), [](char c) {
        return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    return digestOf(name);
}

void countFailure(Failures& failures, Time now)
{
    failures.count = std::min(failures.count + 1, 1000U);
    failures.last = now;
}

} // namespace

LoginPauses::LoginPauses(const std::string& folder) : path_(folder + "/pauses")
{
    requirePrivateFolder(folder);
}

Time LoginPauses::attempt(std::string_view account, Time now)
{
    const Descriptor lock = lockPrivateFile(path_ + ".lock");
    Table table = readTable(readPrivateFile(path_).value_or(""), now);
    Failures& ofAccount = table[keyOf(account)];
    Failures& ofAll = table[kAll];
    const unsigned beyondFree = ofAll.count - std::min(ofAll.count, kFreeOfAll);
    const Time wait =
        std::max(remaining(ofAccount, pauseAfter(ofAccount.count, kLongestOfAccount), now),
                 remaining(ofAll, pauseAfter(beyondFree, kLongestOfAll), now));
    if (wait > Time(0)) {
        return wait;
    }
    countFailure(ofAccount, now);
    countFailure(ofAll, now);
    replacePrivateFile(path_, writeTable(table));
    return Time(0);
}

void LoginPauses::succeeded(std::string_view account, Time now)
{
    const Descriptor lock = lockPrivateFile(path_ + ".lock");
    Table table = readTable(readPrivateFile(path_).value_or(""), now);
    table.erase(keyOf(account));
    Failures& ofAll = table[kAll];
    ofAll.count -= std::min(ofAll.count, 1U);
    replacePrivateFile(path_, writeTable(table));
}

} // namespace page
