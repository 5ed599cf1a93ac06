# SPDX-License-Identifier: MIT
# Run by CPack when the files of each package lie in a folder of their own, before they are packed: adds changelog and copyright
# in Debian's form, the page on C++ programs, packs the manual page, puts completions where Debian looks, and gives all files one time, so that the
# same sources give the same packages (SOURCE_DATE_EPOCH).
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP year "%Y" UTC)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share")
    set(documents "${share}/doc/${package}")
    file(MAKE_DIRECTORY "${documents}")
    configure_file("${CPACK_PIXKIT_SOURCE_DIR}/packaging/debian/copyright" "${documents}/copyright" @ONLY)
    configure_file("${CPACK_PIXKIT_SOURCE_DIR}/packaging/debian/changelog" "${documents}/changelog.Debian" @ONLY)
    file(COPY_FILE "${CPACK_PIXKIT_SOURCE_DIR}/CHANGELOG.md" "${documents}/changelog")
    file(GLOB packed "${share}/man/man*/*.1" "${documents}/changelog*")
    run(gzip -9n ${packed})
    if(component STREQUAL "development")
        run(python3 "${CPACK_PIXKIT_SOURCE_DIR}/scripts/packaging/page.py" "${CPACK_PIXKIT_SOURCE_DIR}/docs/cpp.md" "${documents}/cpp.html")
    endif()
    if(EXISTS "${share}/zsh/site-functions")
        file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
    endif()
    # Configured files get the permissions of their templates, which depend on how those were checked out.
    run(chmod -R u=rwX,go=rX "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}")
endforeach()
# Libraries are not run.
file(GLOB_RECURSE libraries LIST_DIRECTORIES false "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.so.*")
foreach(library IN LISTS libraries)
    if(NOT IS_SYMLINK "${library}")
        run(chmod 644 "${library}")
    endif()
endforeach()
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    run(find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" -exec touch -h -d "@$ENV{SOURCE_DATE_EPOCH}" "{}" +)
endif()
