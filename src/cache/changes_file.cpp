#include "cache/changes_file.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kChangesHeader = "VESK_CHANGES_1\n";

// A small cache file is written as fast as a piece of it. The records here are read one by one, and
// those that they replace are loaded in vain.
constexpr std::uint64_t kLeastCacheFile = std::uint64_t{256} * 1024;
constexpr std::uint64_t kUsualSize = std::uint64_t{64} * 1024;
constexpr std::uint64_t kPartOfCacheFile = 16;

std::string startFor(const CacheFileIdentity& cacheFile) {
    return std::string(kChangesHeader) + digits(cacheFile.hash) + "\n";
}

}  // namespace

ChangesFile::ChangesFile(const std::filesystem::path& cacheFile) : file_(cacheFile) {
    file_ += ".changes";
}

void ChangesFile::read() {
    std::error_code ignored;
    if (auto bytes = platform::readWholeFile(file_, ignored)) {
        content_ = std::make_shared<const std::string>(std::move(*bytes));
        exists_ = true;
    }
}

void ChangesFile::take(const CacheFileIdentity& cacheFile, const Sink& sink) {
    cacheFile_ = cacheFile;
    const auto content = std::exchange(content_, nullptr);
    if (!content || !content->starts_with(startFor(cacheFile))) {
        return;
    }
    CacheReader reader(std::string_view(*content).substr(startFor(cacheFile).size()));
    while (!reader.atEnd()) {
        const auto sealed = takeSealedRecord(reader, content);
        if (!sealed.fault.empty() || sealed.record.stored().day == 0) {
            cacheFile_.reset();  // what is appended behind it would not be found
            break;
        }
        size_ = static_cast<std::uint64_t>(reader.position() - content->data());
        sink(sealed.key, sealed.record, size_);
    }
    size_ = content->size();
}

void ChangesFile::restart(const CacheFileIdentity& cacheFile) {
    if (std::exchange(exists_, false)) {
        std::error_code ignored;
        platform::removeFile(file_, ignored);
    }
    content_ = nullptr;
    cacheFile_ = cacheFile;
    size_ = 0;
}

bool ChangesFile::takes(std::size_t bytes) const noexcept {
    return cacheFile_ && cacheFile_->size >= kLeastCacheFile &&
           size_ + bytes <= std::max(kUsualSize, cacheFile_->size / kPartOfCacheFile);
}

bool ChangesFile::append(std::string_view records) {
    const std::string start = size_ == 0 ? startFor(*cacheFile_) : std::string();
    const auto mode = size_ == 0 ? platform::Append::no : platform::Append::yes;
    std::error_code error;
    exists_ = true;
    if (!platform::writePrivateFile(file_, start + std::string(records), mode, error)) {
        cacheFile_.reset();
        return false;
    }
    size_ += start.size() + records.size();
    return true;
}

}  // namespace Vesk
