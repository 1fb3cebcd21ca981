#include "cache/freshness.h"

#include <algorithm>

namespace Vesk {

using Comparison = FileStates::Comparison;

Freshness::Freshness(const CacheRequest& request, const RecordText* last, FileStates& states,
                     const TrackingRoot& root)
    : request_(request),
      last_(last),
      states_(states),
      root_(root),
      content_(contentOf(last != nullptr ? *last : RecordText(std::string()))),
      tracked_(content_->files().size()) {}

FileStates::File Freshness::lastFile(std::size_t number) const {
    auto& tracked = tracked_[number];
    if (!tracked) {
        tracked = states_.file(root_.absolute(lastFiles()[number].path));
    }
    return *tracked;
}

std::vector<RecordFile> Freshness::filesWritten() const {
    std::vector<bool> written(lastFiles().size());
    std::vector<RecordFile> files;
    for (std::size_t part = 0; part < lastParts().size(); ++part) {
        for (const std::size_t number : lastWrites(part).value_or(std::vector<std::size_t>())) {
            if (!written[number]) {
                written[number] = true;
                files.push_back(lastFiles()[number]);
            }
        }
    }
    return files;
}

Comparison Freshness::compared(std::size_t file) const {
    return states_.compare(lastFile(file), lastFiles()[file].state);
}

/// Names that come and go do not matter by themselves; see headersStand.
bool Freshness::unchanged(std::size_t file) {
    const Comparison comparison = compared(file);
    if (isNamesPath(lastFiles()[file].path)) {
        namesChanged_ = namesChanged_ || comparison != Comparison::Same;
        return true;
    }
    touched_ = touched_ || comparison == Comparison::SameContent;
    return comparison == Comparison::Same || comparison == Comparison::SameContent;
}

bool Freshness::samePart(std::size_t part) const {
    return part < lastParts().size() && part < request_.parts.size() &&
           sameInputs(lastParts()[part].inputs, request_.parts[part].inputs);
}

bool Freshness::sameText() const {
    if (last_ == nullptr || content_->isFaulty() || !request_.again.empty() ||
        lastParts().size() != request_.parts.size() ||
        !sameEnvironment(content_->environment(), request_.environment)) {
        return false;
    }
    for (std::size_t i = 0; i < lastParts().size(); ++i) {
        if (!samePart(i)) {
            return false;
        }
    }
    return true;
}

/// A table without files, where there should be some, would claim that all of them are unchanged.
bool Freshness::tellsOfFiles() const {
    const bool expected = std::ranges::any_of(request_.parts, [](const CacheRequest::Part& part) {
        return !part.reads.empty() || !part.writes.empty();
    });
    return !expected || !lastFiles().empty();
}

bool Freshness::everything() {
    if (!sameText() || !tellsOfFiles()) {
        return false;
    }
    for (std::size_t i = 0; i < lastFiles().size(); ++i) {
        if (!unchanged(i)) {
            return false;
        }
    }
    if (!namesChanged_) {
        return true;
    }
    for (std::size_t i = kFirstRecipePart; i < request_.parts.size(); ++i) {
        if (!headersStand(i, i)) {
            return false;
        }
    }
    touched_ = touched_ || !watchIsOutdated_;
    return true;
}

RecordText Freshness::refreshed() const {
    std::vector<RecordFile> files = lastFiles();
    for (RecordFile& file : files) {
        if (watchIsOutdated_ && isNamesPath(file.path)) {
            continue;  // looks different next time too, and is then searched again
        }
        file.setState(states_.current(root_.absolute(file.path)));
    }
    return withFiles(*last_, files);
}

std::optional<std::size_t> Freshness::lastPart(std::size_t part) const {
    if (samePart(part)) {
        return part;
    }
    if (partsByInputs_.empty()) {
        for (std::size_t i = kFirstRecipePart; i < lastParts().size(); ++i) {
            partsByInputs_.try_emplace(lastParts()[i].inputs, i);
        }
    }
    const auto found = partsByInputs_.find(request_.parts[part].inputs);
    return found == partsByInputs_.end() ? std::nullopt : std::optional(found->second);
}

/// `expected`: how many files the request knows of. A build may have found more.
bool Freshness::unchanged(const Numbers& files, std::size_t expected) {
    return files && files->size() >= expected &&
           std::ranges::all_of(*files, [this](std::size_t file) { return unchanged(file); });
}

HeadersRead Freshness::headersRead(std::size_t part, std::size_t lastPart) const {
    const CacheRequest::Part& wanted = request_.parts[part];
    HeadersRead read{wanted.headerSearch.get(), wanted.source, {}};
    for (const std::size_t number : lastReads(lastPart).value_or(std::vector<std::size_t>())) {
        std::string path = lastFile(number).path();
        if (!isNamesPath(path) && !std::ranges::binary_search(wanted.reads, path)) {
            read.headers.push_back(std::move(path));
        }
    }
    return read;
}

bool Freshness::sameNames(std::size_t lastPart) {
    const Numbers& numbers = lastReads(lastPart);
    return numbers && std::ranges::all_of(*numbers, [this](std::size_t number) {
               return !isNamesPath(lastFiles()[number].path) ||
                      compared(number) == Comparison::Same;
           });
}

bool Freshness::isWatched(const std::string& names) {
    if (watched_.empty()) {
        for (const RecordFile& file : lastFiles()) {
            if (isNamesPath(file.path)) {
                watched_.insert(root_.absolute(file.path));
            }
        }
    }
    return watched_.contains(names);
}

/// Whether the compiler would find the same headers again. Looks for names only in directories
/// whose names have changed.
bool Freshness::headersStand(std::size_t part, std::size_t lastPart) {
    if (!request_.parts[part].headerSearch || sameNames(lastPart)) {
        return true;
    }
    const HeadersRead read = headersRead(part, lastPart);
    bool stand = true;
    eachEarlierPlace(read, [&](const std::string& place) {
        if (free_.contains(place)) {
            return true;
        }
        const FileState::Kind kind = states_.kindOf(place);
        if (kind == FileState::Kind::Missing || kind == FileState::Kind::Directory) {
            watchIsOutdated_ = watchIsOutdated_ || !isWatched(watchedNames(place, states_));
            free_.insert(place);
            return true;
        }
        // One that was there already was passed over, and is remembered as read.
        if (std::ranges::find(read.headers, place) == read.headers.end()) {
            shadow_ = root_.stored(place);
            stand = false;
        }
        return stand;
    });
    return stand;
}

bool Freshness::partUnchanged(std::size_t lastPart, const CacheRequest::Part& wanted) {
    return unchanged(lastWrites(lastPart), wanted.writes.size()) &&
           unchanged(lastReads(lastPart), wanted.reads.size());
}

bool Freshness::fresh(std::size_t part) {
    if (last_ == nullptr || content_->isFaulty() || !request_.again.empty() ||
        !sameEnvironment(content_->environment(), request_.environment)) {
        return false;
    }
    const CacheRequest::Part& wanted = request_.parts[part];
    if (wanted.judged == Judged::WithTarget) {
        // Recipes that run together: nothing in the target may differ.
        return sameText() && partUnchanged(kTargetPart, request_.parts[kTargetPart]);
    }
    const auto counterpart = lastPart(part);
    if (!counterpart || !partUnchanged(*counterpart, wanted) || !headersStand(part, *counterpart)) {
        return false;
    }
    // A compiler reports everything it has read. Other commands may silently depend on what
    // dependencies have done, and may make more of the target's outputs than their recipe says.
    return wanted.declaration == Declaration::Complete ||
           (samePart(kTargetPart) &&
            unchanged(lastWrites(kTargetPart), request_.parts[kTargetPart].writes.size()));
}

/// What is out of date regardless of the files.
Difference Freshness::textReason() const {
    if (last_ == nullptr) {
        return {"it has not been built before", {}, {}, {}};
    }
    if (!request_.again.empty()) {
        return {std::string(request_.again), {}, {}, {}};
    }
    if (content_->isFaulty()) {
        return {"its record is damaged", {}, {}, {}};
    }
    return firstDifference({lastParts(), content_->environment()}, request_);
}

std::vector<Reason> Freshness::fileReasons(std::size_t most) {
    std::vector<Reason> reasons;
    for (const RecordFile& file : lastFiles()) {
        if (isNamesPath(file.path) || reasons.size() == most) {
            continue;
        }
        std::string path = root_.absolute(file.path);
        const Comparison comparison = states_.compare(path, file.state);
        if (comparison == Comparison::Missing || comparison == Comparison::Changed) {
            const bool missing = comparison == Comparison::Missing;
            std::string text = std::string(file.path) + (missing ? " is missing" : " has changed");
            reasons.push_back({{std::move(text), {}, {}, {}}, std::move(path)});
        }
    }
    return reasons;
}

std::vector<Reason> Freshness::reasons(std::size_t most) {
    if (Difference difference = textReason(); !difference.text.empty()) {
        return {{std::move(difference), {}}};
    }
    std::vector<Reason> reasons = fileReasons(most);
    for (std::size_t i = kFirstRecipePart; reasons.empty() && i < request_.parts.size(); ++i) {
        if (const auto last = lastPart(i); last && !headersStand(i, *last)) {
            reasons.push_back(
                {{shadow_ + " has appeared where headers are looked for", {}, {}, {}}, {}});
        }
    }
    return reasons;
}

std::string Freshness::reason() {
    const std::vector<Reason> first = reasons(1);
    return first.empty() ? std::string() : first.front().text;
}

}  // namespace Vesk
