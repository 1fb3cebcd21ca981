#include <gtest/gtest.h>
#include <string>

#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "platform/files.h"

namespace Vesk {
namespace {

class UnitFile : public LoaderTest {
  protected:
    Unit parse(std::string_view text) const { return parseUnitFile(write("vesk.txt", text)); }
    std::string described(std::string_view text) const { return readable(describe(parse(text))); }
    std::string error(std::string_view text) const {
        return errorOf([&] { parse(text); });
    }
};

TEST_F(UnitFile, MayBeEmpty) {
    EXPECT_EQ(described(""), "unit ''\n");
    EXPECT_EQ(described("// nothing\n/* here */"), "unit ''\n");
    EXPECT_EQ(described("\xEF\xBB\xBFunit u"), "unit 'u' declared\n");
}

TEST_F(UnitFile, GivesTargetsInOrder) {
    EXPECT_EQ(described(R"raw(unit main // the name
app(p, q) : lib base::core p/u::x @some.list
{
    ^OUT = "a" /* of
    two lines */ FLAGS += "-g"
    FILES = [P"(src/a b.c)", P"(/x)"]
    if os = "windows" { A = 1 if b { C } }
    if level > 3
    { B ?= level }
    LAST
}
empty: {}
)raw"),
              R"(unit 'main' declared
app(p, q) @2
  : lib @2
  : base::core @2
  : p/u::x @2
  : @some.list @2
  ^OUT = S"a" @4
  FLAGS += S"-g" @5
  FILES = [P"src/a b.c" in DIR, P"/x" in DIR] @6
  LAST @10
  if ref(os) = S"windows" @7
    A = 1 @7
    if ref(b) @7
      C @7
  if ref(level) > 3 @8
    B ?= ref(level) @9
empty() @12
)");
}

TEST_F(UnitFile, ReadsEveryFormOfDependency) {
    EXPECT_EQ(described(R"(a: +lib
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

TEST_F(UnitFile, ReadsConditionOperators) {
    EXPECT_EQ(described("a: { if x = 1 {} if x != y {} if x < [] {} if x > R\"()\" {} if x.y {} }"),
              R"(unit ''
a() @1
  if ref(x) = 1 @1
  if ref(x) != ref(y) @1
  if ref(x) < [] @1
  if ref(x) > R"" @1
  if ref(x.y) @1
)");
}

TEST_F(UnitFile, ReadsAnyLineEndAndOtherLetters) {
    EXPECT_EQ(
        described("\xEF\xBB\xBF// \u00fc\r\na:\r\n{\r\n  x = \"\u00e4\u20ac\U0001F600\"\r\n}"),
        "unit ''\na() @2\n  x = S\"\u00e4\u20ac\U0001F600\" @4\n");
}

TEST_F(UnitFile, RemembersWhereThingsAre) {
    const Unit unit =
        parseUnitFile(write("vesk.txt", "\n\na: {}").parent_path() / "." / "vesk.txt");
    ASSERT_EQ(unit.files.size(), 1U);
    EXPECT_EQ(readable(platform::pathToUtf8(unit.files[0])), "DIR/vesk.txt");
    EXPECT_EQ(readable(unit.targets.at(0)->place()), "DIR/vesk.txt:3");
}

TEST_F(UnitFile, NamesThePlaceOfWhatCannotBe) {
    EXPECT_EQ(error("a: {\n  x = 1\n  !y = 2 }"),
              "'!' assignment modifier is not allowed in this context.\n"
              "  in DIR/vesk.txt:3 (target 'a')");
    EXPECT_EQ(error("a: {\n x = [1,\n 9999999999] }"),
              "Invalid or out-of-range integer literal '9999999999'.\n"
              "  in DIR/vesk.txt:3 (target 'a')");
    EXPECT_EQ(error("a: {} b:\n lib(.) {}"),
              "The source parameter marker '.' can only be used with a dynamic dependency.\n"
              "  in DIR/vesk.txt:2 (target 'b')");
    for (const char* text : {"a: @lib(x, .) {}", "a: @lib(., .) {}"}) {
        EXPECT_EQ(error(text),
                  "The source parameter marker '.' must be the first dependency parameter.\n"
                  "  in DIR/vesk.txt:1 (target 'a')");
    }
    EXPECT_EQ(error("a: {}\n a: {}"),
              "Target 'a' is defined twice: DIR/vesk.txt:1 and DIR/vesk.txt:2.");
    EXPECT_EQ(error("a: {\n c = {\n y = 1 y += \"a\" } }"),
              "Cannot convert VeskInt 1 to VeskString\n  in variable 'y', line 3\n"
              "  in DIR/vesk.txt:2 (target 'a')");
}

TEST_F(UnitFile, PrintsSyntaxErrorsAndRefusesTheFile) {
    struct {
        const char* text;
        const char* printed;
    } const cases[] = {
        {"a: { x = }",
         "line 1:9 mismatched input '}' expecting {'{', STRING, RAW_STRING, PATH_STRING, NUMBER, "
         "'[', 'unit', 'if', 'import', 'units', 'profiles', 'projects', 'tools', 'name', "
         "IDENTIFIER}\n"},
        {"a: {}\nunit u", "line 2:0 "},
        {"a: { name = 1 }", "line 1:5 "},
        {"a: { x = b - c }", "line 1:11 token recognition error at: '- '\n"},
        {"a: { x = 1 }\n\u00e4 b: {}", "line 2:0 token recognition error at: '\u00e4'\n"},
        {"a: { x = \"\u00e4\" # }", "line 1:13 token recognition error at: '#'\n"},
        {"a: {} /* b\n * c", "line 1:6 token recognition error at: '/* b\\n * c'\n"},
        {"a: {} /* a /* b */ c: {} */", "line 1:25 token recognition error at: '*'\n"},
        {"a: {", "line 1:4 "},
    };
    for (const auto& [text, printed] : cases) {
        const ErrorCapture errors;
        EXPECT_EQ(error(text), "DIR/vesk.txt Parsing failed due to syntax errors.") << text;
        EXPECT_EQ(errors.text().substr(0, std::string(printed).size()), printed) << text;
    }
}

struct Nesting {
    std::string start;
    std::string open;
    std::string middle;
    std::string close;
    std::size_t bracket;  ///< its offset in `open`

    /// A file that has so many brackets open at once, the target's brace included.
    std::string file(std::size_t depth) const {
        std::string text = "a: {\n" + start;
        for (std::size_t i = 1; i < depth; ++i) {
            text += open;
        }
        text += middle;
        for (std::size_t i = 1; i < depth; ++i) {
            text += close;
        }
        return text + "}";
    }

    /// The column of the first bracket that is one too many.
    std::size_t column() const { return start.size() + (kMaxNesting - 1) * open.size() + bracket; }
};

TEST_F(UnitFile, BoundsNesting) {
    const Nesting cases[] = {{"x = ", "[", "", "]", 0},
                             {"x = ", "{ y = ", "1", "}", 0},
                             {"x = y", "[z", "", "]", 0},
                             {"", "if x {", "", "}", 5}};
    for (const Nesting& each : cases) {
        SCOPED_TRACE(each.open);
        EXPECT_EQ(error(each.file(kMaxNesting)), "no error");
        for (const std::size_t depth : {kMaxNesting + 1, 10 * kMaxNesting}) {
            EXPECT_EQ(error(each.file(depth)),
                      "DIR/vesk.txt(2," + std::to_string(each.column()) +
                          "): more than 1000 braces and brackets are open here. Give what is "
                          "inside a variable of its own.");
        }
    }
}

}  // namespace
}  // namespace Vesk
