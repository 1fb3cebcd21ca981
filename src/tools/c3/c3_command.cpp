#include "tools/c3/c3_command.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>

#include "base/exception.h"
#include "base/text.h"
#include "tools/discovery/triple.h"
#include "tools/support/libraries.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

/// A part of a triple and the compiler's word for it; the first that fits counts.
struct Word {
    std::string_view part;
    std::string_view word;
};

std::string_view wordIn(const std::string& triple, std::initializer_list<Word> words) {
    const auto found = std::ranges::find_if(
        words, [&triple](const Word& each) { return triple.find(each.part) != std::string::npos; });
    return found == words.end() ? std::string_view() : found->word;
}

const char* commandWord(OutputType type) noexcept {
    switch (type) {
        case OutputType::Static:
            return "static-lib";
        case OutputType::Shared:
            return "dynamic-lib";
        case OutputType::Object:
            return "compile-only";
        default:
            return "compile";
    }
}

/// What the compiler adds to a name.
std::string_view suffixOf(OutputType type, std::string_view triple) noexcept {
    const bool windows = isWindowsTriple(triple);
    if (type == OutputType::Static) {
        return windows ? ".lib" : ".a";
    }
    if (type == OutputType::Shared) {
        return windows ? ".dll" : isAppleTriple(triple) ? ".dylib" : ".so";
    }
    return windows ? ".exe" : "";
}

void addToLinker(CommandText& command, const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        command.add("-z");
        command.add(argument);
    }
}

void addEach(CommandText& command, const char* option, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        command.add(option);
        command.add(value);
    }
}

/// The compiler's target option; empty if its default fits.
std::string machineOf(const TargetContext& target) {
    const std::string machine = target.textOf("C3_TARGET").value_or("");
    return machine.empty() ? c3TargetOf(target.textOf("TARGET_TRIPLE").value_or("")) : machine;
}

/// For its own machine the compiler links programs with the system's C compiler, and does all other
/// linking itself. Each takes the linker's options in its own form.
bool linksByItself(const C3Command& command, const TargetContext& target) {
    const std::string machine = machineOf(target);
    return command.type == OutputType::Shared ||
           (!machine.empty() && machine != c3TargetOf(command.ownTriple));
}

/// So that the product runs where it was built.
std::vector<std::string> loaderOptions(const C3Command& command, const TargetContext& target,
                                       const TargetPaths& paths) {
    if (isWindowsTriple(command.triple)) {
        return {};
    }
    const bool byItself = linksByItself(command, target);
    const bool apple = isAppleTriple(command.triple);
    const std::string& file = command.product.file;
    const std::size_t nameStart = file.rfind('/') + 1;
    std::vector<std::string> options;
    if (command.type == OutputType::Shared && !apple) {
        // Otherwise a program linked with it by a path would look for that path.
        options.push_back("-soname=" + file.substr(nameStart));
    }
    for (const std::string& path : runPaths(command.libraries, file.substr(0, nameStart - 1),
                                            apple ? "@loader_path" : "$ORIGIN", paths)) {
        options.push_back(byItself ? "-rpath=" + path : "-Wl,-rpath," + path);
    }
    return options;
}

void addLinking(CommandText& text, const C3Command& command, const TargetContext& target,
                const TargetPaths& paths) {
    addToLinker(text, paths.inCommand(command.objects));
    addToLinker(text, paths.inCommand(command.libraries));
    addToLinker(text, loaderOptions(command, target, paths));
    addToLinker(text, entriesOf(target, "LINK_FLAGS"));
    addEach(text, "-L", paths.inCommand(paths.absolute(entriesOf(target, "LIB_DIRS"))));
    addEach(text, "-l", atLastPlace(entriesOf(target, "LIBS")));
    // For a C++ library among the dependencies, because this compiler links as C does.
    if (equalsIgnoringCase(target.textOf("LINK_LANGUAGE").value_or(""), "c++")) {
        addEach(text, "-l", {isAppleTriple(command.triple) ? "c++" : "stdc++"});
    }
}

}  // namespace

std::string c3TargetOf(std::string_view triple) {
    const std::string lower = lowerCased(triple);
    const std::size_t dash = lower.find('-');
    const std::string_view machine = wordIn(lower.substr(0, dash), {{"x86_64", "x64"},
                                                                    {"aarch64", "aarch64"},
                                                                    {"arm64", "aarch64"},
                                                                    {"riscv64", "riscv64"},
                                                                    {"riscv32", "riscv32"}});
    const std::string_view system =
        wordIn(dash == std::string::npos ? "" : lower.substr(dash), {{"android", "android"},
                                                                     {"linux", "linux"},
                                                                     {"mingw", "mingw"},
                                                                     {"windows-gnu", "mingw"},
                                                                     {"windows", "windows"},
                                                                     {"darwin", "macos"},
                                                                     {"macos", "macos"},
                                                                     {"freebsd", "freebsd"},
                                                                     {"netbsd", "netbsd"},
                                                                     {"openbsd", "openbsd"}});
    if (machine.empty() || system.empty()) {
        return std::string(triple);
    }
    if (system == "android" && machine == "x64") {
        return "android-x86_64";
    }
    return fmt::format("{}-{}", system, machine);
}

std::string c3OptimisationOption(std::string_view level) {
    std::string_view letter = level;
    if (letter.starts_with('-')) {
        letter.remove_prefix(1);
    }
    if (letter.starts_with('O')) {
        letter.remove_prefix(1);
    }
    constexpr std::string_view kKnown = "012345sz";
    if (letter.size() != 1 || kKnown.find(letter) == std::string_view::npos) {
        throw VeskException(
            fmt::format("C3_OPT '{}' is not an optimisation that the C3 compiler knows. Use O0 "
                        "to O5, Os or Oz.",
                        level));
    }
    return fmt::format("-O{}", letter);
}

C3Product c3Product(const std::string& outputName, OutputType type, std::string_view triple,
                    const TargetPaths& paths) {
    const std::string_view suffix = suffixOf(type, triple);
    std::string name = outputName;
    if (hasSuffix(name)) {
        if (suffix.empty() || !name.ends_with(suffix)) {
            throw VeskException(fmt::format(
                "OUTPUT_NAME '{}' is not possible: the C3 compiler chooses the suffix of its "
                "products, {}. Leave the suffix out.",
                outputName, suffix.empty() ? "none for a program" : suffix));
        }
        name.resize(name.size() - suffix.size());
    } else if (type != OutputType::Executable && !isWindowsTriple(triple)) {
        // The compiler does not add the prefix by which linkers find libraries.
        name = decorated(name, "lib", "");
    }
    const std::string path = paths.inOutputDirectory(name);
    return {path + std::string(suffix), path};
}

CommandText c3CommandText(const C3Command& command, const TargetContext& target,
                          const TargetPaths& paths) {
    CommandText text;
    text.add(nativePath(command.compiler));
    text.add(commandWord(command.type));
    text.add({}, paths.inCommand(command.sources));
    if (command.type == OutputType::Object) {
        text.add("--obj-out");
        text.add(paths.inCommand(command.objectDirectory));
    } else {
        text.add("-o");
        text.add(paths.inCommand(command.product.givenName));
    }
    if (command.type == OutputType::Static || command.type == OutputType::Shared) {
        text.add("--no-headers");
    }
    if (const std::string level = target.textOf("C3_OPT").value_or(""); !level.empty()) {
        text.add(c3OptimisationOption(level));
    }
    const std::string machine = machineOf(target);
    if (!machine.empty()) {
        text.add("--target");
        text.add(machine);
    }
    if (hasEntries(target, "C3_STDLIB")) {
        text.add("--stdlib");
        text.add(paths.inCommand(paths.absolute(*target.textOf("C3_STDLIB"))));
    }
    addEach(text, "-D", entriesOf(target, "C3_FEATURES"));
    addEach(text, "--libdir", paths.inCommand(paths.absolute(entriesOf(target, "C3_LIB_DIRS"))));
    addEach(text, "--lib", entriesOf(target, "C3_LIBS"));
    addFlags(text, target, "C3_FLAGS");
    if (command.type == OutputType::Executable || command.type == OutputType::Shared) {
        addLinking(text, command, target, paths);
    }
    return text;
}

}  // namespace Vesk
