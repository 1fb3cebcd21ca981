# cmake -DOUT=texts.cpp -DHEADER=report/page_texts.h -DNAMESPACE=Vesk::report
#       -DTEXTS="kStyle=page.css;kScript=base.js+page.js" -P EmbedTexts.cmake
#
# Makes a C++ source of text files: each a std::string_view, of the files joined by "+". As numbers,
# since a string literal has a longest length.

set(source "#include \"${HEADER}\"\n\nnamespace ${NAMESPACE} {\nnamespace {\n")
set(views "")
foreach(text IN LISTS TEXTS)
    string(REGEX MATCH "^([A-Za-z]+)=(.*)$" matched "${text}")
    set(name "${CMAKE_MATCH_1}")
    string(REPLACE "+" ";" files "${CMAKE_MATCH_2}")
    set(bytes "")
    foreach(file IN LISTS files)
        file(READ "${file}" hex HEX)
        string(APPEND bytes "${hex}")
    endforeach()
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    string(APPEND source "constexpr unsigned char bytesOf_${name}[] = {${bytes}};\n")
    string(
        APPEND views
        "const std::string_view ${name}(\n    reinterpret_cast<const char*>(bytesOf_${name}), sizeof bytesOf_${name});\n"
    )
endforeach()
string(APPEND source "}  // namespace\n\n${views}\n}  // namespace ${NAMESPACE}\n")
file(WRITE "${OUT}" "${source}")
