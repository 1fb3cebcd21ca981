#include "run/command_line.h"

#include <gtest/gtest.h>

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk {
namespace {

using Strings = std::vector<std::string>;

TEST(QuoteArgument, DoublesBackslashesOnlyBeforeQuotes) {
    const struct {
        std::string_view text;
        std::string_view quoted;
    } cases[] = {
        {"", R"("")"},
        {"a b", R"("a b")"},
        {R"(a\b)", R"("a\b")"},
        {R"(dir\)", R"("dir\\")"},
        {R"(")", R"("\"")"},
        {R"(a\\"b)", R"("a\\\\\"b")"},
        {R"(\" \)", R"("\\\" \\")"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(quoteArgument(c.text), c.quoted);
    }
}

// What a child program is given and what it reads must be the same. On Windows this goes through
// the quoting and the C runtime's parser, on POSIX through the argument vector.
TEST(QuoteArgument, ArrivesUnchangedInAChild) {
    const Strings arguments{"",         "plain",      "a b",       R"(a\b)",      R"(dir\)",
                            R"(\\)",    R"(")",       R"(\")",     R"(a\\"b c)",  "tab\there",
                            "größe 漢", "%PATH%",     "*.cpp",     "a&b|c<d>e^f", "'single'",
                            "-x=\"y\"", R"(C:\a b\)", R"("a" "b")"};
    const test::TempDir dir;
    Strings all{"args", dir.text("out")};
    all.insert(all.end(), arguments.begin(), arguments.end());
    platform::ProcessRequest request = test::childRequest(all);
    request.commandLine = quoteArgument(request.arguments.front());
    std::string expected;
    for (const std::string& argument : all) {
        request.commandLine += " " + quoteArgument(argument);
    }
    for (const std::string& argument : arguments) {
        expected += argument + '\0';
    }
    EXPECT_EQ(platform::runProcess(request).status, 0);
    EXPECT_EQ(test::contentOf(dir / "out"), expected);
}

TEST(EnvironmentWithPath, ReplacesPathAndSorts) {
    const Strings entries{"b=2",          "PATH=/old", "A=1",        "Path=/other",
                          "pathext=.EXE", "PATHS=x",   "=C:=C:\\dir"};
    EXPECT_EQ(environmentWithPath(entries, {"/one", "/two words"}, "/old", ';'),
              (Strings{"=C:=C:\\dir", "A=1", "b=2", "PATH=/one;/two words;/old", "pathext=.EXE",
                       "PATHS=x"}));
    EXPECT_EQ(environmentWithPath({"z=1", "A.B=1", "a=2", "Z=0"}, {"/one", "/two"}, "", ':'),
              (Strings{"A.B=1", "a=2", "PATH=/one:/two", "Z=0", "z=1"}));
}

TEST(EnvironmentWith, ReplacesWhateverTheCase) {
    EXPECT_EQ(environmentWith({"Include=old", "INCLUDES=x", "LIB=y"}, {"INCLUDE=a;b", "NEW="}),
              (Strings{"INCLUDES=x", "LIB=y", "INCLUDE=a;b", "NEW="}));
    EXPECT_EQ(environmentWithPath({}, {}, "/old", ':'), Strings{"PATH=/old"});
}

}  // namespace
}  // namespace Vesk
