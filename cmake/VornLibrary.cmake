# SPDX-License-Identifier: Apache-2.0
#
# libvornlcapi.so.0 out of its three units.

# How the three units are compiled.  -fpic is the short form of -fPIC: their offset table is small.
# Functions with arrays of bytes get a stack protector; in the others, which are most, it would be
# a good part of all that they execute.
add_library(vorn_unit_flags INTERFACE)
target_compile_options(vorn_unit_flags INTERFACE
  -fpic -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections)
if(NOT VORN_SANITIZE)
  target_compile_options(vorn_unit_flags INTERFACE -fstack-protector --param=ssp-buffer-size=4)
endif()
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
set(units vornlcapi_capi vornlcapi_socket vornlcapi_api)
foreach(unit ${units})
  target_link_libraries(${unit} PRIVATE vorn_unit_flags)
endforeach()
# Entry points are exported, but what calls them inside the library need not go through the
# procedure linkage table: "protected" is exported and bound here.  (Not for VornSocket, whose
# constant a program may copy.)
foreach(unit vornlcapi_capi vornlcapi_api)
  target_compile_definitions(${unit} PRIVATE
    "VORN_EXPORT=__attribute__((visibility(\"protected\")))")
endforeach()

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
