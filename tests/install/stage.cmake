# SPDX-License-Identifier: Apache-2.0
#
# Installs BUILD and moves the result to PREFIX, so that no path of the place where it was
# installed first can help.

file(REMOVE_RECURSE ${PREFIX} ${PREFIX}.first)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}.first
  COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${PREFIX}.first ${PREFIX})
