#include "tools/support/command_text.h"

#include <gtest/gtest.h>

#include "platform/process.h"
#include "platform/system.h"
#include "tools/support/value_lists.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

TEST(Quoting, OfBothSystemsAndOfResponseFiles) {
    struct Case {
        const char* argument;
        const char* posix;
        const char* windows;
        const char* file;
    };
    const Case cases[] = {
        {"-O2", "-O2", "-O2", "-O2"},
        {"src/größe.c", "src/größe.c", "src/größe.c", "src/größe.c"},
        {"", "''", "\"\"", "\"\""},
        {"a b", "'a b'", "\"a b\"", "\"a b\""},
        {"it's", "'it'\\''s'", "\"it's\"", "\"it's\""},
        {"$ORIGIN", "'$ORIGIN'", "\"$ORIGIN\"", "\"$ORIGIN\""},
        {"a&b", "'a&b'", "\"a&b\"", "\"a&b\""},
        {"c:\\d", "'c:\\d'", "c:\\d", "\"c:\\\\d\""},
        {"-DX=\"a b\"", "'-DX=\"a b\"'", "^\"-DX=\\^\"a b\\^\"^\"", "\"-DX=\\\"a b\\\"\""},
        {"-DP=%PATH%&", "'-DP=%PATH%&'", "^\"-DP=^%PATH^%^&^\"", "\"-DP=%PATH%&\""},
        {"x\ty\\", "'x\ty\\'", "\"x\ty\\\\\"", "\"x\ty\\\\\""},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(quoteForPosix(each.argument), each.posix);
        EXPECT_EQ(quoteForWindows(each.argument), each.windows);
        EXPECT_EQ(quoteForResponseFile(each.argument), each.file);
    }
}

TEST(CommandText, ResponseFilesOfWindowsPrograms) {
    const auto file = [](const char* last) {
        CommandText command(ResponseFiles::Windows);
        command.add("cl");
        command.allowResponseFile();
        command.add(std::string(7000, 'x'));
        command.add("/DX=\"a\\b\"");
        command.add(last);
        Recipe recipe;
        command.finish(recipe, "/p/out/x", "out/x");
        return recipe.supportFiles.at(0).content.substr(7001);
    };
    EXPECT_EQ(file("c:\\d e.c"), "\"/DX=\\\"a\\b\\\"\"\n\"c:\\d e.c\"\n");
    const std::string wide = file("ä");
    EXPECT_TRUE(wide.ends_with(std::string("\xE4\0\n\0", 4)));
}

TEST(CommandText, LongCommandsGoThroughAFileNamedByItsContent) {
    const auto finished = [](std::size_t length, const char* last) {
        CommandText command;
        command.add("cc");
        command.addAsWritten("-a  'b c'");
        command.allowResponseFile();
        command.add("-I", std::vector<std::string>{std::string(length, 'x'), "with blank"});
        command.addAsWritten("");
        command.addAsWritten("-W 'as it is'");
        command.add(last);
        Recipe recipe;
        command.finish(recipe, "/p/out/o d/x", "out/o d/x");
        return recipe;
    };
    const Recipe plain = finished(10, "a.c");
    EXPECT_TRUE(plain.supportFiles.empty());
    EXPECT_TRUE(plain.command.ends_with(" a.c")) << plain.command;

    const Recipe first = finished(7000, "a.c");
    const Recipe same = finished(7000, "a.c");
    const Recipe other = finished(7000, "b.c");
    ASSERT_EQ(first.supportFiles.size(), 1u);
    const std::string file = first.supportFiles[0].path.generic_string();
    EXPECT_TRUE(file.starts_with("/p/out/o d/x.") && file.ends_with(".rsp")) << file;
    EXPECT_EQ(first.command, "cc -a  'b c' " + quoteForHost("@" + file.substr(3)));
    EXPECT_EQ(first.supportFiles[0].content,
              "-I" + std::string(7000, 'x') + "\n\"-Iwith blank\"\n-W 'as it is'\na.c\n");
    EXPECT_EQ(first.command, same.command);
    EXPECT_NE(first.command, other.command);
}

TEST(Flags, TextAsItIsAndListsAsArguments) {
    const auto target = contextOf({var("TEXT", str("-O2 -D'a b'")),
                                   var("LIST", list({str("-D"), str("a b"), str("")})),
                                   var("PATH", path("a b")), var("EMPTY"), var("NUMBER", num(3))});
    const auto command = [&target](const char* variable) {
        CommandText text;
        addFlags(text, *target, variable);
        return text.text();
    };
    EXPECT_EQ(command("TEXT"), "-O2 -D'a b'");
    EXPECT_EQ(command("LIST"), "-D " + quoteForHost("a b"));
    EXPECT_EQ(command("PATH"), quoteForHost("a b"));
    EXPECT_EQ(command("EMPTY") + command("NONE"), "");
    EXPECT_EQ(entriesOf(*target, "TEXT"), (std::vector<std::string>{"-O2", "-D'a", "b'"}));
    EXPECT_EQ(entriesOf(*target, "PATH"), (std::vector<std::string>{"a b"}));
    EXPECT_EQ(entriesOf(*target, "NUMBER"), (std::vector<std::string>{"3"}));
}

}  // namespace
}  // namespace Vesk::test
