# SPDX-License-Identifier: Apache-2.0
#
# Header, source and test rows of each family name the same API entry points in the same order,
# and the library exports exactly those.
#
#   cmake -DSOURCE=<tree> -DLIBRARY=<libvornlcapi.so> -DNM=<nm> -P names.cmake

cmake_minimum_required(VERSION 3.24)

# Puts what `pattern` captures, each time that it matches in the file, into the variable `out`.
function(find_names out file pattern)
  file(READ ${file} text)
  string(REGEX MATCHALL "${pattern}" matches "${text}")
  list(TRANSFORM matches REPLACE "${pattern}" "\\1")
  set(${out} "${matches}" PARENT_SCOPE)
endfunction()

set(failed FALSE)
set(declared)
file(GLOB headers ${SOURCE}/include/vornlcapi/api/*.h)
foreach(header ${headers})
  get_filename_component(family ${header} NAME_WE)
  find_names(in_header ${header} "VORN_EXPORT bool vorn_([a-z0-9_]+)\\(")
  find_names(in_source ${SOURCE}/api/${family}.cpp "\nbool vorn_([a-z0-9_]+)\\(")
  find_names(rows ${SOURCE}/tests/api/${family}_test.cpp "{\"([a-z0-9_]+)\",")
  set(in_test)
  foreach(row ${rows})
    if(row IN_LIST in_header)  # the others are further rows about one of these
      list(APPEND in_test ${row})
    endif()
  endforeach()
  foreach(place in_source in_test)
    if(NOT "${in_header}" STREQUAL "${${place}}")
      message("${family}: header and ${place} differ:\n  ${in_header}\n  ${${place}}")
      set(failed TRUE)
    endif()
  endforeach()
  list(APPEND declared ${in_header})
endforeach()

execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " T vorn_[a-z0-9_]+" exported "${symbols}")
list(TRANSFORM exported REPLACE " T vorn_" "")
list(SORT declared)
list(SORT exported)
if(NOT "${declared}" STREQUAL "${exported}")
  message("the library exports other names than the headers declare:\n  ${exported}")
  set(failed TRUE)
endif()
list(LENGTH declared count)
if(NOT count EQUAL 175)
  message("${count} API entry points are declared instead of 175")
  set(failed TRUE)
endif()

if(failed)
  message(FATAL_ERROR "names differ")
endif()
