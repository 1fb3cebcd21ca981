// What tests of processes and files share.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process.h"

namespace Vesk::test {

/// An empty directory of its own, removed with its contents at the end. Its name holds a blank and
/// letters beyond ASCII, so that every test meets them.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }
    std::filesystem::path operator/(std::string_view name) const;
    /// The path of a file in it as UTF-8 text.
    std::string text(std::string_view name) const;

  private:
    std::filesystem::path path_;
};

/// The file's bytes; fails the test when it cannot be read.
std::string contentOf(const std::filesystem::path& path);
void write(const std::filesystem::path& path, std::string_view bytes);

/// Returns when the file exists and is not empty.
void waitForFile(const std::filesystem::path& path);

/// The test child program (see child/verbs.h).
std::filesystem::path childProgram();

/// A command text for the shell of either system that runs the test child with these arguments.
std::string childCommand(const std::vector<std::string>& arguments);

/// What starts the test child without a shell.
platform::ProcessRequest childRequest(std::vector<std::string> arguments);

}  // namespace Vesk::test
