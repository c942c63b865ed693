// SPDX-License-Identifier: MIT
//
// The current step of a form of several steps.
#include <array>
#include <cstdio>

#include "core/core.h"
#include "vokcontrol.h"

namespace {

using FieldText = std::array<char, 256>;

bool readField(FieldText& text)
{
    // Only a page engine defines the function.
    return cgiFormStringNoNewlines != nullptr &&
           cgiFormStringNoNewlines("next_page", text.data(), static_cast<int>(text.size())) == 0;
}

} // namespace

int printNextPage(void)
{
    FieldText text = {};
    if (!readField(text)) {
        text[0] = '0';
    }
    const int page = core::decimalInt(text.data());
    std::printf("function this_page()\n{\n\treturn %d;\n}\n", page);
    core::printComment("printNextPage() this_page() { return %d;}", page);
    return page;
}
