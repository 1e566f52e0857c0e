# SPDX-License-Identifier: Apache-2.0
#
# Writes the program that the comments of HEADER show into the file SOURCE: the lines from the first
# #include that is indented by two to the brace that closes main().
#
#   cmake -DHEADER=<header> -DSOURCE=<file> -P extract.cmake

file(READ ${HEADER} text)
string(REGEX REPLACE "\n(//| \\*) ?" "\n" text "${text}")
string(FIND "${text}" "\n  #include " start)
if(start EQUAL -1)
  message(FATAL_ERROR "${HEADER}: no comment shows an #include")
endif()
string(SUBSTRING "${text}" ${start} -1 text)
string(FIND "${text}" "\n  }\n" length)
if(length EQUAL -1)
  message(FATAL_ERROR "${HEADER}: no closing brace stands under the #include of its comment")
endif()
math(EXPR length "${length} + 5")
string(SUBSTRING "${text}" 0 ${length} text)
string(REPLACE "\n  " "\n" text "${text}")
file(WRITE ${SOURCE} "${text}")
