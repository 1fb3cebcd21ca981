#include "tools/matcher.h"

#include <gtest/gtest.h>

#include "tools/builder.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

TEST(Matcher, ClassifiesEachWantThatTheTargetHas) {
    const struct {
        const char* what;
        Assignment target;
        ValuePtr tool;
        MatchKind kind;
    } cases[] = {
        {"name in another case", var("v", str("12")), str("12"), MatchKind::ExactMatch},
        {"quotes do not count", var("V", str("\"12\"")), str("12"), MatchKind::ExactMatch},
        {"equal lists", var("V", list({num(1)})), list({num(1)}), MatchKind::ExactMatch},
        {"an output with the tool's value", out("V", str("12")), str("12"), MatchKind::ExactMatch},
        {"other text", var("V", str("13")), str("12"), MatchKind::PartialMatch},
        {"nothing to compare with", var("V", str("12")), nullptr, MatchKind::PartialMatch},
        {"an output without value", out("V"), str("12"), MatchKind::NoMatch},
        {"an output with another value", out("V", str("1")), str("12"), MatchKind::PartialMatch},
        {"kinds that cannot be compared", var("V", num(12)), str("12"), MatchKind::PartialMatch},
        {"an unresolved target", var("V", identifier("x")), str("12"), MatchKind::PartialMatch},
        {"an unresolved tool", var("V", str("12")), identifier("x"), MatchKind::PartialMatch},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TableMatcher tool("t", mapOf({var("V", c.tool), var("other")}), {});
        const MatchResult result = tool.match(*contextOf({c.target, var("unrelated", num(1))}));
        ASSERT_EQ(result.matches.size(), 1u);
        EXPECT_EQ(result.matches.begin()->first.str(), c.target.name.str());
        EXPECT_EQ(result.matches.begin()->second, c.kind);
    }
}

TEST(Matcher, NeedsAreSatisfiedByTargetOrDeclaration) {
    const AssignmentMap needs = mapOf({var("A"), var("B")});
    const auto note = [&](const AssignmentMap& declared, const std::vector<Assignment>& target) {
        return TableMatcher("t", {}, needs, declared).match(*contextOf(target)).note;
    };
    EXPECT_EQ(note({}, {var("a")}), MatchNote::BuildImpossible);
    EXPECT_EQ(note({}, {var("a"), var("b", num(1))}), MatchNote::BuildPossible);
    EXPECT_EQ(note(mapOf({must("b", str("x"))}), {var("a")}), MatchNote::BuildPossible);
    EXPECT_EQ(note(mapOf({must("b")}), {var("a")}), MatchNote::BuildImpossible);

    const TableMatcher tool("t", {}, mapOf({var("A")}), {}, mapOf({var("A", str("x"))}));
    EXPECT_EQ(tool.match(*contextOf({})).note, MatchNote::BuildImpossible);
}

TEST(Matcher, DeclarationsOverwriteAndExtendWants) {
    const TableMatcher tool("t", mapOf({var("A", str("1")), var("B")}), {},
                            mapOf({must("C", str("3"))}), mapOf({var("a", str("2"))}));
    const auto target = contextOf({var("A", str("2")), var("B"), var("C", str("3"))});
    const MatchResult result = tool.match(*target);
    EXPECT_EQ(result.matches.at("A"), MatchKind::ExactMatch);
    EXPECT_EQ(result.matches.at("B"), MatchKind::PartialMatch);
    EXPECT_EQ(result.matches.at("C"), MatchKind::ExactMatch);

    EXPECT_EQ(tool.comparedNames(), (std::vector<CiString>{"A", "C"}));
    EXPECT_EQ(tool.declaredSettings().find("tool_type")->second.value->toString(), "table");
}

TEST(Matcher, TheToolsOwnVerdictTakesPrecedence) {
    TableMatcher tool("t", mapOf({var("A", str("x")), var("B", str("x"))}), mapOf({var("A")}));
    tool.verdict = {{{"A", MatchKind::ExactMatch}, {"B", MatchKind::NoMatch}},
                    MatchNote::BuildImpossible};
    const MatchResult result = tool.match(*contextOf({var("A", str("y")), var("B", str("x"))}));
    EXPECT_EQ(result.note, MatchNote::BuildImpossible);
    EXPECT_EQ(result.matches.at("A"), MatchKind::ExactMatch);
    EXPECT_EQ(result.matches.at("B"), MatchKind::ExactMatch);

    // With needs unsatisfied the tool is not asked; wants are compared all the
    // same.
    const MatchResult unasked = tool.match(*contextOf({var("B", str("y"))}));
    EXPECT_EQ(unasked.matches.size(), 1u);
    EXPECT_EQ(unasked.matches.at("B"), MatchKind::PartialMatch);
}

class SubjectBuilder : public Builder {
  public:
    SubjectBuilder() : Builder(mapOf({var("A"), var("B", str("x")), var("C", str("x"))})) {}
    std::shared_ptr<Context> complete(TargetContext&, int) override { return nullptr; }
    RecipeSet createRecipes(TargetContext&) override { return {}; }
};

TEST(Builder, SubjectsMustNotBeOutputs) {
    const SubjectBuilder builder;
    const MatchResult fits =
        builder.match(*contextOf({var("A", str("1")), var("B", str("x")), var("C", str("y"))}));
    EXPECT_EQ(fits.note, MatchNote::BuildPossible);
    EXPECT_EQ(fits.matches.at("A"), MatchKind::PartialMatch);
    EXPECT_EQ(fits.matches.at("B"), MatchKind::ExactMatch);
    EXPECT_EQ(fits.matches.at("C"), MatchKind::PartialMatch);
    EXPECT_EQ(builder.match(*contextOf({out("b")})).note, MatchNote::BuildImpossible);
}

}  // namespace
}  // namespace Vesk::test
