// Words of the C3 compiler for what targets say.

#include "tools/c3/c3_command.h"

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

TEST(C3Command, MachinesOfTriples) {
    const std::pair<const char*, const char*> cases[] = {
        {"x86_64-linux-gnu", "linux-x64"},
        {"x86_64-pc-linux-musl", "linux-x64"},
        {"aarch64-linux-android21", "android-aarch64"},
        {"x86_64-linux-android", "android-x86_64"},
        {"x86_64-w64-mingw32", "mingw-x64"},
        {"x86_64-pc-windows-msvc", "windows-x64"},
        {"x86_64-w64-windows-gnu", "mingw-x64"},
        {"arm64-apple-darwin23", "macos-aarch64"},
        {"riscv64-linux-gnu", "linux-riscv64"},
        {"wasm32", "wasm32"},
        {"linux-x64", "linux-x64"},
        {"", ""},
    };
    for (const auto& [triple, machine] : cases) {
        EXPECT_EQ(c3TargetOf(triple), machine);
    }
}

// The compiler adds the ending by itself, and no prefix.
TEST(C3Command, Products) {
    struct Case {
        const char* name;
        OutputType type;
        const char* triple;
        const char* file;
        const char* given;
    };
    const char* linux = "x86_64-linux-gnu";
    const char* windows = "mingw-x64";
    const Case cases[] = {
        {"app", OutputType::Executable, linux, "app", "app"},
        {"app-1.2", OutputType::Executable, windows, "app-1.2.exe", "app-1.2"},
        {"app.exe", OutputType::Executable, windows, "app.exe", "app"},
        {"sub/one", OutputType::Static, linux, "sub/libone.a", "sub/libone"},
        {"one", OutputType::Static, windows, "one.lib", "one"},
        {"one", OutputType::Shared, linux, "libone.so", "libone"},
        {"plugin.so", OutputType::Shared, linux, "plugin.so", "plugin"},
        {"one", OutputType::Shared, "macos-aarch64", "libone.dylib", "libone"},
        {"one", OutputType::Shared, windows, "one.dll", "one"},
    };
    const auto target = targetOf({});
    const BuildEnv environment(BuildEnvSettings{});
    const TargetPaths paths(*target, environment);
    const std::size_t start = paths.outputDirectory().size() + 1;
    for (const Case& each : cases) {
        const C3Product product = c3Product(each.name, each.type, each.triple, paths);
        EXPECT_EQ(product.file.substr(start), each.file);
        EXPECT_EQ(product.givenName.substr(start), each.given);
    }
    EXPECT_THROW(c3Product("x.o", OutputType::Static, linux, paths), VeskException);
    EXPECT_THROW(c3Product("app.exe", OutputType::Executable, linux, paths), VeskException);
}

}  // namespace
}  // namespace Vesk::test
