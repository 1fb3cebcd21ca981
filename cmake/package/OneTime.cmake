# Run by CPack before it packs: with SOURCE_DATE_EPOCH in the environment all files get that time, so
# that the same sources give the same package.

if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(
        COMMAND find "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" -exec touch -h -d "@$ENV{SOURCE_DATE_EPOCH}" {} +
    )
endif()
