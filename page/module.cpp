// SPDX-License-Identifier: MIT
#include "page/module.h"

#include <dlfcn.h>
#include <stdexcept>
#include <string>

void* page::module::lookUp(const char* name)
{
    void* function = ::dlsym(RTLD_DEFAULT, name);
    if (function == nullptr) {
        throw std::runtime_error(std::string("the library has no function ") + name);
    }
    return function;
}
