#include "base/ci_string.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

namespace Vesk {
namespace {

int sign(int number) {
    return (number > 0) - (number < 0);
}

TEST(CiString, ComparesAndOrdersWithoutRegardToAsciiCase) {
    struct Case {
        const char* left;
        const char* right;
        int order;
    };
    for (const Case& c : {
             Case{"", "", 0}, Case{"", "a", -1}, Case{"CC", "cc", 0}, Case{"abc", "ABD", -1},
             Case{"ab", "ABC", -1}, Case{"Zeta", "alpha", 1}, Case{"a_b", "A_B", 0},
             Case{"_", "a", -1},                // '_' stands before the letters it folds to
             Case{"A", "[", 1},                 // 'A' folds to 'a', which is above '['
             Case{"\xC3\x84", "\xC3\xA4", -1},  // only ASCII folds
             Case{"\xC3\xA4", "z", 1},          // bytes are unsigned
         }) {
        SCOPED_TRACE(std::string(c.left) + " | " + c.right);
        EXPECT_EQ(sign(compareIgnoringCase(c.left, c.right)), c.order);
        EXPECT_EQ(sign(compareIgnoringCase(c.right, c.left)), -c.order);
        EXPECT_EQ(CiString(c.left) == CiString(c.right), c.order == 0);
        EXPECT_EQ(CiString(c.left) < CiString(c.right), c.order < 0);
        EXPECT_EQ(CiLess{}(c.left, c.right), c.order < 0);
        EXPECT_EQ(CiEqual{}(c.left, c.right), c.order == 0);
        if (c.order == 0) {
            EXPECT_EQ(CiHash{}(c.left), CiHash{}(c.right));
        }
    }
    EXPECT_NE(CiHash{}("ab"), CiHash{}("ba"));
}

TEST(CiString, KeepsItsSpellingAndIsFoundByAnyOther) {
    std::map<CiString, int, CiLess> map{{"Name", 1}};
    EXPECT_FALSE(map.try_emplace("NAME", 2).second);
    EXPECT_EQ(map.find(std::string_view("name"))->first.str(), "Name");
    EXPECT_EQ(fmt::format("{:>6}", CiString("Name")), "  Name");
}

}  // namespace
}  // namespace Vesk
