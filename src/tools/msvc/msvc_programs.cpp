#include "tools/msvc/msvc_programs.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "tools/msvc/visual_studio.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

constexpr std::string_view kClang = "clang";

std::string fileIn(const std::string& folder, std::string_view name) {
    return fmt::format("{}/{}{}", folder, name, programEnding());
}

std::string findBin(const std::string& path, const MsvcFolders& wanted) {
    const Architecture& architecture = *wanted.architecture;
    if (std::string bin = binFolder(path, architecture, wanted.compiler); !bin.empty()) {
        return bin;
    }
    for (const std::string& folder : {path + "/bin", path}) {
        if (isFile(fileIn(folder, wanted.compiler))) {
            return folder;
        }
    }
    for (const ToolSet& set : toolSetsIn({path, {}})) {
        if (std::string bin = binFolder(set.folder, architecture, wanted.compiler); !bin.empty()) {
            return bin;
        }
    }
    throw VeskException(fmt::format(
        "There is no compiler '{0}{1}' for {2} in '{3}': neither in its bin/Host.../{2}, nor in it "
        "itself, nor in a tool set below its VC/Tools/MSVC. Correct toolchain_path or "
        "toolchain_target of the tool, install the compilers for {2}, or look for compilers anew "
        "with vesk --find-compilers.",
        wanted.compiler, programEnding(), architecture.folder, path));
}

/// The programs of the kits are there for several hosts, those for drivers for 32 bits only.
std::vector<std::string> binsOf(const WindowsKit& kit) {
    std::vector<std::string> folders;
    if (kit.folder.empty()) {
        return folders;
    }
    for (const std::string& bin : {kit.folder + "/bin/" + kit.version, kit.folder + "/bin"}) {
        for (const char* host : {"/x64", "/x86"}) {
            folders.push_back(bin + host);
        }
    }
    return folders;
}

std::vector<std::string_view> namesOf(MsvcProgram program, const MsvcFolders& folders) {
    using Names = std::vector<std::string_view>;
    switch (program) {
        case MsvcProgram::Compiler:
            return {folders.compiler};
        case MsvcProgram::Assembler:
            return {folders.architecture->folder == "x64"   ? "ml64"
                    : folders.architecture->folder == "x86" ? "ml"
                                                            : "armasm64"};
        case MsvcProgram::Librarian:
            return folders.clang ? Names{"llvm-lib", "lib"} : Names{"lib"};
        case MsvcProgram::Linker:
            return folders.clang ? Names{"lld-link", "link"} : Names{"link"};
        case MsvcProgram::ResourceCompiler:
            return folders.clang ? Names{"rc", "llvm-rc"} : Names{"rc"};
        case MsvcProgram::MessageCompiler:
            return folders.clang ? Names{"mc", "x86_64-w64-mingw32-windmc"} : Names{"mc"};
        case MsvcProgram::CatalogueMaker:
            return {"inf2cat"};
        case MsvcProgram::Signer:
            break;
    }
    return {"signtool"};
}

/// Other programs, of other kinds, go by these names too; one in PATH is hardly the one meant.
bool isAmbiguous(std::string_view name) {
    constexpr std::string_view kNames[] = {"cl", "lib", "link", "mc", "rc"};
    return std::ranges::find(kNames, name) != std::end(kNames);
}

std::string findIn(const MsvcFolders& folders, const std::vector<std::string_view>& names) {
    for (const std::string_view name : names) {
        std::vector<std::string> places = {folders.bin};
        places.insert(places.end(), folders.kitBins.begin(), folders.kitBins.end());
        if (!isAmbiguous(name)) {
            std::ranges::move(searchPath(), std::back_inserter(places));
        }
        for (const std::string& place : places) {
            if (std::string path = fileIn(place, name); isFile(path)) {
                return path;
            }
        }
    }
    return {};
}

}  // namespace

const MsvcFolders& MsvcPrograms::folders(const DeclaredPlace& declared, Context& target,
                                         bool forDrivers) {
    const auto text = [&target](const char* name) { return target.textOf(name).value_or(""); };
    const std::string path = pathFor(declared, target);
    const std::string compiler = text("toolchain_compiler");
    KitWish wish = {text("winsdk_path"), text("winsdk_version"), forDrivers};
    if (forDrivers) {
        wish.version = text("wdk_version");
    }
    const std::string key = fmt::format("{}\n{}\n{}\n{}\n{}\n{}", path, declared.triple, compiler,
                                        wish.folder, wish.version, forDrivers);
    if (const auto found = folders_.find(key); found != folders_.end()) {
        return found->second;
    }
    MsvcFolders folders;
    folders.architecture = &architectureOf(declared.triple);
    folders.compiler = compiler.empty() ? "cl" : compiler;
    folders.clang = folders.compiler.find(kClang) != std::string::npos;
    folders.bin = findBin(path, folders);
    const ToolSet set = toolSetAround(folders.bin);
    folders.toolSet = set.folder;
    folders.version = set.version;
    if (!wish.folder.empty()) {
        wish.folder = normalPath(wish.folder, normalPath(text("PROJECT_ROOT")));
    }
    folders.kit = chooseKit(wish, programFolders());
    folders.kitBins = binsOf(folders.kit);
    return folders_.emplace(key, std::move(folders)).first->second;
}

std::string MsvcPrograms::require(const MsvcFolders& folders, MsvcProgram program,
                                  const std::string& name) {
    const std::vector<std::string_view> names =
        name.empty() ? namesOf(program, folders) : std::vector<std::string_view>{name};
    const std::string key =
        fmt::format("{}\n{}\n{}", folders.bin, folders.kit.version, fmt::join(names, "\n"));
    auto found = programs_.find(key);
    if (found == programs_.end()) {
        found = programs_.emplace(key, findIn(folders, names)).first;
    }
    if (found->second.empty()) {
        throw VeskException(fmt::format(
            "This target needs the program '{}', which is neither in '{}' nor in {}. Install it: "
            "compilers and linkers are a part of Visual Studio, rc, mc and signtool of the Windows "
            "SDK, inf2cat of the Windows Driver Kit.",
            names.front(), folders.bin,
            folders.kit.folder.empty() ? "a Windows SDK, of which none was found"
                                       : "'" + folders.kit.folder + "/bin'"));
    }
    return found->second;
}

}  // namespace Vesk
