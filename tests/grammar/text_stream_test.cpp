#include "grammar/text_stream.h"

#include <gtest/gtest.h>
#include <string>

#include "grammar/utf8.h"

namespace Vesk {
namespace {

TEST(Utf8, ComesBackAsItWas) {
    const std::string text = "a\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
    EXPECT_EQ(wellFormedUtf8(text), text.size());
    const std::u32string codePoints = decodeUtf8(text);
    EXPECT_EQ(codePoints, U"a\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF");
    EXPECT_EQ(encodeUtf8(codePoints), text);
}

TEST(TextStream, GivesCodePointsAndTexts) {
    // ASCII, beyond ASCII, and bytes that are no UTF-8.
    for (const std::string text : {"abcd", "\u00e4\u20acb\U0001F600", "\xE4\xFFz\xE4"}) {
        TextStream stream(text, "name");
        const auto cut = [&stream](ssize_t first, ssize_t last) {
            return stream.getText(antlr4::misc::Interval(first, last));
        };
        ASSERT_EQ(stream.size(), 4U);
        EXPECT_EQ(cut(0, 9), text);
        EXPECT_EQ(cut(0, 0) + cut(1, 2) + cut(3, 3) + cut(4, 4) + cut(2, 1), text);
        EXPECT_EQ(stream.LA(-1), antlr4::IntStream::EOF);
        EXPECT_EQ(stream.LA(5), antlr4::IntStream::EOF);
        stream.seek(10);
        EXPECT_EQ(stream.index(), 4U);
        EXPECT_THROW(stream.consume(), antlr4::IllegalStateException);
    }
}

}  // namespace
}  // namespace Vesk
