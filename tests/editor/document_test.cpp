#include "editor/document.h"

#include <gtest/gtest.h>
#include <random>

namespace Vesk::editor {
namespace {

std::string summaryOf(const Document& document) {
    std::string summary;
    std::uint32_t end = 0;
    for (const Piece& piece : document.pieces()) {
        EXPECT_EQ(piece.span.begin, end);
        EXPECT_EQ(piece.firstLine, document.lines().lineOf(piece.span.begin));
        end = piece.span.end;
        for (const Block& block : piece.symbols->blocks) {
            summary += std::to_string(piece.inDocument(block.name.span).begin) + block.name.text;
            for (const Write& write : block.writes) {
                summary += " " + write.name.text;
            }
            for (const Read& read : block.reads) {
                summary += " <" + read.path.back().text;
            }
            summary += "\n";
        }
    }
    EXPECT_EQ(end, document.text().size());
    return summary;
}

std::size_t errorsIn(const Document& document) {
    std::size_t count = 0;
    for (const Piece& piece : document.pieces()) {
        count += piece.tree->errors.size();
    }
    return count;
}

std::string unitText() {
    std::string text = "unit u\n// first\n";
    for (int target = 0; target < 12; ++target) {
        const std::string number = std::to_string(target);
        text += "t" + number + "(p): \n  {\n    X = \"${Y" + number +
                "} \xC3\xA4\"\n    /* c */ Z = x.y\n}\n";
    }
    return text;
}

/// What editing piece by piece leaves is what reading the whole text at once gives.
TEST(Document, EditsAreLikeReadingAnew) {
    std::mt19937 random(7);
    const char* const snippets[] = {
        "",     "}",  "{",   "\"",  "a: { b = c }\n", "\n", "/*", "*/", "P\"(",
        "t1: ", "//", "x.y", ")\"", "\xC3\xA4"};
    for (int round = 0; round < 60; ++round) {
        Document document("/u.txt", FileKind::Unit, unitText());
        for (int edit = 0; edit < 6; ++edit) {
            const std::string before = document.text();
            std::uint32_t begin = static_cast<std::uint32_t>(random() % before.size());
            while ((static_cast<unsigned char>(before[begin]) & 0xC0U) == 0x80) {
                --begin;
            }
            const std::uint32_t end = before[begin] == '\xC3' ? begin : begin + random() % 2;
            document.replace({begin, end}, snippets[random() % std::size(snippets)]);
            summaryOf(document);
            Document whole("/u.txt", FileKind::Unit, document.text());
            if (parseSyntax(document.text(), FileKind::Unit).errors.empty()) {
                document.settle();
                EXPECT_EQ(errorsIn(document), 0U) << document.text();
                EXPECT_EQ(summaryOf(document), summaryOf(whole)) << document.text();
            } else {
                EXPECT_GT(errorsIn(document), 0U) << document.text();
            }
        }
        document.replace({0, static_cast<std::uint32_t>(document.text().size())}, unitText());
        EXPECT_EQ(summaryOf(document), summaryOf(Document("/u.txt", FileKind::Unit, unitText())));
    }
}

TEST(Document, DamageEndsAtTheNextTarget) {
    const Document document(
        "/u.txt", FileKind::Unit,
        "a: {\n  X = [1\n\nb: { Y = 1 }\nc: {\n Z = \"open\n}\nd(p): { W = 2 }\n");
    EXPECT_EQ(summaryOf(document), "0a X\n15b Y\n28c Z\n46d W\n");
}

TEST(Document, AnEditParsesOnlyItsTarget) {
    Document document("/u.txt", FileKind::Unit, unitText());
    const auto before = document.pieces();
    const auto place = static_cast<std::uint32_t>(document.text().find("Y5"));
    document.replace({place, place + 1}, "Q\n");
    ASSERT_EQ(document.pieces().size(), before.size());
    std::size_t same = 0;
    for (std::size_t piece = 0; piece < before.size(); ++piece) {
        same += document.pieces()[piece].tree == before[piece].tree ? 1 : 0;
    }
    EXPECT_EQ(same, before.size() - 1);
}

}  // namespace
}  // namespace Vesk::editor
