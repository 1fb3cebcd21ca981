// Merging of assignments, lookup by keys, dumps, and copies that share nothing.

#include "types/context/context.h"

#include <gtest/gtest.h>

#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

constexpr auto kOut = AssignModifier::Output;
constexpr auto kMust = AssignModifier::Must;
constexpr auto kHint = AssignModifier::Hint;

TEST(Context, MergesByOperatorAndModifier) {
    const std::pair<Assignments, std::string> cases[] = {
        {{set("A", str("a")), set("A", num(2))}, "A = 2"},
        {{plus("A", str("a")), set("A", str("b"))}, "A = \"b\""},
        {{set("A", str("a")), plus("A", str("b"))}, "A = \"a b\""},
        {{set("A", str("a")), plus("A", num(1)), plus("A", list({str("x"), num(2)}))},
         "A = \"a1 x 2\""},
        {{plus("A", str("b"))}, "A += \"b\""},
        {{set("A", num(5)), plus("A", num(6))}, "A = 11"},
        {{set("A", list({num(1)})), plus("A", str("b c")), plus("A", list({num(2), num(3)}))},
         "A = [1, \"b c\", 2, 3]"},
        {{set("A", block({set("x", num(1))})), plus("A", block({set("y", num(2))}))},
         "A = { x = 1 y = 2 }"},
        {{set("A", str("a")), maybe("A", str("b"))}, "A = \"a\""},
        {{maybe("A", str("b"))}, "A ?= \"b\""},
        {{set("A", str("a")), bare("A"), maybe("A", str("b"))}, "A = \"b\""},
        {{set("A", str("a")), bare("A")}, "A"},
        {{bare("A"), plus("A", str("b"))}, "A = \"b\""},
        {{maybe("A", str("a")), plus("A", str("b"))}, "A ?= \"a b\""},
        {{set("A", str("a")), plus("A", path("p", "/d")), plus("A", list({id("x")}))},
         "A = \"a p x\""},
        {{set("A", str("a")), plus("A", nullptr)}, "A = \"a\""},
        {{set("CC", num(1)), set("cc", num(2)), set("b", num(3))}, "b = 3; CC = 2"},
        {{set("A", num(1), kOut), set("A", num(2))}, "^A = 2"},
        {{set("A", num(1)), set("A", num(2), kMust)}, "!A = 2"},
        {{set("A", num(1), kOut), set("A", num(2), kHint)}, "?A = 2"},
        {{set("A", num(1), kOut), maybe("A", num(2), kMust)}, "^A = 1"},
        {{set("A", num(1)), bare("A", kOut)}, "^A"},
        {{set("A", str("a")), plus("A", str("b"), kOut)}, "^A = \"a b\""},
    };
    for (const auto& [assignments, expected] : cases) {
        EXPECT_EQ(sourceOf(*contextOf(assignments)), expected);
    }
}

TEST(Context, MergeModesAndForbiddenMerges) {
    const auto merged = [](Assignment assignment, ModifierMode mode) {
        const auto context = contextOf({set("A", num(1), kOut)});
        const std::string outcome = outcomeOf([&] { context->addAssignment(assignment, mode); });
        return (outcome == "done" ? "" : outcome + " / ") + sourceOf(*context);
    };
    const Assignment two = set("A", num(2), kMust);
    EXPECT_EQ(merged(two, ModifierMode::Keep), "^A = 2");
    EXPECT_EQ(merged(two, ModifierMode::Copy), "!A = 2");
    EXPECT_EQ(merged(two, ModifierMode::Clear), "A = 2");
    EXPECT_EQ(merged(two, static_cast<ModifierMode>(3)),
              "AssignmentException: Attempted to modify assignment: A = 1 with A = 2 / ^A = 1");
    EXPECT_EQ(merged(plus("A", str("b")), ModifierMode::Keep),
              "BadConversion: Cannot convert VeskInt 1 to VeskString / ^A = 1");
}

TEST(Context, KeepsWhatAnOutputAppendAddsApart) {
    const std::pair<Assignments, std::string> cases[] = {
        {{set("A", str("a")), plus("A", str("b"), kOut), plus("A", str("c"), kOut)},
         "VeskString \"b c\""},
        {{set("A", str("a")), plus("A", str("b"), kOut), plus("A", str("own"))},
         "VeskString \"b\""},
        {{plus("A", list({num(1)}), kOut), plus("A", num(2), kOut)}, "VeskList [ 1, 2 ]"},
        {{set("A", str("a"), kOut), plus("A", str("b"), kOut)}, "nothing"},
        {{plus("A", str("b"), kOut), set("A", str("c"))}, "nothing"},
        {{plus("A", str("b"), kOut), bare("A")}, "nothing"},
    };
    for (const auto& [assignments, expected] : cases) {
        const auto context = contextOf(assignments);
        EXPECT_EQ(outcome([&] {
                      context->resolveVariables();
                      return context->find("A")->exported;
                  }),
                  expected)
            << sourceOf(*context);
    }
}

TEST(Context, FindsAssignmentsByKeys) {
    const auto context = contextOf({
        set("Name", num(1)),
        set("lib", block({set("FLAGS", str("x")), set("deep", block({set("y", num(2))}))})),
        set("items", list({num(1), block({set("z", num(3))})})),
    });
    const auto at = [&context](const std::vector<Key>& keys) {
        return outcome([&] { return context->getAssignment(keys).toDisplayString(); });
    };
    const Key lib = NameKey{"LIB"};
    const Key items = NameKey{"items"};
    EXPECT_EQ(at({lib, NameKey{"deep"}, NameKey{"y"}}), "y = 2");
    EXPECT_EQ(at({items, IndexKey{1}, NameKey{"z"}}), "z = 3");
    EXPECT_EQ(at({NameKey{"nam"}}),
              "NotFoundException: Assignment 'nam' not found.\n  did you mean 'Name'?");
    EXPECT_EQ(at({NameKey{"other"}, NameKey{"x"}}).find("out_of_range: invalid map<K, T> key"), 0U);
    EXPECT_EQ(at({items, IndexKey{0}, NameKey{"z"}}),
              "NotAContext: Identifier part must be context.");
    EXPECT_EQ(at({lib, IndexKey{0}}), "IndexException: Variable {...} cannot be indexed with [0]");
}

TEST(Context, TemplatesStayAsTheyAreWhateverIsMadeOfThem) {
    ContextTemplate inner;
    inner.assignments = {plus("A", str("c"))};
    ContextTemplate body;
    body.assignments = {set("A", list({str("${B}"), list({str("z")})})), set("B", str("b")),
                        set("C", block({set("x", str("${B}"))})), plus("D", str("${B}"), kOut),
                        plus("D", str("d"))};
    body.conditions.push_back({str("${B}"), str("b"), ConditionOperator::Equal,
                               std::make_shared<ContextTemplate>(inner), 3});
    const auto texts = [&body] {
        std::string text;
        for (const Assignment& assignment : body.assignments) {
            text += assignment.toSourceString() + "; ";
        }
        return text + body.conditions.front().left->toDisplayString();
    };
    const std::string before = texts();
    for (int visit = 0; visit < 2; ++visit) {
        const auto context = body.instantiate();
        context->mergeAssignment(plus("C", block({set("y", num(1))})));
        context->resolveVariables();
        EXPECT_EQ(sourceOf(*context),
                  "A = [\"b\", [\"z\"], \"c\"]; B = \"b\"; C = { x = \"b\" y = 1 }; "
                  "^D += \"b d\"");
        EXPECT_EQ(texts(), before);
    }
}

TEST(Context, DeepCopiesAndMergesShareNothing) {
    const auto original = contextOf(
        {set("A", list({str("a")})), set("C", block({set("x", num(1))})), set("I", id("A"))});
    original->mergeAssignment(plus("I", str("late")));
    const std::string before = sourceOf(*original);
    const auto copy = original->deepCopy();
    const auto merged = contextOf({set("A", str("old"))});
    merged->mergeContext(*original, ModifierMode::Keep);
    EXPECT_EQ(sourceOf(*copy), before);
    for (const auto& context : {copy, merged}) {
        context->addAssignment(plus("A", str("b")), ModifierMode::Keep);
        context->getAssignment({NameKey{"C"}, NameKey{"x"}}).value = num(2);
        context->resolveVariables();
        EXPECT_EQ(sourceOf(*context),
                  "A = [\"a\", \"b\"]; C = { x = 2 }; I = [\"a\", \"b\", \"late\"]");
    }
    EXPECT_EQ(sourceOf(*original), before);
}

}  // namespace
}  // namespace Vesk
