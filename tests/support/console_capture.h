// What vesk's messages are while a test runs, without their colours.
#pragma once

#include <gtest/gtest.h>
#include <regex>
#include <string>

#include "base/console.h"

namespace Vesk::test {

/// Catches both streams from construction to `lines`, at a threshold of its own.
class ConsoleCapture {
  public:
    explicit ConsoleCapture(int threshold = console::kDefaultThreshold)
        : earlierThreshold_(console::threshold()) {
        console::flush();
        console::setThreshold(threshold);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~ConsoleCapture() {
        if (active_) {
            text();
        }
    }
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;

    /// Standard output, then standard error, with "\n" as line end. Ends the capture.
    std::string text() {
        console::flush();
        const std::string output = testing::internal::GetCapturedStdout();
        const std::string all = output + testing::internal::GetCapturedStderr();
        console::setThreshold(earlierThreshold_);
        active_ = false;
        return std::regex_replace(all, std::regex("\x1b\\[[0-9;]*m|\r"), "");
    }

  private:
    int earlierThreshold_;
    bool active_ = true;
};

}  // namespace Vesk::test
