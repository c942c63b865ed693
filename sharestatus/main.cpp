// SPDX-License-Identifier: MIT
#include "sharestatus/sharestatus.h"

int main(int argc, char** /*argv*/)
{
    return sharestatus::runStatusDaemon(argc);
}
