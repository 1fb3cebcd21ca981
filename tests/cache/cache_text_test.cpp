#include "cache/cache_text.h"

#include <gtest/gtest.h>

#include "cache/literal_text.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk::test {
namespace {

ValuePtr str(const char* text) {
    return std::make_shared<VeskString>(text);
}
ValuePtr raw(const char* text) {
    return std::make_shared<VeskRawString>(text);
}
ValuePtr path(const char* text) {
    return std::make_shared<VeskPathString>(text, "");
}
ValuePtr list(std::vector<ValuePtr> items) {
    return std::make_shared<VeskList>(std::move(items));
}

TEST(CacheText, PathLiteralsBecomeRawOnes) {
    const std::pair<const char*, const char*> cases[] = {
        {R"~(x = P"C:\new\table")~", R"~(x = P"(C:\new\table)")~"},
        {R"~(x = P"(C:\new)")~", R"~(x = P"(C:\new)")~"},
        {R"~(x = [P"a", P"(b)", P"c"])~", R"~(x = [P"(a)", P"(b)", P"(c)"])~"},
        {R"~(x = P"")~", R"~(x = P"()")~"},
        {"x = P\"a\nb\"", "x = P\"a\nb\""},
        {R"~(x = ["A.CPP", "B.CPP"])~", R"~(x = ["A.CPP"(, )"B.CPP"])~"},
        {R"~(x = P"open)~", R"~(x = P"open)~"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(withRawPathLiterals(text), expected) << text;
    }
}

TEST(CacheText, AssignmentsComeBackAsTheyWere) {
    const ValuePtr values[] = {
        str("plain"),
        str("with \"quotes\", ${references} and\nline\r\nbreaks\n"),
        str(""),
        raw(R"~(raw )" ${x} P"C:\x")~"),
        path(R"~(C:\new\table (x86)\a.c)~"),
        path("/p/ä b.c"),
        std::make_shared<VeskInt>(-2147483647 - 1),
        list({}),
        list({str("A.CPP"), str("B.CPP"), str("ends in P"), str("a\"b"), path("/x/(y)")}),
        list({list({path("/a"), list({})}), std::make_shared<VeskInt>(7)}),
    };
    for (const ValuePtr& value : values) {
        for (const auto modifier : {AssignModifier::None, AssignModifier::Output}) {
            Assignment assignment = resolvedAssignment("X-1_y", value, modifier);
            assignment.op = AssignOperator::Append;
            std::string text;
            ASSERT_TRUE(appendAssignment(text, assignment)) << value->toDisplayString();
            text += "rest";
            CacheReader reader(text);
            const auto read = reader.assignment("/base");
            ASSERT_TRUE(read) << text;
            EXPECT_EQ(std::string_view(reader.position()), "rest");
            EXPECT_EQ(read->name, assignment.name);
            EXPECT_EQ(read->op, assignment.op);
            EXPECT_EQ(read->modifier, modifier);
            EXPECT_EQ(read->state, ResolveState::Resolved);
            EXPECT_EQ(read->value->toString(), value->toString());
            std::string again;
            ASSERT_TRUE(appendAssignment(again, *read));
            EXPECT_EQ(again + "rest", text) << "the same text for the same value";
            CacheReader skipper(text);
            EXPECT_TRUE(skipper.skipAssignment());
        }
    }
}

TEST(CacheText, WhatNoLiteralHoldsIsNotWrittenAsOne) {
    for (const ValuePtr& value :
         {path(R"~(/a)"b)~"), list({str(R"~(a)"b)~")}), list({raw(R"~(P"C:\x")~")}), ValuePtr()}) {
        std::string text;
        EXPECT_FALSE(appendAssignment(text, resolvedAssignment("x", value)));
        appendComparableAssignment(text, resolvedAssignment("x", value));
        CacheReader reader(text);
        EXPECT_TRUE(reader.skipAssignment()) << "but can still be compared: " << text;
    }
}

// The quick reader must not accept what the language's own parser reads differently.
TEST(CacheText, TheQuickReaderLeavesOtherTextToTheParser) {
    for (const char* text :
         {"x = 1 y", "x = ", "= 1", "1x = 1", "x = \"open", "x = [\"a\" \"b\"]", "x = [\"a\", ]",
          "x = P\"plain\"", "x = name", "x = 99999999999", "x=1", "??x = 1"}) {
        EXPECT_FALSE(readPlainAssignment(text)) << text;
    }
    std::string parsed = "A 1 0\n15\nx = { y = \"z\" }\n";
    parsed.replace(6, 2, std::to_string(std::string("x = { y = \"z\" }").size()));
    CacheReader reader(parsed);
    const auto assignment = reader.assignment("");
    ASSERT_TRUE(assignment);
    EXPECT_EQ(assignment->value->typeName(), "VeskContext");
}

TEST(CacheText, MalformedAssignmentsAreRefused) {
    for (const char* text : {
             "S 0 0\n1\nx\n1\ny\n",
             "S 5 0\n1\nx\n1\ny\n",
             "S 1 4\n1\nx\n1\ny\n",
             "T 1 0\n1\nx\n1\ny\n",
             "S 1\n1\nx\n1\ny\n",
             "S 1 0 \n1\nx\n1\ny\n",
             "S 1 0\n1\nx\n2\ny\n",
             "S 1 0\n1\nx\n0\ny\n",
             "S 1 0\n-1\nx\n1\ny\n",
             "S 1 0\n9223372036854775808\nx\n1\ny\n",
             "S 1 0\n1\nx\n1\ny",
             "A 1 0\n3\n= 1\n",
             "A 1 0\n0\n\n",
             "S 1 0\n +1\nx\n1\ny\n",
         }) {
        CacheReader reader(text);
        EXPECT_FALSE(reader.skipAssignment()) << text;
    }
}

}  // namespace
}  // namespace Vesk::test
