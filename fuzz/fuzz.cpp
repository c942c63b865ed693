// SPDX-License-Identifier: MIT
#include "fuzz/fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "core/core.h"

namespace fs = std::filesystem;

void fuzz::require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void fuzz::writeFile(const char* path, std::string_view content)
{
    // Always a new file: overwriting one can wait for the disk.
    std::remove(path);
    core::File file = core::openFile(path, "w");
    require(file != nullptr);
    require(content.empty() ||
            std::fwrite(content.data(), 1, content.size(), file.get()) == content.size());
    require(std::fclose(file.release()) == 0);
}

void fuzz::emptyFolder(const char* path)
{
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        if (!entry.is_directory()) {
            fs::remove(entry.path());
        }
    }
}
