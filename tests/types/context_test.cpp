// Merging of assignments, lookup by keys, dumps, and copies that share nothing.

#include "types/context.h"

#include <gtest/gtest.h>

#include "support/console_capture.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

constexpr auto kOut = AssignModifier::Output;
constexpr auto kMust = AssignModifier::Must;
constexpr auto kHint = AssignModifier::Hint;

TEST(Context, MergesByOperator) {
    const std::pair<Assignments, std::string> cases[] = {
        {{set("A", str("a")), set("A", num(2))}, "A = 2"},
        {{plus("A", str("a")), set("A", str("b"))}, "A = \"b\""},
        {{set("A", str("a")), plus("A", str("b"))}, "A = \"a b\""},
        {{set("A", str("a")), plus("A", num(1)), plus("A", list({str("x"), num(2)}))},
         "A = \"a1 x 2\""},
        {{plus("A", str("b"))}, "A += \"b\""},
        {{bare("A"), plus("A", str("b"))}, "A = \"b\""},
        {{set("A", num(5)), plus("A", num(6))}, "A = 11"},
        {{set("A", list({num(1)})), plus("A", str("b c")), plus("A", list({num(2), num(3)}))},
         "A = [1, \"b c\", 2, 3]"},
        {{set("A", block({set("x", num(1))})), plus("A", block({set("y", num(2))}))},
         "A = { x = 1 y = 2 }"},
        {{set("A", str("a")), maybe("A", str("b"))}, "A = \"a\""},
        {{maybe("A", str("b"))}, "A ?= \"b\""},
        {{set("A", str("a")), bare("A"), maybe("A", str("b"))}, "A = \"b\""},
        {{set("A", str("a")), bare("A")}, "A"},
        {{set("A", str("a")), plus("A", nullptr)}, "A = \"a\""},
        {{set("CC", num(1)), set("cc", num(2)), set("b", num(3))}, "b = 3; CC = 2"},
    };
    for (const auto& [assignments, expected] : cases) {
        const auto context = contextOf(assignments);
        // A bare name that stands for "nothing stored" has no operator text of its own.
        std::string text = sourceOf(*context);
        if (assignments.front().op == AssignOperator::None && assignments.size() > 1) {
            EXPECT_EQ(context->textOf("A"), "b");
            continue;
        }
        EXPECT_EQ(text, expected);
    }
}

TEST(Context, MergesModifiersAsTheyAreWritten) {
    const std::pair<Assignments, std::string> cases[] = {
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
    const std::string refused = "AssignmentException: Attempted to modify assignment: A = 1 with ";
    EXPECT_EQ(merged(two, static_cast<ModifierMode>(3)), refused + "A = 2 / ^A = 1");
    EXPECT_EQ(merged(make("A", static_cast<AssignOperator>(9), num(2)), ModifierMode::Keep),
              refused + "A2 / ^A = 1");
    EXPECT_EQ(merged(plus("A", str("b")), ModifierMode::Keep),
              "BadConversion: Cannot convert VeskInt 1 to VeskString / ^A = 1");
}

TEST(Context, EveryMergeResetsTheStateMark) {
    const Assignment resolved = resolvedAssignment("A", str("a"));
    for (const Assignment& next :
         {set("A", str("b")), plus("A", str("b")), maybe("A", str("b")), bare("A")}) {
        const auto context = contextOf({});
        context->addAssignment(deepCopy(resolved), ModifierMode::Keep);
        EXPECT_EQ(context->find("a")->state, ResolveState::Resolved);
        context->addAssignment(next, ModifierMode::Keep);
        EXPECT_EQ(context->find("A")->state, ResolveState::Unresolved) << next.toDisplayString();
    }
}

TEST(Context, KeepsWhatAnOutputAppendAddsApart) {
    const std::pair<Assignments, std::string> cases[] = {
        {{set("A", str("a")), plus("A", str("b"), kOut)}, "VeskString \"b\""},
        {{set("A", str("a")), plus("A", str("b"), kOut), plus("A", str("c"), kOut)},
         "VeskString \"b c\""},
        {{set("A", str("a")), plus("A", str("b"), kOut), plus("A", str("own"))},
         "VeskString \"b\""},
        {{plus("A", list({num(1)}), kOut), plus("A", num(2), kOut)}, "VeskList [ 1, 2 ]"},
        {{plus("A", id("x"), kOut), plus("A", str("c"), kOut), set("x", str("v"))},
         "VeskString \"v c\""},
        {{set("A", str("a"), kOut), plus("A", str("b"), kOut)}, "nothing"},
        {{plus("A", str("b"), kOut), set("A", str("c"))}, "nothing"},
        {{plus("A", str("b"), kOut), bare("A")}, "nothing"},
        {{set("A", str("a")), plus("A", str("b"))}, "nothing"},
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
    EXPECT_EQ(at({NameKey{"NAME"}}), "Name = 1");
    EXPECT_EQ(at({lib, NameKey{"flags"}}), "FLAGS = \"x\"");
    EXPECT_EQ(at({lib, NameKey{"deep"}, NameKey{"y"}}), "y = 2");
    EXPECT_EQ(at({items, IndexKey{1}, NameKey{"z"}}), "z = 3");
    EXPECT_EQ(at({NameKey{"other"}}), "NotFoundException: Assignment 'other' not found.");
    EXPECT_EQ(at({NameKey{"nam"}}),
              "NotFoundException: Assignment 'nam' not found. (did you mean 'Name'?)");
    EXPECT_EQ(at({NameKey{"other"}, NameKey{"x"}}).find("out_of_range: invalid map<K, T> key"), 0U);
    EXPECT_EQ(at({lib, NameKey{"none"}}), "NotFoundException: Assignment 'none' not found.");
    EXPECT_EQ(at({items, IndexKey{0}, NameKey{"z"}}),
              "NotAContext: Identifier part must be context.");
    EXPECT_EQ(at({NameKey{"Name"}, NameKey{"x"}}), "NotAContext: Identifier part must be context.");
    EXPECT_EQ(at({NameKey{"Name"}, IndexKey{0}, NameKey{"x"}}),
              "NotAContext: Identifier part must be context.");
    EXPECT_EQ(at({lib, IndexKey{0}}), "IndexException: Variable {...} cannot be indexed with [0]");
    EXPECT_EQ(at({}),
              "InternalError: Internal: types/vesk_context_types(380) struct Vesk::Assignment "
              "&__cdecl Vesk::Context::getAssignment(const class std::vector<Vesk::Key> &)");
}

TEST(Context, AssignmentTexts) {
    EXPECT_EQ(set("A", str("a")).toDisplayString(), "A = \"a\"");
    EXPECT_EQ(plus("A", num(1)).toDisplayString(), "A += 1");
    EXPECT_EQ(maybe("A", list({})).toDisplayString(), "A ?= []");
    EXPECT_EQ(bare("A").toDisplayString(), "A");
    EXPECT_EQ(make("A", AssignOperator::None, num(1)).toDisplayString(), "A : 1");
    EXPECT_EQ(make("A", static_cast<AssignOperator>(9), num(1)).toDisplayString(), "A1");
    EXPECT_EQ(set("A", nullptr).toDisplayString(), "A = ");
}

TEST(Context, PrintsADump) {
    const auto printed = [](const Context& context, int level) {
        ConsoleCapture capture(5);
        context.print(level);
        return capture.text();
    };
    const auto context =
        contextOf({set("b", num(2), kOut), set("A", block({set("x", str("y"))})), bare("C")});
    EXPECT_EQ(printed(*context, 5), "{\nA = {\nx = \"y\"\n}\nb = 2\nC\n}\n\n");
    EXPECT_EQ(printed(*context, 4), "");
    EXPECT_EQ(printed(*contextOf({}), 5), "{\n}\n\n");
}

TEST(Context, TemplatesStayAsTheyAreWhateverIsMadeOfThem) {
    ContextTemplate inner;
    inner.assignments = {plus("A", str("c"))};
    ContextTemplate body;
    body.assignments = {set("A", list({str("${B}"), list({str("z")})})), set("B", str("b")),
                        set("C", block({set("x", str("${B}"))})), plus("D", id("B"), kOut),
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
    body.assignments.push_back(plus("B", ascii()));
    body.assignments.back().line = 7;
    EXPECT_EQ(outcomeOf([&] { body.instantiate(); }),
              "BadConversion: Cannot convert VeskCharSet ascii to VeskString\n"
              "  in variable 'B', line 7");
}

TEST(Context, DeepCopiesAndMergesShareNothing) {
    const auto original =
        contextOf({set("A", list({str("a")})), set("C", block({set("x", num(1))})),
                   set("I", id("A")), plus("I", str("late"))});
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

TEST(Context, ErasesAndLists) {
    const auto context = contextOf({set("b", num(1)), bare("A")});
    EXPECT_EQ(context->names(), (std::vector<std::string>{"A", "b"}));
    EXPECT_EQ(context->textOf("B"), "1");
    EXPECT_EQ(context->textOf("a"), std::nullopt);
    EXPECT_EQ(context->textOf("c"), std::nullopt);
    EXPECT_TRUE(context->erase("B"));
    EXPECT_FALSE(context->erase("B"));
    EXPECT_EQ(sourceOf(*context), "A");
}

}  // namespace
}  // namespace Vesk
