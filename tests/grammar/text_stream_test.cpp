#include "grammar/text_stream.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "grammar/utf8.h"

namespace Vesk {
namespace {

std::string cut(TextStream& stream, ssize_t first, ssize_t last) {
    return stream.getText(antlr4::misc::Interval(first, last));
}

TEST(Utf8, ComesBackAsItWas) {
    const std::string text = "a\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
    EXPECT_EQ(wellFormedUtf8(text), text.size());
    const std::u32string codePoints = decodeUtf8(text);
    EXPECT_EQ(codePoints, U"a\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF");
    EXPECT_EQ(encodeUtf8(codePoints), text);
}

TEST(TextStream, GivesCodePoints) {
    TextStream ascii("abc", "name");
    TextStream wide("\u00e4b\U0001F600", "name");
    TextStream notUtf8("\xE4z", "name");
    EXPECT_EQ(ascii.size(), 3U);
    EXPECT_EQ(wide.size(), 3U);
    EXPECT_EQ(wide.LA(1), 0xE4U);
    EXPECT_EQ(wide.LA(3), 0x1F600U);
    EXPECT_EQ(notUtf8.LA(1), 0xE4U);
    EXPECT_EQ(cut(notUtf8, 0, 1), "\xE4z");
}

TEST(TextStream, LooksBothWaysAndStopsAtTheEnds) {
    TextStream stream("abc", "name");
    EXPECT_EQ(stream.LA(0), 0U);
    EXPECT_EQ(stream.LA(-1), antlr4::IntStream::EOF);
    stream.consume();
    EXPECT_EQ(stream.LA(-1), 'a');
    EXPECT_EQ(stream.LA(2), 'c');
    EXPECT_EQ(stream.LA(3), antlr4::IntStream::EOF);
    stream.seek(10);
    EXPECT_EQ(stream.index(), 3U);
    EXPECT_EQ(stream.LA(1), antlr4::IntStream::EOF);
    EXPECT_THROW(stream.consume(), antlr4::IllegalStateException);
}

TEST(TextStream, CutsTexts) {
    for (const std::string text : {"abcd", "\u00e4\u20acb\U0001F600"}) {
        TextStream stream(text, "name");
        EXPECT_EQ(cut(stream, 0, 3), text);
        EXPECT_EQ(cut(stream, 0, 9), text);
        EXPECT_EQ(cut(stream, 4, 4), "");
        EXPECT_EQ(cut(stream, 2, 1), "");
        EXPECT_EQ(cut(stream, 2, 2), std::string(1, text.size() == 4 ? 'c' : 'b'));
    }
}

}  // namespace
}  // namespace Vesk
