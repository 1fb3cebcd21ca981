#include "build/cache/cache_record.h"

#include <gtest/gtest.h>

#include "types/context.h"
#include "types/context_value.h"
#include "types/list_value.h"
#include "types/simple_values.h"
#include "types/string_values.h"

namespace Vesk::test {
namespace {

ValuePtr str(const char* text) {
    return std::make_shared<VeskString>(text);
}
ValuePtr raw(const char* text) {
    return std::make_shared<VeskRawString>(text);
}
ValuePtr num(int value) {
    return std::make_shared<VeskInt>(value);
}
ValuePtr list(std::vector<ValuePtr> items) {
    return std::make_shared<VeskList>(std::move(items));
}
ValuePtr path(const char* text, const char* base) {
    return std::make_shared<VeskPathString>(text, base);
}
ValuePtr nested(const char* name, ValuePtr value) {
    auto context = std::make_shared<Context>();
    context->addAssignment(resolvedAssignment(name, std::move(value)), ModifierMode::Copy);
    return std::make_shared<VeskContext>(std::move(context));
}

TEST(CacheRecord, ValuesAreTheSameWhenKindAndContentAre) {
    const std::vector<std::pair<ValuePtr, ValuePtr>> same = {
        {nullptr, nullptr},
        {str("a"), str("a")},
        {num(1), num(1)},
        {path("a", "/d"), path("a", "/d")},
        {list({str("a"), nullptr}), list({str("a"), nullptr})},
        {nested("x", num(1)), nested("X", num(1))},
    };
    for (const auto& [a, b] : same) {
        EXPECT_TRUE(sameValue(a, b)) << (a ? a->toDisplayString() : "empty");
    }
    const std::vector<std::pair<ValuePtr, ValuePtr>> different = {
        {str("a"), nullptr},
        {str("a"), str("A")},
        {str("a"), raw("a")},
        {str("1"), num(1)},
        {str("a"), str("\"a\"")},
        {path("a", "/d"), path("a", "/e")},
        {list({str("a\", \"b")}), list({str("a"), str("b")})},
        {list({str("a")}), list({raw("a")})},
        {nested("x", num(1)), nested("x", num(2))},
        {nested("x", num(1)), nested("y", num(1))},
    };
    for (const auto& [a, b] : different) {
        EXPECT_FALSE(sameValue(a, b)) << a->toDisplayString();
        EXPECT_FALSE(sameValue(b, a)) << a->toDisplayString();
    }
}

TEST(CacheRecord, AnythingThatDiffersFromTheRequestShows) {
    const Assignment base = resolvedAssignment("a", str("1"));
    Assignment otherOperator = base;
    otherOperator.op = AssignOperator::Append;
    const Assignment otherModifier = resolvedAssignment("a", str("1"), AssignModifier::Output);
    const auto requestOf = [](const Assignment& input, std::optional<Assignment> intermediate,
                              const Assignment& environment) {
        return CacheRequest{{{{{input, std::move(intermediate)}}, {}}}, {environment}, {}};
    };
    const CacheRequest request = requestOf(base, base, base);
    CacheRecord record;
    record.recipes = request.recipes;
    record.recipes[0].outputs = {resolvedAssignment("made", str("x"))};
    record.environment = request.environment;

    EXPECT_TRUE(sameRequest(record, request));
    EXPECT_TRUE(sameRequest(record, requestOf(base, base, resolvedAssignment("A", str("1")))));
    for (const Assignment& other : {otherOperator, otherModifier}) {
        EXPECT_FALSE(sameRequest(record, requestOf(other, base, base)));
        EXPECT_FALSE(sameRequest(record, requestOf(base, other, base)));
        EXPECT_FALSE(sameRequest(record, requestOf(base, base, other)));
    }
    EXPECT_FALSE(sameRequest(record, requestOf(base, std::nullopt, base)));
    EXPECT_FALSE(sameRequest(record, CacheRequest{{}, request.environment, {}}));
    EXPECT_FALSE(sameRequest(record, CacheRequest{request.recipes, {}, {}}));
}

}  // namespace
}  // namespace Vesk::test
