#include "base/text.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Vesk {
namespace {

TEST(Text, TrimsBothEndsOnly) {
    EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Text, JoinsAndLowers) {
    EXPECT_EQ(joined({}, ", "), "");
    EXPECT_EQ(joined({"a"}, ", "), "a");
    EXPECT_EQ(joined({"a", "", "c"}, ", "), "a, , c");
    EXPECT_EQ(lowerCased("A-Z \xC3\x84"), "a-z \xC3\x84");
}

std::string leading(const std::string& text) {
    try {
        return std::to_string(leadingInteger(text));
    } catch (const std::out_of_range& error) {
        return std::string("range: ") + error.what();
    } catch (const std::invalid_argument& error) {
        return std::string("invalid: ") + error.what();
    }
}

TEST(Text, ReadsTheLeadingInteger) {
    const std::string range = "range: stoi argument out of range";
    const std::string invalid = "invalid: invalid stoi argument";
    const std::pair<std::string, std::string> cases[] = {
        {"0", "0"},
        {"12abc", "12"},
        {" \t\v\f\n\r+7", "7"},
        {"-7.5", "-7"},
        {"007", "7"},
        {"0x10", "0"},
        {"2147483647", "2147483647"},
        {"-2147483648", "-2147483648"},
        {"2147483648", range},
        {"-2147483649", range},
        {"99999999999999999999999", range},
        {"", invalid},
        {"  ", invalid},
        {"-", invalid},
        {"+-1", invalid},
        {"- 1", invalid},
        {"x1", invalid},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(leading(text), expected) << '"' << text << '"';
    }
}

TEST(Text, FindsTheNameThatWasMeant) {
    const std::vector<std::string> names{"lib", "library", "app", "x"};
    const std::pair<std::string, std::string> cases[] = {
        {"lib", "lib"},          // the candidate itself
        {"LIB", "lib"},          // case is no edit
        {"lbi", ""},             // a swap is two edits, a third of three letters is one
        {"lob", "lib"},          // replaced
        {"li", "lib"},           // missing
        {"libb", "lib"},         // one too many
        {"librray", "library"},  // two edits in seven letters
        {"lirbrayr", ""},        // three edits, two allowed
        {"q", ""},               // would replace every letter of "x"
        {"something", ""},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(closestName(name, names), expected) << name;
    }
    EXPECT_EQ(closestName("abcd", {"abXX", "abcX", "Xbcd"}), "abcX")
        << "the nearest, then the first";
    EXPECT_EQ(didYouMean("lob", names), " (did you mean 'lib'?)");
    EXPECT_EQ(didYouMean("nothing", names), "");
    EXPECT_EQ(didYouMean("lib", {}), "");
}

}  // namespace
}  // namespace Vesk
