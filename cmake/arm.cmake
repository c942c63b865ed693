# SPDX-License-Identifier: MIT
#
# 32-bit ARM with hardware floating point: Debian's armhf.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(VOKCONTROL_TRIPLET arm-linux-gnueabihf)
set(VOKCONTROL_TARGET_ROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm/root)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
