# cmake -DSOURCES=... -DVERSION=... -DCOMPILER=... -DDIRECTORY=... -P MadeFiles.cmake
#
# Makes the files of a package that say where it comes from:
#   copyright      the notices of the libraries that are linked into the program, as the packages
#                  of this system have them
#   changelog.gz   the entry that packages of Debian have

# The packages with libraries that are linked: those that we call, and the compiler's own.
set(packages libantlr4-runtime-dev libfmt-dev libxxhash-dev nlohmann-json3-dev)
foreach(library libstdc++.a libgcc.a libc.a libmingw32.a libwinpthread.a)
    execute_process(
        COMMAND "${COMPILER}" "-print-file-name=${library}"
        OUTPUT_VARIABLE file
        OUTPUT_STRIP_TRAILING_WHITESPACE
    )
    if(IS_ABSOLUTE "${file}")
        file(REAL_PATH "${file}" file)
        execute_process(
            COMMAND dpkg-query -S "${file}"
            OUTPUT_VARIABLE owner
            ERROR_QUIET
        )
        string(REGEX MATCH "^[^:]+" package "${owner}")
        list(APPEND packages ${package})
    endif()
endforeach()
list(REMOVE_DUPLICATES packages)

set(VESK_NOTICES)
set(common)
foreach(package IN LISTS packages)
    set(file "/usr/share/doc/${package}/copyright")
    if(NOT EXISTS "${file}")
        message(WARNING "${file} is not there: the notices of ${package} are left out.")
        continue()
    endif()
    # Lists break at semicolons and brackets: the text stays in one quoted variable.
    file(READ "${file}" text)
    string(APPEND VESK_NOTICES "\n======== ${package} ========\n\n${text}")
    string(REGEX MATCHALL "/usr/share/common-licenses/[A-Za-z]+-[0-9.]*[0-9]" named "${text}")
    list(APPEND common ${named})
endforeach()
list(REMOVE_DUPLICATES common)
list(SORT common)
set(VESK_LICENCES)
foreach(file IN LISTS common)
    if(EXISTS "${file}")
        file(READ "${file}" text)
        string(APPEND VESK_LICENCES "\n======== ${file} ========\n\n${text}")
    endif()
endforeach()

set(VESK_OWN "The sources of vesk come with no licence file.")
if(EXISTS "${SOURCES}/LICENSE")
    file(READ "${SOURCES}/LICENSE" VESK_OWN)
endif()
if(NOT COMPILER MATCHES "mingw")
    set(VESK_LICENCES "They are below /usr/share/common-licenses.\n")  # as in every package
endif()
set(VESK_YEAR 2026)
file(READ "${CMAKE_CURRENT_LIST_DIR}/copyright.in" template)
string(CONFIGURE "${template}" text @ONLY)
file(WRITE "${DIRECTORY}/copyright" "${text}")

if(DEFINED ENV{SOURCE_DATE_EPOCH})
    set(seconds $ENV{SOURCE_DATE_EPOCH})
else()
    execute_process(
        COMMAND git log -1 --format=%ct
        WORKING_DIRECTORY "${SOURCES}"
        OUTPUT_VARIABLE seconds
        OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET
    )
endif()
if(seconds)
    set(ENV{SOURCE_DATE_EPOCH} ${seconds})
endif()
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(entry "vesk (${VERSION}) unstable; urgency=medium\n
  * Version ${VERSION}. /usr/share/doc/vesk/CHANGELOG.md tells what has changed.\n
 -- the developers of vesk <developers@vesk.invalid>  ${date}\n")
file(WRITE "${DIRECTORY}/changelog" "${entry}")
# Without name and time in it, so that the same text gives the same file.
execute_process(COMMAND gzip -9nf "${DIRECTORY}/changelog")
