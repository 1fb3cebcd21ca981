#include "tools/c3/c3_variables.h"

#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr Variable kVariables[] = {
    {"C3_FILES", "list of files", "", "C3 sources; `*`, `?` and `**` as for C",
     R"(["src/**/*.c3"])"},
    {"C3_FLAGS", "flags", "", "passed as written", R"("-g --safe=no")"},
    {"C3_OPT", "string", "the compiler's", "`O0` to `O5`, `Os`, `Oz`; the letter O may be left out",
     R"("O3")"},
    {"C3_TARGET", "string", "this machine", "`--target`, in the compiler's own words",
     R"("mingw-x64")"},
    {"TARGET_TRIPLE", "string", "", "the same as a triple, where `C3_TARGET` says nothing",
     R"("x86_64-w64-mingw32")"},
    {"C3_FEATURES", "list", "", "`-D`", R"(["TRACE"])"},
    {"C3_LIBS", "list", "", "libraries in C3, `--lib`", R"(["raylib"])"},
    {"C3_LIB_DIRS", "list of directories", "", "where they are, `--libdir`", R"(["vendor"])"},
    {"C3_STDLIB", "path", "the compiler's", "`--stdlib`", R"x(P"(/opt/c3/lib/std)")x"},
    {"OBJ_FILES", "list of files", "", "as for C", "objs.OBJECTS"},
    {"LIB_FILES", "list of files", "", "as for C", "[util.LIBRARY]"},
    {"LIBS", "list", "", "as for C", R"(["m"])"},
    {"LIB_DIRS", "list of directories", "", "as for C", R"(["vendor/lib"])"},
    {"LINK_FLAGS", "list", "",
     "each to the linker, `-z`: the C compiler for programs of this machine, the linker in `c3c` "
     "for libraries and other machines",
     R"(["-s"])"},
    {"LINK_LANGUAGE", "string", "", "`c++`: a library in C++ is linked", R"("c++")"},
    {"OUTPUT_TYPE", "string", "`executable`", "`executable`, `static`, `shared`, `object`",
     R"("static")"},
    {"OUTPUT_NAME", "string", "the target's name",
     "without prefix; the compiler chooses the suffix", R"("bin/app")"},
};

constexpr VariableGroup kGroup = {"C3", VariableRole::Input, kVariables};
constexpr const VariableGroup* kAll[] = {&kGroup,           &kProductVariables, &kOutputVariables,
                                         &kLanguageOutputs, &kChoiceVariables,  &kPlaceSettings,
                                         &kIdentitySettings};

}  // namespace

constinit const VariableGroups kC3Variables = kAll;

const AssignmentMap& c3Subjects() {
    static const AssignmentMap table = tableOf({&kGroup});
    return table;
}

}  // namespace Vesk
