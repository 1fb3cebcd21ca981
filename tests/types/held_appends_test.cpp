// Appends that have to wait until a reference can be resolved.

#include <gtest/gtest.h>

#include "platform/files.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

TEST(HeldAppends, AreMadeInTheOrderInWhichTheyAreWritten) {
    const auto here = std::filesystem::temp_directory_path();
    const auto file = [&here](const char* name) { return platform::pathToUtf8(here / name); };
    const Assignment base = set("BASE", str("b"));
    const Assignment other = set("OTHER", str("o"));
    const Assignment names = set("NAMES", list({str("n"), str("m")}));
    const std::pair<Assignments, std::string> cases[] = {
        {{set("X", id("BASE")), plus("X", str("1")), plus("X", id("OTHER")), plus("X", str("2")),
          base, other},
         "\"b 1 o 2\""},
        {{base, other, set("X", str("s")), plus("X", id("BASE")), plus("X", str("1"))},
         "\"s b 1\""},
        {{names, set("X", list({})), plus("X", id("NAMES")), plus("X", str("1"))},
         "[\"n\", \"m\", \"1\"]"},
        {{names, set("X", str("s")), plus("X", list({id("NAMES"), str("t")}))}, "\"s n m t\""},
        {{names, set("X", str("s")), plus("X", list({str("-#{NAMES}")}))}, "\"s -n -m\""},
        {{base, set("X", id("BASE")), plus("X", str("1")), set("X", str("new"))}, "\"new\""},
        {{base, set("X", id("BASE")), plus("X", str("1")), bare("X")}, ""},
        {{base, set("Y", id("X")), set("X", id("BASE")), plus("X", str("1"))}, "\"b 1\""},
        {{set("X", str("s")), plus("X", path("f", here))}, "\"s " + file("f") + "\""},
    };
    for (const auto& [assignments, expected] : cases) {
        const auto context = contextOf(assignments);
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
        contextOf({set("LIST", list({str("a")})), set("TEXT", str("t")),
                   set("BLOCK", block({set("k", num(1))})), set("L", id("LIST")),
                   set("T", id("TEXT")), set("B", id("BLOCK")), plus("L", str("b")),
                   plus("T", str("u")), plus("B", block({set("k", num(2))}))});
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context),
              "B = { k = 2 }; BLOCK = { k = 1 }; L = [\"a\", \"b\"]; LIST = [\"a\"]; "
              "T = \"t u\"; TEXT = \"t\"");
}

TEST(HeldAppends, AnAppendToAContextOfSomebodyElseMakesACopyFirst) {
    const auto outputs = contextOf({set("k", num(1)), set("opts", block({set("m", num(1))}))});
    outputs->resolveVariables();
    const auto context = contextOf({set("A", id("lib.opts")), plus("A", block({set("m", num(2))})),
                                    set("B", id("lib")), plus("B", block({set("k", num(2))}))});
    context->addAssignment(resolvedAssignment("lib", VeskContext::referringTo(outputs)),
                           ModifierMode::Keep);
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context),
              "A = { m = 2 }; B = { k = 2 opts = { m = 1 } }; lib = { k = 1 opts = { m = 1 } }");
    EXPECT_EQ(sourceOf(*outputs), "k = 1; opts = { m = 1 }");
}

TEST(HeldAppends, ArePlacedOnceTheyCanBe) {
    const auto context =
        contextOf({set("X", id("lib.FLAGS")), plus("X", str("1")), set("Y", str("y")),
                   plus("Y", id("SELF")), set("SELF", str("s")), set("W", str("w")),
                   plus("W", id("lib.FLAGS")), plus("W", str("2"))});
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
