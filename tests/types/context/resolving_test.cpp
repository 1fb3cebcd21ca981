// What identifier paths give, before and after variables are resolved.

#include <gtest/gtest.h>

#include "platform/files.h"
#include "types/context/context.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

std::string valueAt(Context& context, const char* name) {
    return outcome([&] { return context.resolveIdentifier(identifierPathFrom(name)); });
}

Assignments sampleVariables() {
    return {
        set("text", str("abcd")),
        set("number", num(1)),
        set("items", list({str("x"), id("text"), num(7)})),
        set("copy", id("later")),
        set("later", id("items[1]")),
        set("flat", list({id("items"), str("e"), list({id("number")})})),
        set("cross", list({str("-#{items}"), str("${text}!")})),
        set("which", str("FLAGS")),
        set("lib", block({set("FLAGS", str("${text}/${own}")), set("own", str("o")),
                          set("more", list({id("number")})),
                          set("deep", block({set("up", id("text"))}))})),
        set("raw", raw("${text}")),
        set("viaRaw", str("<${raw}>")),
        set("quote", str("${ascii[34]}${ascii['tab']}")),
        bare("nothing"),
    };
}

TEST(Resolving, GivesTheSameBeforeAndAfterVariablesAreResolved) {
    const std::pair<const char*, const char*> cases[] = {
        {"TEXT", "VeskString \"abcd\""},
        {"text[1..3]", "VeskString \"bc\""},
        {"items[number]", "VeskString \"abcd\""},
        {"copy", "VeskString \"abcd\""},
        {"flat", "VeskList [ \"x\", \"abcd\", 7, \"e\", [ 1 ] ]"},
        {"cross", "VeskList [ \"-x\", \"-abcd\", \"-7\", \"abcd!\" ]"},
        {"lib.flags", "VeskString \"abcd/o\""},
        {"lib[which]", "VeskString \"abcd/o\""},
        {"lib['FLAGS'][0]", "VeskString \"a\""},
        {"lib.deep.up", "VeskString \"abcd\""},
        {"raw", "VeskRawString \"${text}\""},
        {"viaRaw", "VeskString \"<abcd>\""},
        {"quote", "VeskString \"\"\t\""},
        {"nothing", "VeskString \"\""},
        {"txt", "NotFoundException: Assignment 'txt' not found.\n  did you mean 'text'?"},
        {"libb.x",
         "out_of_range: invalid map<K, T> key\n  there is no variable 'libb'\n  did you mean "
         "'lib'?"},
        {"lib.flag", "NotFoundException: Assignment 'flag' not found.\n  did you mean 'FLAGS'?"},
        {"items.x", "NotAContext: Identifier part must be context."},
        {"items.x.y", "IndexException: Variable [ \"x\", \"abcd\", 7 ] cannot be indexed with x"},
        {"number.x.y", "NotAContext: Identifier part must be context."},
        {"lib.more[0]['x'].y",
         "IdentifierError: Identifier cannot be resolved: lib, more[0]['x'] <<, y"},
        {"items[3]", "IndexException: Variable [ \"x\", \"abcd\", 7 ] cannot be indexed with [3]"},
        {"items[flat]",
         "runtime_error: Unsupported key type: [ \"x\", \"abcd\", 7, \"e\", [ 1 ] ]"},
    };
    const auto context = contextOf(sampleVariables());
    const std::string stored = sourceOf(*context);
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(valueAt(*context, name), expected) << name;
    }
    EXPECT_EQ(sourceOf(*context), stored) << "asking changes nothing";
    context->resolveVariables();
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(valueAt(*context, name), expected) << name << ", resolved";
    }
    const std::string resolved = sourceOf(*context);
    context->resolveVariables();
    EXPECT_EQ(sourceOf(*context), resolved) << "a second time changes nothing";
}

TEST(Resolving, ALaterAssignmentChangesWhatAReferenceGave) {
    const auto context = contextOf({set("a", str("${ascii}")), set("ascii", str("1"))});
    EXPECT_EQ(valueAt(*context, "a"), "VeskString \"1\"") << "it hides the character set";
    context->addAssignment(set("ascii", str("2")), ModifierMode::Keep);
    EXPECT_EQ(valueAt(*context, "a"), "VeskString \"2\"");
    context->erase("ascii");
    EXPECT_EQ(valueAt(*context, "a"), "VeskString \"\"");
}

TEST(Resolving, LoopsAreNamed) {
    const auto context =
        contextOf({set("x", id("Y")), set("y", id("z")), set("z", list({id("x")})),
                   set("entry", id("x")), set("s", str("a${t}")), set("t", str("b${S}"))});
    const std::string loop =
        "LoopFoundException: Loop detected! Causing term: 'x'\n"
        "  loop goes as follows: x <- y <- z <- x";
    EXPECT_EQ(valueAt(*context, "entry"), loop) << "what only leads to a loop is not part of it";
    EXPECT_EQ(valueAt(*context, "s"),
              "CircularReference: Circular reference to variable 'S': s <- t <- s");
    const auto twice = contextOf({set("a", str("1")), set("b", str("${a}${a}")),
                                  set("c", list({id("b"), id("b"), id("a")}))});
    EXPECT_EQ(valueAt(*twice, "c"), "VeskList [ \"11\", \"11\", \"1\" ]") << "shared is no loop";
}

TEST(Resolving, HintsStandForAVariableOrForThemselves) {
    const auto hint = [](ValuePtr value) {
        return set("h", std::move(value), AssignModifier::Hint);
    };
    const auto resolved = [](const Assignment& assignment) {
        const auto context = contextOf({set("cc", num(5)), set("a", id("a")), assignment});
        return outcome([&] {
            context->resolveHints();
            return context->find("h")->value;
        });
    };
    const std::string expected = "': expected an identifier.";
    EXPECT_EQ(resolved(hint(id("CC"))), "VeskInt 5");
    EXPECT_EQ(resolved(hint(str("cc"))), "VeskInt 5");
    EXPECT_EQ(resolved(hint(id("gcc"))), "VeskString \"gcc\"");
    EXPECT_EQ(resolved(hint(id("a"))), "VeskString \"a\"") << "a loop is no value";
    EXPECT_EQ(resolved(hint(str("two words"))),
              "VeskException: Invalid hint 'two words" + expected);
    EXPECT_EQ(resolved(hint(num(5))), "VeskException: Invalid hint '5" + expected);
    EXPECT_EQ(resolved(set("h", num(5))), "VeskInt 5") << "only hints are touched";
}

TEST(Resolving, PathLiterals) {
    const auto base = std::filesystem::temp_directory_path() / "base";
    const auto absolute = [&base](const char* text) {
        return "P\"" + platform::pathToUtf8((base / text).lexically_normal()) + "\"";
    };
    const auto resolved = [&base](const char* text) {
        const auto context =
            contextOf({set("name", str("a b")), set("raw", raw("a b")), set("number", num(5)),
                       set("files", list({str("x"), str("y z")})), set("made", path("m n", base)),
                       set("p", path(text, base))});
        context->setSilent();
        return valueAt(*context, "p");
    };
    EXPECT_EQ(resolved("dir/../a.c"), "VeskString " + absolute("a.c"));
    EXPECT_EQ(resolved("C:/x y"), "VeskString P\"C:/x y\"");
    EXPECT_EQ(resolved("src/${name}.c"), "VeskString " + absolute("src/a b.c"));
    EXPECT_EQ(resolved("${raw}"), "VeskString " + absolute("a b"));
    EXPECT_EQ(resolved("${made}"), "VeskString " + absolute("m n"));
    EXPECT_EQ(resolved("${files[1]}/${number}"), "VeskString " + absolute("y z/5"));
    const auto two = [](const std::string& a, const std::string& b) {
        return "VeskList [ " + a + ", " + b + " ]";
    };
    EXPECT_EQ(resolved("${name}"), two(absolute("a"), absolute("b"))) << "a path for every word";
    EXPECT_EQ(resolved("${files}"), two(absolute("x"), absolute("y z")));
    EXPECT_EQ(resolved("#{files}.o"), two(absolute("x.o"), absolute("y z.o")));
    EXPECT_EQ(resolved("${unknown}"), "VeskList []");
}

}  // namespace
}  // namespace Vesk
