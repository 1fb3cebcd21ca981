#include "cache/claim_journal.h"

#include <system_error>
#include <utility>

#include "base/console.h"
#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "platform/files.h"

namespace Vesk {
namespace {

/// The keys in the text, each followed by its hash. Nothing if the text is anything else; an empty
/// text is a file that was cut short.
std::optional<std::vector<std::string>> keysIn(std::string_view content) {
    std::vector<std::string> keys;
    CacheReader reader(content);
    do {
        std::string_view key;
        std::string_view hash;
        if (!reader.text(key) || !reader.line(hash) || hash != digits(hashText(key))) {
            return std::nullopt;
        }
        keys.emplace_back(key);
    } while (!reader.atEnd());
    return keys;
}

}  // namespace

ClaimJournal::ClaimJournal(const std::filesystem::path& cacheFile) : file_(cacheFile) {
    file_ += ".claims";
}

std::optional<std::vector<std::string>> ClaimJournal::read() {
    std::error_code error;
    const auto content = platform::readWholeFile(file_, error);
    if (error == std::errc::no_such_file_or_directory) {
        return std::vector<std::string>();
    }
    exists_ = true;
    auto keys = content ? keysIn(*content) : std::nullopt;
    if (!keys) {
        console::warning("Claims file '{}' {}. Starting with empty cache.",
                         platform::pathToUtf8(file_),
                         error ? "cannot be read: " + error.message() : "is malformed");
    }
    return keys;
}

bool ClaimJournal::note(std::string_view key) {
    const std::lock_guard lock(mutex_);
    std::string text;
    appendText(text, key);
    text += digits(hashText(key)) + "\n";
    return std::exchange(exists_, true) ? append(text) : create(text);
}

bool ClaimJournal::append(const std::string& text) const {
    std::error_code error;
    return platform::writePrivateFile(file_, text, platform::Append::yes, error);
}

bool ClaimJournal::create(const std::string& text) const {
    std::filesystem::path temporary = file_;
    temporary += ".new";
    std::error_code error;
    return platform::writePrivateFile(temporary, text, platform::Append::no, error) &&
           platform::replaceFile(temporary, file_, error);
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
