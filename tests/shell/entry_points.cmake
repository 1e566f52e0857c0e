# SPDX-License-Identifier: Apache-2.0
#
# The shell's entry points are those that the library exports, each once.
#
#   cmake -DCOMMAND=<vornsh> -DNM=<nm> -DLIBRARY=<libvornlcapi.so> -P entry_points.cmake

execute_process(COMMAND ${COMMAND} -c entry_points OUTPUT_VARIABLE shell COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "[^\n]+" shell "${shell}")
string(REGEX MATCHALL "[TW] (ctype_)?vorn_[a-z0-9_]+" exported "${symbols}")
list(TRANSFORM exported REPLACE "^[TW] " "")
list(SORT shell)
list(SORT exported)
list(LENGTH exported count)
if(count LESS 300)
  message(FATAL_ERROR "${LIBRARY} seems to export ${count} entry points only")
endif()
if(NOT shell STREQUAL exported)
  set(missing ${exported})
  list(REMOVE_ITEM missing ${shell})
  set(unknown ${shell})
  list(REMOVE_ITEM unknown ${exported})
  message(FATAL_ERROR "the shell lacks: ${missing}\nthe library lacks: ${unknown}")
endif()
message("${count} entry points")
