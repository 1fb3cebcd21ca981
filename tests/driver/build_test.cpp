// Visits of targets: their order, their arguments, and how builds end.

#include "driver/driver_fixture.h"

namespace Vesk::test {
namespace {

using Texts = std::vector<std::string>;

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
                              "Target 'main::lab' not found.\n  did you mean 'lib'?\n"
                              "  DIR/vesk.txt:2:4\n  t: lab { NO_TOOL }\n     ^\n"
                              "  needed by target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: a { NO_TOOL }\na(p, q): { NO_TOOL }",
                              "Target 'main::a' takes 2 parameters (p, q), but gets 0 arguments.\n"
                              "  in target main::a (DIR/vesk.txt:3)\n"
                              "  needed by target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: a(x) { NO_TOOL }\na(p): { NO_TOOL }",
                              "Assignment 'x' not found.\n"
                              "  DIR/vesk.txt:2:4\n  t: a(x) { NO_TOOL }\n     ^\n"
                              "  passed to 'a' in target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{"t: {\nflags = 1\nx = flgs\nNO_TOOL }",
                              "Assignment 'flgs' not found.\n  did you mean 'flags'?\n"
                              "  DIR/vesk.txt:4:1\n  x = flgs\n  ^\n  in variable 'x'\n"
                              "  in target main::t (DIR/vesk.txt:2)"},
                    ErrorCase{
                        "t: a(x) { x = \"\" NO_TOOL }\n"
                        "a(q): b(r) { r = \"${q}x\" NO_TOOL }\nb(q): a(q) { NO_TOOL }",
                        "Target 'main::a' is needed by itself, each time with other "
                        "arguments; 1000 visits deep that ends here.\n"
                        "  the way from one visit to the next: main::a -> main::b -> main::a\n"
                        "  needed by target main::b (DIR/vesk.txt:4)"},
                    ErrorCase{"t: @d(.) { d = \"a\" NO_TOOL }\na(q): @d(.) { d = \"a\" NO_TOOL }",
                              "Target 'main::a' is needed by itself, each time with other "
                              "arguments; 1000 visits deep that ends here.\n"
                              "  the way from one visit to the next: main::a -> main::a\n"
                              "  needed by target main::a (DIR/vesk.txt:3)"},
                    ErrorCase{"t: {\nif nope = 1 { }\nNO_TOOL }",
                              "Assignment 'nope' not found.\n"
                              "  DIR/vesk.txt:3:1\n  if nope = 1 { }\n  ^\n  in a condition\n"
                              "  in target main::t (DIR/vesk.txt:2)"}));

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

}  // namespace
}  // namespace Vesk::test
