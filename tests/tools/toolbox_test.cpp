#include "tools/toolbox.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

std::unique_ptr<TableMatcher> tool(const char* name, const std::vector<Assignment>& wants,
                                   const std::vector<Assignment>& needs = {}) {
    return std::make_unique<TableMatcher>(name, mapOf(wants), mapOf(needs));
}

std::string chosen(const Toolbox& box, const std::vector<Assignment>& target) {
    const Selection best = box.select(*contextOf(target));
    return best.matcher == nullptr ? "none"
                                   : fmt::format("{} {}", best.matcher->name(), best.score);
}

TEST(Toolbox, TakesTheHighestScoreAndTheFirstNameAmongEquals) {
    Toolbox box;
    EXPECT_EQ(chosen(box, {var("V", str("1"))}), "none");
    EXPECT_EQ(box.select(*contextOf({})).score, 0);

    box.add(tool("open", {var("V")}));
    box.add(tool("Pinned", {var("V", str("1"))}));
    box.add(tool("zeta", {var("V", str("1"))}));
    box.add(tool("Alpha", {}));
    box.add(tool("needy", {var("V", str("1")), var("W")}, {var("W")}));
    EXPECT_EQ(chosen(box, {}), "Alpha 0");
    EXPECT_EQ(chosen(box, {var("V", str("2"))}), "open 1");
    EXPECT_EQ(chosen(box, {var("V", str("1"))}), "Pinned 2");
    EXPECT_EQ(chosen(box, {out("V")}), "Alpha 0");
    EXPECT_EQ(chosen(box, {var("V", str("1")), var("W")}), "needy 3");
}

TEST(Toolbox, WeightsDecideTheScore) {
    Toolbox box;
    box.add(tool("t", {var("A", str("1")), var("B"), var("C")}));
    const auto target = contextOf({var("A", str("1")), var("B"), out("C")});
    EXPECT_EQ(box.select(*target).score, 3);
    EXPECT_EQ(box.select(*target, {100, 10, 1}).score, 111);
    EXPECT_EQ(box.select(*target).result.matches.size(), 3u);
}

TEST(Toolbox, ALaterToolOfTheSameNameReplaces) {
    Toolbox box;
    EXPECT_EQ(box.add(tool("t", {var("A", str("1"))})), 0);
    EXPECT_EQ(box.add(tool("u", {var("U", str("1")), var("OPEN")})), 0);
    EXPECT_EQ(box.add(tool("T", {var("B", str("1"))})), 1);
    EXPECT_EQ(box.size(), 2u);
    EXPECT_EQ(box.find("t")->name().str(), "T");
    EXPECT_EQ(box.find("v"), nullptr);
    EXPECT_EQ(box.comparedNames(), (std::set<CiString, CiLess>{"B", "U"}));
}

TEST(Toolbox, RefusesNull) {
    Toolbox box;
    try {
        box.add(nullptr);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Cannot add a null toolchain to a Toolbox.");
    }
}

TEST(Toolbox, DeclaredToolsWinTiesAgainstStaticOnes) {
    const TableMatcher some("some", {}, {});
    const Selection none;
    const Selection low{&some, 1, {}};
    const Selection alsoLow{&some, 1, {}};
    const Selection high{&some, 2, {}};
    EXPECT_EQ(&betterOf(low, alsoLow), &alsoLow);
    EXPECT_EQ(&betterOf(high, low), &high);
    EXPECT_EQ(&betterOf(low, high), &high);
    EXPECT_EQ(&betterOf(low, none), &low);
    EXPECT_EQ(&betterOf(none, low), &low);
    EXPECT_EQ(betterOf(none, Selection()).matcher, nullptr);
}

}  // namespace
}  // namespace Vesk::test
