// A directory with project files, for one test.
#pragma once

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "project/load_project.h"
#include "project/registry.h"

namespace Vesk::test {

/// An empty directory whose name has a blank, a quote and letters outside ASCII: all that is built
/// below it must work with such a path.
class Workspace : public ::testing::Test {
  protected:
    Workspace();
    ~Workspace() override;

    std::filesystem::path path(const std::string& relative) const;

    /// Writes a file, with the directories it needs.
    void write(const std::string& relative, const std::string& text) const;
    std::string read(const std::string& relative) const;

    /// What escapes from the action: its report, with this directory written as "<ws>" and slashes
    /// in paths. Empty when nothing escapes.
    std::string failureOf(const std::function<void()>& action) const;

    /// What the action writes to standard output and standard error, in the same way, without
    /// colours.
    std::string outputOf(const std::function<void()>& action) const;

    Registry registry;

  private:
    std::string readable(std::string text) const;

    std::filesystem::path root_;
};

}  // namespace Vesk::test
