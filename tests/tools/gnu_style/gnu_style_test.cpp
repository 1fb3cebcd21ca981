// The commands and outputs that the builders make of targets.

#include <algorithm>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "base/text.h"
#include "platform/system.h"
#include "tools/builder.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/gnu/gnu_matcher.h"
#include "tools/llvm/llvm_matcher.h"
#include "tools/scratch_folder.h"
#include "tools/tool_fixture.h"
#include "types/list_value.h"

namespace Vesk::test {
namespace {

const std::string kFarInclude = platform::kWindows ? "C:/far" : "/far";

class GnuStyleTargets : public testing::Test {
  protected:
    GnuStyleTargets() {
        for (const char* program : {"gcc", "g++", "ar", "ld", "objcopy", "clang", "clang++",
                                    "llvm-ar", "ld.lld", "llvm-objcopy"}) {
            folder_.write("bin/" + std::string(program) + std::string(programEnding()), "");
        }
    }

    template <class M = GNUMatcher>
    RecipeSet build(std::vector<Assignment> assignments, const char* triple = "x86_64-linux-gnu") {
        const M matcher(
            "tool", {},
            mapOf({var("toolchain_path", path("bin", platform::pathFromUtf8(folder_.path()))),
                   var("toolchain_target", str(triple))}));
        assignments.push_back(var("PROJECT_ROOT", str(folder_.path())));
        auto target = std::make_shared<Target>();
        target->name = "app";
        auto context = contextOf<TargetContext>(assignments, target, "main::app");
        return matcher.createBuilder(*context)->createRecipes(*context);
    }

    /// The commands, a line each, programs without their folder, the object directory as {obj}.
    std::string commands(const RecipeSet& set) const {
        std::string all;
        for (const Recipe& recipe : set.recipes) {
            std::string command = replaced(recipe.command, "out/.obj/main/app", "{obj}");
            const std::size_t bin = command.find("bin");
            const std::size_t nameAt = bin + 4;
            const std::size_t end = command.find_first_of("'\"", nameAt);
            const std::string program = command.substr(nameAt, end - nameAt);
            all += program.substr(0, program.size() - programEnding().size()) +
                   command.substr(end + 1) + "\n";
            EXPECT_EQ(recipe.workingDirectory, platform::pathFromUtf8(folder_.path()));
        }
        return all;
    }

    /// An output as text, paths from the project's root, with its operator.
    std::string output(const RecipeSet& set, const char* name) const {
        for (const Assignment& output : set.assignments) {
            if (output.name == CiString(name)) {
                std::string text = output.op == AssignOperator::Append ? "+= " : "= ";
                text += output.value->toString();
                std::ranges::replace(text, '\\', '/');
                return replaced(text, folder_.path() + "/", "");
            }
        }
        return "none";
    }

    static std::string replaced(std::string text, const std::string& what, const char* with) {
        for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at)) {
            text.replace(at, what.size(), with);
        }
        return text;
    }

    std::string failure(std::vector<Assignment> assignments) {
        try {
            build(std::move(assignments));
        } catch (const VeskException& error) {
            return replaced(error.message(), folder_.path(), "{DIR}");
        }
        return "no failure";
    }

    ScratchFolder folder_;
};

TEST_F(GnuStyleTargets, Program) {
    const RecipeSet set = build({
        var("C_FILES", list({str("src/a.c"), str("src/b.inc")})),
        var("CPP_FILES", str("x.cpp")),
        var("ASM_FILES", str("s.s t.S")),
        var("FLAGS", str("-g -O2")),
        var("C_FLAGS", list({str("-std=c11")})),
        var("CPP_FLAGS", str("-fno-rtti")),
        var("DEFINES", list({str("A"), str("B=1")})),
        var("INCLUDE_DIRS", list({str("include"), path(kFarInclude)})),
        var("SYSTEM_INCLUDE_DIRS", str("vendor")),
        var("LAUNCHER", str("ccache")),
        var("LINK_FLAGS", str("-Wl,-s")),
        var("LIB_DIRS", str("lib")),
        var("LIBS", list({str("m"), str("z"), str("m"), str("-pthread")})),
        var("LIB_FILES", list({str("x/liba.a"), str("x/libb.a"), str("x/liba.a")})),
        var("OBJ_FILES", str("y.o")),
        out("INCLUDE_DIRS_OUT", str("i")),
    });
    EXPECT_EQ(replaced(commands(set), kFarInclude, "{far}"),
              "gcc -g -O2 -std=c11 -DA -DB=1 -Iinclude -I{far} -isystem vendor"
              " -MMD -MF {obj}/src/a.c.d -c src/a.c -o {obj}/src/a.c.o\n"
              "gcc -g -O2 -std=c11 -DA -DB=1 -Iinclude -I{far} -isystem vendor -x c"
              " -MMD -MF {obj}/src/b.inc.d -c src/b.inc -o {obj}/src/b.inc.o\n"
              "g++ -g -O2 -fno-rtti -DA -DB=1 -Iinclude -I{far} -isystem vendor"
              " -MMD -MF {obj}/x.cpp.d -c x.cpp -o {obj}/x.cpp.o\n"
              "gcc -g -O2 -DA -DB=1 -Iinclude -I{far} -isystem vendor -c s.s -o {obj}/s.s.o\n"
              "gcc -g -O2 -DA -DB=1 -Iinclude -I{far} -isystem vendor"
              " -MMD -MF {obj}/t.S.d -c t.S -o {obj}/t.S.o\n"
              "g++ -g -O2 -o out/app {obj}/src/a.c.o {obj}/src/b.inc.o {obj}/x.cpp.o {obj}/s.s.o"
              " {obj}/t.S.o y.o x/libb.a x/liba.a -Wl,-s -Llib -lz -lm -pthread\n");
    EXPECT_TRUE(set.recipes.front().command.starts_with("ccache "));
    EXPECT_FALSE(set.recipes.back().command.starts_with("ccache "));
    EXPECT_EQ(output(set, "OUTPUT"), "= out/app");
    EXPECT_EQ(output(set, "LIB_FILES"), "none");
    EXPECT_EQ(output(set, "INCLUDE_DIRS_OUT"), "= i");
    EXPECT_EQ(output(set, "DEPFILES"),
              "= out/.obj/main/app/src/a.c.d out/.obj/main/app/src/b.inc.d"
              " out/.obj/main/app/x.cpp.d out/.obj/main/app/t.S.d");
}

TEST_F(GnuStyleTargets, RecipesSayWhatDecides) {
    const RecipeSet set = build({var("C_FILES", str("a.c")), var("LIB_FILES", str("l.a")),
                                 var("LINKER_SCRIPT", str("app.ld"))});
    ASSERT_EQ(set.recipes.size(), 2u);
    const auto names = [this](const std::vector<RecipeInput>& inputs) {
        std::string all;
        for (const RecipeInput& input : inputs) {
            all += " " + input.assignment.value->toString();
        }
        std::ranges::replace(all, '\\', '/');
        return replaced(all, folder_.path() + "/", "");
    };
    const std::string exe(programEnding());
    const Recipe& compile = set.recipes[0];
    EXPECT_EQ(names(compile.inputs), " a.c bin/gcc" + exe);
    EXPECT_EQ(compile.inputs[0].intermediate->value->toString(),
              compile.outputs.at(0).value->toString());
    EXPECT_TRUE(compile.pooled);
    EXPECT_EQ(compile.stage, 0u);
    EXPECT_EQ(compile.dependencyFile.filename(), "a.c.d");
    const Recipe& link = set.recipes[1];
    EXPECT_EQ(names(link.inputs), " out/.obj/main/app/a.c.o bin/gcc" + exe + " app.ld l.a");
    EXPECT_EQ(link.stage, 1u);
    EXPECT_FALSE(link.pooled);
    EXPECT_FALSE(link.replacesOutputs);
}

TEST_F(GnuStyleTargets, StaticLibrary) {
    const RecipeSet set = build({var("CPP_FILES", str("a.cpp")), var("OUTPUT_TYPE", str("static")),
                                 var("LIB_FILES", list({str("libbase.a"), str("libbase.a")})),
                                 var("LIBS", str("m")), var("OUTPUT_NAME", str("sub/util"))});
    EXPECT_EQ(commands(set),
              "g++ -MMD -MF {obj}/a.cpp.d -c a.cpp -o {obj}/a.cpp.o\n"
              "ar rcs out/sub/libutil.a {obj}/a.cpp.o\n");
    EXPECT_TRUE(set.recipes.back().replacesOutputs);
    EXPECT_EQ(output(set, "LIBRARY"), "= out/sub/libutil.a");
    EXPECT_EQ(output(set, "LIB_FILES"), "+= out/sub/libutil.a libbase.a");
    EXPECT_EQ(output(set, "LIBS"), "+= m");
    EXPECT_EQ(output(set, "LINK_LANGUAGE"), "= c++");
}

TEST_F(GnuStyleTargets, SharedLibraryOnBothSystems) {
    const std::vector<Assignment> target = {
        var("C_FILES", str("a.c")), var("OUTPUT_TYPE", str("shared")),
        var("LIB_FILES", list({str("out/sub/libx.so"), str("liby.a")}))};
    const RecipeSet elf = build(target);
    EXPECT_EQ(replaced(replaced(commands(elf), "\"", ""), "'", ""),
              "gcc -fPIC -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"
              "gcc -shared -Wl,-soname,libapp.so -o out/libapp.so {obj}/a.c.o"
              " -Wl,-rpath,$ORIGIN/sub out/sub/libx.so liby.a\n");
    EXPECT_EQ(output(elf, "LIB_FILES"), "+= out/libapp.so out/sub/libx.so");
    EXPECT_EQ(output(elf, "LIBS"), "none");

    const RecipeSet dll = build(target, "x86_64-w64-mingw32");
    EXPECT_EQ(commands(dll),
              "gcc -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"
              "gcc -shared -Wl,--out-implib,out/libapp.dll.a -o out/app.dll {obj}/a.c.o"
              " out/sub/libx.so liby.a\n");
    EXPECT_EQ(output(dll, "LIBRARY"), "= out/libapp.dll.a");
    EXPECT_EQ(dll.recipes.back().outputs.size(), 2u);
}

TEST_F(GnuStyleTargets, OtherProducts) {
    const auto objects = var("OBJ_FILES", list({str("a.o"), str("b.o")}));
    struct Case {
        std::vector<Assignment> target;
        const char* commands;
    };
    const Case cases[] = {
        {{objects}, "g++ -o out/app a.o b.o\n"},
        {{var("CPP_FILES", list({})), var("C_FILES", str("a.c")),
          var("OUTPUT_TYPE", str("Object"))},
         "gcc -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"},
        {{objects, var("OUTPUT_NAME", str("app.elf"))}, "g++ -o out/app.elf a.o b.o\n"},
        {{objects, var("OUTPUT_TYPE", str("static")), var("AR_FLAGS", str("D"))},
         "ar rcs D out/libapp.a a.o b.o\n"},
        {{objects, var("OUTPUT_TYPE", str("relocatable"))}, "ld -r -o out/app.o a.o b.o\n"},
        {{objects, var("LINKER_SCRIPT", str("x.ld")), var("LINK_FLAGS", str("-N"))},
         "ld -o out/app -T x.ld a.o b.o -N\n"},
        {{var("C_FILES", str("a.c")), var("OUTPUT_TYPE", str("object"))},
         "gcc -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"},
        {{var("C_FILES", str("a.c")), var("LINK_LANGUAGE", str("c++")),
          var("SYSROOT", path("/sys")), var("LINKER", str("gold"))},
         "gcc --sysroot=/sys -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"
         "g++ --sysroot=/sys -fuse-ld=gold -o out/app {obj}/a.c.o\n"},
        {{var("OBJCOPY_INPUT", str("a.o")), var("OBJCOPY_FORMAT", str("binary")),
          var("OBJCOPY_SECTIONS", str(".text .data"))},
         "objcopy -O binary -j .text -j .data a.o out/app.bin\n"},
        {{var("OBJCOPY_INPUT", str("out/x")), var("OBJCOPY_FLAGS", list({str("--strip-debug")}))},
         "objcopy --strip-debug out/x out/app\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(commands(build(each.target)), each.commands);
    }
    const RecipeSet objectTarget =
        build({objects, var("C_FILES", str("a.c")), var("OUTPUT_TYPE", str("object"))});
    EXPECT_EQ(output(objectTarget, "OBJECTS"), "= out/.obj/main/app/a.c.o");
    EXPECT_EQ(output(objectTarget, "OBJ_FILES"), "+= out/.obj/main/app/a.c.o a.o b.o");
}

TEST_F(GnuStyleTargets, Llvm) {
    const std::vector<Assignment> target = {var("C_FILES", str("a.c")),
                                            var("TARGET_TRIPLE", str("x86_64-w64-mingw32"))};
    EXPECT_EQ(commands(build<LLVMMatcher>(target)),
              "clang --target=x86_64-w64-mingw32 -MMD -MF {obj}/a.c.d -c a.c -o {obj}/a.c.o\n"
              "clang --target=x86_64-w64-mingw32 -fuse-ld=lld -o out/app.exe {obj}/a.c.o\n");
    EXPECT_EQ(commands(build<LLVMMatcher>(
                  {var("OBJ_FILES", str("a.o")), var("OUTPUT_TYPE", str("static"))})),
              "llvm-ar rcs out/libapp.a a.o\n");
    EXPECT_EQ(
        commands(build<LLVMMatcher>({var("OBJ_FILES", str("a.o")), var("LINKER", str("bfd"))})),
        "clang++ -fuse-ld=bfd -o out/app a.o\n");
}

TEST_F(GnuStyleTargets, WhatCannotBeBuilt) {
    EXPECT_EQ(failure({var("C_FILES", list({}))}),
              "There is nothing to make 'out/app' of: C_FILES, CPP_FILES, ASM_FILES and OBJ_FILES "
              "name no file.");
    EXPECT_EQ(failure({var("C_FILES", str("a.c")), var("OUTPUT_TYPE", str("statik"))}),
              "OUTPUT_TYPE 'statik' is none of executable, static, shared, object, relocatable. "
              "(did you mean 'static'?)");
    EXPECT_EQ(failure({var("OBJCOPY_INPUT", str("a b"))}),
              "OBJCOPY_INPUT must name one file; it names 2.");
    EXPECT_EQ(
        failure({var("OBJCOPY_INPUT", str("out/app"))}),
        "'out/app' would be overwritten by what is made of it. Give OUTPUT_NAME another name.");
}

}  // namespace
}  // namespace Vesk::test
