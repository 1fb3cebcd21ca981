#include <gtest/gtest.h>

#include "editor/line_index.h"
#include "editor/protocol/message_stream.h"
#include "editor/uri.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

TEST(Places, LinesAndColumns) {
    // One byte, two bytes, four bytes (two units of UTF-16), and all ends of lines.
    const std::string text = "a\xC3\xA4\xF0\x9F\x98\x80z\r\n\nx\ry";
    const LineIndex lines(text);
    EXPECT_EQ(lines.lineCount(), 4U);
    struct {
        std::uint32_t byte;
        LinePlace utf8, utf16, points;
    } const cases[] = {
        {0, {0, 0}, {0, 0}, {0, 0}},  {1, {0, 1}, {0, 1}, {0, 1}},  {3, {0, 3}, {0, 2}, {0, 2}},
        {7, {0, 7}, {0, 4}, {0, 3}},  {8, {0, 8}, {0, 5}, {0, 4}},  {10, {1, 0}, {1, 0}, {1, 0}},
        {11, {2, 0}, {2, 0}, {2, 0}}, {13, {3, 0}, {3, 0}, {3, 0}}, {14, {3, 1}, {3, 1}, {3, 1}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(lines.placeOf(text, each.byte, ColumnUnit::Utf8), each.utf8);
        EXPECT_EQ(lines.placeOf(text, each.byte, ColumnUnit::Utf16), each.utf16);
        EXPECT_EQ(lines.placeOf(text, each.byte, ColumnUnit::CodePoints), each.points);
        EXPECT_EQ(lines.byteOf(text, each.utf8, ColumnUnit::Utf8), each.byte);
        EXPECT_EQ(lines.byteOf(text, each.utf16, ColumnUnit::Utf16), each.byte);
    }
    EXPECT_EQ(lines.byteOf(text, {0, 99}, ColumnUnit::Utf16), 8U);
    EXPECT_EQ(lines.byteOf(text, {9, 9}, ColumnUnit::Utf16), text.size());
}

TEST(Places, Uris) {
    struct {
        const char* uri;
        const char* path;
        const char* back;
    } const cases[] = {
        {"file:///p/a%20b%C3%A4.txt", "/p/a b\xC3\xA4.txt", "file:///p/a%20b%C3%A4.txt"},
        {"file:///c%3A/p/x.txt", "c:/p/x.txt", "file:///c:/p/x.txt"},
        {"file:///C:/p%23/x.txt", "C:/p#/x.txt", "file:///C:/p%23/x.txt"},
        {"FILE://localhost/p", "/p", "file:///p"},
        {"file://server/share/x", "//server/share/x", "file://server/share/x"},
        {"file:///p/100%", "/p/100%", "file:///p/100%25"},
    };
    for (const auto& each : cases) {
        const auto path = pathOfUri(each.uri);
        ASSERT_TRUE(path) << each.uri;
        EXPECT_EQ(platform::pathToUtf8(*path), each.path);
        EXPECT_EQ(uriOf(*path), each.back);
    }
    EXPECT_FALSE(pathOfUri("untitled:Untitled-1"));
    EXPECT_FALSE(pathOfUri("file:"));
}

TEST(Places, Messages) {
    std::string stream = "garbage\r\n\r\n" + framed("{\"a\":1}") +
                         "content-length: 2\nContent-Type: x\n\n[]" + "Content-Length: 9\r\n\r\n[";
    // A byte at a time: pipes promise nothing.
    MessageReader reader([&stream](char* buffer, std::size_t) -> std::size_t {
        if (stream.empty()) {
            return 0;
        }
        *buffer = stream.front();
        stream.erase(0, 1);
        return 1;
    });
    EXPECT_EQ(reader.next(), "{\"a\":1}");
    EXPECT_EQ(reader.next(), "[]");
    EXPECT_EQ(reader.next(), std::nullopt);
}

}  // namespace
}  // namespace Vesk::editor
