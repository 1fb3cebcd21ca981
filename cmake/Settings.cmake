# How vesk's own code is compiled.
#
#   vesk_settings  language level and definitions: every target, generated code included
#   vesk_warnings  the warnings, as errors: own code only

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

# -O2, not -O3: the code is bound by system calls, and a smaller program starts faster.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-Og -g")

find_program(VESK_CCACHE ccache)
if(VESK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Without these it caches nothing that uses a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${VESK_CCACHE}"
    )
endif()

if(VESK_LTO)
    include(CheckIPOSupported)
    check_ipo_supported()
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
endif()

# Sanitizers go to everything that is compiled here: GoogleTest and the generated code too.
if(VESK_SANITIZE)
    add_compile_options("-fsanitize=${VESK_SANITIZE}" -fno-omit-frame-pointer)
    add_compile_options(-fno-sanitize-recover=all)
    add_link_options("-fsanitize=${VESK_SANITIZE}")
    if(VESK_SANITIZE STREQUAL "thread" OR DEFINED ENV{CI})
        # Reports name lines; without the rest a fifth of the time of compiling is saved.
        add_compile_options(-g1)
    endif()
endif()

find_package(Threads REQUIRED)

add_library(vesk_settings INTERFACE)
target_include_directories(vesk_settings INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_features(vesk_settings INTERFACE cxx_std_20)
target_compile_definitions(vesk_settings INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_link_libraries(vesk_settings INTERFACE Threads::Threads)
if(WIN32)
    # UNICODE: a Windows call without a suffix is the wide one. 0x0A00: Windows 10, the first
    # system whose console knows escape sequences.
    target_compile_definitions(
        vesk_settings INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00
    )
    target_link_options(vesk_settings INTERFACE -static)
endif()

add_library(vesk_warnings INTERFACE)
target_compile_options(
    vesk_warnings
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wshadow
              -Wcast-qual
              -Wextra-semi
              -Wformat=2
              -Wmissing-declarations
              -Wnon-virtual-dtor
              -Wold-style-cast
              -Woverloaded-virtual
              -Wundef
)
if(VESK_WARNINGS_AS_ERRORS)
    target_compile_options(vesk_warnings INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports overlapping and overlong copies inside std::string under -O2 (GCC bug 105651).
    target_compile_options(
        vesk_warnings INTERFACE -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow
    )
    if(VESK_SANITIZE)
        # The checks that sanitizers insert make GCC see paths that do not exist.
        target_compile_options(vesk_warnings INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
