# SPDX-License-Identifier: Apache-2.0
#
# 32-bit big-endian PowerPC Linux with glibc, built with Debian's g++-powerpc-linux-gnu. Programs
# run under qemu-ppc (Debian's qemu-user), so that ctest needs no further setting.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)

set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)
set(CMAKE_STRIP powerpc-linux-gnu-strip)

# Debian's cross packages put the target's C and C++ runtime here.
set(VORN_SYSROOT /usr/powerpc-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${VORN_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(VORN_QEMU_PPC NAMES qemu-ppc qemu-ppc-static)
if(VORN_QEMU_PPC)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VORN_QEMU_PPC} -L ${VORN_SYSROOT})
endif()
