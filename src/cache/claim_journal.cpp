#include "cache/claim_journal.h"

#include <system_error>
#include <utility>

#include "base/console.h"
#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "platform/files.h"

namespace Vesk {
namespace {

/// A claim without its hash.
std::string textOf(const Claim& claim) {
    std::string text;
    appendText(text, claim.key);
    appendNumber(text, claim.changes);
    return text;
}

/// The claims in the text, each followed by its hash. Nothing if the text is anything else; an
/// empty text is a file that was cut short.
std::optional<std::vector<Claim>> claimsIn(std::string_view content) {
    std::vector<Claim> claims;
    CacheReader reader(content);
    do {
        Claim claim;
        std::string_view key;
        std::string_view hash;
        const char* const start = reader.position();
        if (!reader.text(key) || !reader.number(claim.changes)) {
            return std::nullopt;
        }
        const std::string_view text(start, static_cast<std::size_t>(reader.position() - start));
        if (!reader.line(hash) || hash != digits(hashText(text))) {
            return std::nullopt;
        }
        claim.key = key;
        claims.push_back(std::move(claim));
    } while (!reader.atEnd());
    return claims;
}

}  // namespace

ClaimJournal::ClaimJournal(const std::filesystem::path& cacheFile) : file_(cacheFile) {
    file_ += ".claims";
}

std::optional<std::vector<Claim>> ClaimJournal::read() {
    std::error_code error;
    const auto content = platform::readWholeFile(file_, error);
    if (error == std::errc::no_such_file_or_directory) {
        return std::vector<Claim>();
    }
    exists_ = true;
    auto claims = content ? claimsIn(*content) : std::nullopt;
    if (!claims) {
        console::warning("Claims file '{}' {}. Starting with empty cache.",
                         platform::pathToUtf8(file_),
                         error ? "cannot be read: " + error.message() : "is malformed");
    }
    return claims;
}

bool ClaimJournal::note(const Claim& claim) {
    const std::lock_guard lock(mutex_);
    std::string text = textOf(claim);
    text += digits(hashText(text)) + "\n";
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
