# SPDX-License-Identifier: MIT
#
# How all our code is compiled and linked.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# Small rather than fast: the programs mostly wait for others. The module has loops.
set(CMAKE_CXX_FLAGS_RELEASE "-Os -DNDEBUG")

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)

# Times and sizes of files have 64 bits on every machine, for times after 2038 and files of more than 2 GiB.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# All our code is built by one compiler, so notes on how older ones pass parameters only hide its warnings.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "arm" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-psabi)
endif()

if(VOKCONTROL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
else()
  # Hardening; fortify needs optimisation, so a debug build has none.
  add_compile_options(-fstack-protector-strong
                      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
                      $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

# The folder where programs in tests/run-in-root leave their counts.
if(VOKCONTROL_COVERAGE)
  add_link_options(--coverage)
endif()

# The module runs on small appliances: no exceptions, no run-time type information, no unused library.
function(vok_module_options target)
  target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti $<$<CONFIG:Release>:-O2>)
  if(VOKCONTROL_COVERAGE)
    target_compile_options(${target} PRIVATE -O0 -U_FORTIFY_SOURCE --coverage -fprofile-dir=/counts)
  endif()
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL "OBJECT_LIBRARY")
    target_link_options(${target} PRIVATE LINKER:--as-needed)
  endif()
endfunction()

# Other programs find only the names in cmake/exports.map in a product.
function(vok_export_operations target)
  set(names ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${target} PRIVATE LINKER:--version-script=${names})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${names})
endfunction()
