#include "tools/support/target_paths.h"

#include <gtest/gtest.h>

#include "base/exception.h"
#include "platform/system.h"
#include "tools/scratch_directory.h"
#include "tools/support/libraries.h"
#include "tools/support/output_type.h"
#include "tools/support/parent_directory.h"
#include "tools/support/source_files.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

const std::string kRoot = platform::kWindows ? "C:/p q" : "/p q";

/// A target main::app that stands in sub/vesk.txt of the project.
std::shared_ptr<TargetContext> targetIn(std::vector<Assignment> assignments,
                                        std::vector<std::string> parameters = {}) {
    auto target = std::make_shared<Target>();
    target->file = std::make_shared<const std::filesystem::path>(kRoot + "/sub/vesk.txt");
    target->name = "app";
    target->parameters = std::move(parameters);
    return contextOf<TargetContext>(assignments, target, "main::app");
}

BuildEnvSettings settings() {
    BuildEnvSettings settings;
    settings.projectRoot = kRoot;
    return settings;
}

TEST(TargetPaths, NamesBelongToTheUnitFilesDirectory) {
    const auto target = targetIn({});
    const TargetPaths paths(*target, BuildEnv(settings()));
    EXPECT_EQ(paths.root(), kRoot);
    EXPECT_EQ(paths.absolute("a.c"), kRoot + "/sub/a.c");
    EXPECT_EQ(paths.absolute("../x//./a.c"), kRoot + "/x/a.c");
    EXPECT_EQ(paths.absolute(kRoot + "/include/"), kRoot + "/include");
    EXPECT_EQ(paths.inCommand(kRoot + "/sub/a.c"), "sub/a.c");
    EXPECT_EQ(paths.inCommand(kRoot), ".");
    EXPECT_EQ(paths.inCommand(kRoot + "2/a.c"), kRoot + "2/a.c");
}

TEST(TargetPaths, ObjectsOfDifferentSourcesDiffer) {
    const auto target = targetIn({});
    const TargetPaths paths(*target, BuildEnv(settings()));
    const auto object = [&](const std::string& source) {
        return paths.objectStem(source).substr(paths.objectDirectory().size());
    };
    EXPECT_EQ(paths.objectDirectory(), kRoot + "/out/.obj/main/app");
    EXPECT_EQ(object(kRoot + "/a/x.c"), "/a/x.c");
    EXPECT_EQ(object(kRoot + "/b/x.c"), "/b/x.c");
    EXPECT_EQ(object(kRoot + "/b/x.cpp"), "/b/x.cpp");
    const std::string above = kRoot.substr(0, kRoot.rfind('/'));
    EXPECT_EQ(object(above + "/x.c"), "/__/x.c");
    EXPECT_EQ(object(kRoot + "/__/x.c"), "/___/x.c");
    if (platform::kWindows) {
        EXPECT_EQ(object("D:/x/y.c"), "/D/x/y.c");
    }
}

TEST(TargetPaths, ArgumentsMakeAnotherObjectDirectory) {
    const auto directory = [](const char* value) {
        const auto target = targetIn({var("mode", str(value))}, {"mode"});
        return TargetPaths(*target, BuildEnv(settings())).objectDirectory();
    };
    EXPECT_NE(directory("debug"), directory("release"));
    EXPECT_EQ(directory("debug"), directory("debug"));
    EXPECT_TRUE(directory("debug").starts_with(kRoot + "/out/.obj/main/app-"));
}

TEST(TargetPaths, ProductsStayInTheOutputDirectory) {
    const auto target = targetIn({});
    const TargetPaths paths(*target, BuildEnv(settings()));
    EXPECT_EQ(paths.inOutputDirectory("bin/app"), kRoot + "/out/bin/app");
    EXPECT_THROW(paths.inOutputDirectory("../app"), VeskException);
    EXPECT_THROW(paths.inOutputDirectory("."), VeskException);
    EXPECT_EQ(relativePath("/a/b/lib", "/a/b/bin"), "../lib");
    EXPECT_EQ(relativePath("/a/b", "/a/b"), ".");
}

class Sources : public testing::Test {
  protected:
    std::string names(std::vector<Assignment> assignments) {
        auto context = contextOf<TargetContext>(assignments, std::make_shared<Target>(), "u::t");
        BuildEnvSettings where;
        where.projectRoot = platform::pathFromUtf8(directory_.path());
        const TargetPaths paths(*context, BuildEnv(where));
        std::string all;
        for (const SourceFile& source : sourceFiles(*context, paths, ".o")) {
            all += paths.inCommand(source.path) + " ";
            EXPECT_EQ(source.object, paths.objectStem(source.path) + ".o");
        }
        return all;
    }

    ScratchDirectory directory_;
};

TEST_F(Sources, InOrderWithoutRepetitionsAndExclusions) {
    for (const char* file : {"a.c", "b.c", "main.c", "sub/a.c", "x.cpp"}) {
        directory_.write(file, "");
    }
    EXPECT_EQ(names({var("C_FILES", list({str("main.c"), str("*.c")})),
                     var("CPP_FILES", str("x.cpp y.cpp")), var("ASM_FILES", path("s t.S"))}),
              "main.c a.c b.c x.cpp y.cpp s t.S ");
    EXPECT_EQ(names({var("C_FILES", str("**/*.c")),
                     var("EXCLUDE_FILES", list({str("main.c"), str("sub/**")}))}),
              "a.c b.c ");
    const auto failure = [this](const char* c, const char* cpp) -> std::string {
        try {
            return names({var("C_FILES", str(c)), var("CPP_FILES", str(cpp))});
        } catch (const VeskException& error) {
            return error.text();
        }
    };
    EXPECT_EQ(failure("*.c", "*.cpp sub/../a.c"),
              "'a.c' is named in C_FILES and in CPP_FILES. Leave one out.");
    EXPECT_EQ(failure("*.cc", ""),
              "No file matches the pattern '*.cc' in C_FILES. It was searched for as '" +
                  directory_.path() + "/*.cc'.");
}

TEST_F(Sources, LibrariesInDirectories) {
    directory_.write("l1/libboth.a", "");
    directory_.write("l1/libboth.so", "");
    directory_.write("l2/libonly.a", "");
    const std::string root = directory_.path();
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"only", "l2/libonly.a "},
        {"both", "l1/libboth.so l1/libboth.a "},
        {"-lonly", "l2/libonly.a "},
        {":libonly.a", "l2/libonly.a "},
        {"-l:libboth.a", "l1/libboth.a "},
        {"l2/libonly.a", "l2/libonly.a "},
        {"l2\\libonly.a", platform::kWindows ? "l2/libonly.a " : ""},
        {"-static", ""},
        {"m", ""},
    };
    for (const auto& [name, expected] : cases) {
        std::string found;
        for (const std::string& file : librariesIn({root + "/l1", root + "/l2"}, {name}, root)) {
            found += file.substr(root.size() + 1) + " ";
        }
        EXPECT_EQ(found, expected) << name;
    }
}

TEST(LinkOrder, EachLibraryFollowsAllThatNeedIt) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(atLastPlace({"base", "mid", "base"}), (Names{"mid", "base"}));
    EXPECT_EQ(atLastPlace({"a", "base", "b", "base", "a", "base"}), (Names{"b", "a", "base"}));
    EXPECT_EQ(atLastPlace({}), Names{});
}

TEST(ParentDirectory, IgnoresTrailingSeparators) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"a", ""}, {"a/b", "a"}, {"a/b//", "a"}, {"a/b\\/", "a"}, {"/a", "/"}, {"", ""}, {"/", ""},
    };
    for (const auto& [whole, parent] : cases) {
        EXPECT_EQ(platform::pathToUtf8(parentDirectory(whole)), parent) << whole;
    }
}

TEST(OutputName, Endings) {
    for (const char* with : {"plugin.so", "d/app.exe", "x.1.js"}) {
        EXPECT_TRUE(hasSuffix(with)) << with;
    }
    for (const char* without : {"app", "app-1.2", "dir.d/app", ".app", "app."}) {
        EXPECT_FALSE(hasSuffix(without)) << without;
    }
    EXPECT_EQ(decorated("d/x", "lib", ".a"), "d/libx.a");
    EXPECT_EQ(outputTypeOf(*contextOf({var("OUTPUT_TYPE", str("Static"))})), OutputType::Static);
    EXPECT_THROW(outputTypeOf(*contextOf({var("OUTPUT_TYPE", str("dll"))})), VeskException);
}

}  // namespace
}  // namespace Vesk::test
