#include "grammar/literals.h"

#include <gtest/gtest.h>
#include <limits>

namespace Vesk {
namespace {

TEST(Literals, KeepToTheirRange) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr std::nullopt_t kNone = std::nullopt;
    const struct {
        const char* text;
        std::optional<std::int32_t> integer;
        std::optional<std::int64_t> index;  ///< only negative ones are bounded
    } cases[] = {
        {"-0", 0, 0},
        {"007", 7, 7},
        {"2147483647", 2147483647, 2147483647},
        {"2147483648", kNone, 2147483648},
        {"-2147483648", -2147483647 - 1, -2147483648LL},
        {"-2147483649", kNone, -2147483649LL},
        {"0X7fffffff", 2147483647, 2147483647},
        {"-0x80000000", -2147483647 - 1, -2147483648LL},
        {"-9223372036854775808", kNone, kLeast},
        {"-9223372036854775809", kNone, kNone},
        {"9223372036854775808", kNone, kLeast},
        {"0xFFFFFFFFFFFFFFFE", kNone, -2},
        {"18446744073709551616", kNone, kNone},
        {"", kNone, kNone},
        {"-", kNone, kNone},
        {"0x", kNone, kNone},
        {"--1", kNone, kNone},
        {"12a", kNone, kNone},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(integerLiteral(c.text), c.integer) << c.text;
        EXPECT_EQ(indexLiteral(c.text), c.index) << c.text;
    }
}

}  // namespace
}  // namespace Vesk
