# SPDX-License-Identifier: MIT
# Toolchain for 32-bit Linux programs on a 64-bit machine (Debian's g++-multilib), which runs them as they are. Libraries
# of the machine's own word size are none to such a program: what borrows them at run time does without.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
