// The files of one target: as its text names them, as commands name them, as values hold them.
//
// Inside the toolchains a path is text: absolute, UTF-8, with forward slashes, without "." and
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

    /// Where commands run.
    const std::string& root() const noexcept { return root_; }
    const std::string& outputDirectory() const noexcept { return outputDirectory_; }

    /// Holds the object files of this target and of no other.
    const std::string& objectDirectory() const noexcept { return objectDirectory_; }

    /// A name in the target's text. A relative one belongs to the directory of the unit file, or
    /// to the root where there is none.
    std::string absolute(std::string_view name) const;
    std::vector<std::string> absolute(const std::vector<std::string>& names) const;

    /// A variable that holds names of files or directories, patterns replaced by what they meet.
    /// Throws VeskException for a pattern that meets nothing.
    std::vector<std::string> files(std::string_view variable) const;

    /// The path as commands name it: relative to the root if it lies below it, so that a project
    /// can be moved and command lines stay short. Never what programs take for an option or a
    /// response file: "./-x.c".
    std::string inCommand(const std::string& path) const;
    std::vector<std::string> inCommand(const std::vector<std::string>& paths) const;

    /// What compiling the source gives, without a suffix: in the object directory, the source's
    /// path below the root mirrored, so that two sources of one name do not meet.
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

/// `path`, which is absolute or below `base`, in the form that the top of this file describes.
std::string normalPath(std::string_view path, std::string_view base = {});

/// `path` seen from the directory `from`; the path itself where there is no way.
std::string relativePath(const std::string& path, const std::string& from);

/// The path as the system writes it: what names programs, and what users see.
std::string nativePath(std::string path);

/// Whether there is a file of that name.
bool isFile(const std::string& path);

/// Path values, written as the system writes paths.
ValuePtr pathValue(const std::string& path);
ValuePtr pathValues(const std::vector<std::string>& paths);

}  // namespace Vesk
