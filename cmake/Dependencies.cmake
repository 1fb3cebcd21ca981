# The libraries vesk calls, under one name on both systems:
#
#   vesk::antlr_runtime  runtime of the generated recognisers
#   vesk::fmt            {fmt}
#   vesk::xxhash         XXH3, header-only
#   vesk::json           nlohmann/json
#   vesk::gtest_main     GoogleTest and GoogleMock with a main, built here from the packaged sources
#
# scripts/setup installs all of them. For Windows it also prepares a directory with the compiled
# libraries and nothing but the needed headers, as /usr/include is no place for that compiler. A static
# {fmt} for Linux has no package, and is compiled here.

set(VESK_GOOGLETEST_SOURCES
    /usr/src/googletest
    CACHE PATH "The sources of GoogleTest"
)

# The newest directory that scripts/setup has prepared for a system.
function(_vesk_prepared_libraries variable pattern)
    set(cache "$ENV{XDG_CACHE_HOME}")
    if(NOT cache)
        set(cache "$ENV{HOME}/.cache")
    endif()
    file(GLOB prepared "${cache}/vesk-deps/${pattern}")
    list(SORT prepared COMPARE NATURAL ORDER DESCENDING)
    list(POP_FRONT prepared newest)
    set(${variable}
        "${newest}"
        CACHE PATH "The directory with include/ and lib/ that scripts/setup prepares"
    )
endfunction()

set(_search)
set(_antlr_names antlr4-runtime)
if(WIN32)
    _vesk_prepared_libraries(VESK_WINDOWS_LIBRARIES windows-fmt-*-antlr4-*)
    set(_search PATHS "${VESK_WINDOWS_LIBRARIES}" NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
elseif(VESK_STATIC)
    set(_antlr_names libantlr4-runtime.a)
endif()

find_path(VESK_ANTLR_INCLUDE antlr4-runtime.h ${_search} PATH_SUFFIXES include/antlr4-runtime antlr4-runtime)
find_library(VESK_ANTLR_LIBRARY NAMES ${_antlr_names} ${_search} PATH_SUFFIXES lib)
find_path(VESK_FMT_INCLUDE fmt/format.h ${_search} PATH_SUFFIXES include)
if(VESK_STATIC AND NOT WIN32)
    set(VESK_FMT_LIBRARY vesk_fmt_static)
else()
    find_library(VESK_FMT_LIBRARY NAMES fmt ${_search} PATH_SUFFIXES lib)
endif()
find_path(VESK_XXHASH_INCLUDE xxhash.h ${_search} PATH_SUFFIXES include)
find_path(VESK_JSON_INCLUDE nlohmann/json.hpp ${_search} PATH_SUFFIXES include)

foreach(_found VESK_ANTLR_INCLUDE VESK_ANTLR_LIBRARY VESK_FMT_INCLUDE VESK_FMT_LIBRARY
        VESK_XXHASH_INCLUDE VESK_JSON_INCLUDE)
    if(NOT ${_found})
        message(FATAL_ERROR "${_found} was not found. Run scripts/setup, or set it with -D${_found}=...")
    endif()
endforeach()

function(_vesk_header_library name include_dir)
    add_library(vesk_dep_${name} INTERFACE)
    add_library(vesk::${name} ALIAS vesk_dep_${name})
    target_include_directories(vesk_dep_${name} SYSTEM INTERFACE "${include_dir}")
    target_compile_definitions(vesk_dep_${name} INTERFACE ${ARGN})
endfunction()

_vesk_header_library(fmt "${VESK_FMT_INCLUDE}")
target_link_libraries(vesk_dep_fmt INTERFACE "${VESK_FMT_LIBRARY}")
if(VESK_FMT_LIBRARY STREQUAL "vesk_fmt_static")
    add_library(vesk_fmt_static STATIC "${PROJECT_SOURCE_DIR}/cmake/libraries/fmt.cpp")
    target_include_directories(vesk_fmt_static SYSTEM PRIVATE "${VESK_FMT_INCLUDE}")
endif()
# Without its hints to the compiler in debug builds: -Og does not inline what they insist on.
_vesk_header_library(
    xxhash "${VESK_XXHASH_INCLUDE}" XXH_INLINE_ALL $<$<CONFIG:Debug>:XXH_NO_INLINE_HINTS=1>
)
_vesk_header_library(json "${VESK_JSON_INCLUDE}")
_vesk_header_library(antlr_runtime "${VESK_ANTLR_INCLUDE}")
target_link_libraries(vesk_dep_antlr_runtime INTERFACE "${VESK_ANTLR_LIBRARY}")
if(WIN32)
    # How scripts/setup compiles the runtime.
    target_compile_definitions(
        vesk_dep_antlr_runtime INTERFACE ANTLR4CPP_STATIC
    )
endif()

if(VESK_BUILD_TESTS)
    if(NOT EXISTS "${VESK_GOOGLETEST_SOURCES}/CMakeLists.txt")
        message(FATAL_ERROR "GoogleTest's sources were not found. Run scripts/setup.")
    endif()
    set(INSTALL_GTEST OFF)
    add_subdirectory("${VESK_GOOGLETEST_SOURCES}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    add_library(vesk_dep_gtest_main INTERFACE)
    add_library(vesk::gtest_main ALIAS vesk_dep_gtest_main)
    target_link_libraries(vesk_dep_gtest_main INTERFACE GTest::gmock_main)
endif()
