#include "app/build_summary.h"

#include <algorithm>
#include <fmt/format.h>
#include <sstream>

#include "base/console.h"
#include "base/printable.h"
#include "base/text.h"

namespace Vesk {
namespace {

/// "a, b, c and 5 more".
std::string listed(std::vector<std::string> names) {
    const std::size_t rest = names.size() - std::min(names.size(), BuildSummary::kMostNames);
    names.resize(names.size() - rest);
    return joined(names, ", ") + (rest == 0 ? "" : fmt::format(" and {} more", rest));
}

}  // namespace

void BuildSummary::failed(const std::string& target, const std::string& said) {
    if (failed_.empty()) {
        firstError_ = withoutEscapes(said);
        linesBefore_ = console::linesWritten();
    }
    if (std::ranges::find(failed_, target) == failed_.end()) {
        failed_.push_back(target);
    }
}

void BuildSummary::failedLike(const std::string& other, const std::string& target) {
    failedLike_[other].push_back(target);
}

void BuildSummary::skipped(const std::string& target, const std::string& needed) {
    if (needed_.emplace(target, needed).second) {
        skipped_.push_back(fmt::format("{} (needs {})", target, needed));
    }
}

/// A target that is visited with several arguments counts once, for the most that was done.
void BuildSummary::ended(const std::string& target, TargetEnd end) {
    const auto [fate, isNew] = fates_.emplace(target, end);
    if (!isNew) {
        fate->second = std::min(fate->second, end);
    }
}

std::size_t BuildSummary::count(TargetEnd end) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(fates_, [end](const auto& fate) { return fate.second == end; }));
}

std::string BuildSummary::counts() const {
    std::string text = fmt::format("{} {}, {} up to date", counted(count(TargetEnd::Ran), "target"),
                                   dryRun_ ? "to build" : "built", count(TargetEnd::UpToDate));
    if (const std::size_t notBegun = count(TargetEnd::NotBegun); notBegun != 0) {
        text += fmt::format(", {} not begun", notBegun);
    }
    return text + ", in " + clockText(std::chrono::steady_clock::now() - begin_);
}

std::vector<std::string> BuildSummary::lines() const {
    std::vector<std::string> lines;
    if (!failed_.empty()) {
        lines.push_back("failed: " + listed(failed_));
    }
    for (const auto& [first, others] : failedLike_) {
        lines.push_back(fmt::format("failed like {}: {}", first, listed(others)));
    }
    if (!skipped_.empty()) {
        lines.push_back("skipped: " + listed(skipped_));
    }
    lines.push_back(counts());
    addFirstError(lines);
    return lines;
}

void BuildSummary::print() const {
    for (const std::string& line : lines()) {
        console::normal("{}", line);
    }
}

void BuildSummary::addFirstError(std::vector<std::string>& lines) const {
    const std::size_t between = console::linesWritten() - linesBefore_;
    if (failed_.empty() || between <= kScreen) {
        return;
    }
    lines.push_back(fmt::format("the first error again, {} lines up:", between));
    std::istringstream said(firstError_);
    std::size_t shown = 0;
    std::size_t rest = 0;
    for (std::string line; std::getline(said, line);) {
        if (shown < kMostErrorLines) {
            lines.push_back("  " + line);
            ++shown;
        } else {
            ++rest;
        }
    }
    if (rest != 0) {
        lines.push_back(fmt::format("  ... and {}", counted(rest, "more line")));
    }
}

}  // namespace Vesk
