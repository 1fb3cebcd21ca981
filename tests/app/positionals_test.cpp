#include "app/positionals.h"

#include <gtest/gtest.h>
#include <memory>

#include "base/exception.h"
#include "base/text.h"
#include "platform/system.h"
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

    /// Targets that are too many in parentheses.
    static std::string others(const Positionals& positionals) {
        std::vector<std::string> words;
        for (const OtherWord& word : positionals.others) {
            words.push_back(word.isTarget ? "(" + word.text + ")" : word.text);
        }
        return joined(words, ",");
    }

    /// What the words were taken for, then the messages; or the error.
    std::string taken(const Words& words) const {
        test::ConsoleCapture console;
        try {
            const Positionals positionals = classifyPositionals(words, project_);
            const auto& target = positionals.target;
            return (target ? target->toDisplayString() : "none") + "|" + positionals.profile + "|" +
                   others(positionals) + console.text();
        } catch (const VeskException& error) {
            return error.report();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    /// The assignment, then the messages; or the error, without what the parser
    /// says.
    std::string assignment(const std::string& word) const {
        test::ConsoleCapture console;
        try {
            const std::string text =
                parsePositionalAssignment(word, project_, Doubts::Warn).toDisplayString();
            return text + "\n" + console.text();
        } catch (const VeskException& error) {
            return error.report();
        }
    }

    Project project_;
};

TEST_F(PositionalWords, AreTargetsProfilesOrAssignments) {
    const std::string twice = "Profile already set to 'Release'. It can only be set once.";
    const std::pair<Words, std::string> cases[] = {
        {{}, "none||"},
        {{"app"}, "app||"},
        {{"App"}, "none||App"},
        {{"main::lib"}, "main::lib||"},
        {{"1::lib"}, "1::lib||"},
        {{"tool"}, "none||tool"},
        {{"p/u::t"}, "p/u::t||"},
        {{"x=a::b", "p/u::t=1", "Y+=\"b\""}, "none||x=a::b,p/u::t=1,Y+=\"b\""},
        {{"RELEASE", "app", "x=1"}, "app|Release|x=1"},
        {{"debug", "DEBUG"}, "debug|Debug|"},
        {{"app", "lib", "x=1"}, "app||(lib),x=1"},
        {{"release", "app", "lib", "DEBUG"}, twice},
        {{"release", "release"}, twice},
        {{"::app"}, "Dependency string has empty prefix or target: ::app"},
        {{"/lib::app"}, "Dependency string has empty ns or unit: /lib::app"},
    };
    for (const auto& [words, expected] : cases) {
        EXPECT_EQ(taken(words), expected) << joined(words, " ");
    }
}

TEST_F(PositionalWords, ThatAreMisreadAreWarnedAbout) {
    EXPECT_EQ(assignment("NAME += \"a b\""), "NAME += \"a b\"\n");
    EXPECT_EQ(assignment("releese"),
              "releese\n'releese' is neither a target nor a profile; as an "
              "assignment it clears "
              "the variable 'releese'.\n  did you mean 'Release'?\n");
    for (const char* word : {"FLAGS=-O2", "FLAGS=-lm x", "N=$3", "A=$b"}) {
        EXPECT_NE(assignment(word).find(std::string("'") + word + "' was read as '"),
                  std::string::npos)
            << word;
    }
    for (const char* word :
         {"A=-12", "A=0x1F", "A = b.c", "A=\"x y\"", "A=[1, 2]", "A=1 y", "A=b c"}) {
        EXPECT_EQ(assignment(word).find("was read"), std::string::npos) << word;
    }
}

TEST_F(PositionalWords, ThatDoNotParseAreExplained) {
    const auto explained = [](const std::string& word, const std::string& more) {
        return "Parsing assignment failed due to syntax errors.\n  '" + word +
               "' names no target of unit 'main' and no profile, so it was read as "
               "an assignment" +
               more;
    };
    EXPECT_EQ(assignment("1lib"), explained("1lib", "\n  did you mean 'lib'?"));
    const std::string quoted = platform::kWindows ? R"(FLAGS=\"/O2\")" : R"('FLAGS="/O2"')";
    EXPECT_EQ(assignment("FLAGS=/O2"),
              explained("FLAGS=/O2", "\n  for text write --define=FLAGS=/O2, or " + quoted +
                                         " with quotes that reach vesk"));
}

}  // namespace
}  // namespace Vesk
