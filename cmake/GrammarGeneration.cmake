# vesk_generate_recognisers(<target> <directory>)
#
# Makes the static library <target> from the grammars CommonLexer.g4 and VeskTopParser.g4 in
# <directory>: lexer, parser and visitor in the namespace Vesk::grammar, included by their plain names
# ("VeskTopParserBaseVisitor.h").

find_program(VESK_ANTLR4 antlr4 REQUIRED)

function(vesk_generate_recognisers target directory)
    set(out "${CMAKE_BINARY_DIR}/generated/grammar")
    set(grammars CommonLexer.g4 VeskTopParser.g4)
    set(stems CommonLexer VeskTopParser VeskTopParserVisitor VeskTopParserBaseVisitor)
    list(TRANSFORM grammars PREPEND "${directory}/" OUTPUT_VARIABLE inputs)
    list(TRANSFORM stems PREPEND "${out}/")
    list(TRANSFORM stems APPEND ".cpp" OUTPUT_VARIABLE sources)
    list(TRANSFORM stems APPEND ".h" OUTPUT_VARIABLE headers)
    set(rewrite "${PROJECT_SOURCE_DIR}/cmake/RewriteGenerated.cmake")

    add_custom_command(
        OUTPUT ${sources} ${headers}
        COMMAND "${VESK_ANTLR4}" -Werror -Dlanguage=Cpp -package Vesk::grammar -visitor -no-listener
                -o "${out}" ${grammars}
        COMMAND "${CMAKE_COMMAND}" "-DFILES=${sources}" -P "${rewrite}"
        WORKING_DIRECTORY "${directory}"
        DEPENDS ${inputs} "${rewrite}"
        COMMENT "Generating the recognisers"
        VERBATIM
    )

    add_library(${target} STATIC ${sources} ${headers})
    target_include_directories(${target} SYSTEM PUBLIC "${out}")
    target_link_libraries(${target} PUBLIC vesk::antlr_runtime PRIVATE vesk_settings)
    # Nobody edits this code, so nobody can act on a warning about it.
    target_compile_options(${target} PRIVATE -w)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "")
endfunction()
