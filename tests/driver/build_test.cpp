// Visits of targets: their order, their arguments, and how builds end.

#include "driver/driver_fixture.h"

namespace Vesk::test {
namespace {

using Texts = std::vector<std::string>;

TEST_F(DriverTest, DependenciesComeFirstAndOnce) {
    const BuildOutcome outcome = build(
        "t: a b { NO_TOOL }\n"
        "a: c { NO_TOOL }\n"
        "b: c { NO_TOOL }\n"
        "c: { NO_TOOL }\n",
        "t");
    EXPECT_EQ(outcome.messages,
              "[main::t] Visiting target\n"
              "[main::a] Visiting target\n"
              "[main::c] Visiting target\n"
              "[main::c] Build done\n"
              "[main::a] Build done\n"
              "[main::b] Visiting target\n"
              "[main::b] Build done\n"
              "[main::t] Build done\n");
}

TEST_F(DriverTest, AChainMayHaveAnyLength) {
    constexpr int kLength = 20'000;
    std::string text = "t0: { NO_TOOL }\n";
    for (int i = 1; i < kLength; ++i) {
        text += "t" + std::to_string(i) + ": t" + std::to_string(i - 1) + " { NO_TOOL }\n";
    }
    const BuildOutcome outcome = build(text, "t" + std::to_string(kLength - 1), 6);
    EXPECT_EQ(outcome.error, "");
}

TEST_F(DriverTest, NothingOfACycleIsBuilt) {
    const BuildOutcome outcome = build(
        "t: a { NO_TOOL }\n"
        "a: free b { cmdline = \"exit 0\" }\n"
        "b: a { cmdline = \"exit 0\" }\n"
        "free: { NO_TOOL }\n",
        "t");
    EXPECT_EQ(outcome.error,
              "Loop detected! Causing term: 'main::a'\n"
              "  loop goes as follows: main::a <- main::b <- main::a\n"
              "  needed by target main::b (DIR/vesk.txt:4)");
    EXPECT_EQ(outcome.linesWith("Build done"), Texts{"[main::free] Build done"});
    EXPECT_EQ(outcome.linesWith("build job"), Texts{});
}

TEST_F(DriverTest, OtherArgumentsAreAnotherVisit) {
    const BuildOutcome outcome = build(
        "t: a(x) => first a(y) => second a(x) => third { x = \"1\" y = \"2\" "
        "^seen = \"${first.V} ${second.V} ${third.V}\" cmdline = \"exit 0\" }\n"
        "a(p): { ^V = \"<${p}>\" cmdline = \"exit 0\" }\n",
        "t");
    EXPECT_EQ(outcome.outputs ? outcome.outputs->textOf("seen") : outcome.error, "<1> <2> <1>");
    EXPECT_EQ(outcome.linesWith("main::a] Visiting").size(), 2u);
}

TEST_F(DriverTest, TheSourceMarkerPassesTheContextThatHoldsTheList) {
    const BuildOutcome outcome = build(
        "t: @lib.plugins(.) => p @own(.) => q { own = \"show\" word = \"mine\" "
        "lib = { plugins = \"show\" word = \"libs\" } "
        "^seen = \"${p.V} ${q.V}\" cmdline = \"exit 0\" }\n"
        "show(from): { ^V = from.word cmdline = \"exit 0\" }\n",
        "t");
    EXPECT_EQ(outcome.outputs ? outcome.outputs->textOf("seen") : outcome.error, "libs mine");
}

struct ErrorCase {
    std::string text;
    std::string error;
};

class BuildErrors : public DriverTest, public testing::WithParamInterface<ErrorCase> {};

TEST_P(BuildErrors, SayWhatAndWhere) {
    EXPECT_EQ(build(GetParam().text, "t").error, GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Table, BuildErrors,
    testing::Values(ErrorCase{"t: lab { NO_TOOL }\nlib: { NO_TOOL }",
                              "Target 'main::lab' not found. (did you mean 'lib'?)\n"
                              "  needed by target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: a { NO_TOOL }\na(p, q): { NO_TOOL }",
                              "Target 'main::a' takes 2 parameters (p, q), but gets 0 arguments.\n"
                              "  in target main::a (DIR/vesk.txt:3)\n"
                              "  needed by target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: a(x) { NO_TOOL }\na(p): { NO_TOOL }",
                              "Assignment 'x' not found.\n"
                              "  passed to 'a' in target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: {\nflags = 1\nx = flgs\nNO_TOOL }",
                              "Assignment 'flgs' not found. (did you mean 'flags'?)\n"
                              "  in variable 'x', line 4\n"
                              "  in target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: {\nif nope = 1 { }\nNO_TOOL }",
                              "Assignment 'nope' not found.\n"
                              "  in the condition in line 3\n"
                              "  in target main::t (DIR/vesk.txt:2)"}));

TEST_F(DriverTest, WithoutAToolTheTargetIsNamed) {
    const BuildOutcome outcome = build("t: { x = 1 }", "t");
    EXPECT_EQ(outcome.error.substr(0, outcome.error.find('\n')), "No tool to build main::t");
}

TEST_F(DriverTest, AFailureStopsTheBuildAndGivesItsClaimBack) {
    const std::string text =
        "t: bad other { NO_TOOL }\n"
        "bad: { cmdline = \"exit 3\" }\n"
        "other: { NO_TOOL }\n";
    for (int run = 0; run < 2; ++run) {  // the second run would wait for a lost claim for ever
        const BuildOutcome outcome = build(text, "t");
        EXPECT_EQ(outcome.error, "Build failed.");
        EXPECT_EQ(outcome.linesWith("other"), Texts{});
        EXPECT_EQ(outcome.linesWith("ended with"),
                  Texts{"[main::bad] Command ended with status 3: exit 3"});
        EXPECT_EQ(outcome.linesWith("Exiting"),
                  Texts{"[main::bad] Build of bad failed. Exiting.."});
    }
}

TEST_F(DriverTest, KeepingGoingBuildsWhatDoesNotNeedTheFailedTarget) {
    options_.keepGoing = true;
    const BuildOutcome outcome = build(
        "t: user other lost { NO_TOOL }\n"
        "user: bad { NO_TOOL }\n"
        "bad: { cmdline = \"exit 3\" }\n"
        "lost: nowhere { NO_TOOL }\n"
        "other: { NO_TOOL }\n",
        "t");
    EXPECT_EQ(outcome.error, "Build failed.");
    EXPECT_EQ(outcome.linesWith("Build done"), Texts{"[main::other] Build done"});
    EXPECT_EQ(outcome.linesWith("'main::nowhere' not found").size(), 1u);
}

TEST_F(DriverTest, ADryRunShowsCommandsAndWritesNothing) {
    options_.dryRun = true;
    const BuildOutcome outcome = build(
        "t: gen { cmdline = [\"exit 3\", \"exit ${gen.TEXT}\"] }\n"
        "gen: { WRITE_FILE FILENAME = P\"(made.txt)\" TEXT = \"4\" }\n",
        "t");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.linesWith("exit"), (Texts{"[main::t] exit 3", "[main::t] exit 4"}));
    EXPECT_FALSE(std::filesystem::exists(directory_ / "made.txt"));
    EXPECT_FALSE(std::filesystem::exists(directory_ / "out"));
}

}  // namespace
}  // namespace Vesk::test
