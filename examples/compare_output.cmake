# SPDX-License-Identifier: Apache-2.0
#
# Runs COMMAND (a list) and compares what it prints with the file EXPECTED.

list(REMOVE_ITEM COMMAND "")
execute_process(COMMAND ${COMMAND}
  OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${COMMAND} ended with ${result}\n${output}${errors}")
elseif(NOT output STREQUAL expected)
  message(FATAL_ERROR "expected:\n${expected}\nbut got:\n${output}${errors}")
endif()
