#include "tools/gnu_style/gnu_style_variables.h"

#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr Variable kCompiling[] = {
    {"SYSROOT", "path", "", "`--sysroot=`", R"x(P"(/opt/sysroot)")x"},
    {"TARGET_TRIPLE", "string", "", "LLVM: `--target=`. GNU: chooses the compiler with that triple",
     R"("aarch64-linux-gnu")"},
};

constexpr Variable kLinking[] = {
    {"LINKER_SCRIPT", "file", "", "`-T`", R"("flash.ld")"},
    {"LINK_LANGUAGE", "string", "", "`c++`: link with the C++ compiler though no source says so",
     R"("c++")"},
};

constexpr Variable kObjectCopy[] = {
    {"OBJCOPY_INPUT", "file", "", "the file to copy; makes the target an objcopy target",
     "app.OUTPUT"},
    {"OBJCOPY_FORMAT", "string", "",
     "`-O`; `binary`, `ihex`, `srec` give the suffixes `.bin`, `.hex`, `.srec`", R"("ihex")"},
    {"OBJCOPY_SECTIONS", "list", "", "`-j` for each", R"([".text", ".data"])"},
    {"OBJCOPY_FLAGS", "flags", "", "further options", R"("--strip-debug")"},
};

constexpr VariableGroup kCompileGroup = {"Compiling", VariableRole::Input, kCompiling};
constexpr VariableGroup kLinkGroup = {"Linking", VariableRole::Input, kLinking};
constexpr VariableGroup kObjectCopyGroup = {"Objcopy", VariableRole::Input, kObjectCopy};

constexpr const VariableGroup* kAll[] = {
    &kSourceVariables,         &kCompileVariables, &kCompileGroup,     &kTypeVariables,
    &kNameVariables,           &kLinkVariables,    &kLinkGroup,        &kPackageVariables,
    &kObjectCopyGroup,         &kPackageOutputs,   &kProductVariables, &kOutputVariables,
    &kDependencyFileVariables, &kLanguageOutputs,  &kChoiceVariables,  &kPlaceSettings,
    &kIdentitySettings,
};

}  // namespace

constinit const VariableGroups kGnuStyleVariables = kAll;

const AssignmentMap& gnuStyleSubjects() {
    static const AssignmentMap table =
        tableOf({&kSourceVariables, &kCompileVariables, &kCompileGroup, &kTypeVariables,
                 &kNameVariables, &kLinkVariables, &kLinkGroup, &kPackageVariables});
    return table;
}

const AssignmentMap& objectCopySubjects() {
    static const AssignmentMap table = tableOf({&kObjectCopyGroup, &kNameVariables});
    return table;
}

}  // namespace Vesk
