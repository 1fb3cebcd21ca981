// The files of one target: as its text names them, as commands name them, as values hold them.
//
// Inside the toolchains a path is a text: absolute, UTF-8, with forward slashes, without "." and
// "..".
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "run/build_env.h"
#include "types/model/target.h"

namespace Vesk {

class TargetPaths {
  public:
    TargetPaths(const TargetContext& target, const BuildEnv& environment);

    /// The directory where commands run.
    const std::string& root() const noexcept { return root_; }
    const std::string& outputDirectory() const noexcept { return outputDirectory_; }

    /// Holds the object files of this target and no other.
    const std::string& objectDirectory() const noexcept { return objectDirectory_; }

    /// A name in the target's text. A relative name starts from the directory of the unit file, or
    /// from the root if there is none.
    std::string absolute(std::string_view name) const;
    std::vector<std::string> absolute(const std::vector<std::string>& names) const;

    /// A variable with names of files or directories, where patterns are replaced by the files that
    /// match. Throws VeskException for a pattern without a match.
    std::vector<std::string> files(std::string_view variable) const;

    /// The path in the form for commands: relative to the root if it lies below it, so that a
    /// project can be moved and command lines stay short. Never mistakable for an option or a
    /// response file: "./-x.c".
    std::string inCommand(const std::string& path) const;
    std::vector<std::string> inCommand(const std::vector<std::string>& paths) const;

    /// The result of compiling the source, without a suffix: in the object directory, mirroring the
    /// source's path below the root, so that sources of the same name do not collide.
    std::string objectStem(const std::string& source) const;

    /// A product of the target. Throws VeskException for a name that leads out of the output
    /// directory.
    std::string inOutputDirectory(const std::string& name) const;

  private:
    const TargetContext& target_;
    std::string root_;
    std::string outputDirectory_;
    std::string objectDirectory_;
    std::string textDirectory_;  ///< of the unit file
};

/// `path`, which is absolute or relative to `base`, in the form described at the top of this file.
std::string normalPath(std::string_view path, std::string_view base = {});

/// `path` relative to the directory `from`; the path itself if there is no way.
std::string relativePath(const std::string& path, const std::string& from);

/// The path as the system writes it, for names of programs and for users.
std::string nativePath(std::string path);

/// Whether a file of that name exists.
bool isFile(const std::string& path);

/// Path values, written the way the system writes paths.
ValuePtr pathValue(const std::string& path);
ValuePtr pathValues(const std::vector<std::string>& paths);

}  // namespace Vesk
