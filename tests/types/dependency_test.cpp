// Targets: how they are found, and how the texts that name them are read.

#include "types/dependency.h"

#include <gtest/gtest.h>

#include "types/support.h"
#include "types/target.h"

namespace Vesk {
namespace {

using namespace test;

TEST(Dependencies, SplitsReferences) {
    const auto split = [](std::string_view text) {
        return outcome([&] {
            const DependencyReference reference = splitDependencyString(text);
            return reference.ns + "|" + reference.unit + "|" + reference.target;
        });
    };
    const std::string noPrefix = "runtime_error: Dependency string has empty prefix or target: ";
    const std::string noUnit = "runtime_error: Dependency string has empty ns or unit: ";
    const std::pair<const char*, std::string> cases[] = {
        {"app", "||app"},
        {"lib::app", "|lib|app"},
        {"proj/lib::app", "proj|lib|app"},
        {"p/l/m::a::b", "p|l/m|a::b"},
        {"", "runtime_error: Dependency string is empty"},
        {"::app", noPrefix + "::app"},
        {"lib::", noPrefix + "lib::"},
        {"/lib::app", noUnit + "/lib::app"},
        {"proj/::app", noUnit + "proj/::app"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(split(text), expected);
    }
}

TEST(Dependencies, SplitsAndParsesDynamicValues) {
    const auto parsed = [](std::string_view text) {
        return outcome([&] {
            std::string all;
            for (const std::string& item : parseDynamicDependencies(text)) {
                const DynamicDependency dependency = parseDynamicDependency(item, text);
                all += "|" + dependency.reference.toDisplayString();
                for (const IdentifierPath& parameter : dependency.parameters) {
                    all += " " + parameter.toDisplayString();
                }
            }
            return all;
        });
    };
    const auto invalid = [](const std::string& text, const std::string& message) {
        return "VeskException: Invalid dynamic dependency '" + text + "': " + message;
    };
    const std::pair<const char*, std::string> cases[] = {
        {" \t\n ", ""},
        {"  a \n p/u::t( x , y)\te", "|a|p/u::t x y|e"},
        {"a(b)c", invalid("a(b)c", "unterminated parameter list")},
        {"b(c,)", invalid("b(c,)", "empty parameter")},
        {"b(c,,d)", invalid("b(c,,d)", "empty parameter")},
        {"b( )", invalid("b( )", "empty parameter list")},
        {"a b(c", invalid("a b(c", "unterminated parameter list")},
        {"b)", invalid("b)", "unmatched ')'")},
        {"b (c)", invalid("b (c)", "empty target name")},
        {"b(c.d)", invalid("b(c.d)", "invalid parameter 'c.d'")},
        {"b(c[0])", invalid("b(c[0])", "invalid parameter 'c[0]'")},
        {"b((c))", invalid("b((c))", "invalid parameter '(c)'")},
        {"u::(c)", "runtime_error: Dependency string has empty prefix or target: u::"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parsed(text), expected);
    }
}

std::shared_ptr<Target> targetAt(const char* name, std::uint32_t line,
                                 std::shared_ptr<const std::filesystem::path> file = nullptr) {
    auto target = std::make_shared<Target>();
    target->name = name;
    target->line = line;
    target->file = std::move(file);
    return target;
}

TEST(Target, UnitsFindTheirTargetsByExactName) {
    const auto file = std::make_shared<const std::filesystem::path>("vesk.txt");
    Unit unit;
    unit.addTarget(targetAt("b", 3, file));
    unit.addTarget(targetAt("a", 5, file));
    unit.addTarget(targetAt("B", 7));
    EXPECT_EQ(unit.findTarget("B")->line, 7U);
    EXPECT_EQ(unit.findTarget("b")->place(), "vesk.txt:3");
    EXPECT_EQ(unit.findTarget("B")->place(), "line 7");
    EXPECT_EQ(unit.findTarget("c"), nullptr);
    EXPECT_EQ(outcomeOf([&] { unit.addTarget(targetAt("a", 9, file)); }),
              "VeskException: Target 'a' is defined twice: vesk.txt:5 and vesk.txt:9.");
}

}  // namespace
}  // namespace Vesk
