#include "driver/cache_step.h"

#include <algorithm>
#include <limits>
#include <thread>
#include <unordered_set>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "cache/record_files.h"
#include "events/events.h"
#include "platform/directories.h"
#include "platform/files.h"

namespace Vesk {

namespace {

/// The system is asked once: it opens a file to tell.
unsigned processors() {
    static const unsigned count = std::thread::hardware_concurrency();
    return count;
}

}  // namespace

unsigned workerCount(int jobCount, std::size_t limit, std::size_t pieces) {
    if (jobCount == 0 || jobCount == 1) {
        return 1;
    }
    const std::size_t jobs =
        jobCount < 0 ? std::numeric_limits<unsigned>::max() : static_cast<unsigned>(jobCount);
    return static_cast<unsigned>(std::max<std::size_t>(std::min({jobs, limit, pieces}), 1));
}

CacheStep::CacheStep(ProjectCache& cache, std::string key, CacheRequest request,
                     const DriverOptions& options, const events::Subject& target)
    : cache_(cache),
      options_(options),
      key_(std::move(key)),
      request_(std::move(request)),
      seenAs_(target),
      outcomes_(request_.parts.size(), StepOutcome::Pending),
      seconds_(request_.parts.size()) {}

void CacheStep::ask() {
    const events::Span span(events::Activity::Cache, "look up");
    obtained_ = cache_.obtain(key_, request_, options_.dryRun ? Lookup::only : Lookup::claim, 0);
    compareWithRecord();
    begin();
}

void CacheStep::askLater() {
    obtained_.record = cache_.last(key_);
    compareWithRecord();
}

void CacheStep::claim() {
    if (asked_) {
        return;
    }
    // The record stays the one that the recipes have been held against.
    const ObtainResult claimed = cache_.obtain(key_, request_, Lookup::claimUnseen, 0);
    obtained_.answer = claimed.answer;
    obtained_.token = claimed.token;
    begin();
}

void CacheStep::compareWithRecord() {
    freshness_.reset();
    if (mustBuild()) {
        freshness_.emplace(request_, obtained_.record ? &*obtained_.record : nullptr,
                           cache_.states(), cache_.root());
    }
}

void CacheStep::begin() {
    asked_ = true;
    if (mustBuild()) {
        cache_.states().look(request_.parts[kTargetPart].reads);
        noteAbsent(request_.parts[kTargetPart].writes, MadeFiles::Kind::Output);
    }
    startedAt_ = platform::fileClock();
    report();
}

/// What is not there when commands begin is vesk's own when it is there one day. A target without
/// commands may just name files: what it has made is known afterwards.
void CacheStep::noteAbsent(const std::vector<std::string>& files, MadeFiles::Kind kind) {
    for (const std::string& file : files) {
        if (options_.dryRun || cache_.states().kindOf(file) != FileState::Kind::Missing) {
            continue;
        }
        if (request_.parts.size() > kFirstRecipePart) {
            cache_.made().add(cache_.root().stored(file), kind, key_);
        } else {
            absent_.push_back(file);
        }
    }
}

/// After a build: what a target without commands has made, and what the last build made and this
/// one does not.
void CacheStep::noteMade() {
    for (const std::string& file : absent_) {
        if (cache_.states().kindOf(file) != FileState::Kind::Missing) {
            cache_.made().add(cache_.root().stored(file), MadeFiles::Kind::Output, key_);
        }
    }
    std::unordered_set<std::string_view> made;
    std::unordered_set<std::string_view> byProducts;
    for (const CacheRequest::Part& part : request_.parts) {
        for (const std::string& file : part.writes) {
            made.insert(cache_.root().stored(file));
        }
        for (const std::string& file : part.byProducts) {
            byProducts.insert(cache_.root().stored(file));
        }
    }
    bool makesFewer = false;
    for (const RecordFile& file : freshness_->filesWritten()) {
        if (!made.contains(file.path)) {
            cache_.made().noteFormer(file.path, key_, file.state);
            makesFewer = true;
        }
    }
    if (makesFewer) {
        cache_.made().keepByProducts(key_, byProducts);
    }
}

bool CacheStep::anyRead(std::size_t recipe,
                        const std::function<bool(const std::string&)>& take) const {
    const std::size_t part = kFirstRecipePart + recipe;
    const bool withTarget = request_.parts[part].judged == Judged::WithTarget;
    if (std::ranges::any_of(request_.parts[part].reads, take) ||
        (withTarget && std::ranges::any_of(request_.parts[kTargetPart].reads, take))) {
        return true;
    }
    const auto last = freshness_ ? freshness_->lastPart(part) : std::nullopt;
    const auto& numbers = last ? freshness_->lastReads(*last) : std::nullopt;
    return numbers && std::ranges::any_of(*numbers, [&](std::size_t number) {
               return take(freshness_->lastFile(number).path());
           });
}

void CacheStep::report() {
    switch (obtained_.answer) {
        case CacheAnswer::Hit:
            console::trace("Cache hit for '{}'.", seenAs_.target);
            return;
        case CacheAnswer::Claimed:
            console::trace("Cache claimed for '{}'.", seenAs_.target);
            break;
        case CacheAnswer::Miss:
            console::trace("Cache miss for '{}'. Building...", seenAs_.target);
            break;
        case CacheAnswer::Refused:
            throw VeskException("Unable to obtain cache record for " + seenAs_.target);
    }
    if (request_.parts.size() == kFirstRecipePart) {
        giveReasons();  // of no step; but others may be built because of it
    }
    if (console::enabled(console::level::kDetail)) {
        console::message(console::level::kDetail, console::colour::kTrace, "Out of date: {}.",
                         freshness_->reason());
    }
}

void CacheStep::giveReasons() {
    if ((options_.reasons == nullptr && !events::listened()) || std::exchange(gaveReasons_, true)) {
        return;
    }
    const std::vector<Reason> reasons = freshness_->reasons(BuildReasons::kMostReasons);
    if (options_.reasons != nullptr) {
        options_.reasons->add(seenAs_.target, reasons, request_);
    }
    for (const Reason& reason : reasons) {
        events::emit(events::ReasonFound{seenAs_, reason.text, reason.file, reason.name,
                                         reason.before, reason.now});
    }
}

CacheStep::~CacheStep() {
    if (obtained_.token != 0) {
        cache_.release(key_, obtained_.token);
    }
}

std::vector<Assignment> CacheStep::storedOutputs() const {
    return outputsOf(*obtained_.record, cache_.root().directory());
}

std::string CacheStep::stamp() const {
    return stampOf(*obtained_.record);
}

bool CacheStep::stale(std::size_t recipe) {
    if (keepIfFresh(recipe)) {
        return false;
    }
    const CacheRequest::Part& part = request_.parts[kFirstRecipePart + recipe];
    giveReasons();
    cache_.states().look(part.reads);
    noteAbsent(part.writes, MadeFiles::Kind::Output);
    noteAbsent(part.byProducts, MadeFiles::Kind::ByProduct);
    return true;
}

bool CacheStep::keepIfFresh(std::size_t recipe) {
    const std::size_t part = kFirstRecipePart + recipe;
    const bool fresh = freshness_->fresh(part);
    outcomes_[part] = fresh ? StepOutcome::Kept : outcomes_[part];
    return fresh;
}

double CacheStep::secondsOf(const std::vector<std::size_t>& recipes, double guess) const {
    double longest = 0;
    for (const std::size_t recipe : recipes) {
        const auto last =
            freshness_ ? freshness_->lastPart(kFirstRecipePart + recipe) : std::nullopt;
        const double seconds = last ? secondsIn(freshness_->lastParts()[*last]) : 0;
        longest = std::max(longest, seconds == 0 ? guess : seconds);
    }
    return longest;
}

KeptSteps CacheStep::kept() const {
    if (!mustBuild() && obtained_.record) {
        return stepsIn(*obtained_.record);
    }
    KeptSteps kept;
    for (std::size_t i = kFirstRecipePart; freshness_ && i < outcomes_.size(); ++i) {
        const auto last = freshness_->lastPart(i);
        if (outcomes_[i] == StepOutcome::Kept && last) {
            ++kept.steps;
            kept.seconds += secondsIn(freshness_->lastParts()[*last]);
        }
    }
    return kept;
}

void CacheStep::ran(std::size_t recipe, double seconds) {
    const std::size_t part = kFirstRecipePart + recipe;
    seconds_[part] = seconds;
    outcomes_[part] = StepOutcome::Ran;
    takeOutputDirectory(request_.parts[part]);
    for (const auto* files : {&request_.parts[part].writes, &request_.parts[part].byProducts}) {
        for (const std::string& file : *files) {
            cache_.states().written(file);
        }
    }
}

/// What is in there now is what the step has made; what was there before is gone.
void CacheStep::takeOutputDirectory(CacheRequest::Part& part) {
    if (part.outputDirectory.empty()) {
        return;
    }
    cache_.states().writtenBelow(trackedPath(part.outputDirectory));
    std::vector<std::filesystem::path> directories = {part.outputDirectory};
    while (!directories.empty()) {
        const std::filesystem::path directory = std::move(directories.back());
        directories.pop_back();
        std::error_code unreadable;
        for (const platform::DirectoryEntry& entry :
             platform::listDirectory(directory, unreadable)) {
            const std::filesystem::path path = directory / platform::pathFromUtf8(entry.name);
            if (!entry.directory) {
                part.writes.push_back(trackedPath(path));
                // The directory was emptied before the step ran.
                cache_.made().add(cache_.root().stored(part.writes.back()), MadeFiles::Kind::Output,
                                  key_);
            } else if (!entry.link) {
                directories.push_back(path);
            }
        }
    }
}

/// Outputs of the target as a whole, which no recipe has told of.
void CacheStep::lookAnewAtOutputs() {
    std::unordered_set<std::string_view> known;
    for (std::size_t i = kFirstRecipePart; i < request_.parts.size(); ++i) {
        known.insert(request_.parts[i].writes.begin(), request_.parts[i].writes.end());
    }
    for (const std::string& file : request_.parts[kTargetPart].writes) {
        if (!known.contains(file)) {
            cache_.states().written(file);
        }
    }
}

bool CacheStep::makesFiles() const {
    return std::ranges::any_of(request_.parts,
                               [](const auto& part) { return !part.writes.empty(); });
}

bool CacheStep::record(std::vector<Assignment> outputs, const std::string& stamp) {
    const events::Span span(events::Activity::Cache, "record");
    FileStates& states = cache_.states();
    lookAnewAtOutputs();
    const std::vector<std::string> files = filesToRead(request_, outcomes_);
    states.readAhead(files, workerCount(options_.jobCount, processors(), files.size() / 2));
    BuildResults results{outcomes_, seconds_, std::move(outputs), stamp, startedAt_, true};
    std::vector<std::string> missing;
    auto record = makeRecord(request_, results, *freshness_, states, cache_.root(), &missing);
    for (const std::string& file : missing) {
        console::warning("'{}' has not made its output '{}'.", seenAs_.target, file);
    }
    if (!record || obtained_.answer != CacheAnswer::Claimed) {
        return false;
    }
    noteMade();
    const std::uint64_t token = std::exchange(obtained_.token, 0);
    if (!cache_.upsert(key_, std::move(*record), token)) {
        throw VeskException("Unable to update cache record for " + seenAs_.target);
    }
    return missing.empty();
}

void CacheStep::keepProgress() {
    if (obtained_.token == 0 || std::ranges::find(outcomes_, StepOutcome::Ran) == outcomes_.end()) {
        return;
    }
    BuildResults results{outcomes_, seconds_, {}, {}, startedAt_, false};
    auto record = makeRecord(request_, results, *freshness_, cache_.states(), cache_.root());
    if (record) {
        cache_.checkpoint(key_, std::move(*record), obtained_.token);
    }
}

}  // namespace Vesk
