# SPDX-License-Identifier: Apache-2.0
#
# Header, source and test of each family name the same C entry points in the same order, the
# library exports exactly those, and docs/quirks.md names none that does not exist.
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
file(GLOB headers ${SOURCE}/include/vornlcapi/capi/*.h)
foreach(header ${headers})
  get_filename_component(family ${header} NAME_WE)
  find_names(in_header ${header} "int (ctype_vorn_[a-z0-9_]+)\\(")
  find_names(in_source ${SOURCE}/capi/${family}.cpp "\nint (ctype_vorn_[a-z0-9_]+)\\(")
  find_names(in_test ${SOURCE}/tests/capi/${family}_test.cpp "{\"[a-z0-9_]+\",[ \n]+call\\((ctype_vorn_[a-z0-9_]+)")
  list(REMOVE_DUPLICATES in_test)  # several rows may stand for one
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
string(REGEX MATCHALL " T ctype_vorn_[a-z0-9_]+" exported "${symbols}")
list(TRANSFORM exported REPLACE " T " "")
list(SORT declared)
list(SORT exported)
if(NOT "${declared}" STREQUAL "${exported}")
  message("the library exports other names than the headers declare:\n  ${exported}")
  set(failed TRUE)
endif()
list(LENGTH declared count)
if(NOT count EQUAL 158)
  message("${count} C entry points are declared instead of 158")
  set(failed TRUE)
endif()

file(GLOB api_headers ${SOURCE}/include/vornlcapi/api/*.h)
foreach(header ${api_headers})
  find_names(names ${header} "bool (vorn_[a-z0-9_]+)\\(")
  list(APPEND declared ${names})
endforeach()
find_names(told ${SOURCE}/docs/quirks.md "`(c?t?y?p?e?_?vorn_[a-z0-9_]+)`")
foreach(name ${told})
  if(NOT name IN_LIST declared)
    message("docs/quirks.md tells of ${name}, which does not exist")
    set(failed TRUE)
  endif()
endforeach()

if(failed)
  message(FATAL_ERROR "The names of the C interface do not agree.")
endif()
