# SPDX-License-Identifier: Apache-2.0
#
# Header, source and test of each family name the same entry points in the same order, every one
# stands under a comment of its own or of its group, the library exports exactly those, and
# docs/quirks.md names none that does not exist. The refusing SDK refuses every operation of the SDK.
#
#   cmake -DSOURCE=<tree> -DLIBRARY=<libvornlcapi.so> -DNM=<nm> -P names.cmake

cmake_minimum_required(VERSION 3.24)

# Reads a file with ! for each semicolon and without brackets: those mean something in CMake's lists.
function(read_text out file)
  file(READ ${file} text)
  string(REPLACE ";" "!" text "${text}")
  string(REGEX REPLACE "[][]" "" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# Puts what `pattern` captures, each time that it matches in the file, into the variable `out`.
function(find_names out file pattern)
  read_text(text ${file})
  string(REGEX MATCHALL "${pattern}" matches "${text}")
  list(TRANSFORM matches REPLACE "${pattern}" "\\1")
  set(${out} "${matches}" PARENT_SCOPE)
endfunction()

# Checks that each declaration of a header, whose first line `declaration` matches, stands under a
# comment or under another declaration of its group, and that no head comment strayed into the
# middle of the file. A banner is no function's own comment.
function(check_comments header declaration)
  read_text(text ${header})
  file(RELATIVE_PATH name ${SOURCE} ${header})
  string(REGEX REPLACE "\n#ifndef.*" "" head "${text}")
  string(REGEX MATCHALL "conventions" heads "${text}")
  if(head MATCHES "conventions" AND NOT heads STREQUAL "conventions")
    message(SEND_ERROR "${name}: a second comment names the conventions")
  endif()
  string(REGEX REPLACE "\n[ /*]+----[^\n]*" "\n" text "${text}")
  string(REGEX REPLACE "\n(${declaration})" "\n@\\1" text "${text}")
  string(REGEX REPLACE "(!|[*]/|//[^\n]*)\n@" "\\1\n" text "${text}")
  string(REGEX MATCHALL "\n@[^\n]*" bare "${text}")
  foreach(line ${bare})
    string(REPLACE "\n@" "" line "${line}")
    message(SEND_ERROR "${name}: no comment stands above\n  ${line}")
  endforeach()
endfunction()

# Compares the places that name the `expected` entry points of an interface, `folder`, and appends
# the names to `declared`. Their functions return `type` and are called `name`; `row` captures what a
# row of the tests is about, which is such a name without `prefix`.
function(compare_places folder expected type name row prefix)
  set(names)
  file(GLOB headers ${SOURCE}/include/vornlcapi/${folder}/*.h)
  foreach(header ${headers})
    get_filename_component(family ${header} NAME_WE)
    check_comments(${header} "(extern \"C[+][+]\" )?VORN_EXPORT ")
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

check_comments(${SOURCE}/include/vornlcapi/socket.h
  "  (explicit |static |bool |void |unsigned char[*] |~)[^\n]*[(]")

execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " T (ctype_)?vorn_[a-z0-9_]+" exported "${symbols}")
list(TRANSFORM exported REPLACE " T " "")
list(SORT declared)
list(SORT exported)
if(NOT "${declared}" STREQUAL "${exported}")
  message(SEND_ERROR "the library exports other names than the headers declare:\n  ${exported}")
endif()

find_names(operations ${SOURCE}/platform/vorn_sdk_base.h 
  "virtual bool ([a-z0-9_]+)\\([^!{]*= 0!")
find_names(refused ${SOURCE}/platform/vorn_sdk_refusing.h
  "bool ([a-z0-9_]+)\\([^{]*override {[ \n]*return false![ \n]*}")
if(NOT operations OR NOT "${operations}" STREQUAL "${refused}")
  message(SEND_ERROR
    "platform/vorn_sdk_refusing.h refuses\n  ${refused}\ninstead of\n  ${operations}")
endif()

find_names(told ${SOURCE}/docs/quirks.md "`((ctype_)?vorn_[a-z0-9_]+)`")
foreach(name ${told})
  if(NOT name IN_LIST declared)
    message(SEND_ERROR "docs/quirks.md tells of ${name}, which does not exist")
  endif()
endforeach()
