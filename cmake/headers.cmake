# SPDX-License-Identifier: MIT
#
# The target headers_alone: every header compiles without others before it. scripts/check builds it.
if(NOT TARGET vok_service)
  return()
endif()
find_package(CLI11 REQUIRED)
set(alone ${PROJECT_BINARY_DIR}/headers)
file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/core/*.h
     ${PROJECT_SOURCE_DIR}/guard/*.h
     ${PROJECT_SOURCE_DIR}/sharestatus/*.h ${PROJECT_SOURCE_DIR}/cmdsvc/*.h
     ${PROJECT_SOURCE_DIR}/handlers/*.h ${PROJECT_SOURCE_DIR}/pagehelpers/*.h
     ${PROJECT_SOURCE_DIR}/service/*.h ${PROJECT_SOURCE_DIR}/client/*.h
     ${PROJECT_SOURCE_DIR}/page/*.h ${PROJECT_SOURCE_DIR}/view/*.h
     ${PROJECT_SOURCE_DIR}/config/*.h ${PROJECT_SOURCE_DIR}/history/*.h)
add_library(headers_alone OBJECT EXCLUDE_FROM_ALL)
target_link_libraries(headers_alone PRIVATE CLI11::CLI11 vok_service)
foreach(header ${headers})
  string(MAKE_C_IDENTIFIER ${header} name)
  file(CONFIGURE OUTPUT ${alone}/${name}.cpp CONTENT "#include \"${header}\"\n")
  target_sources(headers_alone PRIVATE ${alone}/${name}.cpp)
endforeach()
file(CONFIGURE OUTPUT ${alone}/vokcontrol.c CONTENT "#include \"vokcontrol.h\"\n")
target_sources(headers_alone PRIVATE ${alone}/vokcontrol.c)
