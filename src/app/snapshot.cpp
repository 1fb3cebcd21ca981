#include "app/snapshot.h"

#include <optional>
#include <system_error>

#include "base/console.h"
#include "cache/cache_file.h"
#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "platform/files.h"
#include "platform/recorder.h"
#include "platform/system.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_SNAPSHOT_2";

/// The parts of a snapshot: which run it is of, what it wrote, what it asked.
struct Content {
    std::string_view key;
    std::string_view transcript;
    std::string_view recording;
};

/// Nothing for a file that was not written to its end, or not by this version.
std::optional<Content> contentOf(std::string_view bytes) {
    CacheReader reader(bytes);
    std::string_view header;
    std::string_view hash;
    Content content;
    if (!reader.line(header) || header != kHeader || !reader.line(hash)) {
        return std::nullopt;
    }
    const auto start = static_cast<std::size_t>(reader.position() - bytes.data());
    if (hash != digits(hashText(bytes.substr(start))) || !reader.text(content.key) ||
        !reader.text(content.transcript) || !reader.text(content.recording)) {
        return std::nullopt;
    }
    return content;
}

}  // namespace

Snapshot::Snapshot(const std::filesystem::path& directory,
                   const std::vector<std::string>& arguments)
    : cache_(directory / kCacheFileName), file_(directory / kSnapshotFileName) {
    std::string run;
    appendText(run, VESK_VERSION);
    appendText(run, console::coloursWanted() ? "colours" : "");
    appendText(run, platform::pathToUtf8(std::filesystem::current_path()));
    for (const std::string& argument : arguments) {
        appendText(run, argument);
    }
    key_ = digits(hashText(run));  // arguments may be secrets
}

bool Snapshot::repeats() const {
    std::error_code ignored;
    const auto bytes = platform::readWholeFile(file_, ignored);
    if (!bytes) {
        return false;
    }
    const auto content = contentOf(*bytes);
    return content && content->key == key_ && platform::stillValid(content->recording) &&
           console::repeat(content->transcript);
}

Snapshot::~Snapshot() {
    if (watches_) {
        console::transcript();
        platform::takeRecording();
    }
}

void Snapshot::begin() {
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

void Snapshot::keep() {
    watches_ = false;
    const std::string transcript = console::transcript();
    const auto recording = platform::takeRecording();
    if (!recording || !platform::isFile(cache_)) {
        return;
    }
    std::string content;
    content.reserve(key_.size() + transcript.size() + recording->size() + 64);
    appendText(content, key_);
    appendText(content, transcript);
    appendText(content, *recording);
    std::string bytes(kHeader);
    bytes.append("\n").append(digits(hashText(content))).append("\n").append(content);
    std::error_code ignored;
    platform::writePrivateFile(file_, bytes, platform::Append::no, ignored);
}

}  // namespace Vesk
