#include "tools/msvc/msvc_variables.h"

#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr Variable kProducts[] = {
    {"RC_FILES", "list of files", "",
     "resource scripts, linked into the product. A target with nothing else makes `.res` "
     "files, which dependants with `+` link",
     R"(["app.rc"])"},
    {"RC_FLAGS", "flags", "", "for `rc`, which also gets `DEFINES` and `INCLUDE_DIRS`",
     R"("/l 0x409")"},
    {"MC_FILES", "list of files", "",
     "message files: compiled before everything else; the sources of the target find the headers, "
     "the "
     "messages are linked in",
     R"(["events.mc"])"},
    {"MC_FLAGS", "flags", "", "for `mc`", R"("-U")"},
    {"RUNTIME", "string", "the compiler's (`MT`)",
     "`MD`, `MDd`, `MT`, `MTd`: the C library, and whether it is for debugging", R"("MD")"},
    {"PDB", "`yes`, `no`", "`no`", "debug information: `/Z7`, and a `.pdb` beside the product",
     R"("yes")"},
    {"REPRODUCIBLE", "`yes`, `no`", "`yes`", "objects and products contain no times", R"("no")"},
    {"SUBSYSTEM", "string", "the linker's choice", "`/SUBSYSTEM:`", R"("windows")"},
    {"ENTRY", "string", "the linker's choice", "`/ENTRY:`", R"("start")"},
    {"MANIFEST", "file, or `no`", "the linker's own", "embedded into the product; `no`: none",
     R"("app.manifest")"},
    {"IMPORT_LIBRARY", "`yes`, `no`", "`yes`", "whether a shared library has one", R"("no")"},
};

constexpr Variable kSettings[] = {
    {"tool_type", "string", "required", "`msvc`", R"("msvc")"},
    {"toolchain_path", "path", "required",
     R"(the tool set, `...\VC\Tools\MSVC\14.38.33130`, a directory of its programs, or an )"
     "installation of Visual Studio, whose newest tool set is used",
     R"x(P"(C:/BuildTools/VC/Tools/MSVC/14.38.33130)")x"},
    {"toolchain_target", "string", "`x86_64-pc-windows-msvc`", "or `i686-...`, `aarch64-...`",
     R"("aarch64-pc-windows-msvc")"},
    {"toolchain_compiler", "string", "`cl`",
     "`clang-cl` compiles with Clang, and uses `lld-link`, `llvm-lib` and `llvm-rc` if they "
     "exist",
     R"("clang-cl")"},
};

constexpr Variable kKits[] = {
    {"winsdk_path", "path", R"(the registry's, otherwise `%ProgramFiles(x86)%\Windows Kits\10`)",
     "the kits' directory; may stand in a tool's declaration too", R"x(P"(D:/Windows Kits/10)")x"},
    {"winsdk_version", "string", "the newest",
     "the SDK; `10.0.22621` fits 10.0.22621.0; may stand in a tool's declaration too",
     R"("10.0.22621")"},
    {"wdk_version", "string", "the newest that has an SDK too",
     "the driver kit, for targets with `DRIVER`; may stand in a tool's declaration too",
     R"("10.0.22621")"},
};

constexpr Variable kDrivers[] = {
    {"DRIVER", "string", "",
     "`wdm`, `kmdf` (kernel mode, `.sys`) or `umdf` (`.dll`): options, headers, libraries and the "
     "entry point of the WDK",
     R"("kmdf")"},
    {"KMDF_VERSION", "string", "the newest in the kit", "the framework of `kmdf`", R"("1.31")"},
    {"UMDF_VERSION", "string", "the newest in the kit", "the framework of `umdf`", R"("2.33")"},
    {"INF_FILE", "file", "",
     "makes a package: the directory `<OUTPUT_NAME>.package` with the driver, this file and a "
     "catalogue of them",
     R"("demo.inf")"},
    {"PACKAGE_FILES", "list of files", "", "go into the package as well", R"(["demo.dll"])"},
    {"CAT_FILE", "string", "the name of the `.inf`, with `.cat`",
     "what the `.inf` calls its catalogue (`CatalogFile`)", R"("drv.cat")"},
    {"CAT_OS", "string", "`10_X64`, `10_X86`, `10_RS3_ARM64`", "the systems, for `inf2cat /os:`",
     R"("10_X64,Server10_X64")"},
    {"INF2CAT_FLAGS", "flags", "", "for `inf2cat`", R"("/uselocaltime")"},
};

constexpr Variable kSigning[] = {
    {"SIGN_CERT", "file", "", "a certificate with its key in a file", R"x(P"(company.pfx)")x"},
    {"SIGN_NAME", "string", "", "one in a store, by its subject", R"("My Company")"},
    {"SIGN_THUMBPRINT", "string", "", "one in a store, by its SHA-1", R"("12 34 ...")"},
    {"SIGN_PASSWORD_ENV", "string", "",
     "the environment variable that holds the password of `SIGN_CERT`", R"("COMPANY_PASSWORD")"},
    {"SIGN_STORE", "string", "`My`", "the store", R"("PrivateCertStore")"},
    {"SIGN_DIGEST", "string", "`SHA256`", "of the signature and the time stamp", R"("SHA384")"},
    {"TIMESTAMP_URL", "string", "",
     "a time stamp server (RFC 3161); without one a signature ends with its certificate",
     R"("http://timestamp.example.com")"},
    {"SIGN_FLAGS", "list", "", "further options of `signtool sign`", R"(["/sm"])"},
};

constexpr Variable kOutputs[] = {
    {"PDB_FILE", "path", "", "the debug information, with `PDB`"},
    {"RES_FILES", "list of paths", "", "the compiled resources, with `RC_FILES`, `MC_FILES`"},
    {"MC_HEADERS", "list of paths", "",
     "the headers that `mc` made; a dependant with `+` also gets their directories in "
     "`INCLUDE_DIRS`, unless the target has a `^INCLUDE_DIRS` of its own"},
    {"CAT_FILE", "path", "", "the catalogue, with `INF_FILE`"},
};

constexpr VariableGroup kProductGroup = {"MSVC", VariableRole::Input, kProducts};
constexpr VariableGroup kSettingGroup = {"MSVC: tool sets", VariableRole::Setting, kSettings};
constexpr VariableGroup kKitGroup = {"MSVC: kits", VariableRole::Input, kKits};
constexpr VariableGroup kDriverGroup = {"MSVC: drivers", VariableRole::Input, kDrivers};
constexpr VariableGroup kSigningGroup = {"MSVC: signing", VariableRole::Input, kSigning};
constexpr VariableGroup kOutputGroup = {"MSVC: outputs", VariableRole::Product, kOutputs};

constexpr const VariableGroup* kAll[] = {
    &kSourceVariables, &kCompileVariables, &kTypeVariables,
    &kNameVariables,   &kLinkVariables,    &kPackageVariables,
    &kPackageOutputs,  &kProductVariables, &kOutputVariables,
    &kChoiceVariables, &kIdentitySettings, &kProductGroup,
    &kOutputGroup,     &kSettingGroup,     &kKitGroup,
    &kDriverGroup,     &kSigningGroup,     &kDependencyFileVariables,
};

}  // namespace

constinit const VariableGroups kMsvcVariables = kAll;

const AssignmentMap& msvcSubjects() {
    static const AssignmentMap table = tableOf(
        {&kSourceVariables, &kCompileVariables, &kTypeVariables, &kNameVariables, &kLinkVariables,
         &kPackageVariables, &kProductGroup, &kKitGroup, &kDriverGroup, &kSigningGroup});
    return table;
}

}  // namespace Vesk
