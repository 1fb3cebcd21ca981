#include "cache/cache_file.h"

#include <system_error>

#include "base/console.h"
#include "cache/cache_text.h"
#include "platform/directories.h"
#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_CACHE_V7";
constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;

template <class... Args>
bool startEmpty(const std::filesystem::path& file, fmt::format_string<Args...> fault,
                Args&&... args) {
    console::warning("Cache file '{}' {}. Starting with empty cache.", platform::pathToUtf8(file),
                     fmt::format(fault, std::forward<Args>(args)...));
    return false;
}

std::string directoryText(const std::filesystem::path& file) {
    return platform::pathToUtf8(file.parent_path());
}

}  // namespace

bool loadCacheFile(const std::filesystem::path& file, const RecordSink& take) {
    std::error_code error;
    auto content = platform::readWholeFile(file, error);
    if (!content) {
        std::error_code unknown;
        if (platform::fileStatus(platform::pathToUtf8(file), unknown) || unknown) {
            return startEmpty(file, "cannot be read: {}", error.message());
        }
        return true;
    }
    const auto storage = std::make_shared<const std::string>(std::move(*content));
    CacheReader reader(*storage);
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
        std::string_view key;
        if (!reader.text(key)) {
            return startEmpty(file, "is malformed ({})", "record key");
        }
        const char* const start = reader.position();
        if (const char* fault = skipRecord(reader)) {
            return startEmpty(file, "is malformed ({})", fault);
        }
        RecordText record(storage, {start, static_cast<std::size_t>(reader.position() - start)});
        const auto day = checkSeal(key, record);
        if (!day) {
            return startEmpty(file, "is malformed ({})", "record seal");
        }
        take(key, std::move(record), *day);
    }
    if (!reader.atEnd()) {
        return startEmpty(file, "is malformed ({})", "text after the last record");
    }
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

void CacheFileWriter::flush() {
    if (!failed_ && !output_->file.write(buffer_)) {
        fail(fmt::format("Unable to flush cache file '{}'.", platform::pathToUtf8(temporary_)));
    }
    buffer_.clear();
}

void CacheFileWriter::write(std::string_view key, const RecordText& record, DayNumber day) {
    if (failed_) {
        return;
    }
    appendText(buffer_, key);
    appendSealed(buffer_, key, record, day);
    if (buffer_.size() >= kBufferBytes) {
        flush();
    }
}

bool CacheFileWriter::finish() {
    if (failed_) {
        return false;
    }
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
    return !failed_;
}

}  // namespace Vesk
