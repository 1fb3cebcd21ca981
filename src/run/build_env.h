// Where the commands of one target run: its output directory and its process environment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Vesk {

class Context;

/// What a target's context says about where its results go; empty where it says nothing.
struct BuildEnvSettings {
    std::string outputName;             ///< OUTPUT_NAME: without prefix and suffix
    std::string outputDir;              ///< OUTPUT_DIR: relative to the project root
    std::filesystem::path projectRoot;  ///< PROJECT_ROOT
    std::string outputDefDir;           ///< OUTPUT_DEF_DIR: relative to the project root
    std::string profile;                ///< PROFILE: the selected profile's name
};

/// As a target's context has them.
BuildEnvSettings environmentSettings(const Context& target);

/// OUTPUT_DIR under the project root when it is given, else OUTPUT_DEF_DIR (else "out") under the
/// project root and in it a directory for the profile, if one is selected.
std::filesystem::path deriveOutputDirectory(const BuildEnvSettings& settings);

/// The build environment of one target: its output directory, and the changes to the process
/// environment that its commands see.
///
/// Life: one per visit of a target; prepared before the commands start, restored after they have
/// ended, by the destructor at the latest. The process environment is everybody's, so all changes
/// are made on the driver's thread while no command runs.
class BuildEnv {
  public:
    /// `outputDirectory` may be empty: there is none to create then.
    explicit BuildEnv(std::filesystem::path outputDirectory);
    explicit BuildEnv(BuildEnvSettings settings);
    ~BuildEnv() { restore(); }
    BuildEnv(const BuildEnv&) = delete;
    BuildEnv& operator=(const BuildEnv&) = delete;

    const std::filesystem::path& outputDirectory() const noexcept { return outputDirectory_; }
    const BuildEnvSettings& settings() const noexcept { return settings_; }
    std::uint64_t jobCount() const noexcept { return jobCount_; }
    bool prepared() const noexcept { return prepared_; }

    /// Creates the output directory with all its parents and says where it is. Throws VeskException
    /// when already prepared or without jobs, std::filesystem::filesystem_error when the directory
    /// cannot be created; the environment is not prepared then.
    void prepare(std::uint64_t jobCount);

    /// Changes a variable of the process until `restore`. Names are compared with regard to case.
    /// Throws VeskException when not prepared and when the system refuses.
    void setVariable(const std::string& name, const std::string& value);

    /// Gives every changed variable the value from before its first change, the last one changed
    /// first. Failures are logged. The environment can be prepared again afterwards.
    void restore() noexcept;

  private:
    struct SavedVariable {
        std::string name;
        std::optional<std::string> value;  ///< nothing: it was not set
    };

    bool isSaved(const std::string& name) const;
    static void restoreVariable(const SavedVariable& variable);

    std::filesystem::path outputDirectory_;
    BuildEnvSettings settings_;
    std::uint64_t jobCount_ = 0;
    bool prepared_ = false;
    std::vector<SavedVariable> savedVariables_;
};

}  // namespace Vesk
