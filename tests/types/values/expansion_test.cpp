#include "types/values/expansion.h"

#include <gtest/gtest.h>

#include "support/console_capture.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

std::string expanded(const std::string& text) {
    const auto context = contextOf(
        {set("a", str("1")), set("b", str("<${a}>")), set("n", num(7)),
         set("l", list({str("x"), str("y")})), set("m", list({num(1), num(2)})),
         set("refs", list({str("${a}"), str("#{m}")})), set("empty", list({})), set("w", str("l")),
         set("ping", str("${pong}")), set("pong", str("${ping}")), set("brace", raw("}"))});
    return outcome([&] {
        VeskString string(text);
        string.setResolver(context.get());
        return string.resolve();
    });
}

TEST(Expansion, Texts) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain $ { } # text", "VeskString \"plain $ { } # text\""},
        {"<${a}${a}>${n}", "VeskString \"<11>7\""},
        {"${b}", "VeskString \"<1>\""},
        {"${l}", "VeskString \"x y\""},
        {"$${a}}", "VeskString \"$1}\""},
        {"${brace}", "VeskString \"}\""},
        {"-#{l}", "VeskList [ \"-x\", \"-y\" ]"},
        {"#{l}-#{m}", "VeskList [ \"x-1\", \"x-2\", \"y-1\", \"y-2\" ]"},
        {"${a}#{l}${n}", "VeskList [ \"1x7\", \"1y7\" ]"},
        {"#{empty}", "VeskList []"},
        {"#{l}#{empty}", "VeskList []"},
        {"#{l}.c #{L}.o", "VeskList [ \"x.c x.o\", \"y.c y.o\" ]"},
        {"#{n}", "VeskList []"},
        {"#{${w}}", "VeskList [ \"x\", \"y\" ]"},
        {"#{refs}", "VeskList [ \"1\", \"1\", \"2\" ]"},
        {"#x #{l}", "VeskList [ \"#x x\", \"#x y\" ]"},
        {"#${a}", "VeskException: unresolved cross expansion reference '#1'"},
        {"#{l} #3", "VeskException: unresolved cross expansion reference '#3'"},
        {"#${n}0 #{l}", "VeskException: unresolved cross expansion reference '#70'"},
        {"${a", "VeskException: missing '}'"},
        {"#{#{l}", "VeskException: missing '}'"},
        {"${a${b}}", "VeskException: nested ${} is not allowed"},
        {"#{1}", "ParseError: Invalid identifier start\n  in '1' at byte 1"},
        {"#{none}", "NotFoundException: Assignment 'none' not found."},
        {"${ping}",
         "CircularReference: Circular reference to variable 'ping': ping <- pong <- ping"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(expanded(text), expected) << text;
    }
}

TEST(Expansion, AnUnknownVariableIsEmptyAndWarnedOfOncePerReference) {
    ConsoleCapture capture;
    EXPECT_EQ(expanded("<${none}${none.x[0]}>${b}"), "VeskString \"<><1>\"");
    EXPECT_EQ(capture.text(),
              "Variable 'none' does not exist.\nVariable 'none.x[0]' does not exist.\n");
}

/// v0 = seed, and v<i> made of v<i-1>, up to v<levels>.
template <class Make>
std::shared_ptr<Context> chain(int levels, const ValuePtr& seed, Make&& make) {
    Assignments assignments{set("v0", seed)};
    for (int i = 1; i <= levels; ++i) {
        const Assignments next = make("v" + std::to_string(i), "v" + std::to_string(i - 1));
        assignments.insert(assignments.end(), next.begin(), next.end());
    }
    return contextOf(assignments);
}

/// How asking for the last of such a chain ends.
std::string lastOf(const std::shared_ptr<Context>& context, int levels) {
    const IdentifierPath last = IdentifierPath::ofName("v" + std::to_string(levels));
    return outcome([&] { return context->resolveIdentifier(last); });
}

TEST(Expansion, GrowthWithoutEndIsAnErrorAtALimit) {
    const auto doubledText = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), str("${" + before + "}${" + before + "}"))};
    };
    const auto doubledList = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), list({id(before), id(before)}))};
    };
    const auto crossed = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), str("#{" + before + "}#{" + before + "}"))};
    };
    const auto copied = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), id(before))};
    };
    const auto nestedLists = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), list({list({id(before)}), list({id(before)})}))};
    };
    const auto contexts = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), block({set("x", id(before)), set("y", id(before))}))};
    };
    const std::string tooLarge =
        "VeskException: A value grows beyond 64 MiB.\n"
        "  does it refer to itself through other variables?";
    EXPECT_EQ(lastOf(chain(40, str("x"), doubledText), 40), tooLarge);
    EXPECT_EQ(lastOf(chain(40, list({str("x"), str("y")}), crossed), 40), tooLarge);
    EXPECT_EQ(lastOf(chain(40, str("x"), doubledList), 40), tooLarge);
    EXPECT_EQ(lastOf(chain(40, str("x"), nestedLists), 40), tooLarge);
    EXPECT_EQ(lastOf(chain(40, str("x"), contexts), 40).find(tooLarge), 0U);
    const auto appended = chain(40, str("x"), copied);
    for (int level = 1; level <= 40; ++level) {
        appended->mergeAssignment(
            plus(("v" + std::to_string(level)).c_str(), id("v" + std::to_string(level - 1))));
    }
    EXPECT_EQ(outcomeOf([&] { appended->resolveVariables(); }).find(tooLarge), 0U);
}

TEST(Expansion, ProductsWithNothingAreNothingHoweverLargeTheRest) {
    const auto large = list(std::vector<ValuePtr>(10000, str("x")));
    const auto context = contextOf({set("large", large), set("none", list({})),
                                    set("all", str("#{large}#{large[0]}#{LARGE}#{none}"))});
    const IdentifierPath all = IdentifierPath::ofName("all");
    EXPECT_EQ(outcome([&] { return context->resolveIdentifier(all); }), "VeskList []");
}

TEST(Expansion, LongChainsEndAtALimitNotInACrash) {
    const auto byString = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), str("${" + before + "}"))};
    };
    const auto byName = [](const std::string& name, const std::string& before) {
        return Assignments{set(name.c_str(), id(before))};
    };
    EXPECT_EQ(lastOf(chain(499, str("x"), byName), 499), "VeskString \"x\"");
    const std::string tooDeep =
        "VeskException: Variable 'v100' is reached through more than 500 references to other "
        "variables.";
    EXPECT_EQ(lastOf(chain(600, str("x"), byString), 600), tooDeep);
    EXPECT_EQ(lastOf(chain(600, str("x"), byName), 600), tooDeep);
    const auto forwards = chain(600, str("x"), byName);
    EXPECT_EQ(outcomeOf([&] { forwards->resolveVariables(); }), "done") << "each is resolved once";
}

}  // namespace
}  // namespace Vesk
