# SPDX-License-Identifier: Apache-2.0
#
# Runs the shell and compares all that it prints, both streams in their order, with a file.
#
#   cmake -DCOMMAND=<vornsh;arguments> -DEXPECTED=<file> -DSTATUS=<exit status> [-DINPUT=<file>]
#         -P run.cmake
#
# With VORN_UPDATE_TRANSCRIPTS in the environment it writes the file instead.

set(input)
if(INPUT)
  set(input INPUT_FILE ${INPUT})
endif()
execute_process(COMMAND ${COMMAND} ${input}
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE status)
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "${COMMAND}: exit status ${status} instead of ${STATUS}\n${output}")
endif()
if(DEFINED ENV{VORN_UPDATE_TRANSCRIPTS})
  file(WRITE ${EXPECTED} "${output}")
endif()
file(READ ${EXPECTED} expected)
if(NOT output STREQUAL expected)
  get_filename_component(name ${EXPECTED} NAME)
  set(actual ${CMAKE_CURRENT_BINARY_DIR}/${name}.actual)
  file(WRITE ${actual} "${output}")
  execute_process(COMMAND diff -u ${EXPECTED} ${actual} OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "${COMMAND} prints something else than ${EXPECTED}:\n${difference}")
endif()
