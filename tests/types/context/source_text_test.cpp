// Values and assignments written as the language reads them.

#include <gtest/gtest.h>

#include "platform/files.h"
#include "types/context/assignment.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

TEST(SourceText, OfValues) {
    const auto base = std::filesystem::temp_directory_path();
    const auto unwritable = [](const ValuePtr& value) {
        return "VeskException: The value " + value->toDisplayString() +
               " cannot be written in a file: no literal can hold its text.";
    };
    const auto conditional = contextOf({});
    conditional->addCondition(
        {id("a"), nullptr, ConditionOperator::Exists, std::make_shared<ContextTemplate>(), 1});
    const ValuePtr withCondition = std::make_shared<VeskContext>(conditional);
    const ValuePtr rawEnd = raw("a)\"${b}");
    const ValuePtr pathEnd = path("a)\"b");
    const std::pair<ValuePtr, std::string> cases[] = {
        {str("a\nb \\ ${c}"), "\"a\nb \\ ${c}\""},
        {str("say \"x\""), "\"say ${ascii[34]}x${ascii[34]}\""},
        {raw("say \"x\" (${y})"), "R\"(say \"x\" (${y}))\""},
        {raw("a)\"b"), "\"a)${ascii[34]}b\""},
        {rawEnd, unwritable(rawEnd)},
        {path("C:/Program Files (x86)"), "P\"(C:/Program Files (x86))\""},
        {path("a b", base), "P\"(" + platform::pathToUtf8(base / "a b") + ")\""},
        {path("C:/x", base), "P\"(C:/x)\""},
        {path("${ROOT}/bin", base), "P\"(${ROOT}/bin)\""},
        {pathEnd, unwritable(pathEnd)},
        {id("a.b[0]['x y'][1..2]"), "a.b[0]['x y'][1..2]"},
        {list({num(1), str("a"), list({raw("b")})}), "[1, \"a\", [R\"(b)\"]]"},
        {block({set("b", num(1)), plus("A", str("x"), AssignModifier::Output)}),
         "{ ^A += \"x\" b = 1 }"},
        {withCondition, unwritable(withCondition)},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(outcome([&] { return toSourceString(*value); }), expected);
    }
}

TEST(SourceText, AQuoteThatIsReadBackResolvesToItself) {
    const auto context = contextOf({set("a", str("say ${ascii[34]}x${ascii[34]}"))});
    context->resolveVariables();
    EXPECT_EQ(context->textOf("a"), "say \"x\"");
    EXPECT_EQ(context->find("a")->toSourceString(), "a = \"say ${ascii[34]}x${ascii[34]}\"");
}

TEST(SourceText, ReadyMadeAssignmentsAreNotExpanded) {
    const auto context = contextOf({});
    context->addAssignment(textAssignment("a", "${b} #1"), ModifierMode::Keep);
    context->addAssignment(resolvedAssignment("c", str("#1"), AssignModifier::Output),
                           ModifierMode::Keep);
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context), "a = R\"(${b} #1)\"; ^c = \"#1\"");
}

}  // namespace
}  // namespace Vesk
