// A directory for the files of one test.
#pragma once

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/files.h"

namespace Vesk::test {

class ScratchDirectory {
  public:
    ScratchDirectory() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        directory_ = std::filesystem::canonical(std::filesystem::temp_directory_path()) /
                     (std::string("vesk ") + test->test_suite_name() + " " + test->name());
        std::filesystem::remove_all(directory_);
        std::filesystem::create_directories(directory_);
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    /// With forward slashes.
    std::string path() const {
        std::string text = platform::pathToUtf8(directory_);
        std::ranges::replace(text, '\\', '/');
        return text;
    }

    void write(std::string_view name, std::string_view content) const {
        const auto file = directory_ / platform::pathFromUtf8(name);
        std::filesystem::create_directories(file.parent_path());
        std::error_code error;
        EXPECT_TRUE(platform::writeWholeFile(file, content, platform::Append::no, error));
    }

  private:
    std::filesystem::path directory_;
};

}  // namespace Vesk::test
