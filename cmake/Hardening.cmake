# SPDX-License-Identifier: MIT
# What makes a fault that is still there hard to use. scripts/hardening.py reads it back from the headers of what was
# built. Another project that has this one inside itself decides on its own.
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

if(WIN32)
    # A guard that was overwritten ends the process. Its library is linked in, like all of the compiler's.
    target_compile_options(pixkit-settings INTERFACE -fstack-protector-strong)
    target_link_options(pixkit-settings INTERFACE -fstack-protector-strong -Wl,--dynamicbase -Wl,--nxcompat)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        target_link_options(pixkit-settings INTERFACE -Wl,--high-entropy-va)
    else()
        # No code here handles the system's structured exceptions (C++ has its own way in 32 bits): whoever puts the address
        # of such a handler on the stack is not obeyed. This is all that this linker has of SafeSEH.
        target_link_options(pixkit-settings INTERFACE -Wl,--no-seh)
    endif()
else()
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    # Control-flow protection (CET) is left out: one object without it takes it from the program, and those of the C
    # library on Debian 12 have none.
    target_compile_options(pixkit-settings INTERFACE -fstack-protector-strong -fstack-clash-protection)
    target_link_options(pixkit-settings INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    if(NOT PIXKIT_SANITIZE)
        # Needs optimised code; sanitizers watch the same calls themselves.
        target_compile_options(pixkit-settings INTERFACE
            "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
    endif()
endif()
