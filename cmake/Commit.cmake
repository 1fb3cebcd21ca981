# cmake -DFILE=commit.h -DSOURCES=directory -P Commit.cmake
#
# Writes the commit of the sources, "-dirty" where they differ from it, as a definition: what the
# environment variable VESK_COMMIT says, else git. A file that says so already is left alone, so that
# nothing is compiled for it.

set(commit "$ENV{VESK_COMMIT}")
if(NOT commit)
    execute_process(
        COMMAND git describe --always --dirty --abbrev=12 --exclude=*
        WORKING_DIRECTORY "${SOURCES}"
        OUTPUT_VARIABLE commit
        OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET
    )
endif()
if(NOT commit)
    set(commit unknown)
endif()
file(CONFIGURE OUTPUT "${FILE}" CONTENT "#define VESK_COMMIT \"${commit}\"\n")
