// SPDX-License-Identifier: MIT
#include "core/core.h"

char fin_buf[VOK_REQUEST_SIZE];
FILE* fout_buf = nullptr;
