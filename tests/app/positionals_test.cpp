#include "app/positionals.h"

#include <gtest/gtest.h>
#include <memory>

#include "base/exception.h"
#include "base/text.h"
#include "support/console_capture.h"

namespace Vesk {
namespace {

using Words = std::vector<std::string>;

std::shared_ptr<Unit> unitOf(const std::string& name, const Words& targets) {
    auto unit = std::make_shared<Unit>();
    unit->name = name;
    for (const std::string& targetName : targets) {
        auto target = std::make_shared<Target>();
        target->name = targetName;
        unit->addTarget(std::move(target));
    }
    return unit;
}

constexpr const char* kQuotesNeeded =
    "a text needs double quotes that reach vesk: NAME=\"text\"; in most shells 'NAME=\"text\"', in "
    "the Windows console NAME=\\\"text\\\"";

class PositionalWords : public testing::Test {
  protected:
    PositionalWords() {
        project_.name = "demo";
        project_.addUnit(unitOf("main", {"app", "lib", "debug"}));
        project_.addUnit(unitOf("extra", {"tool"}));
        for (const char* name : {"Debug", "Release"}) {
            project_.profiles.push_back({name, std::make_shared<Context>(), 1});
        }
    }

    /// What the words were taken for, then the messages; or the error.
    std::string taken(const Words& words) const {
        test::ConsoleCapture console;
        std::string text;
        try {
            const Positionals positionals = classifyPositionals(words, project_);
            const auto& target = positionals.target;
            text = (target ? target->toDisplayString() : "none") + "|" + positionals.profile + "|" +
                   joined(positionals.assignments, ",");
        } catch (const VeskException& error) {
            text = "Error: " + error.report();
        } catch (const std::runtime_error& error) {
            text = error.what();
        }
        const std::string messages = console.text();
        return messages.empty() ? text : text + "\n" + messages;
    }

    /// The assignment, then the messages; or the error, without what the parser says.
    std::string assignment(const std::string& word) const {
        test::ConsoleCapture console;
        try {
            const std::string text = parsePositionalAssignment(word, project_).toDisplayString();
            return text + "\n" + console.text();
        } catch (const VeskException& error) {
            return error.report();
        }
    }

    Project project_;
};

TEST_F(PositionalWords, AreTargetsProfilesOrAssignments) {
    const std::vector<std::pair<Words, std::string>> cases = {
        {{}, "none||"},
        {{"app"}, "app||"},
        {{"App"}, "none||App"},
        {{"main::lib"}, "main::lib||"},
        {{"1::lib"}, "1::lib||"},
        {{"extra::tool"}, "extra::tool||"},
        {{"tool"}, "none||tool"},
        {{"a::b"}, "a::b||"},
        {{"p/u::t"}, "p/u::t||"},
        {{"x=a::b", "p/u::t=1"}, "none||x=a::b,p/u::t=1"},
        {{"x=1", "Y+=\"b\""}, "none||x=1,Y+=\"b\""},
        {{"release"}, "none|Release|"},
        {{"RELEASE", "app", "x=1"}, "app|Release|x=1"},
        {{"debug"}, "debug||"},
        {{"DEBUG"}, "none|Debug|"},
        {{"debug", "DEBUG"}, "debug|Debug|"},
        {{""}, "none||"},
    };
    for (const auto& [words, expected] : cases) {
        EXPECT_EQ(taken(words), expected) << joined(words, " ");
    }
}

TEST_F(PositionalWords, NameOneTargetOnly) {
    EXPECT_EQ(taken({"app", "lib", "x=1", "a::b"}),
              "app||x=1\n"
              "Only one target name can be specified\n"
              "Only one target name can be specified\n");
}

TEST_F(PositionalWords, NameOneProfileOnly) {
    EXPECT_EQ(taken({"release", "app", "DEBUG"}),
              "Error: Profile already set to 'Release'. It can only be set once.");
    EXPECT_EQ(taken({"release", "release"}),
              "Error: Profile already set to 'Release'. It can only be set once.");
}

TEST_F(PositionalWords, RefuseHalfATarget) {
    EXPECT_EQ(taken({"::app"}), "Dependency string has empty prefix or target: ::app");
    EXPECT_EQ(taken({"lib::"}), "Dependency string has empty prefix or target: lib::");
    EXPECT_EQ(taken({"/lib::app"}), "Dependency string has empty ns or unit: /lib::app");
}

TEST_F(PositionalWords, AreParsedAsAssignments) {
    EXPECT_EQ(assignment("x=1"), "x = 1\n");
    EXPECT_EQ(assignment("NAME += \"a b\""), "NAME += \"a b\"\n");
}

TEST_F(PositionalWords, ThatAreBareAreWarnedAbout) {
    EXPECT_EQ(assignment("lbi"),
              "lbi\n'lbi' is neither a target nor a profile; as an assignment it clears the "
              "variable 'lbi'.\n");
    EXPECT_EQ(assignment("releese"),
              "releese\n'releese' is neither a target nor a profile; as an assignment it clears "
              "the variable 'releese'. (did you mean 'Release'?)\n");
}

TEST_F(PositionalWords, ThatLostTheirQuotesAreWarnedAbout) {
    const auto warning = [](const std::string& word, const std::string& read) {
        return read + "\n'" + word + "' was read as '" + read + "': " + kQuotesNeeded + "\n";
    };
    EXPECT_EQ(assignment("TEXT=two words"), warning("TEXT=two words", "TEXT = two"));
    EXPECT_EQ(assignment("LEVEL=3 4"), warning("LEVEL=3 4", "LEVEL = 3"));
    const std::string flags = assignment("FLAGS=-O2");
    EXPECT_NE(flags.find("'FLAGS=-O2' was read as 'FLAGS = 2': "), std::string::npos) << flags;
    for (const char* whole : {"A=-12", "A=0x1F", "A = b.c", "A=\"x\"", "A=[1, 2]"}) {
        EXPECT_EQ(assignment(whole).find("was read"), std::string::npos) << whole;
    }
}

TEST_F(PositionalWords, ThatDoNotParseAreExplained) {
    const std::string failed = "Parsing assignment failed due to syntax errors.\n";
    EXPECT_EQ(assignment("FLAGS=/O2"),
              failed +
                  "  'FLAGS=/O2' names no target of unit 'main' and no profile, so it was read as "
                  "an assignment\n"
                  "  " +
                  kQuotesNeeded);
    EXPECT_EQ(assignment("1lib"),
              failed +
                  "  '1lib' names no target of unit 'main' and no profile, so it was read as an "
                  "assignment (did you mean 'lib'?)");
}

}  // namespace
}  // namespace Vesk
