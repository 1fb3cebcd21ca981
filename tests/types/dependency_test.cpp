#include "types/dependency.h"

#include <gtest/gtest.h>

#include "support/console_capture.h"
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
        {"a/b", "||a/b"},
        {"lib::app", "|lib|app"},
        {"proj/lib::app", "proj|lib|app"},
        {"p/l/m::a::b", "p|l/m|a::b"},
        {"", "runtime_error: Dependency string is empty"},
        {"::app", noPrefix + "::app"},
        {"lib::", noPrefix + "lib::"},
        {"::", noPrefix + "::"},
        {"/lib::app", noUnit + "/lib::app"},
        {"proj/::app", noUnit + "proj/::app"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(split(text), expected);
    }
    for (const char* text : {"app", "lib::app", "proj/lib::app"}) {
        EXPECT_EQ(splitDependencyString(text).toDisplayString(), text);
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
        {"", ""},
        {" \t\n ", ""},
        {"a b(c, d) e", "|a|b c d|e"},
        {"  a \n p/u::t( x )\t", "|a|p/u::t x"},
        {"a(b)c", invalid("a(b)c", "unterminated parameter list")},
        {"b(c,)", invalid("b(c,)", "empty parameter")},
        {"b(,c)", invalid("b(,c)", "empty parameter")},
        {"b(c,,d)", invalid("b(c,,d)", "empty parameter")},
        {"b()", invalid("b()", "empty parameter list")},
        {"b( )", invalid("b( )", "empty parameter list")},
        {"a b(c", invalid("a b(c", "unterminated parameter list")},
        {"b)", invalid("b)", "unmatched ')'")},
        {"b(c)) d", invalid("b(c)) d", "unmatched ')'")},
        {"(c)", invalid("(c)", "empty target name")},
        {"b (c)", invalid("b (c)", "empty target name")},
        {"b(c.d)", invalid("b(c.d)", "invalid parameter 'c.d'")},
        {"b(c[0])", invalid("b(c[0])", "invalid parameter 'c[0]'")},
        {"b(1)", invalid("b(1)", "invalid parameter '1'")},
        {"b(c d)", invalid("b(c d)", "invalid parameter 'c d'")},
        {"b((c))", invalid("b((c))", "invalid parameter '(c)'")},
        {"a ::b", "runtime_error: Dependency string has empty prefix or target: ::b"},
        {"u::(c)", "runtime_error: Dependency string has empty prefix or target: u::"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parsed(text), expected);
    }
    EXPECT_EQ(outcome([] { return parseDynamicDependency(" b(c ", "whole").reference.target; }),
              invalid("whole", "unterminated parameter list"));
}

DependencyRecord direct(std::string_view reference) {
    DependencyRecord record;
    record.reference = splitDependencyString(reference);
    return record;
}

DependencyRecord macro(std::string_view name, AliasKind kind = AliasKind::None) {
    DependencyRecord record;
    record.kind = DependencyKind::Macro;
    record.macro = identifierPathFrom(name);
    record.aliasKind = kind;
    record.alias = kind == AliasKind::None ? "" : "out";
    return record;
}

std::string describe(const DependencyRecord& record) {
    std::string text = record.merge ? "+" : "";
    text += record.kind == DependencyKind::Macro ? "@" : "";
    text += record.reference.toDisplayString();
    text += record.sourceParameter ? "(." : "(";
    for (const IdentifierPath& parameter : record.parameters) {
        text += " " + parameter.toDisplayString();
    }
    text += ")";
    if (record.aliasKind != AliasKind::None) {
        text += (record.aliasKind == AliasKind::Single ? " => " : " +> ") + record.alias;
    }
    return text;
}

/// The records of the list, joined by "; ", after what the console shows.
std::string listed(const std::vector<DependencyRecord>& records, int threshold = 5) {
    auto target = std::make_shared<Target>();
    target->dependencies = records;
    TargetContext context(target, "u::t");
    ContextTemplate body;
    body.assignments = {set("two", list({str("a"), str("p/u::b")})),
                        set("text", str("${one} c(x, y)")),
                        set("one", id("lib.deps")),
                        set("lib", block({set("deps", raw("u::d"))})),
                        set("empty", list({})),
                        set("blank", str("  ")),
                        set("bad", str("b)")),
                        bare("nothing")};
    body.mergeInto(context);
    ConsoleCapture capture(threshold);
    const std::string text = outcome([&] {
        std::string all;
        for (const DependencyRecord& record : createDependencyList(context)) {
            all += (all.empty() ? "" : "; ") + describe(record);
        }
        return all;
    });
    return capture.text() + text;
}

TEST(Dependencies, MacrosAreReplacedInPlace) {
    EXPECT_EQ(listed({direct("x"), macro("two"), direct("u::y"), macro("lib.deps")}),
              "x(); a(); p/u::b(); u::y(); u::d()");
    EXPECT_EQ(listed({macro("text")}), "u::d(); c( x y)");
    EXPECT_EQ(listed({}, 1), "Creating dependency list.\n");
    for (const char* name : {"empty", "blank", "nothing", "unknown", "unknown.x"}) {
        EXPECT_EQ(listed({direct("x"), macro(name), direct("y")}),
                  "Dynamic dependency '" + std::string(name) +
                      "' is empty and will be skipped.\nx(); y()");
    }
    EXPECT_EQ(listed({macro("bad")}),
              "VeskException: Invalid dynamic dependency 'b)': unmatched ')'");
    EXPECT_EQ(listed({macro("two.x")}), "NotAContext: Identifier part must be context.");
}

TEST(Dependencies, MacrosHandOnTheirAliasAndParameters) {
    EXPECT_EQ(listed({macro("two", AliasKind::Merge)}), "a() +> out; p/u::b() +> out");
    EXPECT_EQ(listed({macro("one", AliasKind::Single)}), "u::d() => out");
    EXPECT_EQ(listed({macro("two", AliasKind::Single)}),
              "VeskException: single output alias cannot be used when a macro expands to multiple "
              "dependencies");
    DependencyRecord with = macro("one");
    with.merge = true;
    with.parameters = {identifierPathFrom("p")};
    EXPECT_EQ(listed({with}), "+u::d( p)");
    with.macro = identifierPathFrom("text");
    EXPECT_EQ(listed({with}),
              "VeskException: cannot combine macro parameters with parameters from the resolved "
              "dependency value");
    with.sourceParameter = true;
    EXPECT_EQ(listed({with}),
              "VeskException: cannot combine source-parameterized macro with parameters from the "
              "resolved dependency value");
    with.macro = identifierPathFrom("two");
    EXPECT_EQ(listed({with}), "+a(. p); +p/u::b(. p)");
}

}  // namespace
}  // namespace Vesk
