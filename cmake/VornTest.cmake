# SPDX-License-Identifier: Apache-2.0
#
# Tests and host programs.
#
#   vorn_add_test(<name> [HOST] SOURCES <file>... [LIBS <target>...])
#       A GoogleTest program; each of its tests becomes a ctest test named <name>.<suite>.<test>.
#       With HOST the program also carries the software line card, as vorn_make_host() does.
#   vorn_add_host(<name> SOURCES <file>... [LIBS <target>...])
#       A program that hosts the library on the software line card.
#   vorn_make_host(<target>)
#       Puts the software line card into an existing program.

# GoogleTest: the system's, except where it was built for another target or another standard
# library ABI than this build; then it is compiled here from Debian's source package.
function(vorn_find_googletest)
  if(TARGET GTest::gtest_main)
    return()
  endif()
  if(NOT CMAKE_CROSSCOMPILING AND NOT VORN_OLD_ABI)
    find_package(GTest REQUIRED)
    foreach(target GTest::gtest GTest::gtest_main GTest::gmock GTest::gmock_main)
      if(TARGET ${target})
        set_target_properties(${target} PROPERTIES IMPORTED_GLOBAL TRUE)
      endif()
    endforeach()
    return()
  endif()
  set(VORN_GOOGLETEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest's source tree")
  if(NOT EXISTS ${VORN_GOOGLETEST_SOURCE_DIR}/CMakeLists.txt)
    message(FATAL_ERROR
      "No GoogleTest source in ${VORN_GOOGLETEST_SOURCE_DIR}: install Debian's package googletest "
      "or set VORN_GOOGLETEST_SOURCE_DIR.")
  endif()
  set(INSTALL_GTEST OFF)
  add_subdirectory(${VORN_GOOGLETEST_SOURCE_DIR} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(target gtest gtest_main gmock gmock_main)
    if(VORN_OLD_ABI)
      target_compile_definitions(${target} PUBLIC _GLIBCXX_USE_CXX11_ABI=0)
    endif()
    if(NOT TARGET GTest::${target})
      add_library(GTest::${target} ALIAS ${target})
    endif()
  endforeach()
endfunction()

# What the library leaves undefined has to be found in the process that loads it. So the line card
# goes in whole, referenced or not, and the program's dynamic symbol table offers it.
function(vorn_make_host target)
  target_link_libraries(${target} PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,softcard>")
  set_target_properties(${target} PROPERTIES ENABLE_EXPORTS ON)
endfunction()

function(vorn_add_host name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCES)
    message(FATAL_ERROR "vorn_add_host(${name}): usage is <name> SOURCES <file>... [LIBS ...]")
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE vorn_flags vorn_headers ${arg_LIBS})
  vorn_make_host(${name})
endfunction()

function(vorn_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "HOST" "" "SOURCES;LIBS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCES)
    message(FATAL_ERROR
      "vorn_add_test(${name}): usage is <name> [HOST] SOURCES <file>... [LIBS ...]")
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE vorn_flags vorn_headers ${arg_LIBS} GTest::gtest_main)
  if(arg_HOST)
    vorn_make_host(${name})
  endif()
  # Listing the tests means running the program, which under emulation is better done once, when
  # ctest starts, than in every build.
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
