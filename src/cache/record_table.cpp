#include "cache/record_table.h"

#include <algorithm>

namespace Vesk {

RecordTable::RecordTable(const std::vector<RecordFile>& last)
    : last_(last), uses_(last.size(), Use::No) {
    places_.reserve(last.size());
    for (Place place = 0; place < last.size(); ++place) {
        places_.emplace(last[place].path, place);
    }
}

std::optional<RecordTable::Place> RecordTable::find(std::string_view stored) const {
    const auto found = places_.find(stored);
    const bool used = found != places_.end() &&
                      (found->second >= last_.size() || uses_[found->second] != Use::No);
    return used ? std::optional(found->second) : std::nullopt;
}

RecordTable::Place RecordTable::add(std::string_view stored, const FileState& state) {
    const auto known = places_.find(stored);
    if (known == places_.end()) {
        const Place place = last_.size() + others_.size();
        places_.emplace(others_.emplace_back(stored, state).first, place);
        return place;
    }
    if (known->second < last_.size()) {
        uses_[known->second] = Use::Told;
        told_.insert_or_assign(known->second, state);
    } else {
        others_[known->second - last_.size()].second = state;
    }
    return known->second;
}

std::string RecordTable::finish(
    const std::function<void(std::string&, const RecordFile&, Place)>& lineOf) {
    std::string text;
    if (!last_.empty() && !last_.back().line.empty()) {  // most lines stay as they are
        text.reserve(
            static_cast<std::size_t>(last_.back().line.end() - last_.front().line.begin()));
    }
    numbers_.resize(last_.size() + others_.size());
    std::size_t next = 0;
    for (Place place = 0; place < last_.size(); ++place) {
        numbers_[place] = next;
        switch (uses_[place]) {
            case Use::No:
                continue;
            case Use::Kept:
                lineOf(text, last_[place], place);
                break;
            case Use::Told:
                appendStateLine(text, told_.at(place), last_[place].path);
                break;
        }
        ++next;
    }
    for (Place i = 0; i < others_.size(); ++i) {
        appendStateLine(text, others_[i].second, others_[i].first);
        numbers_[last_.size() + i] = next++;
    }
    return text;
}

bool RecordTable::isAsBefore(const std::vector<Place>& places) const {
    return std::ranges::all_of(places, [this](Place place) { return numbers_[place] == place; });
}

}  // namespace Vesk
