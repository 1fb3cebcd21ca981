// How the texts that name targets are read.

#include "types/model/dependency.h"

#include <gtest/gtest.h>

#include "types/support.h"

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

}  // namespace
}  // namespace Vesk
