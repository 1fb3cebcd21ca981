#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>

#include "base/text.h"
#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "types/support.h"

namespace Vesk {
namespace {

std::string describe(const Context& context) {
    return fmt::format("{{ {} }}+{}", test::sourceOf(context), context.conditions().size());
}

std::string describe(const std::vector<ToolEntry>& tools) {
    std::string text;
    for (const ToolEntry& tool : tools) {
        text += fmt::format("tool {} @{} of {} {}\n", tool.name, tool.line,
                            tool.source->assignments.size(),
                            tool.context ? describe(*tool.context) : "left out: " + tool.failure);
    }
    return text;
}

std::string describe(const ProjectFile& project) {
    std::string text = "name '" + project.name + "'\n";
    for (const ProjectImport& entry : project.imports) {
        text += fmt::format("import {} '{}' alias '{}' under '{}' with '{}' @{}\n",
                            entry.byPath ? "path" : "name", entry.location, entry.alias,
                            entry.sourceProfile, entry.importedProfile, entry.line);
    }
    text += describe(project.tools);
    for (const UnitEntry& unit : project.units) {
        text += fmt::format("unit {} '{}' @{}\n", unit.name, joined(unit.files, "' '"), unit.line);
    }
    for (const ProfileEntry& profile : project.profiles) {
        text += fmt::format("profile {} @{} {}\n", profile.name, profile.line,
                            describe(*profile.context));
    }
    return text;
}

std::string describe(const RegistryFile& registry) {
    std::string text;
    for (const auto& [name, path] : registry.projects) {
        text += fmt::format("project {} '{}'\n", name, path);
    }
    return text + describe(registry.tools);
}

class ProjectAndRegistryFile : public LoaderTest {
  protected:
    std::string project(std::string_view text) const {
        return outcome([&] { return describe(parseProjectFile(write("project.txt", text))); });
    }
    std::string registry(std::string_view text) const {
        return outcome([&] { return describe(parseRegistryFile(write("registry.txt", text))); });
    }
};

TEST_F(ProjectAndRegistryFile, GiveAllSectionsInOrder) {
    EXPECT_EQ(project("import {} tools {} units {} profiles {}"), "name ''\n");
    EXPECT_EQ(registry("// no entries yet\n"), "");
    EXPECT_EQ(project(R"(name demo
import {
  "../base lib" base (debug);
  debug: "D:\x";
  zlib;
  release: zlib (static);
}
tools {
  cc { tool_type = "gnu-gcc" !C_FILES Tool_Type = "x" }
  cc { tool_type = "msvc" }
}
units { core { "vesk.txt" "src/more.txt" } empty { } core { "x" } }
profiles {
  default { CFLAGS = "-O2" }
  debug { CFLAGS += "-g" LEVEL = 1 LEVEL += 2 if LEVEL = 3 { X } }
}
)"),
              R"(name 'demo'
import path '../base lib' alias 'base' under '' with 'debug' @3
import path 'D:/x' alias '' under 'debug' with '' @4
import name 'zlib' alias '' under '' with '' @5
import name 'zlib' alias '' under 'release' with 'static' @6
tool cc @9 of 3 { !C_FILES; tool_type = "x" }+0
tool cc @10 of 1 { tool_type = "msvc" }+0
unit core 'vesk.txt' 'src/more.txt' @12
unit empty '' @12
unit core 'x' @12
profile default @14 { CFLAGS = "-O2" }+0
profile debug @15 { CFLAGS += "-g"; LEVEL = 3 }+1
)");
    EXPECT_EQ(registry(R"raw(projects {
  zoo "C:\Program Files\zoo" ant "/a/ant" zoo "/b"
}
tools { gcc { !x = 1 !tool_type = P"(bin)" } })raw"),
              R"raw(project zoo 'C:/Program Files/zoo'
project ant '/a/ant'
project zoo '/b'
tool gcc @4 of 2 { !tool_type = P"(DIR/bin)"; !x = 1 }+0
)raw");
}

TEST_F(ProjectAndRegistryFile, UnitsAreReadWithAndWithoutTheParser) {
    EXPECT_EQ(project("name units_\n/* units { x {} } */ units{a{\"}\"\"/*\"}/**/b-1\n// }\n"
                      "{ \"\u00fc\" } R {} } profiles { p { x = 1 } }"),
              "name 'units_'\nunit a '}' '/*' @2\nunit b-1 '\u00fc' @2\nunit R '' @4\n"
              "profile p @4 { x = 1 }+0\n");
    for (const char* unusual :
         {"units { unit { \"a\" } }", "units { a { R\"(a)\" } }", "units { a { \"a\" }",
          "units { a { \"a } }", "units { a \"a\" }", "units { a { \"a\" } } /*",
          "units { } units { }", "profiles { } units { a { } }", "units { a { x } }"}) {
        const std::string said = project(unusual);
        EXPECT_NE(said.find("DIR/project.txt"), std::string::npos) << unusual << "\n" << said;
    }
    EXPECT_EQ(project("units { a { \"\u00fc\" } } profiles { p { !x = 1 } }"),
              "'!' assignment modifier is not allowed in this context.\n"
              "  DIR/project.txt:1:36\n  units { a { \"\u00fc\" } } profiles { p { !x = 1 } }\n"
              "                                     ^");
}

TEST_F(ProjectAndRegistryFile, MakePathsOfAProjectAbsolute) {
    const auto text = [&](const std::string& content) {
        const auto file = write("project.txt", "profiles { p { x = P\"(" + content + ")\" } }");
        return readable(parseProjectFile(file).profiles[0].context->textOf("x").value());
    };
    for (const char* path : {"a/b", "../\u00fc b", "a/${x}"}) {
        EXPECT_EQ(text(path), std::string("DIR/") + path);
    }
    for (const char* path : {"C:/a/b", "${PROJECT_ROOT}/a"}) {
        EXPECT_EQ(text(path), path);
    }
}

TEST_F(ProjectAndRegistryFile, NameThePlaceOfWhatCannotBe) {
    const std::string nested =
        " in DIR/project.txt has a nested context as its value; only unit files may have one.\n"
        "  DIR/project.txt:";
    EXPECT_EQ(project("tools { t { !a } }\nprofiles { p {\n !x = 1 } }"),
              "'!' assignment modifier is not allowed in this context.\n"
              "  DIR/project.txt:3:2\n   !x = 1 } }\n   ^");
    EXPECT_EQ(project("tools { t {\n a = [1, {}] } }"),
              "'a'" + nested + "2:10\n   a = [1, {}] } }\n           ^");
    EXPECT_EQ(
        project("profiles { p { a = 1 if b.c = {} {} } }"),
        "'b.c'" + nested +
            "1:31\n  profiles { p { a = 1 if b.c = {} {} } }\n                                ^");
    const std::string tool = "tools { t { x = 1\n x += \"a\" } }";
    const std::string why = "Cannot convert VeskInt 1 to VeskString\n";
    EXPECT_EQ(project(tool), why +
                                 "  DIR/project.txt:2:2\n   x += \"a\" } }\n   ^\n"
                                 "  in variable 'x'\n  in DIR/project.txt:1");
    EXPECT_NE(registry(tool).find("left out: " + why), std::string::npos);
}

}  // namespace
}  // namespace Vesk
