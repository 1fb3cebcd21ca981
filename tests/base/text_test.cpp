#include "base/text.h"

#include <gtest/gtest.h>
#include <stdexcept>

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
        {"lbi", ""},             // a swap is two edits, a third of three letters is one
        {"lob", "lib"},          // replaced
        {"li", "lib"},           // missing
        {"libb", "lib"},         // one too many
        {"librray", "library"},  // two edits in seven letters
        {"lirbrayr", ""},        // three edits, two allowed
        {"q", ""},               // would replace every letter of "x"
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(closestName(name, names), expected) << name;
    }
    EXPECT_EQ(didYouMean("abcd", {"abXX", "abcX", "Xbcd"}), "did you mean 'abcX'?")
        << "the nearest, then the first";
}

}  // namespace
}  // namespace Vesk
