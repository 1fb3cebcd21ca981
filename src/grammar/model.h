// What project and registry files say, entry by entry in file order. Nothing is merged by name and
// nothing is looked up here. The contents of unit files are modelled in types/model/target.h.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/content_hash.h"

namespace Vesk {

class Context;
class ContextTemplate;

enum class FileKind : int {
    Unit = 0,  ///< also for a text that is not a file
    Project = 1,
    Registry = 2,
};

/// An entry of a tools section.
struct ToolEntry {
    std::string name;
    std::shared_ptr<Context> context;  ///< empty in a registry if the body cannot be merged
    std::shared_ptr<const ContextTemplate> source;  ///< as written, without merging
    std::string failure;                            ///< why there is no context
    std::uint32_t line = 0;
};

/// An entry of a profiles section.
struct ProfileEntry {
    std::string name;
    std::shared_ptr<Context> context;  ///< never empty
    std::uint32_t line = 0;
};

/// An entry of a units section.
struct UnitEntry {
    std::string name;
    std::vector<std::string> files;  ///< paths as written
    std::uint32_t line = 0;
};

/// An entry of an import section. Parts that are not written stay empty.
struct ProjectImport {
    bool byPath = false;
    std::string location;  ///< the path, or the registered name, as written
    std::string alias;     ///< of an import by path
    std::string
        sourceProfile;  ///< a profile of the importing project under which the import applies
    std::string importedProfile;  ///< the profile under which the imported project is loaded
    std::uint32_t line = 0;
};

struct ProjectFile {
    std::filesystem::path path;  ///< weakly canonical
    ContentHash hash;            ///< of the file's text
    std::string name;            ///< empty without a name line
    std::vector<ProjectImport> imports;
    std::vector<ToolEntry> tools;
    std::vector<UnitEntry> units;
    std::vector<ProfileEntry> profiles;
};

struct RegistryFile {
    std::filesystem::path path;                                 ///< weakly canonical
    ContentHash hash;                                           ///< of the file's text
    std::vector<std::pair<std::string, std::string>> projects;  ///< name, path as written
    std::vector<ToolEntry> tools;
};

}  // namespace Vesk
