# SPDX-License-Identifier: MIT
# Toolchain for Windows programs from mingw-w64, wherever it has its threads of POSIX. Debian names compilers by that, others
# have no other kind. PIXKIT_WINDOWS_ARCH: i686 (default) or x86_64.
set(CMAKE_SYSTEM_NAME Windows)
if(NOT DEFINED PIXKIT_WINDOWS_ARCH)
    set(PIXKIT_WINDOWS_ARCH i686)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PIXKIT_WINDOWS_ARCH)
set(CMAKE_SYSTEM_PROCESSOR ${PIXKIT_WINDOWS_ARCH})
set(mingw ${PIXKIT_WINDOWS_ARCH}-w64-mingw32)
find_program(PIXKIT_MINGW_CXX NAMES ${mingw}-g++-posix ${mingw}-g++ REQUIRED)
find_program(PIXKIT_MINGW_CC NAMES ${mingw}-gcc-posix ${mingw}-gcc REQUIRED)
set(CMAKE_CXX_COMPILER "${PIXKIT_MINGW_CXX}")
set(CMAKE_C_COMPILER "${PIXKIT_MINGW_CC}")
set(CMAKE_RC_COMPILER ${mingw}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs stand alone: no compiler DLLs beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
