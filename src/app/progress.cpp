#include "app/progress.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/console.h"
#include "base/text.h"
#include "platform/console.h"
#include "platform/environment.h"

namespace Vesk {
namespace {

constexpr unsigned kUsualWidth = 80;

bool isSet(const char* variable, std::string_view value) {
    return platform::environmentVariable(variable).value_or("") == value;
}

/// Terminals that show progress on the taskbar or the tab, by the variables that they set. Others
/// take the sequence for a notification.
bool terminalHasTaskbar() {
    return console::coloursWanted() &&
           (!platform::environmentVariable("WT_SESSION").value_or("").empty() ||
            isSet("ConEmuANSI", "ON") || isSet("TERM_PROGRAM", "WezTerm") ||
            isSet("TERM_PROGRAM", "ghostty"));
}

/// `state`: 0 takes it away, 1 shows the percentage.
std::string taskbarSequence(int state, std::size_t percent) {
    return fmt::format("\x1b]9;4;{};{}\x1b\\", state, percent);
}

ProgressStyle styleFor(const Settings& settings) {
    if (settings.dryRun || settings.why) {
        return ProgressStyle::None;
    }
    if (settings.progress != ProgressStyle::Auto) {
        return settings.progress;
    }
    const bool usual = console::threshold() == console::level::kNormal && !isSet("TERM", "dumb");
    return usual && platform::terminalWidth(platform::Stream::Output) ? ProgressStyle::Line
                                                                      : ProgressStyle::None;
}

/// The columns that a text takes at most: the wide letters of the east take two, and are among
/// those of three and four bytes.
std::size_t columnsOf(unsigned char firstByte) noexcept {
    constexpr unsigned char kFirstOfThree = 0xE1;
    const bool continues = (firstByte & 0xC0) == 0x80;
    return continues ? 0 : firstByte >= kFirstOfThree ? 2 : 1;
}

/// Cut so that it stays on one line.
std::string cutTo(std::size_t columns, const std::string& text) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        used += columnsOf(static_cast<unsigned char>(text[i]));
        if (used > columns) {
            return text.substr(0, i);
        }
    }
    return text;
}

std::size_t columnsOf(const std::string& text) noexcept {
    std::size_t columns = 0;
    for (const char c : text) {
        columns += columnsOf(static_cast<unsigned char>(c));
    }
    return columns;
}

}  // namespace

Progress::Progress(const Settings& settings, BuildEvents& next)
    : style_(styleFor(settings)),
      next_(next),
      taskbar_(style_ == ProgressStyle::Line && platform::terminalWidth(platform::Stream::Output) &&
               terminalHasTaskbar()) {}

Progress::~Progress() {
    if (style_ == ProgressStyle::None) {
        return;
    }
    console::showStatus({}, 0, taskbar_ ? taskbarSequence(0, 0) : std::string());
    if (done_ != 0) {
        console::writeAnswer(
            fmt::format("{} in {}", counted(done_, "step"), clockText(Clock::now() - began_)));
    }
}

void Progress::failed(const std::string& target, const std::string& said) {
    next_.failed(target, said);
}

void Progress::failedLike(const std::string& other, const std::string& target) {
    next_.failedLike(other, target);
}

void Progress::skipped(const std::string& target, const std::string& needed) {
    next_.skipped(target, needed);
}

void Progress::ended(const std::string& target, TargetEnd end) {
    next_.ended(target, end);
}

void Progress::expected(std::size_t steps) {
    known_ += steps;
    drawWhenDue();
}

void Progress::dropped(std::size_t steps) {
    known_ -= std::min(known_, steps);
}

void Progress::stepsBegan(const std::string& target, std::size_t steps) {
    if (style_ != ProgressStyle::None) {
        running_.insert(running_.end(), steps, target);
    }
}

void Progress::stepsEnded(const std::string& target, std::size_t steps) {
    if (style_ == ProgressStyle::None) {
        return;
    }
    for (std::size_t i = 0; i < steps; ++i) {
        ++done_;
        if (const auto found = std::ranges::find(running_, target); found != running_.end()) {
            running_.erase(found);
        }
        if (style_ == ProgressStyle::Plain) {
            console::writeAnswer(fmt::format("[{}/{}] {} {}", done_, std::max(done_, known_),
                                             clockText(Clock::now() - began_), target));
        }
    }
    drawWhenDue();  // under -j 1 nothing waits, and a command is going to erase the line again
}

/// A second more is a reason to draw, too; a drawing that would come too early is made up for.
std::chrono::milliseconds Progress::beforeWaiting(std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds kSecond{1000};
    if (style_ != ProgressStyle::Line) {
        return longest;
    }
    if (drawWhenDue()) {
        return std::min(longest, kSecond);
    }
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(drawn_ + kBetweenDrawings - Clock::now());
    return std::clamp(rest, std::chrono::milliseconds(1), longest);
}

std::string Progress::text() const {
    std::string text = fmt::format("[{}/{}] {} ", done_, std::max(done_, known_),
                                   clockText(Clock::now() - began_));
    std::vector<std::string> targets;
    for (const std::string& target : running_) {
        if (std::ranges::find(targets, target) == targets.end()) {
            targets.push_back(target);
        }
    }
    return text + joined(targets, ", ");
}

bool Progress::drawWhenDue() {
    if (style_ != ProgressStyle::Line || Clock::now() - drawn_ < kBetweenDrawings) {
        return false;
    }
    draw();
    return true;
}

void Progress::draw() {
    drawn_ = Clock::now();
    const unsigned width = platform::terminalWidth(platform::Stream::Output).value_or(kUsualWidth);
    const std::string line = cutTo(width == 0 ? 0 : width - 1, text());
    std::string taskbar;
    const std::size_t percent = known_ == 0 ? 0 : std::min<std::size_t>(done_ * 100 / known_, 100);
    if (taskbar_ && percent != shownPercent_) {
        shownPercent_ = percent;
        taskbar = taskbarSequence(1, percent);
    }
    console::showStatus(line, columnsOf(line), taskbar);
}

}  // namespace Vesk
