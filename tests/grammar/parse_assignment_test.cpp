#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "support/console_capture.h"
#include "types/values/identifier_value.h"

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
            test::ConsoleCapture console;
            EXPECT_EQ(outcome([&] { return parseAssignment(each.text, "base").toSourceString(); }),
                      each.expected);
            EXPECT_EQ(console.text(), each.printed);
        }
    }
};

TEST_F(ParseAssignment, ReadsValuesAndModifiers) {
    expectAll({
        {"x", "x"},
        {"?x ?= y", "?x ?= y"},
        {"^x += -0x1F", "^x += -31"},
        {"/* a */ x // b\n = /* c */ 1", "x = 1"},
        {"x-y_2 = \"\"", "x-y_2 = \"\""},
        {"x = \"Gr\u00fc\u00dfe \U0001F600 ${y}\r\n\"",
         "x = \"Gr\u00fc\u00dfe \U0001F600 ${y}\r\n\""},
        {"x = \"caf\xE9\"", "x = \"caf\xE9\""},
        {"x = R\"(a)b)\"", "x = R\"(a)b)\""},
        {"x = R\"(say \"hi\" f(g(x)) \n)\"", "x = R\"(say \"hi\" f(g(x)) \n)\""},
        {"x = R", "x = R"},
        {"x = [1, \"b\", [y], P\"(a b/(x86))\"]", "x = [1, \"b\", [y], P\"(base/a b/(x86))\"]"},
        {"x = []", "x = []"},
        {"x = { ^a = 1 b a += 2 }", "x = { ^a = 3 b }"},
        {"x = name.tools.if[0].c[1][2]", "x = name.tools.if[0].c[1][2]"},
        {"x = a[-1][b.c[units]]", "x = a[-1][b.c[units]]"},
        {"x = a[18446744073709551615]", "x = a[-1]"},
        {"x = a[1..3][-0x2:4]['x y'][R\"(l.*)\"]", "x = a[1..3][-2..4]['x y'][R\"(l.*)\"]"},
    });
}

TEST_F(ParseAssignment, LeavesWhatFollowsUnread) {
    expectAll({
        {"x = 1 y = $ { [", "x = 1"},
        {"x = a ]]]]", "x = a"},
        {"x = 0x", "x = 0"},
        // One token is read ahead, and the lexer's own listener stays in place.
        {"x = 1 $ y", "x = 1", "line 1:6 token recognition error at: '$'\n"},
        {"x = $1", "x = 1", "line 1:4 token recognition error at: '$'\n"},
    });
}

TEST_F(ParseAssignment, RefusesWhatIsNoAssignment) {
    const std::string syntax = "Parsing assignment failed due to syntax errors.";
    for (const char* text : {"", "x =", "= 1", "1 = x", "name = 1", "x = [1,]", "x = [1 2]",
                             "x = { y = }", "x = a.", "x = a[]", "x = a[1..]"}) {
        expectAll({{text, syntax}});
    }
    expectAll({
        {"x = \"a", syntax, "line 1:4 token recognition error at: '\"a'\n"},
        {"x = 2147483648", "Invalid or out-of-range integer literal '2147483648'."},
        {"x = a[18446744073709551616]",
         "Invalid or out-of-range index literal '18446744073709551616'."},
        {"x = a[1..18446744073709551616]", "Invalid or out-of-range index range."},
        {"x = { !y = 1 }", "'!' assignment modifier is not allowed in this context."},
        {"x = { y = 1 y += \"a\" }", "Cannot convert VeskInt 1 to VeskString\n  in variable 'y'"},
    });
}

TEST_F(ParseAssignment, BoundsNesting) {
    const std::string open(kMaxNesting, '[');
    const std::string close(kMaxNesting, ']');
    expectAll({{"x = " + open + close, "x = " + open + close},
               {"x = [" + open + close + "]",
                "assignment(1,1004): more than 1000 braces and brackets are open here. Move what "
                "is inside into a variable of its own."},
               {"x = 1 y = [" + open, "x = 1"}});
}

}  // namespace
}  // namespace Vesk
