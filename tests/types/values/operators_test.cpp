// What add, append and the comparisons give for every pair of kinds.

#include <gtest/gtest.h>

#include "types/support.h"
#include "types/values/value.h"

namespace Vesk {
namespace {

using namespace test;

struct Sum {
    ValuePtr left;
    ValuePtr right;
    std::string added;
    std::string appended;
};

void expectSums(const std::vector<Sum>& cases) {
    for (const Sum& c : cases) {
        SCOPED_TRACE(c.left->toDisplayString() + " + " + c.right->toDisplayString());
        const std::string left = shown(c.left);
        const std::string right = shown(c.right);
        EXPECT_EQ(outcome([&] { return c.left->add(*c.right); }), c.added);
        EXPECT_EQ(shown(c.left), left) << "add changes nothing";
        const std::string appended = outcome([&] {
            c.left->append(*c.right);
            return c.left;
        });
        EXPECT_EQ(appended, c.appended);
        EXPECT_EQ(shown(c.right), right);
        if (appended.find("Bad") == 0) {
            EXPECT_EQ(shown(c.left), left) << "a failed append changes nothing";
        }
    }
}

TEST(Operators, SumsOfStrings) {
    const std::string noCharSet = "BadConversion: Cannot convert VeskCharSet ascii to VeskString";
    const std::string noName = "BadConversion: Cannot convert VeskIdentifier a.b to VeskRawString";
    expectSums({
        {str("ab"), str("cd"), "VeskString \"abcd\"", "VeskString \"ab cd\""},
        {str("ab"), num(-5), "VeskString \"ab-5\"", "VeskString \"ab-5\""},
        {str("ab"), list({str("x"), str("y")}), "VeskString \"ab x y\"", "VeskString \"ab x y\""},
        {str("ab"), list({}), "VeskString \"ab \"", "VeskString \"ab \""},
        {raw("ab"), str("cd"), "VeskRawString \"abcd\"", "VeskRawString \"ab cd\""},
        {path("ab"), str("cd"), "VeskString P\"abcd\"", "VeskString P\"ab cd\""},
        {str("ab"), ascii(), noCharSet, noCharSet},
        {raw("ab"), id("a.b"), noName, noName},
    });
}

TEST(Operators, SumsOfTheOtherKinds) {
    const std::string noInt = "BadConversion: Cannot convert VeskInt 5 to VeskString";
    expectSums({
        {num(2), num(-3), "VeskInt -1", "VeskInt -1"},
        {num(2147483647), num(1), "VeskInt -2147483648", "VeskInt -2147483648"},
        {num(5), str("a"), noInt, noInt},
        {ascii(), str("a"), "BadOperation: A character set cannot be added to another value.",
         "BadOperation: A value cannot be appended to a character set."},
        {list({num(1)}), num(2), "VeskList [ 1, 2 ]", "VeskList [ 1, 2 ]"},
        {list({}), list({str("a"), num(1)}), "VeskList [ \"a\", 1 ]", "VeskList [ \"a\", 1 ]"},
        {list({}), ascii(), "VeskList [ ascii ]", "VeskList [ ascii ]"},
        {id("a[0]"), str("x"),
         "BadOperation: a[0] is not resolved yet and '\"x\"' cannot be added.",
         "BadOperation: a[0] is not resolved yet and '\"x\"' cannot be appended to it."},
    });
}

TEST(Operators, SumsOfContexts) {
    const std::string noInt = "BadConversion: Cannot convert VeskInt 5 to VeskContext";
    expectSums({
        {block({set("A", num(1))}), block({set("A", num(2)), set("B", num(3))}),
         "VeskContext {\nA = 2\nB = 3\n}", "VeskContext {\nA = 2\nB = 3\n}"},
        {block({set("A", num(1))}), block({plus("a", num(2))}), "VeskContext {\nA = 3\n}",
         "VeskContext {\nA = 3\n}"},
        {block({}), str("name"), "VeskContext {\nname\n}", "VeskContext {\nname\n}"},
        {block({}), num(5), noInt, noInt},
    });
}

/// "=" equals, "!" notEquals, "<" lessThan, ">" greaterThan, "x" for one that throws.
std::string relations(const ValuePtr& left, const ValuePtr& right) {
    std::string text;
    const auto add = [&text](char sign, auto&& holds) {
        const std::string answer = outcome(holds);
        text += answer == "true" ? std::string(1, sign) : answer == "false" ? "" : "x";
    };
    add('=', [&] { return left->equals(*right); });
    add('!', [&] { return left->notEquals(*right); });
    add('<', [&] { return left->lessThan(*right); });
    add('>', [&] { return left->greaterThan(*right); });
    return text;
}

TEST(Operators, Comparisons) {
    const ValuePtr item = str("x");
    const ValuePtr shared = list({item});
    const std::tuple<ValuePtr, ValuePtr, const char*> cases[] = {
        {str("ab"), str("zzz"), "!<"},  // strings are ordered by length
        {str("zz"), str("ab"), "!"},
        {str("b"), str(""), "!>"},
        {str("\"x\""), str("x"), "=>"},  // enclosing quotes count in the length only
        {str("\"x\""), raw("x"), "=>"},
        {raw("\"x\""), str("x"), "!>"},
        {str("\""), str(""), "!>"},  // one quote encloses nothing
        {str("5"), num(5), "!"},
        {num(-5), num(3), "!<"},
        {num(5), str("5"), "xxxx"},
        {ascii(), ascii(), "xxxx"},
        {list({num(1), str("a")}), list({num(1), str("a")}), "=~"},
        {list({num(1)}), list({num(1), num(2)}), "!~"},
        {list({nullptr}), list({nullptr}), "="},
        {list({nullptr}), list({num(1)}), "!<"},
        {list({}), str(""), "!xx"},
        {shared, list({item}), "="},
        {list({}), shared, "!<"},
        {list({item, item}), shared, "!>"},
        {id("a"), num(5), "="},  // an unresolved name equals anything
        {block({set("A", num(1))}), block({set("a", num(1))}), "=~"},
        {block({}), str(""), "xxxx"},
    };
    for (const auto& [left, right, expected] : cases) {
        std::string text = relations(left, right);
        if (std::string_view(expected).ends_with('~')) {  // ordered by where they lie in memory
            text.replace(1, 1, "~");
        }
        EXPECT_EQ(text, expected) << shown(left) << " | " << shown(right);
    }
}

}  // namespace
}  // namespace Vesk
