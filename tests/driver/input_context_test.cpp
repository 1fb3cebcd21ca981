// What a target's context is made of: the layers, and the outputs of dependencies.

#include "driver/driver_fixture.h"

namespace Vesk::test {
namespace {

using Texts = std::vector<std::string>;

/// The text of a variable that the target `t` hands on.
std::string outputOf(const BuildOutcome& outcome, std::string_view name) {
    if (!outcome.outputs) {
        return "error: " + outcome.error;
    }
    return outcome.outputs->textOf(name).value_or("(none)");
}

struct LayerCase {
    std::vector<std::string> underneath;
    std::string own;
    std::string expected;
};

class Layers : public DriverTest, public testing::WithParamInterface<LayerCase> {};

TEST_P(Layers, MergeInTheirOrder) {
    for (const std::string& assignment : GetParam().underneath) {
        underAll(assignment);
    }
    const BuildOutcome outcome =
        build("t: { " + GetParam().own + " ^seen = \"${X}\" cmdline = \"exit 0\" }", "t");
    EXPECT_EQ(outputOf(outcome, "seen"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Layers,
    testing::Values(
        LayerCase{{"X = \"a\""}, "", "a"}, LayerCase{{"X = \"a\""}, "X += \"b\"", "a b"},
        LayerCase{{"X = \"a\""}, "X = \"b\"", "b"}, LayerCase{{"X = \"a\""}, "X ?= \"b\"", "a"},
        LayerCase{{"X = \"a\""}, "X ?= \"b\" X += \"c\"", "a c"},
        LayerCase{{"X += \"z\""}, "X = \"b\"", "b z"}, LayerCase{{"X += \"z\""}, "", "z"},
        LayerCase{{"X += \"z\""}, "X ?= \"b\"", "b z"},
        LayerCase{{"X = \"a\"", "X += \"z\""}, "X = \"b\"", "b"},
        LayerCase{{"Y = \"y\"", "X += Y"}, "X = \"b\"", "b y"},
        LayerCase{{"Y = \"y\"", "X = Y"}, "X += \"b\"", "y b"},
        LayerCase{{"X = \"a\""}, "if X = \"a\" { X += \"c\" } X += \"b\"", "a b"},
        LayerCase{{"X = \"a\""}, "if X = \"a b\" { X += \"c\" } X += \"b\"", "a b c"},
        LayerCase{{}, "X = [\"a\", \"b\"] X += \"c\"", "a b c"}));

TEST_F(DriverTest, WhatRefersToOutputsWaitsAndThenLiesUnderTheTargetsOwn) {
    underAll("FLAGS = lib.FLAGS");
    const BuildOutcome outcome = build(
        "lib: { ^FLAGS = \"-Ilib\" cmdline = \"exit 0\" }\n"
        "t: lib { FLAGS += \"-own\" ^seen = \"${FLAGS}\" cmdline = \"exit 0\" }",
        "t", 1);
    EXPECT_EQ(outputOf(outcome, "seen"), "-Ilib -own") << outcome.messages;
    EXPECT_EQ(outcome.linesWith("Second try"),
              (Texts{"[main::lib] Second try adding implicit assignment FLAGS = lib.FLAGS.",
                     "[main::t] Second try adding implicit assignment FLAGS = lib.FLAGS."}));
}

TEST_F(DriverTest, OwnAppendsOfOutputsAreMadeInTheirOrder) {
    const BuildOutcome outcome = build(
        "lib: { ^FLAGS = \"-lib\" cmdline = \"exit 0\" }\n"
        "t: lib { OWN = lib.FLAGS OWN += \"b\" OWN += lib.FLAGS ^seen = OWN cmdline = \"exit 0\" }",
        "t");
    EXPECT_EQ(outputOf(outcome, "seen"), "-lib b -lib") << outcome.messages;
}

TEST_F(DriverTest, AppendsToWhatADependencyBringsWait) {
    underAll("FLAGS += \"-g\"");
    const BuildOutcome outcome = build(
        "lib: { NAME = \"n\" ^FLAGS = \"-lib\" cmdline = \"exit 0\" }\n"
        "t: +lib { ^seen = FLAGS cmdline = \"exit 0\" }",
        "t", 1);
    EXPECT_EQ(outputOf(outcome, "seen"), "-lib -g -g") << outcome.messages;
    EXPECT_EQ(outcome.linesWith("Second try"),
              Texts{"[main::t] Second try adding implicit append FLAGS += \"-g\"."});
}

TEST_F(DriverTest, WhatComesOnSeveralWaysStandsInAListOnce) {
    const BuildOutcome outcome = build(R"(
        base: { cmdline = [] ^DIRS += ["base"] }
        left: +base { cmdline = [] ^DIRS += ["left"] }
        right: +base { cmdline = [] ^DIRS += ["right"] }
        top: +left +right { cmdline = [] DIRS = ["own"] }
    )",
                                       "top");
    EXPECT_EQ(outcome.error, "");
    ASSERT_NE(outcome.outputs->find("DIRS"), nullptr);
    EXPECT_EQ(outcome.outputs->textOf("DIRS"), "own left right base") << "each in its last place";
}

TEST_F(DriverTest, UsageRequirementsTravelUpWithoutWhatTheLibraryHadItself) {
    underAll("FLAGS = \"-O2\"");
    const BuildOutcome outcome = build(
        "base: { ^FLAGS += \"-Ibase\" cmdline = \"exit 0\" }\n"
        "lib: +base { ^FLAGS += \"-Ilib\" ^mine = FLAGS cmdline = \"exit 0\" }\n"
        "t: +lib { ^seen = FLAGS ^libs = lib.mine cmdline = \"exit 0\" }",
        "t");
    EXPECT_EQ(outputOf(outcome, "libs"), "-O2 -Ilib -Ibase") << outcome.messages;
    EXPECT_EQ(outputOf(outcome, "seen"), "-O2 -Ilib -Ibase");
}

TEST_F(DriverTest, AliasesGiveOutputsOtherNames) {
    const BuildOutcome outcome = build(
        "a: { ^V = \"1\" cmdline = \"exit 0\" }\n"
        "b: { ^V = [\"2\", \"3\"] cmdline = \"exit 0\" }\n"
        "t: a => x a +> all b +> all { ^seen = \"${x.V} ${all.V}\" ^count = all.V[2] "
        "cmdline = \"exit 0\" }",
        "t");
    EXPECT_EQ(outputOf(outcome, "seen"), "1 1 2 3") << outcome.messages;
    EXPECT_EQ(outputOf(outcome, "count"), "3");
}

struct CollisionCase {
    std::string target;
    Texts warnings;
};

class Collisions : public DriverTest, public testing::WithParamInterface<CollisionCase> {};

TEST_P(Collisions, AreWarnedAbout) {
    const BuildOutcome outcome = build(
        "a(p): { ^V = p cmdline = \"exit 0\" }\n"
        "c: { ^V = \"c\" cmdline = \"exit 0\" }\n"
        "t: " +
            GetParam().target,
        "t");
    EXPECT_EQ(outcome.error, "");
    Texts expected;
    for (const std::string& warning : GetParam().warnings) {
        expected.push_back("[main::t] Dependency output " + warning +
                           " Names are case-insensitive; this may make dependency output "
                           "ambiguous.");
    }
    EXPECT_EQ(outcome.linesWith("collides"), expected) << outcome.messages;
}

INSTANTIATE_TEST_SUITE_P(
    Table, Collisions,
    testing::Values(CollisionCase{"c { V = \"own\" cmdline = \"exit 0\" }", {}},
                    CollisionCase{"c => X { x = 1 cmdline = \"exit 0\" }",
                                  {"alias 'X' collides with an existing context variable."}},
                    CollisionCase{"c +> X a(p) +> X { p = 1 cmdline = \"exit 0\" }", {}},
                    CollisionCase{"+c { V = \"own\" cmdline = \"exit 0\" }",
                                  {"'V' collides with an existing context variable."}},
                    CollisionCase{"c { C = 1 cmdline = \"exit 0\" }",
                                  {"'main::c' collides with existing context variable 'main'."}},
                    CollisionCase{"a(p) a(q) { p = 1 q = 2 cmdline = \"exit 0\" }",
                                  {"'a::result' collides with an existing dependency output.",
                                   "'a::V' collides with an existing dependency output."}}));

}  // namespace
}  // namespace Vesk::test
