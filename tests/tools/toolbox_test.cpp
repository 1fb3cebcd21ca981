#include "tools/toolbox.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(chosen(box, {}), "none");
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
    EXPECT_EQ(box.select(*contextOf({var("V", str("1")), var("W")}), {100, 10, 1}).score, 110);

    EXPECT_EQ(box.add(tool("PINNED", {var("B", str("1"))})), 1) << "of the same name: replaced";
    EXPECT_EQ(box.comparedNames(), (std::set<CiString, CiLess>{"B", "V"}));
    EXPECT_EQ(chosen(box, {var("V", str("1"))}), "zeta 2");
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
}

}  // namespace
}  // namespace Vesk::test
