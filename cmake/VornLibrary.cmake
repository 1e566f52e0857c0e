# SPDX-License-Identifier: Apache-2.0
#
# libvornlcapi.so.0 out of its three units.

include(CheckLinkerFlag)

# For size, the linker folds functions that came out the same: the entry points' shared steps, one
# set for each list of parameter types, are mostly the same machine code.  ld.bfd does not do that,
# gold does.
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
  check_linker_flag(CXX "-fuse-ld=gold;LINKER:--icf=safe" VORN_LINKER_FOLDS)
  if(NOT VORN_LINKER_FOLDS)
    message(STATUS "No linker that folds identical functions: the library gets larger.")
  endif()
endif()

# How the three units are compiled.  -fpic is the short form of -fPIC: their offset table is small.
add_library(vorn_unit_flags INTERFACE)
target_compile_options(vorn_unit_flags INTERFACE
  -fpic -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections)
if(CMAKE_BUILD_TYPE STREQUAL "MinSizeRel" AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(powerpc|ppc)"
    AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(vorn_unit_flags INTERFACE
    # Each of these costs more unwind tables than it saves code.
    -fno-shrink-wrap -fno-schedule-insns2
    # A file's static objects are reached from one anchor, with one relocation, if neither they nor
    # the strings are spread over sections.
    -fsection-anchors -fno-data-sections -fno-merge-constants)
else()
  target_compile_options(vorn_unit_flags INTERFACE -fdata-sections)
endif()

# Link order is the order of static initialisation: the C binding's objects first, then the
# socket's, last the API's.
set(units)
foreach(unit capi socket api)
  if(TARGET vornlcapi_${unit})
    list(APPEND units vornlcapi_${unit})
    target_link_libraries(vornlcapi_${unit} PRIVATE vorn_unit_flags)
  endif()
endforeach()
# Entry points are exported, but what calls them inside the library need not go through the
# procedure linkage table: "protected" is exported and bound here.  (Not for VornSocket, whose
# constant a program may copy.)
foreach(unit capi api)
  if(TARGET vornlcapi_${unit})
    target_compile_definitions(vornlcapi_${unit} PRIVATE
      "VORN_EXPORT=__attribute__((visibility(\"protected\")))")
  endif()
endforeach()
if(NOT units)
  return()
endif()

set(export_map ${PROJECT_SOURCE_DIR}/cmake/VornExports.map)
add_library(vornlcapi SHARED)
add_library(vornlcapi::vornlcapi ALIAS vornlcapi)
foreach(unit ${units})
  target_sources(vornlcapi PRIVATE $<TARGET_OBJECTS:${unit}>)
endforeach()
set_target_properties(vornlcapi PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION 0
  LINKER_LANGUAGE CXX
  LINK_DEPENDS ${export_map})
target_link_libraries(vornlcapi PRIVATE $<BUILD_INTERFACE:vorn_flags>)
# The host process supplies what stays undefined, so the linker is not asked to find it (no
# -z defs).
target_link_options(vornlcapi PRIVATE
  LINKER:--version-script=${export_map}
  LINKER:-Bsymbolic-functions
  LINKER:--gc-sections
  LINKER:--as-needed
  LINKER:--hash-style=gnu)
if(VORN_LINKER_FOLDS)
  target_link_options(vornlcapi PRIVATE -fuse-ld=gold LINKER:--icf=safe)
endif()
# Clients use include/; hosts, and clients of VornSocket, platform/ too.
target_include_directories(vornlcapi INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  "$<BUILD_INTERFACE:${VORN_XORP_INCLUDE_DIRS}>"
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vornlcapi/platform>)
if(VORN_OLD_ABI)
  target_compile_definitions(vornlcapi INTERFACE _GLIBCXX_USE_CXX11_ABI=0)
endif()
