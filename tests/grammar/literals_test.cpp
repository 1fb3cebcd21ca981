#include "grammar/literals.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace Vesk {
namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

TEST(IntegerLiteral, KeepsToThirtyTwoBits) {
    const std::vector<std::pair<const char*, std::optional<std::int32_t>>> cases = {
        {"0", 0},
        {"-0", 0},
        {"007", 7},
        {"2147483647", 2147483647},
        {"2147483648", std::nullopt},
        {"-2147483648", std::numeric_limits<std::int32_t>::min()},
        {"-2147483649", std::nullopt},
        {"0x7FFFFFFF", 2147483647},
        {"0X7fffffff", 2147483647},
        {"0x80000000", std::nullopt},
        {"-0x80000000", std::numeric_limits<std::int32_t>::min()},
        {"-0x80000001", std::nullopt},
        {"18446744073709551616", std::nullopt},
        {"0x1FFFFFFFFFFFFFFFF", std::nullopt},
        {"", std::nullopt},
        {"-", std::nullopt},
        {"0x", std::nullopt},
        {"--1", std::nullopt},
        {"12a", std::nullopt},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(integerLiteral(text), value) << text;
    }
}

TEST(IndexLiteral, BoundsNegativeNumbersOnly) {
    const std::vector<std::pair<const char*, std::optional<std::int64_t>>> cases = {
        {"12", 12},
        {"-1", -1},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"-9223372036854775808", kLeast},
        {"-9223372036854775809", std::nullopt},
        {"9223372036854775808", kLeast},
        {"18446744073709551615", -1},
        {"0xFFFFFFFFFFFFFFFE", -2},
        {"18446744073709551616", std::nullopt},
        {"-0x8000000000000000", kLeast},
        {"-0x8000000000000001", std::nullopt},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(indexLiteral(text), value) << text;
    }
}

}  // namespace
}  // namespace Vesk
