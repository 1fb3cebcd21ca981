#include "cache/record_writer.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <unordered_map>
#include <unordered_set>

#include "cache/cache_text.h"
#include "cache/dependency_file.h"
#include "cache/record_fields.h"
#include "cache/record_seal.h"
#include "cache/record_table.h"

namespace Vesk {
namespace {

/// A file as a compiler names it, possibly with "./" in front of the given name.
std::string reportedPath(const std::filesystem::path& directory, std::string_view name) {
    while (name.starts_with("./")) {
        name.remove_prefix(2);
    }
    return trackedPath(directory / platform::pathFromUtf8(name));
}

const std::vector<RecordFile>& noFiles() {
    static const std::vector<RecordFile> none;
    return none;
}

class RecordMaker {
  public:
    RecordMaker(const CacheRequest& request, const BuildResults& results, const Freshness& last,
                FileStates& states, const TrackingRoot& root, std::vector<std::string>* missing)
        : request_(request),
          results_(results),
          last_(last),
          states_(states),
          root_(root),
          missing_(missing),
          table_(std::ranges::find(results.outcomes, StepOutcome::Kept) == results.outcomes.end()
                     ? noFiles()
                     : last.lastFiles()) {}

    std::optional<RecordText> make() {
        collectParts();
        const std::string table =
            table_.finish([this](std::string& text, const RecordFile& file, Place place) {
                appendKept(text, file, place);
            });
        std::string text;
        text.reserve(table.size() + sizeOfInputs() + parts_.size() * kSizeOfOutputs);
        appendNumber(text, parts_.size());
        for (const Part& part : parts_) {
            text += part.inputs;
            if (!appendOutputs(text, part, table)) {
                return std::nullopt;
            }
        }
        text += request_.environment;
        return RecordText(std::move(text));
    }

  private:
    using Place = RecordTable::Place;
    using Places = std::vector<Place>;

    static constexpr std::size_t kSizeOfOutputs =
        250;  ///< mostly more than enough; what is not touched costs nothing

    struct Part {
        std::string_view inputs;
        Places reads;
        Places writes;
        double seconds = 0;
        std::optional<std::size_t> last;  ///< the part of the last record that it is equal to
    };

    /// Written files come first: a file that one step makes and another reads is remembered as it
    /// was made.
    void collectParts() {
        parts_.resize(kFirstRecipePart);
        for (std::size_t i = kFirstRecipePart; i < request_.parts.size(); ++i) {
            if (results_.outcomes[i] != StepOutcome::Pending) {
                parts_.push_back({request_.parts[i].inputs, {}, {}, 0, {}});
                numbers_.push_back(i);
                kept(i) ? keep(parts_.back(), i) : takeWrites(parts_.back(), i);
            }
        }
        for (std::size_t i = 0; i < numbers_.size(); ++i) {
            takeReads(parts_[kFirstRecipePart + i], numbers_[i]);
        }
        Part& target = parts_[kTargetPart];
        target.writes = written(request_.parts[kTargetPart].writes);
        target.reads = read(request_.parts[kTargetPart].reads);
        target.inputs = request_.parts[kTargetPart].inputs;
        parts_[kVariablesPart].inputs =
            results_.finished ? request_.parts[kVariablesPart].inputs : unfinishedInputs();
    }

    std::size_t sizeOfInputs() const {
        std::size_t size = request_.environment.size();
        for (const Part& part : parts_) {
            size += part.inputs.size();
        }
        return size;
    }

    bool kept(std::size_t part) const {
        return results_.outcomes[part] == StepOutcome::Kept && last_.lastPart(part);
    }

    /// A step that did not run: its files are used as they were found unchanged.
    void keep(Part& part, std::size_t number) {
        part.last = last_.lastPart(number);
        for (const auto* places : {&last_.lastReads(*part.last), &last_.lastWrites(*part.last)}) {
            for (const Place place : places->value()) {
                table_.keep(place);
            }
        }
    }

    void takeWrites(Part& part, std::size_t number) {
        part.writes = written(request_.parts[number].writes);
        part.seconds = number < results_.seconds.size() ? results_.seconds[number] : 0;
    }

    void takeReads(Part& part, std::size_t number) {
        const CacheRequest::Part& wanted = request_.parts[number];
        if (!part.last) {
            part.reads = read(wanted.reads);
            if (!wanted.dependencyFile.empty()) {
                addDiscovered(wanted, part.reads);
            }
        } else if (wanted.headerSearch && last_.namesChanged()) {
            const std::size_t last = *part.last;
            part.reads = last_.lastReads(last).value();
            part.writes = last_.lastWrites(last).value();
            part.seconds = secondsIn(last_.lastParts()[last]);
            part.last.reset();
            watch(last_.headersRead(number, last), part.reads);
        }
    }

    /// The line of the last record says it if nothing has changed.
    void appendKept(std::string& text, const RecordFile& file, Place place) {
        const FileStates::File tracked = last_.lastFile(place);
        if (states_.isCurrent(tracked, file.state)) {
            text += file.line;
        } else {
            appendStateLine(text, states_.current(tracked), file.path);
        }
    }

    /// Remembers where the headers could have been found earlier on the search path, so that a file
    /// appearing there is noticed. A file that is already there was passed over.
    void watch(const HeadersRead& headers, Places& places) {
        std::unordered_set<Place> known(places.begin(), places.end());
        const auto add = [&](Place place) {
            if (known.insert(place).second) {
                places.push_back(place);
            }
        };
        eachEarlierPlace(headers, [&](const std::string& path) {
            add(placeOfNames(path));
            const FileState::Kind kind = states_.kindOf(path);
            if (kind != FileState::Kind::Missing && kind != FileState::Kind::Directory) {
                add(placeOfRead(path));
            }
            return true;
        });
    }

    /// The state of the directory is taken before anyone asks whether the file exists.
    Place placeOfNames(const std::string& path) {
        const auto [entry, isNew] = watched_.try_emplace(std::string(directoryOf(path)), 0);
        if (isNew) {
            const std::string names = watchedNames(path, states_);
            const std::string_view stored = root_.stored(names);
            const auto known = table_.find(stored);
            entry->second = known ? *known : table_.add(stored, states_.current(names));
        }
        return entry->second;
    }

    Places written(const std::vector<std::string>& paths) {
        Places places;
        places.reserve(paths.size());
        for (const std::string& path : paths) {
            const auto known = table_.find(root_.stored(path));
            const bool isThere = known && states_.kindOf(path) != FileState::Kind::Missing;
            places.push_back(isThere || told_.contains(path) ? *known : placeOfWritten(path));
        }
        return places;
    }

    Place placeOfWritten(const std::string& path) {
        FileState state = states_.current(path);
        if (state.kind == FileState::Kind::Missing && hasSteps()) {
            state.kind = FileState::Kind::Unknown;  // to be made again, if possible
            noteMissing(path);
            told_.insert(path);
        }
        return table_.add(root_.stored(path), state);
    }

    /// A target without steps lists what exists; it does not make it.
    bool hasSteps() const { return request_.parts.size() > kFirstRecipePart; }

    void noteMissing(const std::string& path) {
        if (missing_ != nullptr) {
            missing_->push_back(path);
        }
    }

    Places read(const std::vector<std::string>& paths) {
        Places places;
        places.reserve(paths.size());
        for (const std::string& path : paths) {
            places.push_back(placeOfRead(path));
        }
        return places;
    }

    Place placeOfRead(const std::string& path) {
        const std::string_view stored = root_.stored(path);
        const auto known = table_.find(stored);
        return known ? *known : table_.add(stored, states_.afterReading(path, results_.startedAt));
    }

    void addDiscovered(const CacheRequest::Part& part, Places& places) {
        const auto names = readDependencyFile(platform::pathFromUtf8(part.dependencyFile));
        if (!names) {
            // The compiler reported nothing, so nobody can know whether this step is fresh.
            FileState unknown;
            unknown.kind = FileState::Kind::Unknown;
            places.push_back(table_.add(root_.stored(part.dependencyFile), unknown));
            return;
        }
        const std::filesystem::path directory = platform::pathFromUtf8(part.directory);
        HeadersRead headers{part.headerSearch.get(), part.source, {}};
        for (const std::string& name : *names) {
            const std::string path = reportedPath(directory, name);
            if (part.toolEnvironment && isBelowAny(path, part.toolEnvironment->systemDirectories)) {
                continue;
            }
            const Place place = placeOfRead(path);
            if (std::ranges::find(places, place) == places.end()) {
                places.push_back(place);
                headers.headers.push_back(path);
            }
        }
        if (part.headerSearch) {
            watch(headers, places);
        }
    }

    std::string numbersOf(const Places& places) const {
        std::string text;
        for (const Place place : places) {
            text += text.empty() ? "" : " ";
            text += std::to_string(table_.number(place));
        }
        return text;
    }

    /// Of a recipe that was kept.
    void appendLastOutputs(std::string& text, std::size_t last) const {
        const Places& reads = last_.lastReads(last).value();
        const Places& writes = last_.lastWrites(last).value();
        const RecordText::Part& part = last_.lastParts()[last];
        if (table_.isAsBefore(reads) && table_.isAsBefore(writes)) {
            text += part.outputs;
        } else {
            appendFields(text, {"", "", numbersOf(reads), numbersOf(writes), "",
                                std::string(fieldOf(part, recordField::kMilliseconds))});
        }
    }

    struct Fields {
        std::string seal;
        std::string_view files;
        std::string reads;
        std::string writes;
        std::string stamp;
        std::string milliseconds;
    };

    /// What is not empty of them, then the rest of so many assignments.
    static void appendFields(std::string& text, const Fields& fields, std::size_t others = 0,
                             std::string_view rest = {}) {
        const std::pair<std::string_view, std::string_view> all[] = {
            {recordField::kSeal, fields.seal},   {recordField::kFiles, fields.files},
            {recordField::kReads, fields.reads}, {recordField::kWrites, fields.writes},
            {recordField::kStamp, fields.stamp}, {recordField::kMilliseconds, fields.milliseconds}};
        const auto isGiven = [](const auto& field) { return !field.second.empty(); };
        appendNumber(text, static_cast<std::size_t>(std::ranges::count_if(all, isGiven)) + others);
        for (const auto& field : all) {
            if (isGiven(field)) {
                appendTextAssignment(text, field.first, field.second);
            }
        }
        text += rest;
    }

    /// False if an output cannot be stored.
    bool appendOutputs(std::string& text, const Part& part, const std::string& table) const {
        if (part.last) {
            appendLastOutputs(text, *part.last);
            return true;
        }
        const bool first = &part == &parts_[kTargetPart];
        std::string outputs;
        std::size_t count = 0;
        if (&part == &parts_[kVariablesPart]) {
            for (const Assignment& output : results_.outputs) {
                if (!appendAssignment(outputs, output)) {
                    return false;
                }
                ++count;
            }
        }
        appendFields(
            text,
            {first ? openSeal() : "", first ? table : "", numbersOf(part.reads),
             numbersOf(part.writes), first ? results_.stamp : "",
             part.seconds > 0 ? fmt::format("{:.0f}", std::ceil(part.seconds * 1000)) : ""},
            count, outputs);
        return true;
    }

    const CacheRequest& request_;
    const BuildResults& results_;
    const Freshness& last_;
    FileStates& states_;
    const TrackingRoot& root_;
    std::vector<std::string>* missing_;
    std::vector<Part> parts_;
    std::vector<std::size_t> numbers_;  ///< indexes in the request of the parts after the first two
    RecordTable table_;
    std::unordered_set<std::string> told_;            ///< outputs that are missing
    std::unordered_map<std::string, Place> watched_;  ///< by directory, in table_
};

}  // namespace

std::optional<RecordText> makeRecord(const CacheRequest& request, const BuildResults& results,
                                     const Freshness& last, FileStates& states,
                                     const TrackingRoot& root, std::vector<std::string>* missing) {
    return RecordMaker(request, results, last, states, root, missing).make();
}

std::vector<std::string> filesToRead(const CacheRequest& request,
                                     const std::vector<StepOutcome>& outcomes) {
    std::vector<std::string> files;
    for (std::size_t i = 0; i < request.parts.size(); ++i) {
        if (i < kFirstRecipePart || outcomes[i] == StepOutcome::Ran) {
            const CacheRequest::Part& part = request.parts[i];
            files.insert(files.end(), part.reads.begin(), part.reads.end());
            files.insert(files.end(), part.writes.begin(), part.writes.end());
        }
    }
    return files;
}

}  // namespace Vesk
