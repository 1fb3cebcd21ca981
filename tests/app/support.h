// Running the application on real files, within the test's own process.
#pragma once

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/entry.h"
#include "app/vesk_application.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/support.h"
#include "support/console_capture.h"

namespace Vesk {

/// Works in a directory of its own, with a per-user directory inside it.
class ApplicationTest : public testing::Test {
  protected:
    struct Outcome {
        int status;
        std::string output;  ///< both streams, the directory as DIR, with slashes

        friend bool operator==(const Outcome&, const Outcome&) = default;
        friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
            return out << outcome.status << ": " << outcome.output;
        }
    };

    ApplicationTest() : before_(std::filesystem::current_path()) {
        enter(".");
        platform::setEnvironmentVariable("APPDATA", directory_.text("data"));
    }
    ~ApplicationTest() override { std::filesystem::current_path(before_); }

    /// Makes a directory below the test's own the current one.
    void enter(std::string_view name) {
        std::filesystem::create_directories(directory_ / name);
        std::filesystem::current_path(directory_ / name);
    }

    void write(std::string_view name, std::string_view text) const {
        std::filesystem::create_directories((directory_ / name).parent_path());
        test::write(directory_ / name, text);
    }

    std::string content(std::string_view name) const {
        return readable(test::contentOf(directory_ / name));
    }

    Outcome run(const std::vector<std::string>& arguments) const {
        test::ConsoleCapture console;
        int status = 0;
        {
            VeskApplication application;
            status = runReporting(application, arguments);
        }
        return {status, readable(console.text())};
    }

    std::string readable(std::string text) const {
        std::replace(text.begin(), text.end(), '\\', '/');
        std::string name =
            platform::pathToUtf8(std::filesystem::weakly_canonical(directory_.path()));
        std::replace(name.begin(), name.end(), '\\', '/');
        for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
            text.replace(at, name.size(), "DIR");
        }
        return text;
    }

    test::TempDir directory_;
    std::filesystem::path before_;
};

}  // namespace Vesk
