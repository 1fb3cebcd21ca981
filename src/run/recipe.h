// What a builder makes of a target: commands, the files that they read and make, and their order.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "types/context/assignment.h"

namespace Vesk {

/// A value of `Recipe::shell`; every other one than `kPowershell` is the command interpreter.
namespace shell {
inline constexpr std::uint32_t kInterpreter = 0;
inline constexpr std::uint32_t kPowershell = 1;
}  // namespace shell

/// Something a recipe reads, and what it makes of it on the way to its outputs: a source and its
/// object file.
struct RecipeInput {
    Assignment assignment;
    std::optional<Assignment> intermediate;
};

/// A file that a command needs and that has to be written for it: a response file.
struct SupportFile {
    std::filesystem::path path;
    std::string content;
};

/// What the commands of one toolchain have in common.
struct ToolEnvironment {
    std::vector<std::string> variables;  ///< "NAME=value", in the environment of its children only

    /// What a dependency file names below these directories is a part of the toolchain, and is not
    /// looked at again. Absolute, with forward slashes.
    std::vector<std::string> systemDirectories;
};

/// Where a compiler looks for headers, besides the directory of the file that includes them: in the
/// order in which it looks. Absolute, with forward slashes.
struct HeaderSearch {
    std::vector<std::string> directories;
};

/// What a recipe reads of what the target's dependencies make, and makes for its dependants to
/// read.
enum class RecipeRole : std::uint8_t {
    Any,      ///< anything: it waits for all dependencies, and dependants' compilers wait for it
    Compile,  ///< objects of sources; no library is needed for them
    Link,     ///< products of objects and libraries; no compiler reads them
};

/// When a recipe's commands start.
enum class Start : std::uint8_t {
    WithStage,  ///< together with all others of their stage
    Queued,     ///< one of many small steps: as many run at once as the user allows
};

/// What a recipe's inputs and outputs say of the files that its commands read and make.
enum class Declaration : std::uint8_t {
    Partial,   ///< the commands may read and make other files of the target as well
    Complete,  ///< they name all of them
};

/// What becomes of the outputs of an earlier run.
enum class OldOutputs : std::uint8_t {
    Stay,
    Go,  ///< they are removed before the commands run, which would add to them
};

/// One command to run.
struct Command {
    std::string command;  ///< the command text, UTF-8, exactly as the builder composed it
    std::filesystem::path workingDirectory;  ///< empty: the child inherits ours
    std::uint32_t shell = shell::kInterpreter;
    std::vector<std::filesystem::path> searchDirectories;  ///< before PATH, for this child only

    std::shared_ptr<const ToolEnvironment> toolEnvironment;  ///< null: nothing special
    std::vector<std::string> environment;  ///< "NAME=value" of its target, for its children only

    /// Environment variables that the command text refers to, so that what they hold is shown and
    /// kept nowhere. No command runs without them.
    std::vector<std::string> secretVariables;

    /// When it is killed with all that it has started. It reads nothing from our standard input
    /// then.
    std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// A command, the files that it reads and makes, and when it runs. Made by a builder, run by the
/// driver, kept in the cache.
///
/// A recipe with outputs of its own stands or falls alone: it runs again when its command, one of
/// the files among its inputs, one that its dependency file names, or one of its outputs changed.
/// Recipes without outputs run again together, when anything of their target changed.
struct Recipe : Command {
    /// Texts of commands that run after it, where and as it does, in order, as long as all succeed.
    std::vector<std::string> furtherCommands;

    std::vector<RecipeInput> inputs;
    std::vector<Assignment> outputs;       ///< their directories are made before the command runs
    std::filesystem::path dependencyFile;  ///< written by the command: files it has read; or empty
    std::shared_ptr<const HeaderSearch> headerSearch;  ///< of the headers among them; null: unknown

    /// A directory whose whole contents are the command's: the files that are in it afterwards are
    /// outputs too, whatever they are called. Empty: there is none.
    std::filesystem::path outputDirectory;

    std::vector<SupportFile> supportFiles;  ///< written before the command runs

    /// Work that vesk does itself in place of the command, whose text is then what users see of it
    /// and what the cache compares: it names all that the work depends on. Called on the thread of
    /// its job; throws VeskException or a standard exception when it fails.
    std::function<void()> action;

    std::uint32_t stage = 0;  ///< recipes of a stage run together, after those of the lower stages
    RecipeRole role = RecipeRole::Any;
    Start start = Start::WithStage;
    Declaration declaration = Declaration::Partial;
    OldOutputs oldOutputs = OldOutputs::Stay;
};

}  // namespace Vesk
