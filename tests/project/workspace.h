// A directory with project files, for one test.
#pragma once

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/console.h"
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

    /// A project "name" in a directory of that name, with one unit "main" of one target "all".
    /// `sections` are its import section, `profiles` its profiles section.
    void writeProject(const std::string& name, const std::string& imports = {},
                      const std::string& profiles = {}) const;

    /// Loads the project in the directory, with its imports.
    Project& load(const std::string& directory, const std::string& profile = {});

    /// What escapes from the action: its report, with this directory written as "<ws>" and slashes
    /// in paths. Empty when nothing escapes.
    std::string failureOf(const std::function<void()>& action) const;

    /// What the action writes to standard output and standard error, in the same way, without
    /// colours.
    std::string outputOf(const std::function<void()>& action,
                         int threshold = console::kDefaultThreshold) const;

    ProjectStore store;
    Registry registry;
    ProjectLoader loader{store, [this] { return &registry; },
                         [](std::string_view type) { return type == "command"; }};

  private:
    std::string readable(std::string text) const;

    std::filesystem::path root_;
};

std::vector<std::string> namesOf(const std::vector<const Project*>& projects);

}  // namespace Vesk::test
