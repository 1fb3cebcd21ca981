# cmake -DFILES="a.cpp;b.cpp" -P RewriteGenerated.cmake
#
# Changes that the generator's output needs:
#  - its u8"..." literals initialise std::string, which C++20 no longer allows;
#  - the display names of the two tokens with a question mark keep the escape that the grammar
#    writes them with, as in the token table: '\u003F=' and '\u003F', backslash included;
#  - the automata are unpacked when the first recogniser is made, not at the start of a program that
#    may need none, and they are not verified each time: the generator has just made them.

foreach(file IN LISTS FILES)
    file(READ "${file}" text)
    string(REPLACE "u8\"" "\"" text "${text}")
    string(REPLACE "\"'\\u003F" "\"'\\\\u003F" text "${text}")
    string(REGEX REPLACE "\n[A-Za-z]+::Initializer [A-Za-z]+::_init;\n" "\n" text "${text}")
    string(REPLACE "{\n  _interpreter = new" "{\n  static const Initializer once;\n  _interpreter = new" text "${text}")
    string(REPLACE "  atn::ATNDeserializer deserializer;"
                   "  atn::ATNDeserializationOptions options;\n  options.setVerifyATN(false);\n  atn::ATNDeserializer deserializer(options);"
                   text "${text}")
    file(WRITE "${file}" "${text}")
endforeach()
