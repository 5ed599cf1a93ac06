# SPDX-License-Identifier: MIT
# Toolchain for 64-bit ARM Linux programs (Debian's g++-aarch64-linux-gnu), which run under QEMU's user emulation on
# another machine (qemu-user). The machine's own libraries are none to such a program: what borrows them at run time does
# without.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(arm aarch64-linux-gnu)
find_program(PIXKIT_ARM_CXX NAMES ${arm}-g++ ${arm}-g++-12 REQUIRED)
find_program(PIXKIT_ARM_CC NAMES ${arm}-gcc ${arm}-gcc-12 REQUIRED)
set(CMAKE_CXX_COMPILER "${PIXKIT_ARM_CXX}")
set(CMAKE_C_COMPILER "${PIXKIT_ARM_CC}")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/${arm})
set(CMAKE_FIND_ROOT_PATH /usr/${arm})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
