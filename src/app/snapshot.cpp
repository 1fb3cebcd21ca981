#include "app/snapshot.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

#include "app/version.h"
#include "base/console.h"
#include "cache/cache_file.h"
#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "driver/visit_tree.h"
#include "keep/visit_store.h"
#include "platform/files.h"
#include "platform/question_list.h"
#include "platform/recorder.h"
#include "platform/system.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_SNAPSHOT_3\n";

/// Of a run with more questions than that the repetition is no gain.
constexpr std::size_t kMaxBytes = std::size_t{64} * 1024 * 1024;

/// The parts of a snapshot: what the run wrote, what it asked.
struct Content {
    std::string_view transcript;
    std::string_view recording;
};

/// Nothing for a file that was not written to its end.
std::optional<Content> contentOf(std::string_view bytes) {
    CacheReader reader(bytes);
    std::string_view hash;
    Content content;
    if (!reader.line(hash)) {
        return std::nullopt;
    }
    const auto start = static_cast<std::size_t>(reader.position() - bytes.data());
    if (hash != digits(hashText(bytes.substr(start))) || !reader.text(content.transcript) ||
        !reader.text(content.recording)) {
        return std::nullopt;
    }
    return content;
}

bool startsWith(const std::filesystem::path& file, std::string_view start) {
    std::error_code ignored;
    return platform::readStart(file, start.size(), ignored) == start;
}

}  // namespace

Snapshot::Snapshot(const std::filesystem::path& directory,
                   const std::vector<std::string>& arguments)
    : cache_(directory / kCacheFileName) {
    for (std::size_t i = 1; i <= kSnapshotCount; ++i) {
        files_.push_back(directory / kSnapshotFileName);
        if (i > 1) {
            files_.back() += "." + std::to_string(i);
        }
    }
    std::string run;
    appendText(run, kVersion);
    appendText(run, console::coloursWanted() ? "colours" : "");
    appendText(run, platform::pathToUtf8(std::filesystem::current_path()));
    for (const std::string& argument : arguments) {
        appendText(run, argument);
    }
    start_.append(kHeader).append(digits(hashText(run))).append("\n");  // they may be secrets
}

bool Snapshot::repeats() const {
    for (const std::filesystem::path& file : files_) {
        if (!startsWith(file, start_)) {
            continue;
        }
        std::error_code ignored;
        const auto bytes = platform::readWholeFile(file, ignored);
        if (!bytes || !bytes->starts_with(start_)) {
            return false;
        }
        const auto content = contentOf(std::string_view(*bytes).substr(start_.size()));
        return content && platform::stillValid(content->recording) &&
               console::repeat(content->transcript);
    }
    return false;
}

/// The file that holds this run, else the first that holds none, else the oldest.
std::filesystem::path Snapshot::fileToWrite() const {
    const std::filesystem::path* unused = nullptr;
    const std::filesystem::path* oldest = &files_.front();
    std::int64_t oldestTime = std::numeric_limits<std::int64_t>::max();
    for (const std::filesystem::path& file : files_) {
        if (startsWith(file, start_)) {
            return file;
        }
        const auto status = platform::fileStatus(file);
        if (unused == nullptr && !startsWith(file, kHeader)) {
            unused = &file;
        }
        if (status && status->modifiedNanoseconds < oldestTime) {
            oldest = &file;
            oldestTime = status->modifiedNanoseconds;
        }
    }
    return unused != nullptr ? *unused : *oldest;
}

Snapshot::~Snapshot() {
    if (watches_) {
        console::transcript();
        platform::takeRecording();
    }
}

void Snapshot::begin() {
    file_ = fileToWrite();
    // A pattern may look at this directory. The file is there before, so that it is no news after.
    if (!platform::isFile(file_) && platform::isFile(cache_)) {
        std::error_code ignored;
        platform::writePrivateFile(file_, "", platform::Append::no, ignored);
    }
    watches_ = true;
    platform::startRecording();
    platform::fileStatus(platform::executable());  // another build of vesk may find otherwise
    console::startTranscript();
}

void Snapshot::visitsBegin() {
    if (auto recording = platform::recordingSoFar()) {
        beginning_ = {console::transcriptSoFar(), std::move(*recording)};
    }
}

bool Snapshot::keep(const std::vector<std::filesystem::path>& ownFiles) {
    for (const std::filesystem::path& file : ownFiles) {
        platform::fileStatus(file);
    }
    watches_ = false;
    std::string transcript = console::transcript();
    auto recording = platform::takeRecording();
    if (!recording) {
        return false;
    }
    write({std::move(transcript), std::move(*recording)});
    return true;
}

void Snapshot::keepForeseen(VisitTree& tree, const VisitStore& store,
                            const std::vector<std::filesystem::path>& ownFiles) {
    platform::QuestionList& questions = tree.questions();
    if (!beginning_ || !questions.add(beginning_->recording)) {
        return;
    }
    const auto foreseen = tree.foresee(store);
    if (!foreseen) {
        return;
    }
    for (const std::filesystem::path& file : ownFiles) {
        questions.addStatusNow(file);
    }
    write({beginning_->transcript + *foreseen, questions.recording()});
}

void Snapshot::write(const Watched& run) const {
    std::string content;
    content.reserve(run.transcript.size() + run.recording.size() + 64);
    appendText(content, run.transcript);
    appendText(content, run.recording);
    if (content.size() > kMaxBytes || !platform::isFile(cache_)) {
        return;
    }
    std::string bytes = start_;
    bytes.append(digits(hashText(content))).append("\n").append(content);
    std::error_code ignored;
    platform::writePrivateFile(file_, bytes, platform::Append::no, ignored);
}

}  // namespace Vesk
