#include <gtest/gtest.h>

#include "types/context/context_template.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

using Op = ConditionOperator;

Condition when(ValuePtr left, Op op, ValuePtr right, Assignments body,
               std::vector<Condition> nested = {}) {
    auto block = std::make_shared<ContextTemplate>();
    block->assignments = std::move(body);
    block->conditions = std::move(nested);
    return {std::move(left), std::move(right), op, std::move(block), {}};
}

/// The variables after the conditions, or the error.
std::string evaluated(const Assignments& assignments, const std::vector<Condition>& conditions,
                      Context::Unresolvable mode = Context::Unresolvable::fails) {
    const auto context = contextOf(assignments);
    for (const Condition& condition : conditions) {
        context->addCondition(deepCopy(condition));
    }
    return outcome([&] {
        context->evaluateConditions(mode);
        EXPECT_TRUE(context->conditions().empty());
        return sourceOf(*context);
    });
}

TEST(Conditions, CompareResolvedOperands) {
    const Assignments variables{set("n", num(5)), set("s", str("${n}")), set("e", bare("x").value),
                                set("l", list({id("n")}))};
    const std::tuple<ValuePtr, Op, ValuePtr, bool> cases[] = {
        {id("n"), Op::Equal, num(5), true},         {id("n"), Op::NotEqual, num(6), true},
        {id("n"), Op::Less, num(6), true},          {id("n"), Op::Less, num(5), false},
        {id("n"), Op::Greater, num(4), true},       {str("${s}${s}"), Op::Equal, str("55"), true},
        {id("l"), Op::Equal, list({num(5)}), true}, {str("zz"), Op::Less, str("aaa"), true},
        {raw("${n}"), Op::Equal, str("5"), false},  {id("e"), Op::Exists, nullptr, true},
        {id("l[0]"), Op::Exists, nullptr, true},    {id("l[1]"), Op::Exists, nullptr, false},
        {id("none"), Op::Exists, nullptr, false},   {id("none.x"), Op::Exists, nullptr, false},
    };
    const std::string before = evaluated(variables, {});
    for (const auto& [left, op, right, holds] : cases) {
        EXPECT_EQ(evaluated(variables, {when(left, op, right, {set("y", num(1))})}),
                  holds ? before + "; y = 1" : before)
            << left->toDisplayString() << ' ' << static_cast<int>(op);
    }
}

TEST(Conditions, AnOperandThatCannotBeResolvedIsAnErrorOrMakesThemFalse) {
    const std::vector<Condition> unknown{when(id("none"), Op::Equal, num(1), {set("y", num(1))}),
                                         when(id("x"), Op::Equal, str("x"), {set("z", num(1))})};
    const std::vector<Condition> unlike{when(num(1), Op::Equal, str("x"), {set("y", num(1))})};
    const Assignments x{set("x", str("x"))};
    EXPECT_EQ(evaluated(x, unknown),
              "NotFoundException: Assignment 'none' not found.\n  text needs double quotes: "
              "\"none\"\n  in a condition");
    EXPECT_EQ(evaluated(x, unlike),
              "BadConversion: Cannot convert VeskInt 1 to VeskString\n"
              "  in a condition");
    const auto isFalse = Context::Unresolvable::isFalse;
    EXPECT_EQ(evaluated(x, unknown, isFalse), "x = \"x\"; z = 1");
    EXPECT_EQ(evaluated(x, {when(id("none.a"), Op::Less, num(1), {})}, isFalse), "x = \"x\"");
}

TEST(Conditions, SeeWhatEarlierBodiesBroughtAndRunNestedOnesLast) {
    const auto is = [](const char* name, std::int32_t number, Assignments body,
                       std::vector<Condition> nested = {}) {
        return when(id(name), Op::Equal, num(number), std::move(body), std::move(nested));
    };
    EXPECT_EQ(
        evaluated({set("a", num(1)), set("t", str("0"))},
                  {is("a", 1, {plus("t", str("1"))},
                      {is("a", 1, {plus("t", str("3"))}, {is("a", 1, {plus("t", str("4"))})})}),
                   is("a", 1, {plus("t", str("2"))}), is("a", 2, {plus("t", str("x"))})}),
        "a = 1; t = \"0 1 2 3 4\"");
}

TEST(Conditions, OfNestedContextsSeeTheEnclosingOne) {
    const auto inner = contextOf({});
    inner->addCondition(when(id("os"), Op::Equal, str("linux"), {set("FLAG", str("${os}-1"))}));
    const auto context =
        contextOf({set("os", str("linux")), set("opts", std::make_shared<VeskContext>(inner))});
    EXPECT_EQ(outcome([&] { return context->resolveIdentifier(identifierPathFrom("opts.FLAG")); }),
              "VeskString \"linux-1\"");
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context), "opts = { FLAG = \"linux-1\" }; os = \"linux\"");
}

}  // namespace
}  // namespace Vesk
