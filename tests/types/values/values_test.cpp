// Texts, elements, iteration and copies of values, and the keys that select elements.

#include <fstream>
#include <gtest/gtest.h>

#include "platform/files.h"
#include "types/support.h"
#include "types/values/value.h"

namespace Vesk {
namespace {

using namespace test;

TEST(Values, ElementsSelectedByKeys) {
    const auto bad = [](const char* value, const char* key) {
        return std::string("IndexException: Variable ") + value + " cannot be indexed with " + key;
    };
    struct Case {
        ValuePtr value;
        Key key;
        std::string element;
    };
    for (const Case& c : std::vector<Case>{
             {str("abcd"), IndexKey{3}, "VeskString \"d\""},
             {str("abcd"), IndexKey{4}, bad("\"abcd\"", "[4]")},
             {raw("abcd"), RangeKey{1, 3, 1}, "VeskRawString \"bc\""},
             {path("abcd"), RangeKey{0, 4, 7}, "VeskString P\"abcd\""},
             {str("abcd"), RangeKey{4, 4, 1}, "VeskString \"\""},
             {str("abcd"), RangeKey{3, 5, 1}, bad("\"abcd\"", "[3:5:1]")},
             {str("abcd"), RangeKey{-1, 1, 1}, bad("\"abcd\"", "[-1:1:1]")},
             {str("abcd"), RegexKey{"a.*"}, bad("\"abcd\"", "/a.*/")},
             {ascii(), IndexKey{127}, "VeskString \"\x7f\""},
             {ascii(), IndexKey{128}, bad("ascii", "[128]")},
             {ascii(), NameKey{"NewLine"}, "VeskString \"\n\""},
             {ascii(), NameKey{"FF"}, bad("ascii", "FF")},
             {list({num(7), num(8)}), IndexKey{1}, "VeskInt 8"},
             {list({num(7)}), IndexKey{1}, bad("[ 7 ]", "[1]")},
             {list({num(7)}), NameKey{"x"}, bad("[ 7 ]", "x")},
             {num(7), IndexKey{0}, "nothing"},
         }) {
        EXPECT_EQ(outcome([&] { return c.value->at(c.key); }), c.element);
    }
}

std::string elements(const ValuePtr& value) {
    return outcome([&] {
        std::string text;
        for (const ValuePtr& element : elementsOf(*value)) {
            text += "|" + shown(element);
        }
        return text;
    });
}

TEST(Values, Iteration) {
    const std::pair<ValuePtr, std::string> cases[] = {
        {str(" a\t\nbc  \v d\f\r"), "|VeskString \"a\"|VeskString \"bc\"|VeskString \"d\""},
        {str(""), ""},
        {raw("a b"), "|VeskRawString \"a\"|VeskRawString \"b\""},
        {str("\xC3\xA4 \xA0"), "|VeskString \"\xC3\xA4\"|VeskString \"\xA0\""},
        {ascii(), "BadOperation: A character set cannot be iterated."},
        {list({num(1), nullptr, list({})}), "|VeskInt 1|nothing|VeskList []"},
        {id("a"), ""},
        {block({set("b", num(2)), set("a", num(1)), bare("c")}), "|VeskInt 1|VeskInt 2|nothing"},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(elements(value), expected) << shown(value);
    }
}

TEST(Values, PathsAreComparedByTheFileSystem) {
    const auto directory = std::filesystem::temp_directory_path() / "vesk_test_values";
    std::filesystem::create_directories(directory / "sub");
    std::ofstream(directory / "a.c") << "x";
    EXPECT_TRUE(path("a.c", directory)->equals(*path("../a.c", directory / "sub")));
    EXPECT_FALSE(path("a.c", directory)->equals(*path("sub", directory)));
    EXPECT_FALSE(path("none", directory)->equals(*path("none", directory))) << "no such file";
    EXPECT_TRUE(path("a.c", directory)->equals(*str("a.c"))) << "other kinds compare the texts";
    EXPECT_TRUE(str("a.c")->equals(*path("a.c", directory)));
    std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace Vesk
