// Appends that have to wait until a reference can be resolved.

#include <gtest/gtest.h>
#include <tuple>

#include "platform/files.h"
#include "types/context/context.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

/// What a lower layer holds, with the assignments of an upper one merged onto it.
std::shared_ptr<Context> layered(const Assignments& under, const Assignments& over) {
    const auto context = contextOf(under);
    const auto upper = contextOf(over);
    for (const auto& [name, assignment] : upper->assignments()) {
        context->mergeAssignment(deepCopy(assignment));
    }
    return context;
}

TEST(HeldAppends, AreMadeWhereLayersMeet) {
    const auto here = std::filesystem::temp_directory_path();
    const auto file = [&here](const char* name) { return platform::pathToUtf8(here / name); };
    const Assignments names{set("BASE", str("b")), set("NAMES", list({str("n"), str("m")})),
                            set("Y", id("X"))};
    const std::tuple<Assignment, Assignments, std::string> cases[] = {
        {set("X", id("BASE")), {plus("X", str("1")), plus("X", str("2"))}, "\"b 1 2\""},
        {set("X", str("s")), {plus("X", id("BASE"))}, "\"s b\""},
        {set("X", list({})), {plus("X", id("NAMES"))}, "[\"n\", \"m\"]"},
        {set("X", str("s")), {plus("X", list({id("NAMES"), str("t")}))}, "\"s n m t\""},
        {set("X", str("s")), {plus("X", list({str("-#{NAMES}")}))}, "\"s -n -m\""},
        {set("X", id("BASE")), {plus("X", str("1")), set("X", str("new"))}, "\"new\""},
        {set("X", id("BASE")), {bare("X")}, ""},
        {set("X", str("s")), {plus("X", path("f", here))}, "\"s " + file("f") + "\""},
        {set("X", id("BASE")), {maybe("X", str("q")), plus("X", str("1"))}, "\"b 1\""},
        {set("X", list({str("s")})),
         {plus("X", str("1")), plus("X", str("2"))},
         "[\"s\", \"1\", \"2\"]"},
    };
    for (const auto& [under, over, expected] : cases) {
        Assignments lower = names;
        lower.push_back(under);
        const auto context = layered(lower, over);
        EXPECT_EQ(outcome([&] {
                      context->resolveVariables();
                      const Assignment* x = context->find("X");
                      return x->value ? toSourceString(*x->value) : std::string{};
                  }),
                  expected);
    }
}

TEST(HeldAppends, PathsBecomeAListOfPaths) {
    const auto here = std::filesystem::temp_directory_path();
    const auto file = [&here](const char* name) {
        return "P\"(" + platform::pathToUtf8(here / name) + ")\"";
    };
    const std::pair<ValuePtr, std::string> cases[] = {
        {path("b c", here), "[" + file("a") + ", " + file("b c") + "]"},
        {str("b c"), "[" + file("a") + ", " + file("b") + ", " + file("c") + "]"},
        {list({str("b c"), num(1)}), "[" + file("a") + ", " + file("b c") + ", 1]"},
    };
    for (const auto& [added, expected] : cases) {
        const auto context = contextOf({set("X", path("a", here)), plus("X", added)});
        context->resolveVariables();
        EXPECT_EQ(toSourceString(*context->find("X")->value), expected);
    }
}

TEST(HeldAppends, DoNotReachTheVariableThatIsReferredTo) {
    const auto context =
        layered({set("LIST", list({str("a")})), set("TEXT", str("t")),
                 set("BLOCK", block({set("k", num(1))})), set("L", id("LIST")),
                 set("T", id("TEXT")), set("B", id("BLOCK"))},
                {plus("L", str("b")), plus("T", str("u")), plus("B", block({set("k", num(2))}))});
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context),
              "B = { k = 2 }; BLOCK = { k = 1 }; L = [\"a\", \"b\"]; LIST = [\"a\"]; "
              "T = \"t u\"; TEXT = \"t\"");
}

TEST(HeldAppends, AnAppendToAContextOfSomebodyElseMakesACopyFirst) {
    const auto outputs = contextOf({set("k", num(1)), set("opts", block({set("m", num(1))}))});
    outputs->resolveVariables();
    const auto context =
        layered({set("A", id("lib.opts")), set("B", id("lib"))},
                {plus("A", block({set("m", num(2))})), plus("B", block({set("k", num(2))}))});
    context->addAssignment(resolvedAssignment("lib", VeskContext::referringTo(outputs)),
                           ModifierMode::Keep);
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context),
              "A = { m = 2 }; B = { k = 2 opts = { m = 1 } }; lib = { k = 1 opts = { m = 1 } }");
    EXPECT_EQ(sourceOf(*outputs), "k = 1; opts = { m = 1 }");
}

TEST(HeldAppends, ArePlacedOnceTheyCanBe) {
    const auto context = layered(
        {set("X", id("lib.FLAGS")), set("Y", str("y")), set("SELF", str("s")), set("W", str("w"))},
        {plus("X", str("1")), plus("Y", id("SELF")), plus("W", id("lib.FLAGS"))});
    context->mergeAssignment(plus("W", str("2")));
    context->placeHeldAppends();
    EXPECT_TRUE(context->hasHeldAppends("X")) << "waits for the dependency";
    EXPECT_FALSE(context->hasHeldAppends("Y"));
    EXPECT_EQ(context->textOf("Y"), "y s");
    EXPECT_EQ(context->textOf("W"), "w") << "in order, behind the one that waits";
    context->mergeAssignment(plus("X", str("2")));

    const auto next = contextOf({set("X", str("under"))});
    next->mergeContext(*context, ModifierMode::Keep);
    next->addAssignment(set("lib", block({set("FLAGS", str("f"))})), ModifierMode::Keep);
    next->placeHeldAppends();
    EXPECT_FALSE(next->hasHeldAppends("X"));
    EXPECT_EQ(next->textOf("X"), "f 1 2");
    EXPECT_EQ(next->textOf("W"), "w f 2");
    EXPECT_TRUE(context->hasHeldAppends("X")) << "merging copies";
}

}  // namespace
}  // namespace Vesk
