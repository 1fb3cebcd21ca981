#include "types/values/identifier_path.h"

#include <gtest/gtest.h>

#include "types/support.h"

namespace Vesk {
namespace {

/// The path's display form and what is left of the text, or position and message.
std::string parsed(std::string_view text) {
    IdentifierPath path;
    ParseError error;
    std::size_t end = 0;
    if (parseIdentifierPath(text, path, error, &end)) {
        return path.toDisplayString() + "|" + std::string(text.substr(end));
    }
    return std::to_string(error.position) + ": " + error.message;
}

TEST(IdentifierPath, Parses) {
    const std::pair<std::string, std::string> cases[] = {
        {"_a1.B_2", "_a1.B_2|"},
        {"a.b[0][1..3]['x y']", "a.b[0][1..3]['x y']|"},
        {"a[b[c[0]].d].e", "a[b[c[0]].d].e|"},
        {"a['[\"]']", "a['[\"]']|"},
        {"a[0Xff..0x100]", "a[255..256]|"},
        {"a[9223372036854775807]", "a[9223372036854775807]|"},
        {"a-b", "a|-b"},
        {"a[0]b", "a[0]|b"},
        {"", "0: Empty identifier"},
        {"a.", "2: Expected identifier segment after '.'"},
        {"a[b.]", "4: Expected identifier segment after '.'"},
        {"a..b", "2: Invalid identifier start"},
        {"1a", "0: Invalid identifier start"},
        {"a.\xC3\xA4", "2: Invalid identifier start"},
        {"a[", "2: Unexpected end inside '[]'"},
        {"a[]", "2: Invalid index expression inside '[]'"},
        {"a[-1]", "2: Invalid index expression inside '[]'"},
        {"a[0x]", "4: Expected hexadecimal digit"},
        {"a[1", "3: Expected ']'"},
        {"a[1.2]", "3: Expected ']'"},
        {"a[1..x]", "5: Expected number"},
        {"a['x", "4: Expected closing apostrophe in index name"},
        {"a['x\r']", "4: Expected closing apostrophe in index name"},
        {"a[9223372036854775808]", "2: Invalid or out-of-range number"},
        {"a[0x8000000000000000]", "4: Invalid or out-of-range number"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parsed(text), expected) << text;
    }
}

TEST(IdentifierPath, DeepIndexesEndInAnErrorNotInACrash) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) {
            text += "a[";
        }
        return text + "b" + std::string(depth, ']');
    };
    EXPECT_EQ(parsed(nested(kMaxIndexNesting)), nested(kMaxIndexNesting) + "|");
    EXPECT_EQ(parsed(nested(kMaxIndexNesting + 1)), "2002: Index brackets nest too deep");
    EXPECT_EQ(parsed(nested(100000)), "2002: Index brackets nest too deep");
}

}  // namespace
}  // namespace Vesk
