// What became of a build's targets, in a few lines.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "driver/build_events.h"

namespace Vesk {

class BuildSummary : public BuildEvents {
  public:
    /// Of this many targets the names are given, and so many lines are shown of the first error.
    static constexpr std::size_t kMostNames = 20;
    static constexpr std::size_t kMostErrorLines = 20;

    /// With more lines than that after it, the first error is shown again.
    static constexpr std::size_t kScreen = 24;

    explicit BuildSummary(bool dryRun) : dryRun_(dryRun) {}

    void failed(const std::string& target, const std::string& said) override;
    void failedLike(const std::string& other, const std::string& target) override;
    void skipped(const std::string& target, const std::string& needed) override;
    void ended(const std::string& target, TargetEnd end) override;

    /// Which targets failed and which were skipped, the counts of the others with the time since
    /// this was made, and the first error again where it is far away.
    std::vector<std::string> lines() const;
    void print() const;

    bool anyFailed() const noexcept { return !failed_.empty(); }

  private:
    std::size_t count(TargetEnd end) const;
    std::string counts() const;
    void addFirstError(std::vector<std::string>& lines) const;

    bool dryRun_;  ///< nothing is built, it would be
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::unordered_map<std::string, TargetEnd> fates_;
    std::vector<std::string> failed_;
    std::map<std::string, std::vector<std::string>> failedLike_;  ///< by the first of them
    std::vector<std::string> skipped_;                            ///< "main::app (needs main::lib)"
    std::unordered_map<std::string, std::string> needed_;         ///< by who was skipped for it
    std::string firstError_;
    std::size_t linesBefore_ = 0;  ///< what the console had written at that error
};

}  // namespace Vesk
