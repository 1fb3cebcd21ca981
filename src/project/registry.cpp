#include "project/registry.h"

#include <memory>

#include "base/console.h"
#include "base/text.h"
#include "grammar/identifier.h"
#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/project_paths.h"
#include "project/registry_text.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kUnableToOpen = "Unable to open registry file for writing: ";
constexpr const char* kUnableToWrite = "Unable to write registry file: ";

std::vector<std::string> namesIn(const Registry::Projects& projects) {
    std::vector<std::string> names;
    names.reserve(projects.size());
    for (const auto& [name, path] : projects) {
        names.push_back(name);
    }
    return names;
}

void warnOfSecond(std::string_view kind, std::string_view name, const fs::path& file) {
    console::warning("Duplicate {} '{}' in registry '{}'. The first counts.", kind, name,
                     platform::pathToUtf8(file));
}

[[noreturn]] void throwFileError(const char* what, const fs::path& file, const std::string& why) {
    VeskException error(what + platform::pathToUtf8(file));
    error.addNote(why);
    throw error;
}

/// The file that a registry's path leads to: a link, say into a directory with settings, stays one.
fs::path replacedFile(const fs::path& file) {
    std::error_code error;
    fs::path canonical = platform::canonicalPath(file, error);
    return error ? file : canonical;
}

std::string existingText(const fs::path& file) {
    std::error_code error;
    return platform::readWholeFile(file, error, kMaxFileBytes).value_or("");
}

void replaceText(const fs::path& file, const std::string& text) {
    std::error_code error;
    const bool exists = platform::exists(file, error);
    // Replacing needs no right to write the old file; whoever took it away meant it.
    if (exists && !platform::writeWholeFile(file, {}, platform::Append::yes, error)) {
        throwFileError(kUnableToOpen, file, error.message());
    }
    fs::path temporary = file;
    temporary += ".tmp";
    std::error_code ignored;
    if (!platform::writeWholeFile(temporary, {}, platform::Append::no, error)) {
        throwFileError(kUnableToOpen, file, error.message());
    }
    if (exists) {
        platform::copyPermissions(file, temporary);
    }
    if (!platform::writeWholeFile(temporary, text, platform::Append::no, error) ||
        !platform::replaceFile(temporary, file, error)) {
        platform::removeFile(temporary, ignored);
        throwFileError(kUnableToWrite, file, error.message());
    }
}

std::unique_ptr<platform::FileLock> lockRegistry(const fs::path& file) {
    fs::path lock = file;
    lock += ".lock";
    try {
        return std::make_unique<platform::FileLock>(lock);
    } catch (const std::system_error& error) {
        throwFileError(kUnableToOpen, file, error.what());
    }
}

void writeLocked(const Registry& registry, const fs::path& file) {
    replaceText(file, registryText(registry, existingText(file)));
    console::normal("Updated file '{}'.\n", platform::pathToUtf8(registry.file));
}

}  // namespace

void Registry::registerProject(const std::string& name, const fs::path& path) {
    if (name.empty()) {
        throw VeskException("Project name cannot be empty.");
    }
    if (!isIdentifier(name)) {
        throw VeskException("Project name '" + name +
                            "' cannot be registered: it is not an identifier. Try '" +
                            identifierFrom(name) + "'.");
    }
    const std::string text = platform::pathToUtf8(path);
    if (text.find('"') != std::string::npos) {
        throw VeskException("Project '" + name + "' cannot be registered: its path " + text +
                            " has a double quote, which the registry file cannot hold.");
    }
    projects.insert_or_assign(name, path);
}

fs::path Registry::findRegisteredProject(const std::string& name) const {
    const auto found = projects.find(name);
    if (found == projects.end()) {
        throw NotFoundException("Registered project", name, didYouMean(name, namesIn(projects)));
    }
    return pathWrittenIn(file.parent_path(), platform::pathToUtf8(found->second));
}

void Registry::registerTool(const std::string& name, std::shared_ptr<Context> context) {
    if (!isIdentifier(name)) {
        throw VeskException("Build tool '" + name +
                            "' cannot be registered: it is not an identifier.");
    }
    ToolEntry entry;
    entry.name = name;
    entry.context = std::move(context);
    tools.insert_or_assign(name, std::move(entry));
}

Registry loadRegistry(const fs::path& file) {
    Registry registry;
    registry.file = file;
    std::error_code error;
    if (!platform::exists(file, error)) {
        if (error) {
            throw fs::filesystem_error("exists", file, error);
        }
        return registry;
    }
    RegistryFile read = parseRegistryFile(file);
    registry.hash = read.hash;
    for (const auto& [name, path] : read.projects) {
        if (!registry.projects.emplace(name, platform::pathFromUtf8(path)).second) {
            warnOfSecond("project", name, file);
        }
    }
    for (ToolEntry& entry : read.tools) {
        const auto [place, isNew] = registry.tools.try_emplace(entry.name);
        if (isNew) {
            place->second = std::move(entry);
        } else {
            warnOfSecond("tool", entry.name, file);
        }
    }
    return registry;
}

void writeRegistry(const Registry& registry) {
    const fs::path file = replacedFile(registry.file);
    const auto lock = lockRegistry(file);
    writeLocked(registry, file);
}

Registry updateRegistry(const fs::path& file, const std::function<void(Registry&)>& change) {
    const fs::path replaced = replacedFile(file);
    const auto lock = lockRegistry(replaced);
    Registry registry = loadRegistry(file);
    change(registry);
    writeLocked(registry, replaced);
    return registry;
}

}  // namespace Vesk
