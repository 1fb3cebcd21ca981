#include "tools/msvc/msvc_programs.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "tools/msvc/visual_studio.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

constexpr std::string_view kClang = "clang";

std::string fileIn(const std::string& directory, std::string_view name) {
    return fmt::format("{}/{}{}", directory, name, programSuffix());
}

std::string findBin(const std::string& path, const MsvcDirectories& wanted) {
    const Architecture& architecture = *wanted.architecture;
    if (std::string bin = binDirectory(path, architecture, wanted.compiler); !bin.empty()) {
        return bin;
    }
    for (const std::string& directory : {path + "/bin", path}) {
        if (isFile(fileIn(directory, wanted.compiler))) {
            return directory;
        }
    }
    for (const ToolSet& set : toolSetsIn({path, {}})) {
        if (std::string bin = binDirectory(set.directory, architecture, wanted.compiler);
            !bin.empty()) {
            return bin;
        }
    }
    throw VeskException(fmt::format(
        "There is no compiler '{0}{1}' for {2} in '{3}': neither in its bin/Host.../{2}, nor in it "
        "itself, nor in a tool set below its VC/Tools/MSVC. Correct toolchain_path or "
        "toolchain_target of the tool, install the compilers for {2}, or look for compilers again "
        "with vesk --find-compilers.",
        wanted.compiler, programSuffix(), architecture.directory, path));
}

/// The kits have their programs for several hosts, but those for drivers for 32 bits only.
std::vector<std::string> binsOf(const WindowsKit& kit) {
    std::vector<std::string> directories;
    if (kit.directory.empty()) {
        return directories;
    }
    for (const std::string& bin : {kit.directory + "/bin/" + kit.version, kit.directory + "/bin"}) {
        for (const char* host : {"/x64", "/x86"}) {
            directories.push_back(bin + host);
        }
    }
    return directories;
}

std::vector<std::string_view> namesOf(MsvcProgram program, const MsvcDirectories& directories) {
    using Names = std::vector<std::string_view>;
    switch (program) {
        case MsvcProgram::Compiler:
            return {directories.compiler};
        case MsvcProgram::Assembler:
            return {directories.architecture->directory == "x64"   ? "ml64"
                    : directories.architecture->directory == "x86" ? "ml"
                                                                   : "armasm64"};
        case MsvcProgram::Librarian:
            return directories.clang ? Names{"llvm-lib", "lib"} : Names{"lib"};
        case MsvcProgram::Linker:
            return directories.clang ? Names{"lld-link", "link"} : Names{"link"};
        case MsvcProgram::ResourceCompiler:
            return directories.clang ? Names{"rc", "llvm-rc"} : Names{"rc"};
        case MsvcProgram::MessageCompiler:
            return directories.clang ? Names{"mc", "x86_64-w64-mingw32-windmc"} : Names{"mc"};
        case MsvcProgram::CatalogueMaker:
            return {"inf2cat"};
        case MsvcProgram::Signer:
            break;
    }
    return {"signtool"};
}

/// Other programs of other kinds have these names too; one in PATH is hardly the one meant.
bool isAmbiguous(std::string_view name) {
    constexpr std::string_view kNames[] = {"cl", "lib", "link", "mc", "rc"};
    return std::ranges::find(kNames, name) != std::end(kNames);
}

std::string findIn(const MsvcDirectories& directories, const std::vector<std::string_view>& names) {
    for (const std::string_view name : names) {
        std::vector<std::string> places = {directories.bin};
        places.insert(places.end(), directories.kitBins.begin(), directories.kitBins.end());
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

const MsvcDirectories& MsvcPrograms::directories(const DeclaredPlace& declared, Context& target,
                                                 bool forDrivers) {
    const auto text = [&target](const char* name) { return target.textOf(name).value_or(""); };
    const std::string path = pathFor(declared, target);
    const std::string compiler = text("toolchain_compiler");
    KitWish wish = {text("winsdk_path"), text("winsdk_version"), forDrivers};
    if (forDrivers) {
        wish.version = text("wdk_version");
    }
    const std::string key = fmt::format("{}\n{}\n{}\n{}\n{}\n{}", path, declared.triple, compiler,
                                        wish.directory, wish.version, forDrivers);
    return directories_.get(key, [&] {
        MsvcDirectories directories;
        directories.architecture = &architectureOf(declared.triple);
        directories.compiler = compiler.empty() ? "cl" : compiler;
        directories.clang = directories.compiler.find(kClang) != std::string::npos;
        directories.bin = findBin(path, directories);
        const ToolSet set = toolSetAround(directories.bin);
        directories.toolSet = set.directory;
        directories.version = set.version;
        if (!wish.directory.empty()) {
            wish.directory = normalPath(wish.directory, normalPath(text("PROJECT_ROOT")));
        }
        directories.kit = chooseKit(wish, programDirectories());
        directories.kitBins = binsOf(directories.kit);
        return directories;
    });
}

std::string MsvcPrograms::require(const MsvcDirectories& directories, MsvcProgram program,
                                  const std::string& name) {
    const std::vector<std::string_view> names =
        name.empty() ? namesOf(program, directories) : std::vector<std::string_view>{name};
    const std::string key =
        fmt::format("{}\n{}\n{}", directories.bin, directories.kit.version, fmt::join(names, "\n"));
    const std::string& found = programs_.get(key, [&] { return findIn(directories, names); });
    if (found.empty()) {
        throw VeskException(fmt::format(
            "This target needs the program '{}', which is neither in '{}' nor in {}. Install it: "
            "compilers and linkers are a part of Visual Studio, rc, mc and signtool of the Windows "
            "SDK, inf2cat of the Windows Driver Kit.",
            names.front(), directories.bin,
            directories.kit.directory.empty() ? "a Windows SDK, of which none was found"
                                              : "'" + directories.kit.directory + "/bin'"));
    }
    return found;
}

const PackageFlags& MsvcPrograms::packages(const MsvcDirectories& directories,
                                           const std::string& triple,
                                           const std::vector<std::string>& packages,
                                           LinkKind kind) {
    return others_.packages().flags(others_.requirePkgConfig({directories.bin, {}, {}}, triple),
                                    packages, kind);
}

}  // namespace Vesk
