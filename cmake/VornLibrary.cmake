# SPDX-License-Identifier: Apache-2.0
#
# libvornlcapi.so.0 out of its three units.

# Link order is the order of static initialisation: the C binding's objects first, then the
# socket's, last the API's.
set(units)
foreach(unit capi socket api)
  if(TARGET vornlcapi_${unit})
    list(APPEND units vornlcapi_${unit})
    set_target_properties(vornlcapi_${unit} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(vornlcapi_${unit} PRIVATE
      -ffunction-sections -fdata-sections -fvisibility=hidden -fvisibility-inlines-hidden)
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
# -z defs).  Calls among the library's own functions are bound when it is linked.
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
  ${VORN_XORP_INCLUDE_DIRS}
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vornlcapi/platform>)
if(VORN_OLD_ABI)
  target_compile_definitions(vornlcapi INTERFACE _GLIBCXX_USE_CXX11_ABI=0)
endif()
