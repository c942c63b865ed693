// SPDX-License-Identifier: MIT
#include "core/core.h"

char fin_buf[4096];
FILE* fout_buf = nullptr;

std::array<char, core::kCommandSize> core::commandBuffer;
