// SPDX-License-Identifier: MIT
#include "service/usage.h"

#include <fstream>
#include <new>
#include <stdexcept>
#include <sys/mman.h>

#include "core/bytes.h"

namespace service {

Usage::Usage()
{
    void* memory =
        ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("there is no memory to count commands in");
    }
    shared_ = new (memory) Shared{};
}

Usage::~Usage()
{
    ::munmap(shared_, sizeof(Shared));
}

void Usage::count(std::string_view request)
{
    if (!shared_->isRead) {
        init_cmd_buffer(&shared_->table);
        shared_->isRead = true;
    }
    save_cmd_cnt(&shared_->table, &shared_->lastSave, core::u32At(request, 0));
}

void Usage::save() const
{
    if (!shared_->isRead) {
        return;
    }
    std::ofstream file(VOK_USAGE_FILE, std::ios::binary | std::ios::trunc);
    const CommandUsage& table = shared_->table;
    file.write(reinterpret_cast<const char*>(table.bytes), sizeof table.bytes);
}

} // namespace service
