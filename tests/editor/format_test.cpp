#include "editor/format.h"

#include <gtest/gtest.h>

namespace Vesk::editor {
namespace {

std::string laidOut(std::string_view text, FileKind kind = FileKind::Unit) {
    const Formatted once = formatText(text, kind);
    EXPECT_TRUE(once.errors.empty()) << text;
    EXPECT_EQ(formatText(once.text, kind).text, once.text) << "once more changes it";
    return once.text;
}

struct Case {
    const char* before;
    const char* after;
};

TEST(Format, Units) {
    const Case cases[] = {
        {"", ""},
        {"  // alone", "// alone\n"},
        {"unit  x a:{}", "unit x\n\na: {}\n"},
        {"a :b + c( x,y )=>z @ d . e[ 1 .. 2 ][ 'k' ](.) p / u :: t +> w{A=1}",
         "a: b +c(x, y) => z @d.e[1..2]['k'](.) p/u::t +> w { A = 1 }\n"},
        {"a: { ^ X+=1 ?Y Z ?= [ 1,-2 ] if Z!=[]{ ! Q=y[1:3] } }",
         "a: { ^X += 1 ?Y Z ?= [1, -2] if Z != [] { !Q = y[1:3] } }\n"},
        // Blocks stay as they were begun, lists keep their lines if they begin one.
        {"a: {\nX = [1,\n2]\n\n\n\nY = [\n1, 2,\n3]\n\n}\nb: {}\n\n\n\nc: {}",
         "a: {\n    X = [1, 2]\n\n    Y = [\n        1, 2,\n        3\n    ]\n}\n\nb: {}\n\nc: "
         "{}\n"},
        // Comments stay where they are; those behind a line end in one column.
        {"a: { // one\nX = 1 // two\nYYY = 2 /* three */ // four\n// five\n}// six\n// seven\nb: "
         "{}",
         "a: {  // one\n    X = 1                // two\n    YYY = 2 /* three */  // four\n"
         "    // five\n}  // six\n\n// seven\nb: {}\n"},
        {"a: { X = // why\n \"v\" }", "a: {\n    X =  // why\n    \"v\"\n}\n"},
        // What is in quotes is nobody's business.
        {"a: { X = \"p  q\n   r\" Y = R\"( \" )\" Z = P\"(a  b)\" }",
         "a: {\n    X = \"p  q\n   r\"\n    Y = R\"( \" )\"\n    Z = P\"(a  b)\"\n}\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(laidOut(each.before), each.after);
    }
}

TEST(Format, LongLines) {
    const std::string name(30, 'n');
    const std::string head = "a: " + name + "1 " + name + "2 " + name + "3 ";
    EXPECT_EQ(laidOut(head + name + "4 {}"),
              head.substr(0, head.size() - 1) + "\n        " + name + "4 {}\n");
    const std::string item = "\"" + name + "\"";
    EXPECT_EQ(laidOut("a: { X = [" + item + "," + item + "," + item + "] }"),
              "a: {\n    X = [" + item + ", " + item + ",\n         " + item + "]\n}\n");
}

TEST(Format, ProjectsAndRegistries) {
    EXPECT_EQ(
        laidOut("name p import{ q(d); d:\"../x\" y ( e ) ; }units{m{\"a\" \"b\"}}profiles{d{A=1}}",
                FileKind::Project),
        "name p\n\nimport {\n    q (d);\n    d: \"../x\" y (e);\n}\n\n"
        "units {\n    m { \"a\" \"b\" }\n}\n\nprofiles {\n    d { A = 1 }\n}\n");
    EXPECT_EQ(laidOut("projects{a \"/x\"}tools { t{tool_type=\"gnu-gcc\"} }", FileKind::Registry),
              "projects {\n    a \"/x\"\n}\n\ntools {\n    t { tool_type = \"gnu-gcc\" }\n}\n");
}

TEST(Format, BytesAtTheEdges) {
    EXPECT_EQ(laidOut("\xEF\xBB\xBFunit x\r\na:{X=\"p\nq\"}\r\n"),
              "\xEF\xBB\xBFunit x\r\n\r\na: {\r\n    X = \"p\nq\"\r\n}\r\n");
    EXPECT_EQ(laidOut("a: { X = \"\xC3\xA4\" } // \xE2\x82\xAC"),
              "a: { X = \"\xC3\xA4\" }  // \xE2\x82\xAC\n");
}

TEST(Format, ErrorsAreToldAndNothingIsLaidOut) {
    for (const char* text : {"a: {", "a: { X = \"p }", "a: { # }", "a {}", "/* open"}) {
        const Formatted result = formatText(text, FileKind::Unit);
        EXPECT_FALSE(result.errors.empty()) << text;
        EXPECT_EQ(result.text, "");
    }
}

}  // namespace
}  // namespace Vesk::editor
