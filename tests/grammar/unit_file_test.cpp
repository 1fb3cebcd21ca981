#include <gtest/gtest.h>
#include <string>

#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "platform/files.h"
#include "support/console_capture.h"

namespace Vesk {
namespace {

class UnitFile : public LoaderTest {
  protected:
    /// The unit, or the error.
    std::string unit(std::string_view text) const {
        return outcome([&] { return describe(parseUnitFile(write("vesk.txt", text))); });
    }
};

TEST_F(UnitFile, GivesTargetsInOrder) {
    EXPECT_EQ(unit("// nothing\n/* here */"), "unit ''\n");
    EXPECT_EQ(unit(R"raw(unit main // the name
app(p, q) : lib base::core p/u::x @some.list
{
    ^OUT = "a" /* of
    two lines */ FLAGS += "-g"
    FILES = [P"(src/a b.c)", P"(C:/x)"]
    if os = "windows" { A = 1 if b { C } }
    if level > 3
    { B ?= level }
    if x != y {} if x < [] {} if x > R"()" {}
    LAST
}
empty: {}
)raw"),
              R"raw(unit 'main' declared
app(p, q) @2
  : lib @2
  : base::core @2
  : p/u::x @2
  : @some.list @2
  ^OUT = "a" @4
  FLAGS += "-g" @5
  FILES = [P"(DIR/src/a b.c)", P"(C:/x)"] @6
  LAST @11
  if os = "windows" @7
    A = 1 @7
    if b @7
      C @7
  if level > 3 @8
    B ?= level @9
  if x != y @10
  if x < [] @10
  if x > R"()" @10
empty() @13
)raw");
}

TEST_F(UnitFile, ReadsEveryFormOfDependency) {
    EXPECT_EQ(unit(R"(a: +lib
    u::lib(x, y.z[0]) => l
    +p/u::lib +> all
    @deps(.) +> all
    @deps(., x)
    @lib.deps[name](x) => l
    { })"),
              R"(unit ''
a() @1
  : +lib @1
  : u::lib(x, y.z[0]) => l @2
  : +p/u::lib +> all @3
  : @deps(.) +> all @4
  : @deps(., x) @5
  : @lib.deps[name](x) => l @6
)");
}

TEST_F(UnitFile, ReadsAnyLineEndAndOtherLettersAndKnowsItsPlace) {
    const auto file = write(
        "vesk.txt", "\xEF\xBB\xBF// \u00fc\r\na:\r\n{\r\n  x = \"\u00e4\u20ac\U0001F600\"\r\n}");
    const Unit read = parseUnitFile(file.parent_path() / "." / "vesk.txt");
    EXPECT_EQ(describe(read), "unit ''\na() @2\n  x = \"\u00e4\u20ac\U0001F600\" @4\n");
    EXPECT_EQ(readable(read.targets.at(0)->place()), "DIR/vesk.txt:2");
}

TEST_F(UnitFile, NamesThePlaceOfWhatCannotBe) {
    const std::string marker = "The source parameter marker '.' ";
    const std::pair<const char*, std::string> cases[] = {
        {"a: {\n  x = 1\n  !y = 2 }",
         "'!' assignment modifier is not allowed in this context.\n"
         "  DIR/vesk.txt:3:3\n    !y = 2 }\n    ^\n  in target 'a'"},
        {"a: {\n x = [1,\n 9999999999] }",
         "Invalid or out-of-range integer literal '9999999999'.\n"
         "  DIR/vesk.txt:3:2\n   9999999999] }\n   ^\n  in target 'a'"},
        {"a: {} b:\n lib(.) {}", marker + "can only be used with a dynamic dependency.\n"
                                          "  DIR/vesk.txt:2:6\n   lib(.) {}\n       ^\n"
                                          "  in target 'b'"},
        {"a: @lib(x, .) {}", marker + "must be the first dependency parameter.\n"
                                      "  DIR/vesk.txt:1:12\n  a: @lib(x, .) {}\n"
                                      "             ^\n  in target 'a'"},
        {"a: {}\n a: {}", "Target 'a' is defined twice: DIR/vesk.txt:1 and DIR/vesk.txt:2."},
        {"a: {\n c = {\n y = 1 y += \"a\" } }",
         "Cannot convert VeskInt 1 to VeskString\n  DIR/vesk.txt:3:8\n   y = 1 y += \"a\" } }\n"
         "         ^\n  in variable 'y'\n  in DIR/vesk.txt:2"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(unit(text), expected);
    }
}

TEST_F(UnitFile, PrintsSyntaxErrorsAndRefusesTheFile) {
    const std::pair<const char*, std::string> cases[] = {
        {"a: { x = }",
         "line 1:9 mismatched input '}' expecting {'{', STRING, RAW_STRING, PATH_STRING, NUMBER, "
         "'[', 'unit', 'if', 'import', 'units', 'profiles', 'projects', 'tools', 'name', "
         "IDENTIFIER}\n"},
        {"a: {}\nunit u", "line 2:0 "},
        {"a: { name = 1 }", "line 1:5 "},
        {"a: {} /* a /* b */ c: {} */", "line 1:25 token recognition error at: '*'\n"},
        {"a: {", "line 1:4 "},
    };
    for (const auto& [text, printed] : cases) {
        test::ConsoleCapture console;
        EXPECT_EQ(unit(text), "DIR/vesk.txt Parsing failed due to syntax errors.") << text;
        EXPECT_EQ(console.text().substr(0, printed.size()), printed) << text;
    }
}

TEST_F(UnitFile, GoesOnAfterErrorsOfTheLexerAlone) {
    const std::pair<const char*, std::string> cases[] = {
        {"a: { x = b - c }",
         "line 1:11 token recognition error at: '- '\n"
         "  DIR/vesk.txt:1:12\n  a: { x = b - c }\n             ^\n"},
        {"a: {}\n\u00e4 b: {}",
         "line 2:0 token recognition error at: '\u00e4'\n"
         "  DIR/vesk.txt:2:1\n  \u00e4 b: {}\n  ^\n"},
        {"a: { x = \"\u00e4\" # }",
         "line 1:13 token recognition error at: '#'\n"
         "  DIR/vesk.txt:1:14\n  a: { x = \"\u00e4\" # }\n               ^\n"
         "  a comment begins with '//'\n"},
        {"a: {} /* b",
         "line 1:6 token recognition error at: '/* b'\n"
         "  DIR/vesk.txt:1:7\n  a: {} /* b\n        ^\n"
         "  the comment is not closed: '*/' is missing\n"},
    };
    for (const auto& [text, printed] : cases) {
        test::ConsoleCapture console;
        EXPECT_TRUE(unit(text).starts_with("unit ''\na() @1\n")) << text;
        EXPECT_EQ(readable(console.text()), printed) << text;
    }
}

}  // namespace
}  // namespace Vesk
