// Command lines that no program can be had for here: those for other machines and for drivers.

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/builder.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/msvc/msvc_matcher.h"
#include "tools/scratch_directory.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

class MsvcTargets : public testing::Test {
  protected:
    MsvcTargets() {
        for (const char* machine : {"x86", "arm64", "x64"}) {
            for (const char* name : {"cl", "link", "lib", "ml", "armasm64"}) {
                program(std::string("vc/14.30.1/bin/Hostx64/") + machine + "/" + name);
            }
        }
        directory_.write("vc/14.30.1/include/a.h", "");
        for (const char* file : {"um/windows.h", "km/wdm.h"}) {
            directory_.write(std::string("kits/Include/10.0.9.0/") + file, "");
        }
        directory_.write("kits/Lib/10.0.9.0/km/x86/hal.lib", "");
        directory_.write("kits/Include/wdf/umdf/1.11/a.h", "");
        directory_.write("kits/Include/wdf/umdf/2.33/a.h", "");
    }

    void program(const std::string& name) {
        directory_.write(name + std::string(programSuffix()), "");
    }

    RecipeSet build(const char* triple, std::vector<Assignment> assignments) {
        const MSVCMatcher matcher(
            "tool", {},
            mapOf({var("toolchain_path", str(directory_.path() + "/vc/14.30.1")),
                   var("toolchain_target", str(triple))}));
        assignments.push_back(var("PROJECT_ROOT", str(directory_.path())));
        assignments.push_back(var("winsdk_path", path("kits")));
        auto target = std::make_shared<Target>();
        target->name = "app";
        auto context = contextOf<TargetContext>(assignments, target, "main::app");
        return matcher.createBuilder(*context)->createRecipes(*context);
    }

    /// Without the program and without what every command of its kind has.
    static std::string options(const Recipe& recipe) {
        std::string text = recipe.command.substr(recipe.command.find("nologo") + 7);
        for (const char* common : {"/Brepro ", "/INCREMENTAL:NO ", "/c ", "out/.obj/main/app/"}) {
            if (const std::size_t at = text.find(common); at != std::string::npos) {
                text.erase(at, std::string_view(common).size());
            }
        }
        return text;
    }

    std::string variable(const Recipe& recipe, std::size_t number) const {
        std::string text = recipe.toolEnvironment->variables.at(number);
        std::ranges::replace(text, '\\', '/');
        for (std::size_t at = 0; (at = text.find(directory_.path() + "/")) != std::string::npos;) {
            text.erase(at, directory_.path().size() + 1);
        }
        return text;
    }

    ScratchDirectory directory_;
};

TEST_F(MsvcTargets, AnotherMachine) {
    const RecipeSet set = build(
        "aarch64-pc-windows-msvc",
        {var("C_FILES", str("a.c b.inc")), var("ASM_FILES", str("f.asm")),
         var("RUNTIME", str("MDd")), var("PDB", str("yes")), var("LIBS", str("m user32 x.lib"))});
    ASSERT_EQ(set.recipes.size(), 4u);
    EXPECT_EQ(options(set.recipes[0]),
              "/MDd /Z7 /sourceDependencies a.c.json "
              "/Foout/.obj/main/app/a.c.obj a.c");
    EXPECT_TRUE(options(set.recipes[1]).ends_with(" /Tcb.inc"));
    EXPECT_EQ(options(set.recipes[2]), "-o f.asm.obj f.asm");
    EXPECT_EQ(options(set.recipes[3]),
              "/OUT:out/app.exe /MACHINE:ARM64 /DEBUG /PDB:out/app.pdb a.c.obj"
              " out/.obj/main/app/b.inc.obj out/.obj/main/app/f.asm.obj user32.lib x.lib");
    EXPECT_EQ(variable(set.recipes[0], 0),
              "INCLUDE=vc/14.30.1/include;kits/Include/10.0.9.0/ucrt;kits/Include/10.0.9.0/um;"
              "kits/Include/10.0.9.0/shared;kits/Include/10.0.9.0/winrt;"
              "kits/Include/10.0.9.0/cppwinrt");
    EXPECT_EQ(variable(set.recipes[0], 1),
              "LIB=vc/14.30.1/lib/arm64;kits/Lib/10.0.9.0/ucrt/arm64;kits/Lib/10.0.9.0/um/arm64");
}

TEST_F(MsvcTargets, Drivers) {
    const RecipeSet wdm =
        build("i686-pc-windows-msvc", {var("C_FILES", str("d.c")), var("DRIVER", str("WDM"))});
    EXPECT_EQ(
        options(wdm.recipes[0]),
        "/kernel /Zp8 /Gz /D_X86_=1 /Di386=1 /DSTD_CALL /D_WIN32_WINNT=0x0A00 /DWINVER=0x0A00 "
        "/DWINNT=1 /sourceDependencies d.c.json /Foout/.obj/main/app/d.c.obj d.c");
    const std::string link = options(wdm.recipes[1]);
    EXPECT_TRUE(
        link.starts_with("/OUT:out/app.sys /MACHINE:X86 /DRIVER:WDM /SUBSYSTEM:NATIVE "
                         "/NODEFAULTLIB "))
        << link;
    EXPECT_NE(link.find("/ENTRY:GsDriverEntry@8"), std::string::npos) << link;
    EXPECT_TRUE(variable(wdm.recipes[0], 0).starts_with("INCLUDE=kits/Include/10.0.9.0/km;"));

    const RecipeSet umdf = build("x86_64-pc-windows-msvc",
                                 {var("CPP_FILES", str("d.cpp")), var("DRIVER", str("umdf"))});
    EXPECT_NE(umdf.recipes[0].command.find(" /DUMDF_VERSION_MAJOR=2 /DUMDF_VERSION_MINOR=33 "),
              std::string::npos);
    EXPECT_TRUE(options(umdf.recipes[1]).starts_with("/OUT:out/app.dll /MACHINE:X64 /DLL "));
    EXPECT_TRUE(variable(umdf.recipes[0], 1).ends_with(";kits/Lib/wdf/umdf/x64/2.33"));
}

TEST_F(MsvcTargets, BuilderByWhatATargetNames) {
    const auto type = [](const char* word) { return var("OUTPUT_TYPE", str(word)); };
    const std::pair<std::vector<Assignment>, const char*> cases[] = {
        {{var("CPP_FILES", str("a")), var("RC_FILES", str("b"))}, "cl++"},
        {{var("C_FILES", str("a")), type("static")}, "cl"},
        {{var("OBJ_FILES", str("a")), type("static")}, "lib"},
        {{var("OBJ_FILES", str("a"))}, "link"},
        {{var("RC_FILES", str("a")), type("shared")}, "link"},
        {{var("RC_FILES", str("a"))}, "rc"},
        {{var("MC_FILES", str("a")), var("RC_FILES", str("b"))}, "mc"},
    };
    const MSVCMatcher matcher("tool", {}, mapOf({var("toolchain_path", str("/x"))}));
    for (const auto& [target, name] : cases) {
        EXPECT_EQ(matcher.createBuilder(*contextOf(target))->name(), name);
    }
    EXPECT_THROW(MSVCMatcher("tool", {}, {}), VeskException);
}

}  // namespace
}  // namespace Vesk::test
