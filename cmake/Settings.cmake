# SPDX-License-Identifier: MIT
# Compiler settings that every target of the project shares, as one interface target.
add_library(pixkit-settings INTERFACE)
target_compile_features(pixkit-settings INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)

# Contraction off: floating-point rules give the same bytes on every processor and system.
target_compile_options(pixkit-settings INTERFACE -ffp-contract=off)
# A project that has this one inside itself may have made errors of warnings, which new compilers have more of.
if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(pixkit-settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endif()

if(WIN32)
    # Windows entry points that need a newer system than XP are not used.
    target_compile_definitions(pixkit-settings INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0501)
    # The same sources give the same bytes, whenever they are built.
    target_link_options(pixkit-settings INTERFACE -Wl,--no-insert-timestamp)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
    # x87 arithmetic would round differently.
    target_compile_options(pixkit-settings INTERFACE -msse2 -mfpmath=sse)
endif()
if(NOT WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Files of more than 2 GiB are files for 32-bit programs too.
    target_compile_definitions(pixkit-settings INTERFACE _FILE_OFFSET_BITS=64)
endif()
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Callers from other compilers only align the stack to four bytes.
    target_compile_options(pixkit-settings INTERFACE -mincoming-stack-boundary=2)
endif()

include("${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake")

# Has a target's sources find these headers compiled, where that is wanted.
function(pixkit_precompile target)
    if(PIXKIT_PRECOMPILED)
        target_precompile_headers(${target} PRIVATE ${ARGN})
        # The first is for compiler caches; the others find faults in precompiled strings that are none.
        target_compile_options(${target} PRIVATE
            "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess;-Wno-error=array-bounds;-Wno-error=stringop-overflow>")
    endif()
endfunction()

if(PIXKIT_SANITIZE)
    target_compile_options(pixkit-settings INTERFACE
        -fsanitize=${PIXKIT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(pixkit-settings INTERFACE -fsanitize=${PIXKIT_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # What the sanitizers insert makes this warning see things, in the standard library's regex for one.
        target_compile_options(pixkit-settings INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
