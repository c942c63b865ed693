# SPDX-License-Identifier: MIT
#
# The common part of the toolchain files for other machines: Debian's cross compiler for VOKCONTROL_TRIPLET,
# and that machine's packages below VOKCONTROL_TARGET_ROOT, unpacked there by scripts/setup. Libraries of
# only headers come from the host.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${VOKCONTROL_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${VOKCONTROL_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${VOKCONTROL_TRIPLET})

set(CMAKE_FIND_ROOT_PATH ${VOKCONTROL_TARGET_ROOT} /usr/${VOKCONTROL_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# Headers that differ from machine to machine.
set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES
    ${VOKCONTROL_TARGET_ROOT}/usr/include/${VOKCONTROL_TRIPLET})
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_C_STANDARD_INCLUDE_DIRECTORIES})
# Where the linker finds the libraries that our library needs.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${VOKCONTROL_TARGET_ROOT}/usr/lib/${VOKCONTROL_TRIPLET}")
