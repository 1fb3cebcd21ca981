// Which versions are found in trees as installers and removals leave them.

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/msvc/resource_script.h"
#include "tools/msvc/visual_studio.h"
#include "tools/msvc/windows_kits.h"
#include "tools/scratch_directory.h"

namespace Vesk::test {
namespace {

class Discovery : public testing::Test {
  protected:
    void program(const std::string& name) {
        directory_.write(name + std::string(programSuffix()), "");
    }

    std::string chosen(const KitWish& wish) {
        try {
            return chooseKit(wish, {}).version;
        } catch (const VeskException& error) {
            return error.text();
        }
    }

    ScratchDirectory directory_;
};

TEST_F(Discovery, KitsByVersionAndPurpose) {
    const std::string kits = directory_.path() + "/kits";
    for (const char* file : {"Include/10.0.9.0/um/Windows.h", "Include/10.0.9.0/km/wdm.h",
                             "Lib/10.0.9.0/km/arm64/hal.lib", "Include/10.0.10.0/um/windows.h",
                             "Include/10.0.11.0/km/wdm.h", "Include/10.0.30.0/ucrt/stdio.h",
                             "Include/wdf/kmdf/1.9/wdf.h", "Include/wdf/kmdf/1.31/wdf.h"}) {
        directory_.write(std::string("kits/") + file, "");
    }
    EXPECT_EQ(chosen({kits, "", false}), "10.0.10.0");
    EXPECT_EQ(chosen({kits, "", true}), "10.0.9.0");
    EXPECT_EQ(chosen({kits, "10.0.9", false}), "10.0.9.0");
    const std::string missing = chosen({kits, "10.0.30", false});
    EXPECT_NE(missing.find("Installed: 10.0.10.0, 10.0.9.0 (with WDK)."), std::string::npos)
        << missing;
    EXPECT_NE(chosen({kits + "/none", "", true}).find("Installed: none."), std::string::npos);
    EXPECT_EQ(frameworkVersions(kits, "kmdf"), (std::vector<std::string>{"1.31", "1.9"}));
}

TEST_F(Discovery, ToolSetsAndTheirPrograms) {
    const std::string studio = directory_.path() + "/Microsoft Visual Studio/2022/Community";
    const std::string sets = "Microsoft Visual Studio/2022/Community/VC/Tools/MSVC/";
    program(sets + "14.9.1/bin/Hostx86/x86/cl");
    program(sets + "14.38.3/bin/Hostx64/arm64/cl");
    program(sets + "14.38.3/bin/Hostx86/arm64/cl");
    program(sets + "14.40.1/bin/Hostx64/x64/link");
    directory_.write(sets + "14.38.3/include/vcruntime.h", "");
    const auto studios = installationsBelow(directory_.path());
    ASSERT_EQ(studios.size(), 1u);
    EXPECT_EQ(studios[0].directory, studio);
    EXPECT_EQ(studios[0].name, "Visual Studio Community 2022");

    const auto found = toolSetsIn(studios[0]);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].version, "14.38.3");
    EXPECT_EQ(found[1].version, "14.9.1");
    const std::string bin = found[0].directory + "/bin/Hostx64/arm64";
    EXPECT_EQ(binDirectory(found[0].directory, architectureOf("arm64")), bin);
    EXPECT_EQ(binDirectory(found[0].directory, architectureOf("x64")), "");
    EXPECT_EQ(binDirectory(found[1].directory, architectureOf("i686-pc-windows-msvc")),
              found[1].directory + "/bin/Hostx86/x86");
    EXPECT_EQ(toolSetAround(bin).directory, found[0].directory);
    EXPECT_EQ(toolSetAround(studio).directory, "");
    EXPECT_THROW(architectureOf("riscv64-linux"), VeskException);
}

TEST_F(Discovery, ResourceScriptsNameTheirFiles) {
    const std::string at = directory_.path() + "/";
    directory_.write("res/app.rc",
                     "#include <own.h>\n#include \"..\\inc\\b.h\"\n// \"not.this\"\n"
                     "1 ICON app.ico\n2 RCDATA \"da ta\\\\x.bin\"\n3 RCDATA \"no.where\"\n");
    const std::string wide(
        "\xFF\xFE"
        "1\0 \0I\0C\0O\0N\0 \0\"\0a\0.\0b\0\"\0",
        24);
    directory_.write("inc/own.h", "#include \"own.h\"\n#include \"w.rc2\"\n");
    directory_.write("inc/w.rc2", wide);
    for (const char* file : {"inc/b.h", "res/app.ico", "res/da ta/x.bin", "inc/a.b", "not.this"}) {
        directory_.write(file, "");
    }
    EXPECT_EQ(
        filesOfResourceScript(at + "res/app.rc", {at + "inc"}),
        (std::vector<std::string>{at + "inc/own.h", at + "inc/w.rc2", at + "inc/a.b",
                                  at + "inc/b.h", at + "res/app.ico", at + "res/da ta/x.bin"}));
}

}  // namespace
}  // namespace Vesk::test
