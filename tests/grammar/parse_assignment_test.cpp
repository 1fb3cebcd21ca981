#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "types/identifier_value.h"

namespace Vesk {
namespace {

struct Case {
    std::string text;
    std::string expected;
    std::string printed = {};  ///< what the lexer says on standard error
};

class ParseAssignment : public LoaderTest {
  protected:
    void expectAll(const std::vector<Case>& cases) const {
        for (const Case& each : cases) {
            SCOPED_TRACE(each.text);
            const ErrorCapture errors;
            std::string found;
            const std::string error =
                errorOf([&] { found = describe(parseAssignment(each.text, "base")); });
            EXPECT_EQ(error == "no error" ? found : error, each.expected);
            EXPECT_EQ(errors.text(), each.printed);
        }
    }
};

TEST_F(ParseAssignment, ReadsEveryKindOfValue) {
    expectAll({
        {"x = 1", "x = 1"},
        {"x=-0x1F", "x = -31"},
        {"x = \"\"", "x = S\"\""},
        {"x = \"C:\\dir ${y}\"", "x = S\"C:\\dir ${y}\""},
        {"x = \"a\r\nb\"", "x = S\"a\r\nb\""},
        {"x = \"Gr\u00fc\u00dfe \U0001F600\"", "x = S\"Gr\u00fc\u00dfe \U0001F600\""},
        {"x = R\"()\"", "x = R\"\""},
        {"x = R\"(a)b)\"", "x = R\"a)b\""},
        {"x = R\"(f(g(x)))\"", "x = R\"f(g(x))\""},
        {"x = R\"(say \"hi\" \\n\n)\"", "x = R\"say \"hi\" \\n\n\""},
        {"x = P\"(a b/(x86))\"", "x = P\"a b/(x86)\" in base"},
        {"x = []", "x = []"},
        {"x = [1, \"b\", [y], P\"(p)\"]", "x = [1, S\"b\", [ref(y)], P\"p\" in base]"},
        {"x = {}", "x = { }+0"},
        {"x = { ^a = 1 b a += 2 if c { d } }", "x = { ^a = 3 b }+1"},
        {"x = R", "x = ref(R)"},
    });
}

TEST_F(ParseAssignment, ReadsModifiersAndOperators) {
    expectAll({
        {"x", "x"},
        {"^x", "^x"},
        {"?x ?= y", "?x ?= ref(y)"},
        {"^x += 1", "^x += 1"},
        {"/* a */ x // b\n = /* c */ 1", "x = 1"},
        {"x-y_2 = 1", "x-y_2 = 1"},
    });
    EXPECT_EQ(parseAssignment("x", {}).op, AssignOperator::None);
    EXPECT_EQ(parseAssignment("x", {}).value, nullptr);
}

TEST_F(ParseAssignment, ReadsIdentifierPaths) {
    expectAll({
        {"x = name.tools.if", "x = ref(name.tools.if)"},
        {"x = a.b[0].c[1][2]", "x = ref(a.b[0].c[1][2])"},
        {"x = a[-1]", "x = ref(a[-1])"},
        {"x = a[b.c[units]]", "x = ref(a[b.c[units]])"},
        {"x = a[18446744073709551615]", "x = ref(a[-1])"},
    });
    const auto value = parseAssignment("x = a[1..3][-0x2:4]['x y'][R\"(l.*)\"]", {}).value;
    const auto& keys = dynamic_cast<const VeskIdentifier&>(*value).path.segments.at(0).keys;
    ASSERT_EQ(keys.size(), 4U);
    EXPECT_EQ(std::get<PathRange>(keys[0]).end, 3);
    EXPECT_EQ(std::get<PathRange>(keys[1]).start, -2);
    EXPECT_EQ(std::get<PathRange>(keys[1]).end, 4);
    EXPECT_EQ(std::get<PathName>(keys[2]).name, "x y");
    EXPECT_EQ(std::get<PathRegex>(keys[3]).pattern, "l.*");
}

TEST_F(ParseAssignment, LeavesWhatFollowsUnread) {
    expectAll({
        {"x = 1 y", "x = 1"},
        {"x = 1 y = $ { [", "x = 1"},
        {"x = a ]]]]", "x = ref(a)"},
        {"x y", "x"},
        {"x = 0x", "x = 0"},
    });
    // One token is read ahead, and the lexer's own listener stays in place.
    expectAll({{"x = 1 $ y", "x = 1", "line 1:6 token recognition error at: '$'\n"},
               {"x = $1", "x = 1", "line 1:4 token recognition error at: '$'\n"}});
}

TEST_F(ParseAssignment, RefusesWhatIsNoAssignment) {
    const std::string syntax = "Parsing assignment failed due to syntax errors.";
    expectAll({
        {"", syntax},
        {"x =", syntax},
        {"= 1", syntax},
        {"1 = x", syntax},
        {"name = 1", syntax},
        {"x = [1,]", syntax},
        {"x = [1 2]", syntax},
        {"x = { y = }", syntax},
        {"x = a.", syntax},
        {"x = a[]", syntax},
        {"x = a[1..]", syntax},
        {"x = \"a", syntax, "line 1:4 token recognition error at: '\"a'\n"},
    });
}

TEST_F(ParseAssignment, RefusesValuesThatCannotBe) {
    expectAll({
        {"x = 2147483648", "Invalid or out-of-range integer literal '2147483648'."},
        {"x = 0x80000000", "Invalid or out-of-range integer literal '0x80000000'."},
        {"x = a[18446744073709551616]",
         "Invalid or out-of-range index literal '18446744073709551616'."},
        {"x = a[-9223372036854775809]",
         "Invalid or out-of-range index literal '-9223372036854775809'."},
        {"x = a[1..18446744073709551616]", "Invalid or out-of-range index range."},
        {"!x = 1", "'!' assignment modifier is not allowed in this context."},
        {"x = { !y = 1 }", "'!' assignment modifier is not allowed in this context."},
        {"x = { y = 1 y += \"a\" }",
         "Cannot convert VeskInt 1 to VeskString\n  in variable 'y', line 1"},
    });
}

TEST_F(ParseAssignment, KeepsBytesThatAreNotUtf8) {
    expectAll({{"x = [\"caf\xE9\", R\"(\xFF\xFE)\"]", "x = [S\"caf\xE9\", R\"\xFF\xFE\"]"}});
}

TEST_F(ParseAssignment, BoundsNesting) {
    const std::string open(kMaxNesting, '[');
    const std::string close(kMaxNesting, ']');
    EXPECT_EQ(describe(parseAssignment("x = " + open + close, {})), "x = " + open + close);
    expectAll({{"x = [" + open + close + "]",
                "assignment(1,1004): more than 1000 braces and brackets are open here. Give what "
                "is inside a variable of its own."},
               {"x = 1 y = [" + open, "x = 1"}});
}

}  // namespace
}  // namespace Vesk
