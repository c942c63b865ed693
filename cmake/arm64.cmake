# SPDX-License-Identifier: MIT
#
# 64-bit ARM: Debian's arm64.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VOKCONTROL_TRIPLET aarch64-linux-gnu)
set(VOKCONTROL_TARGET_ROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64/root)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
