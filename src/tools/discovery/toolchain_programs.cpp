#include "tools/discovery/toolchain_programs.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/discovery/triple.h"
#include "tools/support/target_paths.h"
#include "tools/variable_table.h"

namespace Vesk {

namespace {

std::string programPath(const ToolchainPlace& place, std::string_view name) {
    return fmt::format("{}/{}{}{}{}", place.directory, place.prefix, name, place.suffix,
                       programSuffix());
}

std::string findInPath(const std::string& name) {
    for (const std::string& directory : searchPath()) {
        if (std::string path = directory + "/" + name; isFile(path)) {
            return path;
        }
    }
    return {};
}

std::string findProgram(const ToolchainPlace& place,
                        std::initializer_list<std::string_view> names) {
    const ToolchainPlace plain = {place.directory, place.prefix, {}};
    for (const std::string_view name : names) {
        for (const ToolchainPlace* each : {&place, &plain}) {
            if (std::string path = programPath(*each, name); isFile(path)) {
                return path;
            }
        }
        if (std::string path =
                findInPath(fmt::format("{}{}{}", place.prefix, name, programSuffix()));
            !path.empty()) {
            return path;
        }
    }
    return {};
}

ValuePtr valueIn(const Context::Map& declared, std::string_view name) {
    const auto found = declared.find(name);
    return found == declared.end() ? nullptr : found->second.value;
}

/// The one in PATH, otherwise one beside the compiler: whoever sets PATH decides.
std::string findFirst(const ToolchainPlace& place, std::initializer_list<std::string_view> names) {
    for (const std::string_view name : names) {
        if (std::string path = findInPath(fmt::format("{}{}", name, programSuffix()));
            !path.empty()) {
            return path;
        }
    }
    return findProgram({place.directory, {}, {}}, names);
}

[[noreturn]] void throwNoPkgConfig() {
    VeskException error("PACKAGES needs pkg-config, which is not in PATH.");
    error.addNote(
        "install it: apt install pkg-config, dnf install pkgconf, brew install pkgconf, or with "
        "MSYS2 pacman -S pkgconf");
    throw error;
}

[[noreturn]] void throwNoPkgConfigFor(const std::string& triple) {
    VeskException error(fmt::format(
        "PACKAGES needs a pkg-config for {0}: '{0}-pkg-config' is neither beside the compiler nor "
        "in PATH.",
        triple));
    error.addNote(
        "install it, or set the environment variable PKG_CONFIG_LIBDIR to the directories with "
        "the .pc files for that machine");
    throw error;
}

/// The pkg-config for that machine; empty if PKG_CONFIG_LIBDIR tells the plain one where its
/// packages are.
std::string crossPkgConfig(const ToolchainPlace& place, const std::string& triple) {
    const std::string named = triple + "-pkg-config";
    const std::string prefixed = place.prefix.empty() ? named : place.prefix + "pkg-config";
    std::string program = findFirst(place, {prefixed, named});
    if (program.empty() &&
        platform::environmentVariable("PKG_CONFIG_LIBDIR").value_or("").empty()) {
        throwNoPkgConfigFor(triple);
    }
    return program;
}

}  // namespace

std::string resolvedText(const ValuePtr& value, Context& target) {
    const ValuePtr copy = value ? value->deepCopy() : nullptr;
    if (Resolvable* resolvable = resolvableOf(copy)) {
        resolvable->setResolver(&target);
        return resolvable->resolve()->toString();
    }
    return copy ? copy->toString() : std::string();
}

DeclaredPlace declaredPlace(const Context::Map& declared) {
    DeclaredPlace place = {
        valueIn(declared, "toolchain_path"), textIn(declared, "toolchain_prefix"),
        textIn(declared, "toolchain_suffix"), textIn(declared, "toolchain_target")};
    if (place.triple.empty()) {
        place.triple = place.prefix.empty() ? nativeTriple() : tripleOfPrefix(place.prefix);
    }
    return place;
}

std::string pathFor(const DeclaredPlace& declared, Context& target) {
    return normalPath(resolvedText(declared.path, target),
                      normalPath(target.textOf("PROJECT_ROOT").value_or("")));
}

std::vector<std::filesystem::path> runDirectories(const ToolchainPlace& place) {
    if (!platform::kWindows) {
        return {};
    }
    return {platform::pathFromUtf8(place.directory).make_preferred()};
}

std::string_view programSuffix() noexcept {
    return platform::kWindows ? ".exe" : "";
}

std::vector<std::string> searchPath() {
    std::vector<std::string> directories;
    const std::string path = platform::environmentVariable("PATH").value_or("");
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end =
            std::min(path.find(platform::kPathListSeparator, start), path.size());
        std::string_view directory = std::string_view(path).substr(start, end - start);
        if (directory.size() > 1 && directory.front() == '"' && directory.back() == '"') {
            directory = directory.substr(1, directory.size() - 2);
        }
        // A relative directory would mean another toolchain in each current directory.
        if (platform::isAbsolutePath(directory)) {
            directories.push_back(normalPath(directory));
        }
        start = end + 1;
    }
    return directories;
}

ToolchainPlace ToolchainPrograms::locate(const std::string& path, ToolchainPlace given) const {
    given.directory = path;
    if (isFile(programPath(given, compiler_))) {
        return given;
    }
    given.directory = path + "/bin";
    if (isFile(programPath(given, compiler_))) {
        return given;
    }
    const std::size_t nameStart = path.rfind('/') + 1;
    const std::size_t word = path.rfind(compiler_);
    if (word != std::string::npos && word >= nameStart && isFile(path)) {
        std::string suffix = path.substr(word + compiler_.size());
        if (suffix.ends_with(programSuffix())) {
            suffix.resize(suffix.size() - programSuffix().size());
        }
        return {path.substr(0, nameStart - 1), path.substr(nameStart, word - nameStart), suffix};
    }
    given.directory = path;
    VeskException error(fmt::format(
        "There is no compiler '{0}' in '{1}' or its directory 'bin', and '{1}' is not one itself.",
        programPath({{}, given.prefix, given.suffix}, compiler_).substr(1), path));
    error.addNote(
        "where the toolchain was removed or upgraded, its registration is stale: vesk "
        "--find-compilers registers what is there now");
    error.addNote(
        "otherwise correct toolchain_path, toolchain_prefix or toolchain_suffix of the tool");
    throw error;
}

const ToolchainPlace& ToolchainPrograms::place(const DeclaredPlace& declared, Context& target) {
    const std::string path = pathFor(declared, target);
    const std::string key = fmt::format("{}\n{}\n{}", path, declared.prefix, declared.suffix);
    return places_.get(key, [&] { return locate(path, {{}, declared.prefix, declared.suffix}); });
}

std::string ToolchainPrograms::find(const ToolchainPlace& place,
                                    std::initializer_list<std::string_view> names) {
    return programs_.get(programPath(place, *names.begin()),
                         [&] { return findProgram(place, names); });
}

std::string ToolchainPrograms::require(const ToolchainPlace& place,
                                       std::initializer_list<std::string_view> names) {
    std::string program = find(place, names);
    if (program.empty()) {
        throw VeskException(
            fmt::format("The toolchain in '{}' has no '{}', which this target needs, and PATH has "
                        "none either. Install it, or choose another toolchain.",
                        place.directory, place.prefix + std::string(*names.begin())));
    }
    return program;
}

const std::string& ToolchainPrograms::requirePkgConfig(const ToolchainPlace& place,
                                                       const std::string& triple) {
    return pkgConfigs_.get(triple, [&] {
        std::string program =
            isNativeTriple(triple) ? std::string() : crossPkgConfig(place, triple);
        if (program.empty()) {
            program = findFirst(place, {"pkg-config", "pkgconf"});
        }
        if (program.empty()) {
            throwNoPkgConfig();
        }
        return program;
    });
}

}  // namespace Vesk
