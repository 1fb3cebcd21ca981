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
#include "keep/visit_store.h"
#include "platform/files.h"
#include "platform/question_list.h"
#include "platform/recorder.h"
#include "platform/system.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_SNAPSHOT_4\n";

/// Of a run with more questions than that the repetition is no gain.
constexpr std::size_t kMaxBytes = std::size_t{64} * 1024 * 1024;

bool startsWith(const std::filesystem::path& file, std::string_view start) {
    std::error_code ignored;
    return platform::readStart(file, start.size(), ignored) == start;
}

}  // namespace

/// Nothing for a file that was not written to its end.
std::optional<Snapshot::Content> Snapshot::contentOf(std::string_view bytes) {
    CacheReader reader(bytes);
    std::string_view hash;
    Content content;
    if (!reader.line(hash)) {
        return std::nullopt;
    }
    const auto start = static_cast<std::size_t>(reader.position() - bytes.data());
    if (hash != digits(hashText(bytes.substr(start))) || !reader.text(content.transcript) ||
        !reader.text(content.recording) || !reader.text(content.tree)) {
        return std::nullopt;
    }
    return content;
}

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

bool Snapshot::repeats() {
    for (const std::filesystem::path& file : files_) {
        if (!startsWith(file, start_)) {
            continue;
        }
        std::error_code ignored;
        auto bytes = platform::readWholeFile(file, ignored);
        if (!bytes || !bytes->starts_with(start_)) {
            return false;
        }
        bytes_ = std::move(*bytes);
        const auto content = contentOf(std::string_view(bytes_).substr(start_.size()));
        return content && repeats(*content);
    }
    return false;
}

/// Visits that have not been looked at for long are: what is kept for them would get too old.
bool Snapshot::repeats(const Content& content) {
    std::optional<KeptTree> tree;
    const auto treeIsKnown = [&] {
        if (!tree) {
            tree = KeptTree::decoded(content.tree);
        }
        return tree && !isDueAgain(tree->day, today());
    };
    const auto mayDiffer = [&](KeptTree::Question number) {
        return treeIsKnown() && number >= tree->firstQuestion && number < tree->endOfQuestions;
    };
    const auto differing = platform::differingAnswers(content.recording, mayDiffer);
    if (!differing) {
        return false;
    }
    if (differing->empty() && !KeptTree::hasOpenVisits(content.tree)) {
        return console::repeat(content.transcript);
    }
    if (treeIsKnown()) {
        standing_.emplace(std::move(*tree), content.transcript, content.recording, *differing);
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
    stopWatching();
}

void Snapshot::begin() {
    file_ = fileToWrite();
    // A pattern may look at this directory. The file is there before, so that it is no news after.
    if (!platform::isFile(file_) && platform::isFile(cache_)) {
        std::error_code ignored;
        platform::writePrivateFile(file_, "", platform::Append::no, ignored);
    }
    if (standing_) {
        return;
    }
    watches_ = true;
    platform::startRecording();
    platform::fileStatus(platform::executable());  // another build of vesk may find otherwise
    console::startTranscript();
}

void Snapshot::visitsBegin() {
    if (standing_) {
        beginning_ = {
            std::string(standing_->saidFirst()), std::string(standing_->askedFirst()), {}};
    } else if (auto recording = watches_ ? platform::recordingSoFar() : std::nullopt) {
        beginning_ = {console::transcriptSoFar(), std::move(*recording), {}};
    }
}

void Snapshot::haveCaches(bool hasWaited) {
    if (standing_ && (hasWaited || !platform::stillValid(standing_->askedLast()))) {
        standing_.reset();
    }
}

bool Snapshot::saidNothing() const {
    return watches_ && console::transcriptSoFar().empty();
}

void Snapshot::stopWatching() {
    if (watches_) {
        watches_ = false;
        console::transcript();
        platform::takeRecording();
    }
}

void Snapshot::end(const std::vector<std::filesystem::path>& ownFiles) {
    if (!watches_) {
        return;
    }
    for (const std::filesystem::path& file : ownFiles) {
        platform::fileStatus(file);
    }
    watches_ = false;
    std::string transcript = console::transcript();
    if (auto recording = platform::takeRecording()) {
        whole_ = {std::move(transcript), std::move(*recording), {}};
    }
}

bool Snapshot::keepForeseen(VisitTree& tree, VisitStore& store,
                            const std::vector<std::filesystem::path>& ownFiles,
                            const std::optional<ContentHash>& surroundings) {
    platform::QuestionList& questions = tree.questions();
    if (!beginning_ || !questions.add(beginning_->recording)) {
        return false;
    }
    auto foreseen = tree.foresee(std::move(beginning_->transcript), store, standing());
    if (!foreseen) {
        return false;
    }
    foreseen->tree.surroundings = surroundings;
    for (const std::filesystem::path& file : ownFiles) {
        questions.addStatusNow(file);
    }
    write({std::move(foreseen->transcript), questions.recording(), foreseen->tree.encoded()});
    return true;
}

void Snapshot::keep() const {
    if (whole_) {
        write(*whole_);
    }
}

void Snapshot::keepStanding(const std::vector<std::filesystem::path>& ownFiles) {
    if (!standing_) {
        return;
    }
    platform::QuestionList questions;
    const KeptTree tree = standing_->treeOfFailure();
    for (KeptTree::Question i = 0; i < tree.endOfQuestions; ++i) {
        questions.addQuestion(standing_->question(i));
    }
    for (const std::filesystem::path& file : ownFiles) {
        questions.addStatusNow(file);
    }
    write({std::string(standing_->transcript()), questions.recording(), tree.encoded()});
}

void Snapshot::write(const Run& run) const {
    const std::size_t size = run.transcript.size() + run.recording.size() + run.tree.size();
    if (size > kMaxBytes || !platform::isFile(cache_)) {
        return;
    }
    constexpr std::size_t kLengths = 128;  // and more than the hash takes
    std::string bytes;
    bytes.reserve(start_.size() + kLengths + size);
    bytes += start_;
    const std::size_t hashSize = digits(ContentHash()).size();
    bytes.append(hashSize, '0').append("\n");
    const std::size_t content = bytes.size();
    appendText(bytes, run.transcript);
    appendText(bytes, run.recording);
    appendText(bytes, run.tree);
    bytes.replace(start_.size(), hashSize,
                  digits(hashText(std::string_view(bytes).substr(content))));
    std::error_code ignored;
    platform::writePrivateFile(file_, bytes, platform::Append::no, ignored);
}

}  // namespace Vesk
