// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <sys/stat.h>

#include "client/doctor_checks.h"
#include "sharestatus/status_format.h"
#include "text/translation.h"
#include "view/capacity.h"
#include "view/wording.h"

namespace client {
namespace {

using text::fill;
using text::tr;

constexpr const char* kSettingsFolder = "/etc/pelconfig";
constexpr const char* kModuleFolder = "/etc/pelconfig/vokcontrol";
constexpr const char* kReportFolder = "/etc/pelconfig/vokcontrol/__bksts";
constexpr const char* kVariableFile = "/etc/pelconfig/system_var";
constexpr const char* kLockFile = "/etc/pelconfig/system_var_lck";
constexpr const char* kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
constexpr const char* kRunFolder = "/run/vokcontrol";
constexpr const char* kBuildFile = "/etc/buildinfo.txt";

// What others than the owner may do.
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr mode_t kOthersAll = S_IRWXG | S_IRWXO;

/// What there has to be at a path.
struct Wanted {
    const char* path;
    mode_t type;      ///< S_IFDIR or S_IFREG
    mode_t forbidden; ///< permissions that it must not give
    std::string make; ///< what makes it
};

std::string formatMode(mode_t mode)
{
    constexpr mode_t kPermissions = 07777;
    std::string digits;
    for (mode_t left = mode & kPermissions; left > 0 || digits.size() < 3; left /= 8) {
        digits.insert(digits.begin(), static_cast<char>('0' + left % 8));
    }
    return digits;
}

/// What is wrong with a file or folder, if anything is.
std::optional<Diagnosis> complainOf(const Wanted& wanted)
{
    const std::string path = wanted.path;
    const bool isFolder = wanted.type == S_IFDIR;
    struct stat status = {};
    if (::lstat(wanted.path, &status) != 0) {
        return wrong(describeMissing(path, errno), wanted.make);
    }
    if ((status.st_mode & S_IFMT) != wanted.type) {
        return wrong(
            fill(isFolder ? tr("{} is not a folder.") : tr("{} is not a plain file."), {path}),
            fill(tr("move it away, then {}"), {wanted.make}));
    }
    if (status.st_uid != 0) {
        return wrong(fill(tr("{} does not belong to root."), {path}), "chown root " + path);
    }
    if ((status.st_mode & wanted.forbidden) != 0) {
        const bool mayRead = (wanted.forbidden & S_IROTH) == 0;
        return wrong(fill(mayRead ? tr("{1} has mode {2}, so that others may write to it.")
                                  : tr("{1} has mode {2}, so that others may open it."),
                          {path, formatMode(status.st_mode)}),
                     std::string("chmod ") + (mayRead ? "go-w " : "go= ") + path);
    }
    return std::nullopt;
}

bool exists(const char* path)
{
    struct stat status = {};
    return ::lstat(path, &status) == 0;
}

// ---- Space ------------------------------------------------------------------------------------

/// Whether a file system has some space left.
/// @param tooLittle  the sentence if it has less, with places for the free space and the folder
Diagnosis examineSpace(const char* folder, std::uint64_t kibibytes, const char* tooLittle)
{
    const std::optional<view::Capacity> capacity = view::readCapacity(folder);
    if (!capacity) {
        return wrong(fill(tr("The free space of {} cannot be read."), {folder}),
                     fill(tr("see whether there is a folder {}"), {folder}));
    }
    const std::string free = view::formatKibibytes(capacity->free);
    return (capacity->free >= kibibytes)
               ? good(fill(tr("{1} are free in {2}."), {free, folder}))
               : wrong(fill(tooLittle, {free, folder}), tr("remove what is not needed there"));
}

} // namespace

Diagnosis examineFolders(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    for (const char* folder : {kSettingsFolder, kModuleFolder, kReportFolder, view::kShareFolder}) {
        const Wanted wanted = {folder, S_IFDIR, kOthersWrite, std::string("mkdir -p ") + folder};
        if (std::optional<Diagnosis> complaint = complainOf(wanted)) {
            return *complaint;
        }
    }
    return good(tr("They are there, and only root may change them."));
}

Diagnosis examineVariables(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    const Wanted wanted = {kVariableFile, S_IFREG, kOthersWrite,
                           std::string("touch ") + kVariableFile};
    return complainOf(wanted).value_or(good(tr("It is there, and only root may change it.")));
}

Diagnosis examineLock(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    const Wanted wanted = {kLockFile, S_IFREG, kOthersAll,
                           std::string("install -m 600 /dev/null ") + kLockFile};
    return complainOf(wanted).value_or(good(tr("Only root may lock the variables.")));
}

Diagnosis examinePrivateFile(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    if (!exists(kPrivateFile)) {
        return unneeded(tr("No client has stored one."));
    }
    const Wanted wanted = {kPrivateFile, S_IFREG, kOthersAll, tr("have the client store it again")};
    return complainOf(wanted).value_or(good(tr("Only root may open it.")));
}

Diagnosis examineWorkFolder(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    const Wanted wanted = {kRunFolder, S_IFDIR, kOthersAll,
                           tr("start the service, which makes it")};
    return complainOf(wanted).value_or(good(tr("Only root may open it.")));
}

Diagnosis examineTmp(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    struct stat status = {};
    if (::stat("/tmp", &status) != 0 || !S_ISDIR(status.st_mode)) {
        return wrong(tr("There is no folder /tmp."), "mkdir -m 1777 /tmp");
    }
    const bool isShared = (status.st_mode & kOthersWrite) != 0;
    if (isShared && (status.st_mode & S_ISVTX) == 0) {
        return wrong(fill(tr("/tmp has mode {}, so that everybody may remove the files of others."),
                          {formatMode(status.st_mode)}),
                     "chmod 1777 /tmp");
    }
    return good(isShared ? tr("Everybody may use it, and nobody may remove the files of others.")
                         : tr("Only root may write to it."));
}

Diagnosis examineSettingsSpace(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    constexpr std::uint64_t kSpare = 1024;
    constexpr std::uint64_t kStatus = 1024;
    const bool isPublished = exists(sharestatus::kStatusFile);
    return examineSpace(kModuleFolder, kSpare + (isPublished ? 0 : kStatus),
                        tr("Only {1} are free in {2}, too little for the status and the "
                           "variables."));
}

Diagnosis examineShareSpace(const Surroundings& surroundings, const Check& /*check*/)
{
    const std::optional<view::Capacity> capacity = view::readCapacity();
    if (!capacity) {
        return wrong(tr("The free space of /share cannot be read."),
                     tr("see whether its disk is there"));
    }
    const std::string full =
        fill(tr("/share is {} % full."), {std::to_string(capacity->percentFull())});
    return (capacity->percentFull() < surroundings.settings.fullWarning)
               ? good(full)
               : wrong(full, tr("delete what is not needed, or move it elsewhere"));
}

Diagnosis examineWorkSpace(const Surroundings& /*surroundings*/, const Check& /*check*/)
{
    constexpr std::uint64_t kWorkFiles = 1024;
    const char* tooLittle = tr("Only {1} are free in {2}, too little for work files.");
    // The service's work files are in a folder of its own, those of others in /tmp.
    Diagnosis diagnosis = examineSpace("/run", kWorkFiles, tooLittle);
    return (diagnosis.sign == Sign::kGood) ? examineSpace("/tmp", kWorkFiles, tooLittle)
                                           : diagnosis;
}

Diagnosis examineClock(const Surroundings& surroundings, const Check& /*check*/)
{
    constexpr std::time_t kTolerance = 60;
    for (const char* path : {kBuildFile, kVariableFile, sharestatus::kStatusFile}) {
        struct stat status = {};
        if (::stat(path, &status) == 0 && status.st_mtime > surroundings.now + kTolerance) {
            return wrong(
                fill(tr("The clock says {1}, but {2} was written {3}."),
                     {view::formatTime(surroundings.now), path, view::formatTime(status.st_mtime)}),
                fill(tr("set the clock; if it is right, {}"), {"touch " + std::string(path)}));
        }
    }
    return good(fill(tr("The clock says {}."), {view::formatTime(surroundings.now)}));
}

} // namespace client
