# SPDX-License-Identifier: Apache-2.0
#
# Header, source and test of each family name the same entry points in the same order, the library
# exports exactly those, and docs/quirks.md names none that does not exist.
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

# Compares the places that name the `expected` entry points of an interface, `folder`, and appends
# the names to `declared`.  Their functions return `type` and are called `name`; `row` captures what a
# row of the tests is about, which is such a name without `prefix`.
function(compare_places folder expected type name row prefix)
  set(names)
  file(GLOB headers ${SOURCE}/include/vornlcapi/${folder}/*.h)
  foreach(header ${headers})
    get_filename_component(family ${header} NAME_WE)
    find_names(in_header ${header} "VORN_EXPORT ${type} (${name})\\(")
    find_names(in_source ${SOURCE}/${folder}/${family}.cpp "\n${type} (${name})\\(")
    find_names(rows ${SOURCE}/tests/${folder}/${family}_test.cpp "${row}")
    list(TRANSFORM rows PREPEND "${prefix}")
    set(in_test)
    foreach(row_name ${rows})
      if(row_name IN_LIST in_header)  # the others are further rows about one of these
        list(APPEND in_test ${row_name})
      endif()
    endforeach()
    list(REMOVE_DUPLICATES in_test)
    foreach(place in_source in_test)
      if(NOT "${in_header}" STREQUAL "${${place}}")
        message(SEND_ERROR
          "${folder}/${family}: header and ${place} differ:\n  ${in_header}\n  ${${place}}")
      endif()
    endforeach()
    list(APPEND names ${in_header})
  endforeach()
  list(LENGTH names count)
  if(NOT count EQUAL expected)
    message(SEND_ERROR "${folder}: ${count} entry points are declared instead of ${expected}")
  endif()
  set(declared ${declared} ${names} PARENT_SCOPE)
endfunction()

set(declared)
compare_places(api 175 bool "vorn_[a-z0-9_]+" "{\"([a-z0-9_]+)\"," vorn_)
compare_places(capi 158 int "ctype_vorn_[a-z0-9_]+"
  "{\"[a-z0-9_]+\",[ \n]+call\\((ctype_vorn_[a-z0-9_]+)" "")

execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " T (ctype_)?vorn_[a-z0-9_]+" exported "${symbols}")
list(TRANSFORM exported REPLACE " T " "")
list(SORT declared)
list(SORT exported)
if(NOT "${declared}" STREQUAL "${exported}")
  message(SEND_ERROR "the library exports other names than the headers declare:\n  ${exported}")
endif()

find_names(told ${SOURCE}/docs/quirks.md "`((ctype_)?vorn_[a-z0-9_]+)`")
foreach(name ${told})
  if(NOT name IN_LIST declared)
    message(SEND_ERROR "docs/quirks.md tells of ${name}, which does not exist")
  endif()
endforeach()
