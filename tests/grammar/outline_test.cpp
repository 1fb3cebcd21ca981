#include "grammar/outline.h"

#include <gtest/gtest.h>
#include <string>

namespace Vesk {
namespace {

/// "name", "name(...)" and the description, a target a line.
std::string outlined(std::string_view text) {
    std::string lines;
    for (const OutlinedTarget& target : targetOutline(text)) {
        lines += target.name + (target.hasParameters ? "(...)" : "") + (target.isTest ? "!" : "") +
                 (target.description.empty() ? "" : " " + target.description) + "\n";
    }
    return lines;
}

TEST(Outline, WholeAndHalfWrittenFiles) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"unit u a: {} b:c d::e +f g => h i(j, k) @l.m(.) +> n {}", "a\nb\n"},
        {"a(p, q): { x = 1 }  name-2 : {}", "a(...)\nname-2\n"},
        {"// a: {\n/* b: { */ c: {}", "c\n"},
        {R"x(a: { T = "b: {" R = R"(c: " {)" P = P"(d: })" })x", "a\n"},
        {"a: { l = [\"x\", y[1:2], z[i]] n = { k = 1 } m = b.c[0] } d: {}", "a\nd\n"},
        {R"(a: { TEST = "Yes" description = "first" DESCRIPTION = "is
this" x = { DESCRIPTION = "not" } if y = "DESCRIPTION" { TEST = "no" } })",
         "a! is\nthis\n"},
        {"a: { DESCRIPTION DESCRIPTION += \"no\" ^DESCRIPTION = \"yes\" }", "a yes\n"},
        {"a: { C_FILES = [\"a.c\"\nb: { x = 1\nc: d", "a\nb\nc\n"},
        {"a: } } ] { ( b: {", "a\nb\n"},
        {"a: { x = \"open", "a\n"},
        {"\xff\x01 a \xc3\xa4: {} b: {}", "b\n"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(outlined(text), expected) << text;
    }
}

}  // namespace
}  // namespace Vesk
