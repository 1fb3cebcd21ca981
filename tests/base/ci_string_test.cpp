#include "base/ci_string.h"

#include <gtest/gtest.h>

namespace Vesk {
namespace {

int sign(int number) {
    return (number > 0) - (number < 0);
}

TEST(CiString, ComparesAndOrdersWithoutRegardToAsciiCase) {
    const struct {
        const char* left;
        const char* right;
        int order;
    } cases[] = {
        {"", "", 0},
        {"", "a", -1},
        {"CC", "cc", 0},
        {"abc", "ABD", -1},
        {"ab", "ABC", -1},
        {"Zeta", "alpha", 1},
        {"_", "a", -1},                // '_' stands before the letters it folds to
        {"A", "[", 1},                 // 'A' folds to 'a', which is above '['
        {"\xC3\x84", "\xC3\xA4", -1},  // only ASCII folds
        {"\xC3\xA4", "z", 1},          // bytes are unsigned
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.left) + " | " + c.right);
        EXPECT_EQ(sign(compareIgnoringCase(c.left, c.right)), c.order);
        EXPECT_EQ(sign(compareIgnoringCase(c.right, c.left)), -c.order);
        EXPECT_EQ(CiLess{}(c.left, c.right), c.order < 0);
        EXPECT_EQ(CiEqual{}(c.left, c.right), c.order == 0);
        EXPECT_EQ(CiHash{}(c.left) == CiHash{}(c.right), c.order == 0);
    }
}

}  // namespace
}  // namespace Vesk
