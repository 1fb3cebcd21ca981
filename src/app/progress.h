// How far a build is, on the last line of a terminal or in numbered lines.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/settings.h"
#include "driver/build_events.h"

namespace Vesk {

/// Hands on the events that are not about steps. Costs a call an event where nothing is shown.
class Progress : public BuildEvents {
  public:
    /// The line is drawn at most so often.
    static constexpr std::chrono::milliseconds kBetweenDrawings{100};

    Progress(const Settings& settings, BuildEvents& next);

    /// Erases the line, and says how long it took if there was anything to do.
    ~Progress() override;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void failed(const std::string& target, const std::string& said) override;
    void failedLike(const std::string& other, const std::string& target) override;
    void skipped(const std::string& target, const std::string& needed) override;
    void ended(const std::string& target, TargetEnd end) override;
    void expected(std::size_t steps) override;
    void dropped(std::size_t steps) override;
    void stepsBegan(const std::string& target, std::size_t steps) override;
    void stepsEnded(const std::string& target, std::size_t steps) override;
    std::chrono::milliseconds beforeWaiting(std::chrono::milliseconds longest) override;

  private:
    using Clock = std::chrono::steady_clock;

    std::string text() const;
    bool drawWhenDue();
    void draw();

    ProgressStyle style_;  ///< never Auto
    BuildEvents& next_;
    bool taskbar_ = false;
    std::size_t done_ = 0;
    std::size_t known_ = 0;
    std::size_t shownPercent_ = 0;
    std::vector<std::string> running_;  ///< a target for each of its steps
    Clock::time_point began_ = Clock::now();
    Clock::time_point drawn_ = began_;
};

}  // namespace Vesk
