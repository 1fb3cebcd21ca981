// Builds of literal unit texts, in this process.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cache/project_cache.h"
#include "driver/driver.h"

namespace Vesk::test {

/// What came of a build: its messages from the first "Visiting target" on, the directory of the
/// test as DIR, and the outputs or the error.
struct BuildOutcome {
    std::shared_ptr<Context> outputs;
    std::string messages;
    std::string error;  ///< with its notes; empty after success

    /// The messages that contain `part`, in order.
    std::vector<std::string> linesWith(std::string_view part) const;
};

class DriverTest : public testing::Test {
  protected:
    DriverTest();
    ~DriverTest() override;

    /// Builds a target of the unit "main" with this text, with the cache of the builds before. What
    /// the fixture's contexts hold lies under and over it, as builtin variables and a command line
    /// do.
    BuildOutcome build(std::string_view unitText, std::string_view target, int threshold = 5);

    /// Merges an assignment, as source text, into what every target sees.
    void underAll(const std::string& assignment);

    DriverOptions options_;
    std::filesystem::path directory_;

  private:
    std::string readable(std::string text) const;

    std::shared_ptr<Context> base_ = std::make_shared<Context>();
};

}  // namespace Vesk::test
