# SPDX-License-Identifier: MIT
# Run by CPack when the packages are made: takes out of them the scripts that it has put into each with a library, which run
# ldconfig. The package's trigger does that, once for all that are installed together.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(NOT package MATCHES "\\.deb$")
        continue()
    endif()
    set(folder "${package}.parts")
    execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE "${folder}/DEBIAN/postinst" "${folder}/DEBIAN/postrm")
    # What several threads compress has other bytes than what one does (dpkg 1.21.9 and later can be told).
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --threads-max=1 --build "${folder}" "${package}"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${folder}")
endforeach()
