#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr Variable kSources[] = {
    {"C_FILES", "list of files", "", "C sources, whatever their extension", R"(["src/*.c"])"},
    {"CPP_FILES", "list of files", "", "C++ sources", R"(["src/**/*.cpp"])"},
    {"ASM_FILES", "list of files", "",
     "assembler sources; `.S` passes the preprocessor, `.s` does not", R"(["start.S"])"},
    {"EXCLUDE_FILES", "list of files", "", "left out of the three above",
     R"(["src/main.c", "**/*_test.cpp"])"},
    {"OBJ_FILES", "list of files", "", "ready objects to link or archive", "objs.OBJECTS"},
};

constexpr Variable kCompiling[] = {
    {"FLAGS", "flags", "", "for all languages, and for linking with the compiler",
     R"("-O2 -g -fsanitize=address")"},
    {"C_FLAGS", "flags", "", "for C sources", R"("-std=c11 -Wall")"},
    {"CPP_FLAGS", "flags", "", "for C++ sources", R"("-std=c++20 -Wall")"},
    {"ASM_FLAGS", "flags", "", "for assembler sources", R"("-Wa,--fatal-warnings")"},
    {"DEFINES", "list", "", "`-D`", R"(["NDEBUG", "LIMIT=10"])"},
    {"INCLUDE_DIRS", "list of directories", "", "`-I`", R"x(["include", P"(../common)"])x"},
    {"SYSTEM_INCLUDE_DIRS", "list of directories", "",
     "`-isystem`: no warnings from there, and changes there are not noticed", R"(["vendor"])"},
    {"LAUNCHER", "flags", "", "stands in front of compile commands, not of link commands",
     R"("ccache")"},
};

constexpr Variable kType[] = {
    {"OUTPUT_TYPE", "string", "`executable`",
     "`executable`, `static`, `shared`, `object` (compile only), `relocatable` (all objects "
     "combined in one, `ld -r`)",
     R"("static")"},
};

constexpr Variable kName[] = {
    {"OUTPUT_NAME", "string", "the target's name",
     "without prefix and suffix; may begin with directories; a name with a suffix of its own, as "
     "`plugin.so`, is taken as it is",
     R"("bin/app")"},
};

constexpr Variable kLinking[] = {
    {"LIB_FILES", "list of files", "", "libraries by their files, in the order given",
     "[util.LIBRARY]"},
    {"LIBS", "list", "",
     "libraries by name, `-l`; `:libz.a` is a file's whole name; an entry with a slash (a path "
     "relative to the project's root) or a leading `-` is passed as it is",
     R"(["m", "z"])"},
    {"LIB_DIRS", "list of directories", "",
     "`-L`; a library of `LIBS` that lies there is noticed when it changes, as is one with a "
     "slash",
     R"(["vendor/lib"])"},
    {"LINK_FLAGS", "flags", "", "behind the objects and `LIB_FILES`, before `LIBS`",
     R"("-Wl,--as-needed")"},
    {"LINKER", "string", "LLVM: `lld` where there is one", "`-fuse-ld=`; MSVC: the program itself",
     R"("gold")"},
    {"DEF_FILE", "file", "", "exports of a DLL", R"("api.def")"},
    {"AR_FLAGS", "flags", "", "further options behind `ar rcs`; MSVC: of `lib`", R"("-D")"},
};

constexpr Variable kProducts[] = {
    {"OUTPUT", "path", "", "the product of any type but `object`"},
    {"LIBRARY", "path", "",
     "the file that dependants link with, for `static` and `shared`: the archive or shared "
     "library, on Windows the import library"},
    {"OBJECTS", "list of paths", "", "the objects of this target's sources"},
    {"LIB_FILES", "list of paths", "", "libraries, for dependants with `+`"},
    {"OBJ_FILES", "list of paths", "",
     "the objects of an `object` target, for dependants with `+`"},
};

constexpr Variable kOutputs[] = {
    {"LIBS", "list", "", "what a library needs in turn, for dependants with `+`"},
    {"LIB_DIRS", "list of paths", "", "where that lies, for dependants with `+`"},
    {"result", "integer", "", "0"},
};

constexpr Variable kPackages[] = {
    {"PACKAGES", "list", "",
     "installed libraries that pkg-config knows: what they need for compiling and for linking",
     R"x(["zlib", "gtk4 >= 4.8"])x"},
};

constexpr Variable kPackagesForDependants[] = {
    {"PACKAGES", "list", "",
     "the packages of a `static` library or an `object` target, for dependants with `+`"},
};

constexpr Variable kDependencyFiles[] = {
    {"DEPFILES", "list of paths", "",
     "the dependency files that the compiler wrote beside the objects"},
};

constexpr Variable kLanguage[] = {
    {"LINK_LANGUAGE", "string", "",
     "`c++` when a library holds C++, for dependants with `+`: they are linked by the C++ "
     "compiler"},
};

constexpr Variable kChoice[] = {
    {"toolchain_name", "string", "", "the name in the registry or its beginning",
     R"("GCC 12.2.0")"},
    {"tool_type", "string", "", "`gnu-gcc`, `llvm-clang`, `msvc` or `c3c`", R"("llvm-clang")"},
    {"toolchain_version", "string", "", "that version: `12` fits 12.2.0, `12.2` too, `1` does not",
     R"("12")"},
    {"toolchain_min_version", "string", "",
     "that version and later ones, compared as numbers: 9 is before 12", R"("11")"},
    {"toolchain_target", "string", "`native`",
     "the triple, one of its parts, a machine by any of its names (`x64`, `arm64`), `windows`, or "
     "`native`. Of several for one system the one for this machine's processor is used",
     R"("windows")"},
    {"toolchain_prefix", "string", "", "equal to the tool's", R"("arm-none-eabi-")"},
    {"toolchain_suffix", "string", "", "equal to the tool's", R"("-14")"},
    {"toolchain_path", "path", "", "equal to the tool's", R"x(P"(/opt/gcc-14/bin)")x"},
};

constexpr Variable kPlace[] = {
    {"tool_type", "string", "required", "`gnu-gcc`, `llvm-clang` or `c3c`", R"("gnu-gcc")"},
    {"toolchain_path", "path", "required",
     "the directory with the compiler, the directory above its `bin`, or the compiler itself",
     R"x(P"(/opt/gcc-14/bin)")x"},
    {"toolchain_prefix", "string", "", "before the programs' names", R"("arm-none-eabi-")"},
    {"toolchain_suffix", "string", "",
     "behind the programs' names; a program without it is used where none has it", R"("-14")"},
    {"toolchain_target", "string", "that of the prefix, else this machine's", "the triple",
     R"("arm-none-eabi")"},
};

constexpr Variable kIdentity[] = {
    {"toolchain_name", "string", "", "for people, and for targets that ask by name",
     R"("Our GCC")"},
    {"toolchain_version", "string", "",
     "full version; a tool without it is used for a target that asks for a version only if no "
     "other fits",
     R"("14.1.0")"},
    {"toolchain_default", "string", "",
     "written by detection: `machine`, `family` (first among those of its `toolchain_name`) or "
     "`no`"},
};

}  // namespace

constinit const VariableGroup kSourceVariables = {"Sources", VariableRole::Input, kSources};
constinit const VariableGroup kCompileVariables = {"Compiling", VariableRole::Input, kCompiling};
constinit const VariableGroup kTypeVariables = {"Products", VariableRole::Input, kType};
constinit const VariableGroup kNameVariables = {"Products", VariableRole::Input, kName};
constinit const VariableGroup kLinkVariables = {"Linking", VariableRole::Input, kLinking};
constinit const VariableGroup kPackageVariables = {"Packages", VariableRole::Input, kPackages};
constinit const VariableGroup kPackageOutputs = {"Outputs", VariableRole::Output,
                                                 kPackagesForDependants};
constinit const VariableGroup kProductVariables = {"Outputs", VariableRole::Product, kProducts};
constinit const VariableGroup kOutputVariables = {"Outputs", VariableRole::Output, kOutputs};
constinit const VariableGroup kDependencyFileVariables = {"Outputs", VariableRole::Product,
                                                          kDependencyFiles};
constinit const VariableGroup kLanguageOutputs = {"Outputs", VariableRole::Product, kLanguage};
constinit const VariableGroup kChoiceVariables = {"Choosing a toolchain", VariableRole::Input,
                                                  kChoice};
constinit const VariableGroup kPlaceSettings = {"Declaring a toolchain", VariableRole::Setting,
                                                kPlace};
constinit const VariableGroup kIdentitySettings = {"Declaring a toolchain", VariableRole::Setting,
                                                   kIdentity};

}  // namespace Vesk
