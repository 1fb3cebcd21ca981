#include "run/build_env.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "types/context/context.h"

namespace Vesk {

namespace {

/// Without "." and "..", and without a slash at the end.
std::filesystem::path tidied(const std::filesystem::path& path) {
    std::filesystem::path normal = path.lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

}  // namespace

BuildEnvSettings environmentSettings(const Context& target) {
    BuildEnvSettings settings;
    settings.projectRoot = platform::pathFromUtf8(target.textOf("PROJECT_ROOT").value_or(""));
    settings.outputName = target.textOf("OUTPUT_NAME").value_or("");
    settings.outputDir = target.textOf("OUTPUT_DIR").value_or("");
    settings.outputDefDir = target.textOf("OUTPUT_DEF_DIR").value_or("");
    settings.profile = target.textOf("PROFILE").value_or("");
    return settings;
}

std::filesystem::path deriveOutputDirectory(const BuildEnvSettings& settings) {
    if (!settings.outputDir.empty()) {
        return tidied(settings.projectRoot / platform::pathFromUtf8(settings.outputDir));
    }
    const std::string name = settings.outputDefDir.empty() ? "out" : settings.outputDefDir;
    std::filesystem::path directory = settings.projectRoot / platform::pathFromUtf8(name);
    if (!settings.profile.empty()) {
        directory /= platform::pathFromUtf8(settings.profile);
    }
    return tidied(directory);
}

BuildEnv::BuildEnv(std::filesystem::path outputDirectory)
    : outputDirectory_(std::move(outputDirectory)) {}

BuildEnv::BuildEnv(BuildEnvSettings settings)
    : outputDirectory_(deriveOutputDirectory(settings)), settings_(std::move(settings)) {}

void BuildEnv::prepare(std::uint64_t jobCount) {
    if (prepared_) {
        throw VeskException("Build environment is already prepared.");
    }
    if (jobCount == 0) {
        throw VeskException("Cannot prepare a build environment without jobs.");
    }
    jobCount_ = jobCount;
    if (!outputDirectory_.empty()) {
        console::normal("Output dir: {}", platform::pathToUtf8(outputDirectory_));
        std::error_code error;
        platform::makeDirectories(outputDirectory_, error);
        if (error) {
            throw std::filesystem::filesystem_error("create_directories", outputDirectory_, error);
        }
    }
    prepared_ = true;
}

bool BuildEnv::isSaved(const std::string& name) const {
    return std::ranges::find(savedVariables_, name, &SavedVariable::name) != savedVariables_.end();
}

void BuildEnv::setVariable(const std::string& name, const std::string& value) {
    if (!prepared_) {
        throw VeskException(
            "Cannot modify the process environment before the build environment is prepared.");
    }
    if (!isSaved(name)) {
        savedVariables_.push_back({name, platform::environmentVariable(name)});
    }
    if (!platform::setEnvironmentVariable(name, value)) {
        throw VeskException("Unable to set process environment variable '" + name + "'");
    }
}

void BuildEnv::restoreVariable(const SavedVariable& variable) {
    const bool restored = variable.value
                              ? platform::setEnvironmentVariable(variable.name, *variable.value)
                              : platform::removeEnvironmentVariable(variable.name);
    if (!restored) {
        console::error("Unable to restore process environment variable '{}'.", variable.name);
    }
}

void BuildEnv::restore() noexcept {
    if (!prepared_) {
        return;
    }
    for (auto variable = savedVariables_.rbegin(); variable != savedVariables_.rend(); ++variable) {
        try {
            restoreVariable(*variable);
        } catch (...) {
            // Out of memory: nothing is left to report it with, and the others still count.
        }
    }
    savedVariables_.clear();
    prepared_ = false;
}

}  // namespace Vesk
