# What `cmake --install` and the packages hold: the program, man pages, completions, editor files,
# documentation, examples, and the notices that the libraries linked into the program ask for.
#
# On Windows everything stands below one directory, elsewhere where the system looks for it.

include(GNUInstallDirs)
# Who installs has built what there is to install; tests are no part of it.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
find_package(Python3 COMPONENTS Interpreter)

if(WIN32)
    set(to_programs .)
    set(to_docs .)
    set(to_editors editors)
    set(to_man man)
    set(to_bash completions)
    set(to_zsh completions)
    set(to_fish completions)
    set(to_powershell completions)
else()
    set(to_programs "${CMAKE_INSTALL_BINDIR}")
    set(to_docs "${CMAKE_INSTALL_DOCDIR}")
    set(to_editors "${CMAKE_INSTALL_DATADIR}/vesk/editors")
    set(to_man "${CMAKE_INSTALL_MANDIR}")
    set(to_bash "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
    # Debian's zsh looks into vendor-completions below /usr, into site-functions below /usr/local.
    install(
        CODE "set(zsh_directory site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(zsh_directory vendor-completions)
endif()"
    )
    set(to_zsh "${CMAKE_INSTALL_DATADIR}/zsh/\${zsh_directory}")
    set(to_fish "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
    set(to_powershell "${CMAKE_INSTALL_DATADIR}/vesk/completions")
endif()

# --- Files that are made for it ------------------------------------------------------------------

set(made "${CMAKE_BINARY_DIR}/package")
set(man_pages vesk.1 vesk-language.7 vesk-toolchains.7)
list(TRANSFORM man_pages PREPEND "${made}/")
set(made_files "${made}/copyright" "${made}/changelog.gz")

# A date that is the commit's, so that the same sources give the same files.
set(date_of "-DSOURCES=${PROJECT_SOURCE_DIR}" "-DVERSION=${PROJECT_VERSION}" "-DDIRECTORY=${made}")
add_custom_command(
    OUTPUT ${made_files}
    COMMAND "${CMAKE_COMMAND}" ${date_of} "-DCOMPILER=${CMAKE_CXX_COMPILER}" -P
            "${PROJECT_SOURCE_DIR}/cmake/package/MadeFiles.cmake"
    DEPENDS "${PROJECT_SOURCE_DIR}/cmake/package/MadeFiles.cmake"
            "${PROJECT_SOURCE_DIR}/cmake/package/copyright.in"
    COMMENT "Collecting the notices of the libraries"
    VERBATIM
)
if(Python3_Interpreter_FOUND)
    file(GLOB pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
    set(zipped_pages ${man_pages})
    list(TRANSFORM zipped_pages APPEND .gz)
    add_custom_command(
        OUTPUT ${man_pages} ${zipped_pages}
        COMMAND Python3::Interpreter "${PROJECT_SOURCE_DIR}/scripts/man-pages" --version
                "${PROJECT_VERSION}" "${made}"
        COMMAND gzip -9nfk ${man_pages}
        DEPENDS "${PROJECT_SOURCE_DIR}/scripts/man-pages" ${pages}
        COMMENT "Making the man pages"
        VERBATIM
    )
    list(APPEND made_files ${man_pages})
endif()
add_custom_target(vesk_package_files ALL DEPENDS ${made_files})

# --- What goes where -----------------------------------------------------------------------------

install(TARGETS vesk RUNTIME DESTINATION "${to_programs}")
# Who builds nothing but the program installs nothing else that is made.
set(zipped .gz)
if(WIN32)
    set(zipped)
endif()
foreach(page vesk.1 vesk-language.7 vesk-toolchains.7)
    string(REGEX MATCH "[0-9]$" section "${page}")
    install(FILES "${made}/${page}${zipped}" DESTINATION "${to_man}/man${section}" OPTIONAL)
endforeach()
if(WIN32)
    install(FILES "${made}/copyright" DESTINATION "${to_docs}" RENAME NOTICES.txt OPTIONAL)
else()
    install(FILES "${made}/copyright" "${made}/changelog.gz" DESTINATION "${to_docs}" OPTIONAL)
endif()
install(FILES completions/vesk.bash DESTINATION "${to_bash}" RENAME vesk)
install(FILES completions/_vesk DESTINATION "${to_zsh}")
install(FILES completions/vesk.fish DESTINATION "${to_fish}")
install(FILES completions/vesk.ps1 DESTINATION "${to_powershell}")
install(
    DIRECTORY docs/
    DESTINATION "${to_docs}/docs"
    FILES_MATCHING
    PATTERN "*.md"
    PATTERN "*.png"
    PATTERN "*.svg"
)
install(FILES README.md CHANGELOG.md DESTINATION "${to_docs}")
install(
    DIRECTORY examples/
    DESTINATION "${to_docs}/examples"
    PATTERN out EXCLUDE
    PATTERN ".vesk_cache*" EXCLUDE
    PATTERN .gitignore EXCLUDE
)
if(EXISTS "${PROJECT_SOURCE_DIR}/editors")
    install(
        DIRECTORY editors/
        DESTINATION "${to_editors}"
        PATTERN node_modules EXCLUDE
        PATTERN .gitignore EXCLUDE
    )
endif()

# --- Packages: a .deb, and a .zip for Windows ----------------------------------------------------

set(CPACK_PACKAGE_NAME vesk)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "the developers of vesk")
set(CPACK_PACKAGE_CONTACT "the developers of vesk <developers@vesk.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "build orchestrator for native projects")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/OneTime.cmake")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_SOURCE_DIR}/build/packages")
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "vesk-${PROJECT_VERSION}-windows-x64")
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    include("${PROJECT_SOURCE_DIR}/cmake/package/Debian.cmake")
endif()
include(CPack)
