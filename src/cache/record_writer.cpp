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

namespace Vesk {
namespace {

/// A file as a compiler names it, possibly with "./" in front of the given name.
std::string reportedPath(const std::filesystem::path& directory, std::string_view name) {
    while (name.starts_with("./")) {
        name.remove_prefix(2);
    }
    return trackedPath(directory / platform::pathFromUtf8(name));
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
          missing_(missing) {}

    std::optional<RecordText> make() {
        collectParts();
        std::string text;
        appendNumber(text, parts_.size());
        for (const Part& part : parts_) {
            text += *part.inputs;
            if (!appendOutputs(text, part)) {
                return std::nullopt;
            }
        }
        text += request_.environment;
        return RecordText(std::move(text));
    }

  private:
    struct Part {
        const std::string* inputs = nullptr;
        std::vector<std::size_t> reads;
        std::vector<std::size_t> writes;
        double seconds = 0;
    };

    /// Written files come first: a file that one step makes and another reads is remembered as it
    /// was made.
    void collectParts() {
        parts_.resize(2);
        for (std::size_t i = kFirstRecipePart; i < request_.parts.size(); ++i) {
            if (results_.outcomes[i] != StepOutcome::Pending) {
                parts_.push_back({&request_.parts[i].inputs, {}, writesOf(i), secondsOf(i)});
                numbers_.push_back(i);
            }
        }
        for (std::size_t i = 0; i < numbers_.size(); ++i) {
            parts_[kFirstRecipePart + i].reads = readsOf(numbers_[i]);
        }
        Part& target = parts_[kTargetPart];
        target.writes = written(request_.parts[kTargetPart].writes);
        target.reads = read(request_.parts[kTargetPart].reads);
        target.inputs = &request_.parts[kTargetPart].inputs;
        parts_[kVariablesPart].inputs =
            results_.finished ? &request_.parts[kVariablesPart].inputs : &unfinishedInputs();
    }

    double secondsOf(std::size_t part) {
        if (kept(part)) {
            return secondsIn(last_.lastParts()[*last_.lastPart(part)]);
        }
        return part < results_.seconds.size() ? results_.seconds[part] : 0;
    }

    std::vector<std::size_t> writesOf(std::size_t part) {
        return kept(part) ? known(part, recordField::kWrites)
                          : written(request_.parts[part].writes);
    }

    std::vector<std::size_t> readsOf(std::size_t part) {
        const CacheRequest::Part& wanted = request_.parts[part];
        if (kept(part)) {
            std::vector<std::size_t> numbers = known(part, recordField::kReads);
            if (wanted.headerSearch && last_.namesChanged()) {
                watch(last_.headersRead(part, *last_.lastPart(part)), numbers);
            }
            return numbers;
        }
        std::vector<std::size_t> numbers = read(wanted.reads);
        if (!wanted.dependencyFile.empty()) {
            addDiscovered(wanted, numbers);
        }
        return numbers;
    }

    /// Remembers where the headers could have been found earlier on the search path, so that a file
    /// appearing there is noticed. A file that is already there was passed over.
    void watch(const HeadersRead& headers, std::vector<std::size_t>& numbers) {
        std::unordered_set<std::size_t> known(numbers.begin(), numbers.end());
        const auto add = [&](std::size_t number) {
            if (known.insert(number).second) {
                numbers.push_back(number);
            }
        };
        eachEarlierPlace(headers, [&](const std::string& place) {
            add(numberOfNames(place));
            const FileState::Kind kind = states_.kindOf(place);
            if (kind != FileState::Kind::Missing && kind != FileState::Kind::Directory) {
                add(numberOfRead(place));
            }
            return true;
        });
    }

    /// The state of the directory is taken before anyone asks whether the file exists.
    std::size_t numberOfNames(const std::string& place) {
        const auto [entry, isNew] = watched_.try_emplace(std::string(directoryOf(place)), 0);
        if (isNew) {
            const std::string names = watchedNames(place, states_);
            const std::string_view stored = root_.stored(names);
            entry->second = table_.contains(stored) ? table_.numberOf(stored)
                                                    : table_.add(stored, states_.current(names));
        }
        return entry->second;
    }

    bool kept(std::size_t part) const {
        return results_.outcomes[part] == StepOutcome::Kept && last_.lastPart(part);
    }

    /// The files of a step that did not run, as they were found unchanged.
    std::vector<std::size_t> known(std::size_t part, std::string_view field) {
        const std::vector<RecordFile>& files = last_.lastFiles();
        numbersOfLast_.resize(files.size());
        std::vector<std::size_t> numbers;
        const auto known =
            fileNumbers(last_.lastParts()[*last_.lastPart(part)], field, files.size());
        for (const std::size_t number : known.value()) {
            if (!numbersOfLast_[number]) {
                numbersOfLast_[number] = numberOfKnown(files[number].path);
            }
            numbers.push_back(*numbersOfLast_[number]);
        }
        return numbers;
    }

    std::size_t numberOfKnown(std::string_view path) {
        return table_.contains(path) ? table_.numberOf(path)
                                     : table_.add(path, states_.current(root_.absolute(path)));
    }

    std::vector<std::size_t> written(const std::vector<std::string>& paths) {
        std::vector<std::size_t> numbers;
        for (const std::string& path : paths) {
            const std::string_view stored = root_.stored(path);
            if (!table_.contains(stored)) {
                FileState state = states_.current(path);
                if (state.kind == FileState::Kind::Missing && hasSteps()) {
                    state.kind = FileState::Kind::Unknown;  // to be made again, if possible
                    noteMissing(path);
                }
                table_.add(stored, state);
            }
            numbers.push_back(table_.numberOf(stored));
        }
        return numbers;
    }

    /// A target without steps lists what exists; it does not make it.
    bool hasSteps() const { return request_.parts.size() > kFirstRecipePart; }

    void noteMissing(const std::string& path) {
        if (missing_ != nullptr) {
            missing_->push_back(path);
        }
    }

    std::vector<std::size_t> read(const std::vector<std::string>& paths) {
        std::vector<std::size_t> numbers;
        for (const std::string& path : paths) {
            numbers.push_back(numberOfRead(path));
        }
        return numbers;
    }

    std::size_t numberOfRead(const std::string& path) {
        const std::string_view stored = root_.stored(path);
        return table_.contains(stored)
                   ? table_.numberOf(stored)
                   : table_.add(stored, states_.afterReading(path, results_.startedAt));
    }

    void addDiscovered(const CacheRequest::Part& part, std::vector<std::size_t>& numbers) {
        const auto names = readDependencyFile(part.dependencyFile);
        if (!names) {
            // The compiler reported nothing, so nobody can know whether this step is fresh.
            FileState unknown;
            unknown.kind = FileState::Kind::Unknown;
            numbers.push_back(table_.add(root_.stored(trackedPath(part.dependencyFile)), unknown));
            return;
        }
        HeadersRead headers{part.headerSearch.get(), part.source, {}};
        for (const std::string& name : *names) {
            const std::string path = reportedPath(part.directory, name);
            if (part.toolEnvironment && isBelowAny(path, part.toolEnvironment->systemDirectories)) {
                continue;
            }
            const std::size_t number = numberOfRead(path);
            if (std::ranges::find(numbers, number) == numbers.end()) {
                numbers.push_back(number);
                headers.headers.push_back(path);
            }
        }
        if (part.headerSearch) {
            watch(headers, numbers);
        }
    }

    bool appendOutputs(std::string& text, const Part& part) {
        const bool first = &part == parts_.data();
        std::string fields;
        std::size_t count = 0;
        const auto addField = [&](std::string_view name, const std::string& content) {
            if (!content.empty()) {
                appendTextAssignment(fields, name, content);
                ++count;
            }
        };
        addField(recordField::kSeal, first ? openSeal() : "");
        addField(recordField::kFiles, first ? table_.text() : "");
        addField(recordField::kReads, fmt::format("{}", fmt::join(part.reads, " ")));
        addField(recordField::kWrites, fmt::format("{}", fmt::join(part.writes, " ")));
        addField(recordField::kStamp, first ? results_.stamp : "");
        addField(recordField::kMilliseconds,
                 part.seconds > 0 ? fmt::format("{:.0f}", std::ceil(part.seconds * 1000)) : "");
        if (&part == &parts_[kVariablesPart]) {
            for (const Assignment& output : results_.outputs) {
                if (!appendAssignment(fields, output)) {
                    return false;
                }
                ++count;
            }
        }
        appendNumber(text, count);
        text += fields;
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
    FileTable table_;
    std::unordered_map<std::string, std::size_t> watched_;  ///< by directory, in table_
    std::vector<std::optional<std::size_t>>
        numbersOfLast_;  ///< indexes in `table_` of the last record's files
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
