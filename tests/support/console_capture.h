// What vesk's messages are while a test runs, without their colours.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

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
        return plain(all);
    }

  private:
    /// Without colours and carriage returns.
    static std::string plain(std::string_view text) {
        std::string kept;
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (text.substr(at, 2) == "\x1b[") {
                at = text.find('m', at);
            } else if (text[at] != '\r') {
                kept += text[at];
            }
        }
        return kept;
    }

    int earlierThreshold_;
    bool active_ = true;
};

}  // namespace Vesk::test
