#include "base/text.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "base/printable.h"
#include "base/source_place.h"

namespace Vesk {
namespace {

TEST(Text, TrimsBothEndsOnly) {
    EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
    EXPECT_EQ(trimmed(" \n "), "");
}

std::string leading(const std::string& text) {
    try {
        return std::to_string(leadingInteger(text));
    } catch (const std::out_of_range& error) {
        return error.what();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

TEST(Text, ReadsTheLeadingInteger) {
    const std::string range = "stoi argument out of range";
    const std::string invalid = "invalid stoi argument";
    const std::pair<std::string, std::string> cases[] = {
        {"12abc", "12"},
        {" \t\v\f\n\r+7", "7"},
        {"-7.5", "-7"},
        {"0x10", "0"},
        {"2147483647", "2147483647"},
        {"-2147483648", "-2147483648"},
        {"2147483648", range},
        {"-2147483649", range},
        {"99999999999999999999999", range},
        {"  ", invalid},
        {"-", invalid},
        {"+-1", invalid},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(leading(text), expected) << '"' << text << '"';
    }
}

TEST(Text, FindsTheNameThatWasMeant) {
    const std::vector<std::string> names{"lib", "library", "app", "x"};
    const std::pair<std::string, std::string> cases[] = {
        {"LIB", "lib"},          // case is no edit
        {"lbi", "lib"},          // two neighbours swapped
        {"ibl", ""},             // two edits, a third of three letters is one
        {"lob", "lib"},          // replaced
        {"li", "lib"},           // missing
        {"libb", "lib"},         // one too many
        {"librray", "library"},  // two edits in seven letters
        {"lirxrayr", ""},        // three edits, two allowed
        {"q", ""},               // would replace every letter of "x"
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(closestName(name, names), expected) << name;
    }
    EXPECT_EQ(didYouMean("abcd", {"abXX", "abcX", "Xbcd"}), "did you mean 'abcX'?")
        << "the nearest, then the first";
}

TEST(SourcePlaces, AreShownWithTheirLine) {
    const std::string longLine = std::string(99, 'a') + "\xC3\xA4X" + std::string(99, 'b');
    const auto shown = [](const std::string& text, std::size_t line, std::size_t column) {
        return joined(placeLines("f", text, line, column), "|");
    };
    EXPECT_EQ(shown("one\r\n\t\xC3\xA4x y\r\n", 2, 4), "f:2:4|\t\xC3\xA4x y|\t  ^");
    EXPECT_EQ(shown("one", 1, 4), "f:1:4|one|   ^");
    EXPECT_EQ(shown("one\n", 2, 1), "f:2:1||^");
    EXPECT_EQ(shown("one", 2, 1), "f:2:1");
    EXPECT_EQ(shown(longLine, 1, 101), "f:1:101|..." + std::string(58, 'a') + "\xC3\xA4X" +
                                           std::string(59, 'b') + "...|" + std::string(62, ' ') +
                                           "^");
    EXPECT_EQ(joined(placeLines({}), "|"), "");
}

TEST(Printable, ShowsControlCharacters) {
    EXPECT_EQ(printable("a\tb\r\nc\rd\x1b[2J\x7f\xC2\x9b\xC2\xA0\xC3\x9b"),
              "a\tb\r\nc\\x0dd\\x1b[2J\\x7f\\x9b\xC2\xA0\xC3\x9b");
}

}  // namespace
}  // namespace Vesk
