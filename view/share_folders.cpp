// SPDX-License-Identifier: MIT
#include "view/share_folders.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace view {
namespace {

bool isShareName(const std::string& name)
{
    return !name.starts_with('.') && name != "lost+found";
}

bool isFolderOn(dev_t device, int parent, const char* name)
{
    struct stat status = {};
    return ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode) &&
           status.st_dev == device;
}

} // namespace

std::optional<std::vector<std::string>> listShareFolders(const char* folder)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> list(::opendir(folder), ::closedir);
    struct stat self = {};
    if (!list || ::fstat(::dirfd(list.get()), &self) != 0) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(list.get())) {
        if (isShareName(entry->d_name) &&
            isFolderOn(self.st_dev, ::dirfd(list.get()), entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::ranges::sort(names);
    return names;
}

} // namespace view
