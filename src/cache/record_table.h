// The table of files of a record that is being made, out of that of the last one.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cache/record_files.h"

namespace Vesk {

/// Each file stands in it once. Those of the last record that are used again keep their order, so
/// that most of the text of a record with few changes can be taken over as it is.
class RecordTable {
  public:
    /// Refers to a file until the numbers are final: its place in the last table, or behind that.
    using Place = std::size_t;

    /// `last` outlives the table.
    explicit RecordTable(const std::vector<RecordFile>& last);

    /// A file of the last table is used again, in the state that `finish` gets for it. Does nothing
    /// for one that is used already.
    void keep(Place last) { uses_[last] = uses_[last] == Use::No ? Use::Kept : uses_[last]; }

    /// The place of a file, if it is used.
    std::optional<Place> find(std::string_view stored) const;

    /// A file that is not used yet, or a state that is more than what is known of it.
    Place add(std::string_view stored, const FileState& state);

    /// Gives the files their numbers and returns the text of the table. `lineOf` appends the line
    /// of a file that was kept.
    std::string finish(const std::function<void(std::string&, const RecordFile&, Place)>& lineOf);

    /// After that: the number of a file, and whether the places were numbers all along.
    std::size_t number(Place place) const { return numbers_[place]; }
    bool isAsBefore(const std::vector<Place>& places) const;

  private:
    enum class Use : char { No, Kept, Told };

    const std::vector<RecordFile>& last_;
    std::vector<Use> uses_;                                 ///< of the last files
    std::unordered_map<Place, FileState> told_;             ///< of those that are Told
    std::unordered_map<std::string_view, Place> places_;    ///< of all
    std::deque<std::pair<std::string, FileState>> others_;  ///< behind the last ones
    std::vector<std::size_t> numbers_;
};

}  // namespace Vesk
