#include "cache/claim_journal.h"

#include <system_error>

#include "cache/cache_text.h"
#include "platform/files.h"

namespace Vesk {

ClaimJournal::ClaimJournal(const std::filesystem::path& cacheFile) : file_(cacheFile) {
    file_ += ".claims";
}

std::vector<std::string> ClaimJournal::read() {
    std::error_code error;
    const auto content = platform::readWholeFile(file_, error);
    std::vector<std::string> keys;
    if (content) {
        exists_ = true;
        CacheReader reader(*content);
        // The last one may be cut off; its command has not begun then.
        for (std::string_view key; reader.text(key);) {
            keys.emplace_back(key);
        }
    }
    return keys;
}

bool ClaimJournal::note(std::string_view key) {
    const std::lock_guard lock(mutex_);
    std::string text;
    appendText(text, key);
    std::error_code error;
    exists_ = true;
    return platform::writeWholeFile(file_, text, platform::Append::yes, error);
}

void ClaimJournal::clear() noexcept {
    const std::lock_guard lock(mutex_);
    if (exists_) {
        std::error_code ignored;
        platform::removeFile(file_, ignored);
        exists_ = false;
    }
}

}  // namespace Vesk
