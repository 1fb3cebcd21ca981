# What a package of Debian says about itself. Included by Install.cmake.

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(VESK_STATIC)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
else()
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gcc, g++, pkg-config, ccache")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Targets, their files, commands and dependencies are described in plain-text
files, in a small declarative language. vesk chooses the tool that fits a
target, runs its commands in parallel, and builds nothing twice: it finds out
by itself which files a target depends on.

C and C++ with GCC, Clang and MSVC, C3, Android packages, and commands of
any kind."
)
install(
    FILES "${CMAKE_CURRENT_LIST_DIR}/lintian-overrides"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides"
    RENAME vesk
)
