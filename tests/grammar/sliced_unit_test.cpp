// What is read target by target is what the parser makes of the whole text.
#include "grammar/sliced_unit.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <random>

#include "grammar/text_files.h"
#include "platform/files.h"

namespace Vesk {
namespace {

std::string places(const ContextTemplate& context) {
    std::string text;
    for (const Assignment& assignment : context.assignments) {
        text += fmt::format(" {}:{}", assignment.place.line, assignment.place.column);
    }
    for (const Condition& condition : context.conditions) {
        text += fmt::format(" {}:{}", condition.place.line, condition.place.column);
        text += places(*condition.body);
    }
    return text;
}

/// All that there is to know of a unit.
std::string wholly(const Unit& unit) {
    std::string text = describe(unit);
    for (const auto& target : unit.targets) {
        text += digits(*target->hash) + places(target->body());
        for (const DependencyRecord& record : target->dependencies()) {
            text += fmt::format(" {}:{}", record.place.line, record.place.column);
        }
        text += "\n" + target->context()->dump() + target->place() + "\n";
    }
    return text;
}

class SlicedUnits : public LoaderTest {
  protected:
    std::shared_ptr<SlicedUnit> sliced(std::string_view text) const {
        return std::make_shared<SlicedUnit>(SourceFile(write("vesk.txt", text)), path());
    }

    std::filesystem::path path() const { return directory_ / "vesk.txt"; }

    /// What slices give; "" where they give nothing.
    std::string bySlices(std::string_view text) const {
        try {
            const auto unit = sliced(text)->read(nullptr);
            return unit ? wholly(*unit) : "";
        } catch (const VeskException&) {
            return "";
        }
    }

    /// What the parser gives; "" for a text with errors.
    std::string byParser(std::string_view text) const {
        const SourceFile file(write("vesk.txt", text));
        TextStream input(file.text(), "whole");
        Recognisers recognisers(&input);
        makeFast(recognisers);
        VeskVisitorImpl visitor(std::make_shared<const std::filesystem::path>(path()),
                                platform::pathToUtf8(path()), FileKind::Unit);
        try {
            auto* const tree = tryRule(recognisers, &grammar::VeskTopParser::unitFile);
            return tree == nullptr ? ""
                                   : wholly(taken<Unit>(visitor.visitVeskUnit(tree->veskUnit())));
        } catch (const VeskException&) {
            return "";
        }
    }
};

TEST_F(SlicedUnits, AreCutWhereTargetsEnd) {
    const char* const texts[] = {
        "",
        "// only a comment",
        "unit main",
        "\xEF\xBB\xBFunit/**/main a:{}b:{}/* } */c : {}",
        "a: { x = \"}\" y = R\"(} \")\" )\" z = P\"(})\" } // }\nb: {}",
        "a: { x = n['}'] y = -0x1F z = [1, [2]] if a { if b { } } } b(p, q): a(p) => x @c(.) {}",
        "\r\n  /* \u00e4 */ \u00e4rger: {}",
        "/*\u00e4\u20ac*/ a: { x = \"\u00e4\" } /*\u00e4*/ b: { y = 1 z }\n\tc: { }",
        "a: { R P x = R } R: { P }",
        "unit-x: {} units: {}",
        "a(p): b => c { x = [1, \"y\"] if q { ^r += s[2] } }\n  d(e): f +> g { h = [-2, \"i\"] "
        "if j { ?k ?= l[0x3] } }b:{}f:{}",  // the second has the first one's tree
    };
    for (const char* const text : texts) {
        EXPECT_EQ(bySlices(text), byParser(text)) << text;
    }
    EXPECT_NE(bySlices("a: {} b: {}"), "");
}

TEST_F(SlicedUnits, DoNotTakeWhatTheParserRefuses) {
    const char* const texts[] = {
        "a: {",
        "a: }",
        "a: {} }",
        "{}",
        "a: {} b",
        "a: { x = \" }",
        "a: { x = n['] } }",
        "/* a: {}",
        "a: {} /* b: {}",
        "unit",
        "unit unit",
        "unit a unit b",
        "a: {} unit b",
        "a: { x = 1 1 }",
        "a: {} a: {}",
        "a: { R\"(} b: {})\" }",
        "a: { ! } b: {}",
        "a: { x = 99999999999 }",
        "a: { x = 0xAR\"(\" } b: { y = \")\" }",
    };
    for (const char* const text : texts) {
        EXPECT_EQ(bySlices(text), "") << text;
    }
}

/// Texts that are mostly right, of pieces that are easily cut in the wrong place.
class Texts {
  public:
    explicit Texts(unsigned seed) : dice_(seed) {}

    std::string next() {
        std::string text = chance(2) ? "unit" + blanks() + "main" : "";
        for (int count = upTo(4); count > 0; --count) {
            text += gap() + "t" + std::to_string(count) + gap() + ":" + gap() + dependencies() +
                    block(2);
        }
        text += gap();
        if (chance(2)) {
            text.insert(static_cast<std::size_t>(upTo(static_cast<int>(text.size()))), any());
        }
        return text;
    }

  private:
    bool chance(int of) { return upTo(of) == 0; }
    int upTo(int most) { return std::uniform_int_distribution<>(0, most)(dice_); }

    std::string oneOf(std::initializer_list<const char*> texts) {
        return *(texts.begin() + upTo(static_cast<int>(texts.size()) - 1));
    }

    std::string blanks() { return oneOf({" ", "\n", "\r\n", "\t", " /* { */ ", "//}\n"}); }
    std::string gap() { return chance(1) ? "" : blanks(); }
    std::string any() {
        return oneOf({"}", "{", "\"", "'",   "R\"(", ")\"",  "/*",     "*/",    "//", "\n",
                      "R", "P", "0x", "0xA", "-",    "unit", "\u00e4", "a: {}", "[",  ")"});
    }
    std::string dependencies() {
        return oneOf({"", "a ", "+a b::c(x) => y ", "@l['}'](.) ", "p/u::t +> z "});
    }
    std::string value() {
        return oneOf({"1", "-0x1F", "\"{\"", "\"\u00e4\"", "R\"(})\"", "R\"(\")\"", "P\"({)\"",
                      "a.b", "n['{']", "n[R\"(})\"]", "[1, \"}\"]", "{ y = 2 }", "n[1:2]", "R",
                      "P"});
    }
    std::string block(int depth) {
        std::string text = "{" + gap();
        for (int count = upTo(3); count > 0; --count) {
            text += "x" + std::to_string(count) + gap() + "=" + gap() + value() + blanks();
        }
        if (depth > 0 && chance(1)) {
            text +=
                "if" + blanks() + "a" + gap() + "=" + gap() + value() + gap() + block(depth - 1);
        }
        return text + gap() + "}";
    }

    std::mt19937 dice_;
};

TEST_F(SlicedUnits, AreWhatTheParserMakesOfAnyText) {
    Texts texts(14);
    int taken = 0;
    for (int i = 0; i < 600; ++i) {
        const std::string text = texts.next();
        const std::string whole = byParser(text);
        const std::string slices = bySlices(text);
        ASSERT_TRUE(slices.empty() || slices == whole) << text;
        EXPECT_TRUE(!slices.empty() || whole.empty()) << text;
        taken += slices.empty() ? 0 : 1;
    }
    EXPECT_GT(taken, 200);
}

TEST_F(SlicedUnits, AreReadByOutlineWhenAsked) {
    const std::string_view text = "unit main a(p): {\n x = 1 }\n \u00e4: {}";
    const std::string_view good = "unit main a(p): b {\n x = 1 }\n  b: { y = \"\u00e4\" }";
    EXPECT_EQ(bySlices(text), "");
    const auto file = sliced(good);
    const std::string outline = encoded(file->outlineOf(*file->read(nullptr)));
    const auto again = sliced(good)->asOutlined(*decodedOutline(outline));
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->targets[1]->mayName("Y") && !again->targets[1]->mayName("q"));
    EXPECT_EQ(wholly(*again), byParser(good));

    // Of another text only what is still in its place.
    const std::string_view edited = "unit main a(p): b {\n x = 2 }\n  b: { y = \"\u00e4\" } c: {}";
    const auto other = sliced(edited);
    EXPECT_FALSE(other->asOutlined(*decodedOutline(outline)));
    const auto earlier = decodedOutline(outline);
    const auto mixed = other->read(&*earlier);
    ASSERT_TRUE(mixed);
    EXPECT_EQ(wholly(*mixed), byParser(edited));
}

TEST_F(SlicedUnits, DoNotBelieveWrongOutlines) {
    const std::string_view text = "a: { x = 1 }\nb: { x = 2 }";
    const auto file = sliced(text);
    const auto unit = file->read(nullptr);
    const UnitOutline outline = file->outlineOf(*unit);
    UnitOutline beyond = outline;
    beyond.targets[1].slice.size = 1000;
    EXPECT_FALSE(sliced(text)->asOutlined(beyond));
    UnitOutline swapped = outline;
    std::swap(swapped.targets[0].slice, swapped.targets[1].slice);
    const auto wrong = sliced(text)->asOutlined(swapped);
    ASSERT_TRUE(wrong);
    EXPECT_THROW(wrong->targets[0]->text(), VeskException);
    const std::string bytes = encoded(outline);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(decodedOutline(std::string_view(bytes).substr(0, size)));
    }
    EXPECT_FALSE(decodedOutline(bytes + "x"));
}

}  // namespace
}  // namespace Vesk
