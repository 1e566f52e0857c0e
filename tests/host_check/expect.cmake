# SPDX-License-Identifier: Apache-2.0
#
# Runs COMMAND (a list) and looks for EXPECTED, a regular expression, in what it prints. The exit
# status has to be 1 where EXPECTED says BROKEN, and 0 elsewhere.

cmake_policy(SET CMP0007 NEW)
list(REMOVE_ITEM COMMAND "")
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
set(status 0)
if(EXPECTED MATCHES "BROKEN")
  set(status 1)
endif()
if(NOT result EQUAL status OR NOT "\n${output}" MATCHES "${EXPECTED}")
  message(FATAL_ERROR
    "expected status ${status} and ${EXPECTED}, got status ${result} and\n${output}${errors}")
endif()
