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
        LayerCase{{"X = [\"a\"]"}, "X += \"b\" X += \"c\" ^seen2 = X[2]", "a b c"},
        LayerCase{{"Y = \"y\"", "X = \"a\""}, "X += Y", "a y"},
        LayerCase{{}, "X = [\"a\", \"b\"] X += \"c\"", "a b c"}));

TEST_F(DriverTest, WhatRefersToOutputsWaitsAndThenLiesUnderTheTargetsOwn) {
    underAll("FLAGS = lib.FLAGS");
    const BuildOutcome outcome = build(
        "lib: { ^FLAGS = \"-Ilib\" cmdline = \"exit 0\" }\n"
        "t: lib { FLAGS ?= \"none\" FLAGS += \"-own\" ^seen = \"${FLAGS}\" cmdline = \"exit 0\" }",
        "t", 1);
    EXPECT_EQ(outputOf(outcome, "seen"), "-Ilib -own") << outcome.messages;
    EXPECT_EQ(outcome.linesWith("Second try"),
              (Texts{"[main::lib] Second try adding implicit assignment FLAGS = lib.FLAGS.",
                     "[main::t] Second try adding implicit assignment FLAGS = lib.FLAGS."}));
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

}  // namespace
}  // namespace Vesk::test
