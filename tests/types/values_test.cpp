// Texts, elements, iteration and copies of values, and the keys that select elements.

#include <fstream>
#include <gtest/gtest.h>

#include "platform/files.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

TEST(Values, TextsAndTypeNames) {
    const std::string joinedPath = platform::pathToUtf8(std::filesystem::path("base") / "x y");
    struct Case {
        ValuePtr value;
        std::string text;
        std::string shown;
    };
    for (const Case& c : std::vector<Case>{
             {str("a \"b\""), "a \"b\"", "VeskString \"a \"b\"\""},
             {raw("${a}"), "${a}", "VeskRawString \"${a}\""},
             {path("x y"), "x y", "VeskString P\"x y\""},
             {path("x y", "base"), "x y", "VeskString P\"" + joinedPath + "\""},
             {num(-7), "-7", "VeskInt -7"},
             {ascii(), "", "VeskCharSet ascii"},
             {list({}), "", "VeskList []"},
             {list({num(1), str("b c")}), "1 b c", "VeskList [ 1, \"b c\" ]"},
             {list({list({num(1)}), list({})}), "1 ", "VeskList [ [ 1 ], [] ]"},
             {list({str("")}), "", "VeskList [ \"\" ]"},
             {id("a.b[0][1..3]['x y'][c.d]"), "a.b[0][1..3]['x y'][c.d]",
              "VeskIdentifier a.b[0][1..3]['x y'][c.d]"},
             {block({}), "", "VeskContext {}"},
             {block({set("b", num(2)), set("A", str("a")), bare("C")}), "a 2 ",
              "VeskContext {\nA = \"a\"\nb = 2\nC\n}"},
         }) {
        EXPECT_EQ(c.value->toString(), c.text) << c.shown;
        EXPECT_EQ(shown(c.value), c.shown);
        EXPECT_EQ(shown(c.value->clone()), c.shown);
        EXPECT_EQ(shown(deepCopy(*c.value)), c.shown);
        EXPECT_NE(c.value->clone(), c.value);
    }
}

TEST(Values, ElementsSelectedByKeys) {
    const auto bad = [](const char* value, const char* key) {
        return std::string("IndexException: Variable ") + value + " cannot be indexed with " + key;
    };
    struct Case {
        ValuePtr value;
        Key key;
        std::string element;
    };
    const ValuePtr context = block({set("Name", num(3))});
    for (const Case& c : std::vector<Case>{
             {str("abcd"), IndexKey{0}, "VeskString \"a\""},
             {str("abcd"), IndexKey{3}, "VeskString \"d\""},
             {str("abcd"), IndexKey{4}, bad("\"abcd\"", "[4]")},
             {str("abcd"), IndexKey{-1}, bad("\"abcd\"", "[-1]")},
             {raw("abcd"), RangeKey{1, 3, 1}, "VeskRawString \"bc\""},
             {path("abcd"), RangeKey{0, 4, 7}, "VeskString P\"abcd\""},
             {str("abcd"), RangeKey{4, 4, 1}, "VeskString \"\""},
             {str("abcd"), RangeKey{3, 5, 1}, bad("\"abcd\"", "[3:5:1]")},
             {str("abcd"), RangeKey{3, 1, 2}, bad("\"abcd\"", "[3:1:2]")},
             {str("abcd"), RangeKey{-1, 1, 1}, bad("\"abcd\"", "[-1:1:1]")},
             {str("abcd"), NameKey{"a"}, bad("\"abcd\"", "a")},
             {str("abcd"), RegexKey{"a.*"}, bad("\"abcd\"", "/a.*/")},
             {ascii(), IndexKey{65}, "VeskString \"A\""},
             {ascii(), IndexKey{127}, "VeskString \"\x7f\""},
             {ascii(), IndexKey{128}, bad("ascii", "[128]")},
             {ascii(), IndexKey{-1}, bad("ascii", "[-1]")},
             {ascii(), NameKey{"NewLine"}, "VeskString \"\n\""},
             {ascii(), NameKey{"FF"}, bad("ascii", "FF")},
             {ascii(), RangeKey{0, 1, 1}, bad("ascii", "[0:1:1]")},
             {ascii(), RegexKey{"LF"}, bad("ascii", "/LF/")},
             {list({num(7), num(8)}), IndexKey{1}, "VeskInt 8"},
             {list({num(7)}), IndexKey{1}, bad("[ 7 ]", "[1]")},
             {list({num(7)}), IndexKey{-1}, bad("[ 7 ]", "[-1]")},
             {list({num(7)}), NameKey{"x"}, bad("[ 7 ]", "x")},
             {list({num(7)}), RangeKey{0, 1, 1}, bad("[ 7 ]", "[0:1:1]")},
             {num(7), IndexKey{0}, "nothing"},
             {id("a"), IndexKey{0}, "nothing"},
             {context, NameKey{"NAME"}, "VeskInt 3"},
             {context, NameKey{"x"}, "NotFoundException: Assignment 'x' not found."},
             {context, IndexKey{0}, bad("{...}", "[0]")},
         }) {
        EXPECT_EQ(outcome([&] { return c.value->at(c.key); }), c.element);
    }
}

TEST(Values, EveryNamedCharacter) {
    const std::pair<const char*, int> names[] = {
        {"nul", 0},  {"HT", 9},     {"lf", 10},   {"VT", 11}, {"cr", 13},
        {"Esc", 27}, {"space", 32}, {"DEL", 127}, {"tab", 9}, {"newline", 10}};
    for (const auto& [name, code] : names) {
        EXPECT_EQ(ascii()->at(NameKey{name})->toString(), std::string(1, static_cast<char>(code)))
            << name;
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
        {str("a"), "|VeskString \"a\""},
        {str("  "), ""},
        {str(""), ""},
        {raw("a b"), "|VeskRawString \"a\"|VeskRawString \"b\""},
        {path("a b"), "|VeskString P\"a\"|VeskString P\"b\""},
        {str("\xC3\xA4 \xA0"), "|VeskString \"\xC3\xA4\"|VeskString \"\xA0\""},
        {num(5), ""},
        {ascii(), "BadOperation: A character set cannot be iterated."},
        {list({num(1), nullptr, list({})}), "|VeskInt 1|nothing|VeskList []"},
        {list({}), ""},
        {id("a"), ""},
        {block({set("b", num(2)), set("a", num(1)), bare("c")}), "|VeskInt 1|VeskInt 2|nothing"},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(elements(value), expected) << shown(value);
    }
}

TEST(Values, IteratorsAreEqualAtTheSamePlaceOfTheSameContent) {
    const ValuePtr item = num(1);
    const auto begin = list({item})->begin();
    EXPECT_EQ(shown(num(5)->begin()->next().get()), "VeskInt 5");
    EXPECT_TRUE(num(5)->begin()->equals(*num(5)->end()));
    EXPECT_FALSE(num(5)->begin()->equals(*num(6)->end()));
    EXPECT_TRUE(str("a b")->begin()->equals(*str("a b")->begin()));
    EXPECT_FALSE(str("a b")->begin()->equals(*str("a c")->begin()));
    const ValuePtr one = list({item});
    const ValuePtr other = list({item});
    const ValuePtr different = list({num(1)});
    EXPECT_TRUE(one->begin()->equals(*other->begin()));
    EXPECT_FALSE(one->begin()->equals(*different->begin()));
    EXPECT_FALSE(one->begin()->equals(*one->end()));
    EXPECT_EQ(outcome([&] { return one->begin()->equals(*num(1)->begin()); }),
              "InternalError: Internal: types/vesk_value_types(1133) bool __cdecl "
              "Vesk::VeskList::Iterator::equals(const class Vesk::IVeskValueIterator &) const");
    EXPECT_EQ(outcome([&] { return num(1)->begin()->equals(*one->begin()); }),
              "InternalError: Internal: types/vesk_value_types(827) bool __cdecl "
              "Vesk::VeskInt::Iterator::equals(const class Vesk::IVeskValueIterator &) const");
}

TEST(Values, AStringOnTheStackIteratesToo) {
    const VeskString text("a b");
    EXPECT_EQ(elementsOf(text).size(), 2U);
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

TEST(Values, CopiesShareAsMuchAsTheyPromise) {
    const ValuePtr inner = list({str("x")});
    const ValuePtr outer = list({inner});
    const ValuePtr clone = outer->clone();
    const ValuePtr copy = deepCopy(*outer);
    inner->append(*str("y"));
    EXPECT_EQ(shown(clone), "VeskList [ [ \"x\", \"y\" ] ]");
    EXPECT_EQ(shown(copy), "VeskList [ [ \"x\" ] ]");

    const auto context = contextOf({set("A", num(1))});
    const ValuePtr owning = std::make_shared<VeskContext>(context);
    const ValuePtr reference = VeskContext::referringTo(context);
    const ValuePtr ownCopy = deepCopy(*owning);
    const ValuePtr sameReference = deepCopy(*reference);
    context->addAssignment(set("A", num(2)), ModifierMode::Keep);
    EXPECT_EQ(shown(owning->clone()), "VeskContext {\nA = 2\n}");
    EXPECT_EQ(shown(ownCopy), "VeskContext {\nA = 1\n}");
    EXPECT_EQ(shown(sameReference), "VeskContext {\nA = 2\n}") << "what it refers to is another's";
}

TEST(Values, AReferenceToAContextThatIsGoneIsAnInternalError) {
    ValuePtr reference;
    {
        const auto context = contextOf({});
        reference = VeskContext::referringTo(context);
        EXPECT_EQ(shown(reference), "VeskContext {}");
    }
    EXPECT_EQ(outcome([&] { return reference->toString(); })
                  .find("InternalError: Internal: "
                        "types/vesk_value_types("),
              0U);
}

std::string keyOf(const ValuePtr& value) {
    return outcome([&] { return keyToString(makeKey(value)); });
}

TEST(Keys, TextsAndConversion) {
    EXPECT_EQ(keyToString(IndexKey{-1}), "[-1]");
    EXPECT_EQ(keyToString(RangeKey{1, 3, 2}), "[1:3:2]");
    EXPECT_EQ(keyToString(NameKey{"a b"}), "a b");
    EXPECT_EQ(keyToString(RegexKey{"a.*"}), "/a.*/");
    EXPECT_EQ(keyOf(num(-3)), "[-3]");
    EXPECT_EQ(keyOf(str("\"x\"")), "\"x\"");
    EXPECT_EQ(keyOf(raw("x")), "x");
    EXPECT_EQ(keyOf(path("x", "base")), "x");
    EXPECT_EQ(keyOf(id("a.b")), "a.b");
    EXPECT_EQ(keyOf(nullptr), "invalid_argument: key value is null");
    EXPECT_EQ(keyOf(list({num(1)})), "runtime_error: Unsupported key type: [ 1 ]");
    EXPECT_EQ(keyOf(ascii()), "runtime_error: Unsupported key type: ascii");
}

}  // namespace
}  // namespace Vesk
