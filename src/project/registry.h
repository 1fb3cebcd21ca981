// The per-user registry: projects by name, and tools for every project.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "grammar/model.h"
#include "types/context/context.h"

namespace Vesk {

inline constexpr const char* kRegistryFileName = ".vesk_registry.txt";

class Registry {
  public:
    using Projects = std::map<std::string, std::filesystem::path>;
    using Tools = std::map<std::string, ToolEntry>;  ///< names that differ in case are two

    std::filesystem::path file;  ///< read from and written back to
    ContentHash hash;            ///< of the text that was read
    Projects projects;           ///< paths as registered: a project's directory or its file
    Tools tools;

    /// Adds the project, or gives the entry of that name another path. Throws VeskException
    /// "Project name cannot be empty.", and for what the file could not hold: a name that is not
    /// an identifier, a path with a double quote.
    void registerProject(const std::string& name, const std::filesystem::path& path);

    /// The registered path, made absolute against the registry file's directory. Throws
    /// NotFoundException of kind "Registered project".
    std::filesystem::path findRegisteredProject(const std::string& name) const;

    /// Adds the tool, or replaces the one of that name. Throws VeskException for a name that is not
    /// an identifier.
    void registerTool(const std::string& name, std::shared_ptr<Context> context);
};

/// What the file says; an empty registry when there is no such file. Of two entries of one name the
/// first counts, and a warning says so. Throws what parseRegistryFile throws.
Registry loadRegistry(const std::filesystem::path& file);

/// Writes the whole registry to its file and says so. Comments of the file that is replaced stay
/// with what they stand at. The file is replaced in one step: after a failure the old one is still
/// there. Throws VeskException "Unable to open registry file for writing: ..." or "Unable to write
/// registry file: ...".
void writeRegistry(const Registry& registry);

/// Reads the file, applies the change and writes it back, while no other vesk can do the same: two
/// that register at once lose neither entry. Returns what was written. Throws as the other two.
Registry updateRegistry(const std::filesystem::path& file,
                        const std::function<void(Registry&)>& change);

}  // namespace Vesk
