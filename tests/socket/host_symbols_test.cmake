# SPDX-License-Identifier: Apache-2.0
#
# Fails unless OBJECT, the socket's object file, takes from the host the nine symbols that every
# XORP has, and nothing else but C and C++ runtime.

execute_process(COMMAND ${NM} -u ${OBJECT} OUTPUT_VARIABLE undefined COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]+" undefined "${undefined}")
list(FILTER undefined INCLUDE REGEX "Async|Event|Xorp|Timer|Task|Selector|ref_|comm_|[Cc]allback")
list(SORT undefined)

# size_t is j or m in a mangled name.
set(expected
  _ZN15AsyncFileReader10add_bufferEPh[jm]RK7ref_ptrI13XorpCallback4IvN17AsyncFileOperator5EventEPKh[jm][jm]EE
  _ZN15AsyncFileReaderC1ER9EventLoop6XorpFdi
  _ZN15AsyncFileWriterC1ER9EventLoop6XorpFdji
  _ZN16ref_counter_pool11new_counterEv
  _ZN16ref_counter_pool12decr_counterEi
  _ZN16ref_counter_pool8instanceEv
  comm_sock_set_blocking
  comm_sock_set_rcvbuf
  comm_sock_set_sndbuf)
list(JOIN expected ";" pattern)
if(NOT "${undefined}" MATCHES "^${pattern}$")
  list(JOIN undefined "\n  " undefined)
  message(FATAL_ERROR "The socket takes from the host\n  ${undefined}")
endif()
