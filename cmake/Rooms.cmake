# One static library per directory of src/ (a room), one test program per directory of tests/.

if(WIN32)
    enable_language(RC)
endif()

# What a cross-built program is run with.
set(VESK_EMULATOR)
if(WIN32 AND CMAKE_CROSSCOMPILING)
    set(VESK_EMULATOR "${PROJECT_SOURCE_DIR}/scripts/run-in-wine" "${CMAKE_BINARY_DIR}/wine")
endif()

# What nearly every file of the rooms includes, and {fmt}, compiled once: it halves the time of a
# whole build. Files include what they use all the same: `vesk` in units/ is built without this, and
# -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON does without it here too.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/precompiled.cpp" CONTENT "")
add_library(vesk_precompiled OBJECT EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/precompiled.cpp")
target_link_libraries(vesk_precompiled PRIVATE vesk_settings vesk_warnings vesk::fmt)
target_precompile_headers(
    vesk_precompiled
    PRIVATE <algorithm>
            <chrono>
            <filesystem>
            <fmt/format.h>
            <functional>
            <future>
            <map>
            <memory>
            <optional>
            <ranges>
            <set>
            <string>
            <string_view>
            <unordered_map>
            <unordered_set>
            <utility>
            <variant>
            <vector>
)

# vesk_add_room(<name> SOURCES <file>... [POSIX_SOURCES <file>...] [WINDOWS_SOURCES <file>...]
#               [DEPENDS <target>...])
#
# Makes the static library vesk_<name>. DEPENDS names targets (vesk_base, vesk::fmt), which those
# who link the room get too. A room without sources is made of headers only.
function(vesk_add_room name)
    cmake_parse_arguments(PARSE_ARGV 1 room "" "" "SOURCES;POSIX_SOURCES;WINDOWS_SOURCES;DEPENDS")
    _vesk_refuse_leftovers(vesk_add_room "${room_UNPARSED_ARGUMENTS}")
    set(sources ${room_SOURCES})
    if(WIN32)
        list(APPEND sources ${room_WINDOWS_SOURCES})
    else()
        list(APPEND sources ${room_POSIX_SOURCES})
    endif()

    if(sources)
        add_library(vesk_${name} STATIC ${sources})
        target_link_libraries(
            vesk_${name}
            PUBLIC vesk_settings ${room_DEPENDS}
            PRIVATE vesk_warnings
        )
        target_precompile_headers(vesk_${name} REUSE_FROM vesk_precompiled)
        # With CMAKE_UNITY_BUILD (all presets but debug) so many sources are compiled as one.
        set_target_properties(vesk_${name} PROPERTIES UNITY_BUILD_BATCH_SIZE 12)
    else()
        add_library(vesk_${name} INTERFACE)
        target_link_libraries(vesk_${name} INTERFACE vesk_settings ${room_DEPENDS})
    endif()
endfunction()

# vesk_add_executable(<target> SOURCES <file>... [DEPENDS <target>...])
#
# Makes a program of vesk's own. On Windows it carries the manifest (UTF-8 as active code page, long
# paths) and a stack that the recursive parser needs.
function(vesk_add_executable target)
    cmake_parse_arguments(PARSE_ARGV 1 program "" "" "SOURCES;DEPENDS")
    _vesk_refuse_leftovers(vesk_add_executable "${program_UNPARSED_ARGUMENTS}")
    add_executable(${target} ${program_SOURCES})
    set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
    target_link_libraries(${target} PRIVATE vesk_settings vesk_warnings ${program_DEPENDS})
    if(WIN32)
        vesk_add_windows_resources(${target})
    endif()
endfunction()

# vesk_add_room_test(<name> SOURCES <file>... [DEPENDS <target>...] [POSIX_SOURCES <file>...]
#                    [WINDOWS_SOURCES <file>...])
#
# Makes the GoogleTest program vesk_test_<name>, linked with the room of that name and with DEPENDS,
# and registers it with CTest; a cross-built one runs under Wine.
function(vesk_add_room_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "" "SOURCES;POSIX_SOURCES;WINDOWS_SOURCES;DEPENDS")
    _vesk_refuse_leftovers(vesk_add_room_test "${test_UNPARSED_ARGUMENTS}")
    set(sources ${test_SOURCES})
    if(WIN32)
        list(APPEND sources ${test_WINDOWS_SOURCES})
    else()
        list(APPEND sources ${test_POSIX_SOURCES})
    endif()
    if(TARGET vesk_${name})
        list(APPEND test_DEPENDS vesk_${name})
    endif()

    vesk_add_executable(
        vesk_test_${name} SOURCES ${sources} DEPENDS ${test_DEPENDS} vesk::gtest_main
    )
    target_include_directories(vesk_test_${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    set_target_properties(vesk_test_${name} PROPERTIES CROSSCOMPILING_EMULATOR "${VESK_EMULATOR}")
    add_test(NAME ${name} COMMAND vesk_test_${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 1200)
endfunction()

# Links manifest, version information and the stack reserve into a Windows program.
function(vesk_add_windows_resources target)
    set(resources "${PROJECT_SOURCE_DIR}/cmake/windows")
    set(script "${CMAKE_BINARY_DIR}/windows/${target}.rc")
    set(VESK_PROGRAM_FILE "${target}.exe")
    string(REPLACE "." "," VESK_VERSION_NUMBERS "${PROJECT_VERSION}")
    configure_file("${resources}/program.rc.in" "${script}" @ONLY)
    target_sources(${target} PRIVATE "${script}")
    set_source_files_properties(
        "${script}" PROPERTIES INCLUDE_DIRECTORIES "${resources}"
                               OBJECT_DEPENDS "${resources}/program.manifest"
    )
    target_link_options(${target} PRIVATE LINKER:--stack,16777216)
endfunction()

# Fails on arguments that belong to no keyword, usually a misspelt one.
function(_vesk_refuse_leftovers function leftovers)
    if(leftovers)
        message(FATAL_ERROR "${function}: unknown arguments ${leftovers}")
    endif()
endfunction()
