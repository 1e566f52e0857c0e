# SPDX-License-Identifier: Apache-2.0
#
# What `cmake --install` and the Debian packages hold, in five components: runtime (the library),
# dev (headers, CMake package, pkg-config, the software line card as an archive), tools (vornsh, vornd, and what lets programs reach it),
# python (the Python package, whose rules stand in python/CMakeLists.txt), agent (vorn-agent).

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vornlcapi)
set(platform_dir ${CMAKE_INSTALL_INCLUDEDIR}/vornlcapi/platform)

install(TARGETS vornlcapi EXPORT vornlcapi
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(DIRECTORY include/vornlcapi DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.h")
# With a real XORP tree, its own headers are the ones to use.
if(VORN_XORP_INCLUDE_DIRS)
  set(xorp_headers)
else()
  set(xorp_headers PATTERN "*.hh")
endif()
install(DIRECTORY platform/ DESTINATION ${platform_dir} COMPONENT dev
  FILES_MATCHING PATTERN "*.h" ${xorp_headers} PATTERN "rules.h" EXCLUDE)
install(EXPORT vornlcapi NAMESPACE vornlcapi:: FILE vornlcapiTargets.cmake
  DESTINATION ${package_dir} COMPONENT dev)

if(TARGET vorn_no_event_loop)
  install(TARGETS vorn_no_event_loop EXPORT vornlcapi)
  install(FILES examples/minimal_host/no_event_loop.cpp
    DESTINATION ${CMAKE_INSTALL_DATADIR}/vornlcapi COMPONENT dev)
endif()
if(TARGET vorn_host_check)
  install(TARGETS vorn_host_check EXPORT vornlcapi
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
endif()

if(TARGET softcard)
  # What a program needs beside the archive when the C compiler links it.
  set(VORN_CXX_RUNTIME ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
  list(REMOVE_ITEM VORN_CXX_RUNTIME ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
  set_target_properties(softcard PROPERTIES EXPORT_NAME softcard_archive)
  install(TARGETS softcard EXPORT vornlcapi_softcard
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(EXPORT vornlcapi_softcard NAMESPACE vornlcapi:: FILE vornlcapiSoftcardTargets.cmake
    DESTINATION ${package_dir} COMPONENT dev)
  install(TARGETS vorn_kit EXPORT vornlcapi_softcard
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(DIRECTORY kit/vornlcapi DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
    FILES_MATCHING PATTERN "*.h")
  install(TARGETS vornsoftcard EXPORT vornlcapi
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(DIRECTORY softcard operations DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vornlcapi
    COMPONENT dev FILES_MATCHING PATTERN "*.h")
endif()
if(TARGET vornremote)
  set_target_properties(vorn_remote PROPERTIES EXPORT_NAME remote_archive)
  install(TARGETS vorn_remote EXPORT vornlcapi_softcard
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(TARGETS vornremote EXPORT vornlcapi
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
  install(FILES remote/remote.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vornlcapi/remote
    COMPONENT dev)
endif()

configure_package_config_file(cmake/vornlcapiConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vornlcapiConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vornlcapiConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vornlcapiConfig.cmake
  ${PROJECT_BINARY_DIR}/vornlcapiConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT dev)

# pkg-config: the prefix is found from the place of the file, so that the tree may be moved.
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
set(pc_cflags)
if(VORN_OLD_ABI)
  set(pc_cflags " -D_GLIBCXX_USE_CXX11_ABI=0")
endif()
foreach(file vornlcapi vornlcapi-softcard vornsoftcard vornremote)
  if(file STREQUAL "vornlcapi" OR TARGET softcard)
    configure_file(cmake/${file}.pc.in ${PROJECT_BINARY_DIR}/${file}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${file}.pc
      DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
  endif()
endforeach()

if(TARGET vornsh)
  # Finds the library beside itself, wherever the two were installed.
  set_target_properties(vornsh PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS vornsh RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
if(TARGET vornd)
  set_target_properties(vornd PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS vornd RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES ${PROJECT_BINARY_DIR}/service/vornd.service
    DESTINATION lib/systemd/system COMPONENT tools)
  foreach(program vornsh vornd)
    install(FILES shell/completion.bash RENAME ${program}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
  endforeach()
  foreach(page vornsh.1 vorn-card.5 vornsh-script.7 vornd.8)
    string(REGEX REPLACE ".*[.]" "" section ${page})
    install(FILES docs/man/${page}
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tools)
  endforeach()
endif()
if(TARGET vorn-agent)
  set_target_properties(vorn-agent PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS vorn-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
  install(FILES shell/completion.bash RENAME vorn-agent
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT agent)
  install(FILES docs/man/vorn-agent.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT agent)
endif()

# ---- Debian packages -----------------------------------------------------------------------------

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vornlcapi)
set(CPACK_PACKAGE_VENDOR "The vornlcapi developers")
set(CPACK_PACKAGE_CONTACT "The vornlcapi developers <vornlcapi@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
if(TARGET vornsh)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET vornlcapi_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(TARGET vorn-agent)
  list(APPEND CPACK_COMPONENTS_ALL agent)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/softcard ${PROJECT_BINARY_DIR}/remote)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
endif()

set(same_version "(= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Client library of a switch's line card manager")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvornlcapi0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Headers of libvornlcapi and the software line card, for clients and host processes")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvornlcapi-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvornlcapi0 ${same_version}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Shell over libvornlcapi and a software line card")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vornlcapi-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libvornlcapi0 ${same_version}")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Python package of libvornlcapi, with a software line card")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-vornlcapi)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
# The card's shared library is in the dev component; the module is for this Python alone.
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "libvornlcapi-dev ${same_version}, python3 (>= ${VORN_PYTHON_VERSION}), python3 (<< ${VORN_PYTHON_NEXT})")
set(CPACK_COMPONENT_AGENT_DESCRIPTION "Linux as the control plane of a software line card")
set(CPACK_DEBIAN_AGENT_PACKAGE_NAME vornlcapi-agent)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION net)
set(CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS "libvornlcapi0 ${same_version}")
include(CPack)
