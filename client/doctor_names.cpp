// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

#include "client/doctor_checks.h"
#include "client/doctor_forms.h"
#include "client/doctor_program.h"
#include "core/bytes.h"
#include "handlers/smb_passwd.h"
#include "text/translation.h"
#include "view/judgement.h"
#include "view/wording.h"

namespace client {
namespace {

using text::fill;
using text::tr;

constexpr const char* kPasswordFile = "/usr/private/smbpasswd";

/// A line of the password file.
struct Entry {
    std::string name;
    bool canMatch; ///< whether there is a password that its hash belongs to
};
using Entries = std::vector<Entry>;

/// Whether the hash is 32 hexadecimal digits, no more and no fewer.
bool canMatch(const SmbPasswdEntry& entry)
{
    const std::string_view hash(entry.ntHash, ::strnlen(entry.ntHash, sizeof entry.ntHash));
    constexpr std::size_t kDigits = 32;
    return hash.size() == kDigits &&
           hash.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// The entries as a check of a password reads them: it stops at a line that is none.
/// @return nothing if there is no such file
std::optional<Entries> readEntries(bool& stopsEarly)
{
    SmbPasswdHandle* opened = nullptr;
    if (openSmbPasswd(&opened, kPasswordFile) != 0) {
        return std::nullopt;
    }
    const std::unique_ptr<SmbPasswdHandle, int (*)(SmbPasswdHandle*)> file(opened, closeSmbPasswd);
    Entries entries;
    SmbPasswdEntry entry = {};
    errno = 0;
    while (readSmbPasswdEntry(file.get(), &entry) == 0) {
        entries.push_back({entry.name, canMatch(entry)});
    }
    stopsEarly = errno == EINVAL;
    return entries;
}

Diagnosis judgeAccounts(const std::vector<std::string>& users, const Entries& entries,
                        bool stopsEarly)
{
    std::vector<std::string> hopeless;
    for (const std::string& user : users) {
        const auto entry = std::ranges::find_if(entries, [&user](const Entry& each) {
            return core::equalIgnoringCase(each.name, user);
        });
        if (entry == entries.end() || !entry->canMatch) {
            hopeless.push_back(user);
        }
    }
    if (hopeless.empty()) {
        return good(tr("Each user has an entry that a password can match."));
    }
    const std::string names = view::formatNames(hopeless);
    if (stopsEarly) {
        return wrong(fill(tr("No password can match these users' entries in {1}: {2}. The file has "
                             "a line that is not an entry, and nothing after it is read."),
                          {kPasswordFile, names}),
                     tr("correct or remove that line"));
    }
    return wrong(
        fill(tr("No password can match these users' entries in {1}: {2}."), {kPasswordFile, names}),
        tr("set these users' passwords anew"));
}

} // namespace

Diagnosis examineShareNames(const Surroundings& surroundings, const Check& /*check*/)
{
    const view::Situation situation = view::readSituation();
    std::string sentences;
    for (const view::Finding& finding : view::judge(situation, surroundings.settings)) {
        const std::string_view kind = finding.kind;
        if (kind == "must-be-renamed" || kind == "unmeasured") {
            sentences = view::joinSentences(sentences, finding.sentence);
        }
    }
    return sentences.empty() ? good(tr("Every share is measured."))
                             : wrong(sentences, tr("correct that, then vokctl collect --wait 600"));
}

Diagnosis examineAccounts(const Surroundings& surroundings, const Check& /*check*/)
{
    const ProgramAnswer list = askScript(surroundings, "api_user.php", "tovGetUsers");
    if (list.complaint) {
        return *list.complaint;
    }
    bool stopsEarly = false;
    const std::optional<Entries> entries = readEntries(stopsEarly);
    if (!entries) {
        return wrong(fill(tr("No password can be checked: {1}: {2}."),
                          {kPasswordFile, std::strerror(errno)}),
                     tr("see that the file server keeps its passwords there"));
    }
    return judgeAccounts(usersIn(list.text), *entries, stopsEarly);
}

} // namespace client
