#include "cache/cache_file.h"

#include <system_error>

#include "base/console.h"
#include "cache/cache_text.h"
#include "cache/record_files.h"
#include "platform/directories.h"
#include "platform/file_view.h"
#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_CACHE_V7";
constexpr std::size_t kBufferBytes = std::size_t{64} * 1024;

/// Text that stands in memory in one piece is copied to the buffer up to this size.
constexpr std::size_t kShortRun = std::size_t{4} * 1024;

template <class... Args>
bool startEmpty(const std::filesystem::path& file, fmt::format_string<Args...> fault,
                Args&&... args) {
    console::warning("Cache file '{}' {}. Starting with empty cache.", platform::pathToUtf8(file),
                     fmt::format(fault, std::forward<Args>(args)...));
    return false;
}

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::string directoryText(const std::filesystem::path& file) {
    return platform::pathToUtf8(file.parent_path());
}

}  // namespace

namespace {

/// Reads record by record, as the file has them. False after a fault.
bool takeSealed(const std::filesystem::path& file, const platform::FileView& content,
                const RecordSink& take) {
    CacheReader reader(content.bytes());
    std::string_view header;
    if (!reader.line(header)) {
        return startEmpty(file, "has invalid header");
    }
    if (header != kHeader) {
        return startEmpty(file, "has unsupported header '{}'", header);
    }
    std::uint64_t count = 0;
    if (!reader.number(count)) {
        return startEmpty(file, "has invalid records count");
    }
    for (; count > 0; --count) {
        const SealedRecord sealed = takeSealedRecord(reader, content.owner());
        if (!sealed.fault.empty()) {
            return startEmpty(file, "is malformed ({})", sealed.fault);
        }
        take(sealed.key, sealed.record);
    }
    return reader.atEnd() || startEmpty(file, "is malformed ({})", "text after the last record");
}

}  // namespace

SealedRecord takeSealedRecord(CacheReader& reader, const std::shared_ptr<const void>& storage) {
    const auto faulty = [](std::string_view what) { return SealedRecord{{}, {nullptr, {}}, what}; };
    const char* const whole = reader.position();
    std::string_view key;
    if (!reader.text(key)) {
        return faulty("record key");
    }
    const char* const start = reader.position();
    if (const char* const fault = skipRecord(reader)) {
        return faulty(fault);
    }
    const std::string_view text = between(start, reader.position());
    const auto day = checkSeal(key, RecordText(storage, text));
    if (!day) {
        return faulty("record seal");
    }
    StoredRecord stored;
    stored.whole = between(whole, reader.position());
    stored.day = *day;
    return {key, RecordText(storage, text, stored), {}};
}

DayNumber appendSealedRecord(std::string& out, std::string_view key, const RecordText& record,
                             DayNumber day) {
    appendText(out, key);
    return appendSealed(out, key, record, day);
}

bool loadCacheFile(const std::filesystem::path& file, const RecordSink& take,
                   std::optional<CacheFileIdentity>& identity) {
    std::error_code error;
    const auto content = platform::FileView::open(file, error);
    if (!content) {
        std::error_code unknown;
        if (platform::fileStatus(platform::pathToUtf8(file), unknown) || unknown) {
            return startEmpty(file, "cannot be read: {}", error.message());
        }
        return true;
    }
    const IndexedSink takeRecord = [&](std::string_view key, std::string_view text,
                                       const StoredRecord& stored) {
        take(key, RecordText(content->owner(), text, stored));
    };
    const CacheFileIdentity found{hashText(content->bytes()), content->bytes().size()};
    switch (takeIndexed(file, content->bytes(), found.hash, takeRecord)) {
        case IndexUse::all:
            identity = found;
            return true;
        case IndexUse::faulty:
            return startEmpty(file, "has an index that does not fit");
        case IndexUse::none:
            break;
    }
    if (!takeSealed(file, *content, take)) {
        return false;
    }
    identity = found;
    return true;
}

struct CacheFileWriter::Output {
    explicit Output(const std::filesystem::path& path)
        : file(path, platform::Append::no, platform::FileWriter::Access::newlyPrivate),
          opened(file.isOpen()) {}
    platform::FileWriter file;
    bool opened;
};

CacheFileWriter::CacheFileWriter(std::filesystem::path file, std::size_t recordCount)
    : file_(std::move(file)), temporary_(file_) {
    temporary_ += ".tmp";
    std::error_code error;
    platform::makeDirectories(file_.parent_path(), error);
    if (error) {
        fail(fmt::format("Unable to create cache directory '{}': {}", directoryText(file_),
                         error.message()));
        return;
    }
    output_ = std::make_unique<Output>(temporary_);
    if (!output_->file.isOpen()) {
        fail(fmt::format("Unable to open cache file '{}' for writing.",
                         platform::pathToUtf8(temporary_)));
        return;
    }
    buffer_.reserve(kBufferBytes);
    buffer_ += kHeader;
    buffer_ += '\n';
    appendNumber(buffer_, recordCount);
}

CacheFileWriter::~CacheFileWriter() = default;

void CacheFileWriter::fail(const std::string& message) {
    console::error("{}", message);
    failed_ = true;
    if (output_ && output_->opened) {
        output_->file.close();
        std::error_code ignored;
        platform::removeFile(temporary_, ignored);
    }
}

void CacheFileWriter::put(std::string_view text) {
    if (failed_ || text.empty()) {
        return;
    }
    index_.take(text);
    size_ += text.size();
    if (!output_->file.write(text)) {
        fail(fmt::format("Unable to flush cache file '{}'.", platform::pathToUtf8(temporary_)));
    }
}

void CacheFileWriter::flush() {
    put(buffer_);
    buffer_.clear();
}

void CacheFileWriter::endRun() {
    if (run_.size() < kShortRun) {
        buffer_ += run_;
    } else {
        flush();
        put(run_);
    }
    run_ = {};
}

/// Records that follow each other in the file that they are from become one run.
void CacheFileWriter::copy(std::string_view whole) {
    if (run_.data() + run_.size() == whole.data()) {
        run_ = {run_.data(), run_.size() + whole.size()};
    } else {
        endRun();
        run_ = whole;
    }
}

void CacheFileWriter::write(std::string_view key, const RecordText& record, DayNumber day) {
    if (failed_) {
        return;
    }
    StoredRecord stored = record.stored();
    stored.hash = hashWithoutSeal(record);
    stored.files = tableOf(record);
    const bool asItIs = !stored.whole.empty() && !isDueAgain(stored.day, day);
    if (asItIs) {
        copy(stored.whole);
    } else {
        endRun();
        stored.day = appendSealedRecord(buffer_, key, record, day);
    }
    index_.add(key, record.text(), stored);
    if (buffer_.size() >= kBufferBytes) {
        flush();
    }
}

std::optional<CacheFileIdentity> CacheFileWriter::finish() {
    if (failed_) {
        return std::nullopt;
    }
    endRun();
    flush();
    if (!failed_ && !output_->file.close()) {
        fail(fmt::format("Unable to flush cache file '{}'.", platform::pathToUtf8(temporary_)));
    }
    std::error_code error;
    if (!failed_ && !platform::replaceFile(temporary_, file_, error)) {
        fail(fmt::format("Unable to replace cache file '{}' with '{}': {}",
                         platform::pathToUtf8(file_), platform::pathToUtf8(temporary_),
                         error.message()));
    }
    if (failed_) {
        return std::nullopt;
    }
    index_.write(file_);
    return CacheFileIdentity{index_.hashOfFile(), size_};
}

}  // namespace Vesk
