#include <fmt/format.h>
#include <gtest/gtest.h>
#include <string>

#include "base/text.h"
#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {
namespace {

std::string describe(const std::vector<ToolEntry>& tools) {
    std::string text;
    for (const ToolEntry& tool : tools) {
        text += fmt::format("tool {} @{} of {} {}\n", tool.name, tool.line,
                            tool.source->assignments.size(), describe(*tool.context));
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
    ProjectFile project(std::string_view text) const {
        return parseProjectFile(write(".vesk_project.txt", text));
    }
    RegistryFile registry(std::string_view text) const {
        return parseRegistryFile(write(".vesk_registry.txt", text));
    }
    std::string projectError(std::string_view text) const {
        return errorOf([&] { project(text); });
    }
};

TEST_F(ProjectAndRegistryFile, MayBeEmpty) {
    EXPECT_EQ(describe(project("")), "name ''\n");
    EXPECT_EQ(describe(registry("// no entries yet\n")), "");
    EXPECT_EQ(describe(project("import {} tools {} units {} profiles {}")), "name ''\n");
    EXPECT_EQ(readable(platform::pathToUtf8(registry("").path)), "DIR/.vesk_registry.txt");
}

TEST_F(ProjectAndRegistryFile, GivesAllSectionsInOrder) {
    EXPECT_EQ(readable(describe(project(R"(name demo
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
)"))),
              R"(name 'demo'
import path '../base lib' alias 'base' under '' with 'debug' @3
import path 'D:/x' alias '' under 'debug' with '' @4
import name 'zlib' alias '' under '' with '' @5
import name 'zlib' alias '' under 'release' with 'static' @6
tool cc @9 of 3 { !C_FILES tool_type = S"x" }+0
tool cc @10 of 1 { tool_type = S"msvc" }+0
unit core 'vesk.txt' 'src/more.txt' @12
unit empty '' @12
unit core 'x' @12
profile default @14 { CFLAGS = S"-O2" }+0
profile debug @15 { CFLAGS += S"-g" LEVEL = 3 }+1
)");
}

TEST_F(ProjectAndRegistryFile, GivesRegistryEntriesInOrder) {
    EXPECT_EQ(readable(describe(registry(R"raw(projects {
  zoo "C:\Program Files\zoo" ant "/a/ant" zoo "/b"
}
tools { gcc { !x = 1 !tool_type = P"(bin)" } })raw"))),
              R"(project zoo 'C:/Program Files/zoo'
project ant '/a/ant'
project zoo '/b'
tool gcc @4 of 2 { !tool_type = P"bin" in DIR !x = 1 }+0
)");
}

TEST_F(ProjectAndRegistryFile, MakesPathsOfAProjectAbsolute) {
    const auto paths = [&](const std::string& content) {
        return readable(describe(
            *project("profiles { p { x = P\"(" + content + ")\" } }").profiles[0].context));
    };
    EXPECT_EQ(paths("a/b"), "{ x = P\"DIR/a/b\" in DIR }+0");
    EXPECT_EQ(paths("../\u00fc b"), "{ x = P\"DIR/../\u00fc b\" in DIR }+0");
    EXPECT_EQ(paths("C:/a/b"), "{ x = P\"C:/a/b\" in DIR }+0");
    EXPECT_EQ(paths("${PROJECT_ROOT}/a"), "{ x = P\"${PROJECT_ROOT}/a\" in DIR }+0");
    EXPECT_EQ(paths("a/${x}"), "{ x = P\"DIR/a/${x}\" in DIR }+0");
    if (!platform::kWindows) {
        EXPECT_EQ(paths("/a/b"), "{ x = P\"/a/b\" in DIR }+0");
    }
}

TEST_F(ProjectAndRegistryFile, NamesThePlaceOfWhatCannotBe) {
    EXPECT_EQ(projectError("tools { t { !a } }\nprofiles { p {\n !x = 1 } }"),
              "'!' assignment modifier is not allowed in this context.\n"
              "  in DIR/.vesk_project.txt:3");
    EXPECT_EQ(projectError("tools { t {\n a = [1, {}] } }"),
              "'a' in DIR/.vesk_project.txt has a nested context as its value; only unit files "
              "may have one.\n  in DIR/.vesk_project.txt:2");
    EXPECT_EQ(projectError("profiles { p { a = 1 if b.c = {} {} } }"),
              "'b.c' in DIR/.vesk_project.txt has a nested context as its value; only unit files "
              "may have one.\n  in DIR/.vesk_project.txt:1");
    EXPECT_EQ(errorOf([&] { registry("tools { t { x = 1\n x += \"a\" } }"); }),
              "Cannot convert VeskInt 1 to VeskString\n  in variable 'x', line 2\n"
              "  in DIR/.vesk_registry.txt:1");
    EXPECT_EQ(projectError("profiles { p { x = 0x80000000 } }"),
              "Invalid or out-of-range integer literal '0x80000000'.\n"
              "  in DIR/.vesk_project.txt:1");
}

TEST_F(ProjectAndRegistryFile, ReportsEverySyntaxError) {
    const ErrorCapture errors;
    EXPECT_EQ(projectError("name a\nimport { 1; }\nunits {\n  core { x } # }\n"),
              "DIR/.vesk_project.txt(2,9): '1' mismatched input '1' expecting {'}', STRING, "
              "IDENTIFIER}\n"
              "DIR/.vesk_project.txt(4,9): 'x' extraneous input 'x' expecting {'}', STRING}\n"
              "DIR/.vesk_project.txt(4,13): token recognition error at: '#'");
    EXPECT_EQ(projectError("units {} tools {}"),
              "DIR/.vesk_project.txt(1,9): 'tools' mismatched input 'tools' expecting <EOF>");
    EXPECT_EQ(projectError("units {} units {}"),
              "DIR/.vesk_project.txt(1,9): 'units' mismatched input 'units' expecting <EOF>");
    EXPECT_EQ(projectError("import { a \"b\"; }"),
              "DIR/.vesk_project.txt(1,11): '\"b\"' no viable alternative at input 'a\"b\"'");
    EXPECT_EQ(errorOf([&] { registry("projects { a \"b\" c }"); }),
              "DIR/.vesk_registry.txt(1,19): '}' mismatched input '}' expecting STRING");
    EXPECT_EQ(errors.text(), "");
}

}  // namespace
}  // namespace Vesk
