#include "cache/record_seal.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "cache/record_files.h"

namespace Vesk {
namespace {

constexpr std::size_t kDayDigits = 6;
constexpr std::size_t kHashDigits = 32;
constexpr std::size_t kSealSize = kDayDigits + 1 + kHashDigits;  // "020417 0123...ef"

/// Empty if the record has none.
std::string_view sealOf(const RecordText& record) {
    if (!record.stored().seal.empty()) {
        return record.stored().seal;
    }
    CacheReader reader(record.text());
    std::uint64_t count = 0;
    std::string_view flag;
    if (!reader.number(count) || count == 0 || !reader.number(count)) {
        return {};
    }
    // It is the first output of the first part: what is behind it need not be stepped over.
    for (; count > 0; --count) {
        if (!reader.stepOverAssignment() || !reader.line(flag) ||
            (flag == "1" && !reader.stepOverAssignment())) {
            return {};
        }
    }
    const char* const end = record.text().data() + record.text().size();
    return fieldOf({{}, {reader.position(), static_cast<std::size_t>(end - reader.position())}},
                   recordField::kSeal);
}

/// The hash of the key and the whole text except the hash itself, which starts at `hashAt`.
std::string hashDigits(std::string_view key, std::string_view text, std::size_t hashAt) {
    return digits(hashText({key, "\n", text.substr(0, hashAt), text.substr(hashAt + kHashDigits)}));
}

ContentHash hashWithoutSeal(std::string_view text, std::string_view seal) {
    if (seal.empty()) {
        return hashText(text);
    }
    const auto before = static_cast<std::size_t>(seal.data() - text.data());
    return hashText({text.substr(0, before), text.substr(before + seal.size())});
}

/// Whether any of vesk's own fields are there. They stand in many places, so damage never hits them
/// all.
bool isOurs(const RecordText& record) {
    return record.text().find("\nfiles: ") != std::string_view::npos;
}

}  // namespace

const std::string& openSeal() {
    static const std::string seal(kSealSize, '0');
    return seal;
}

std::optional<DayNumber> checkSeal(std::string_view key, const RecordText& record) {
    const std::string_view seal = sealOf(record);
    if (seal.empty()) {
        return isOurs(record) ? std::nullopt : std::optional<DayNumber>(0);
    }
    const auto hashAt =
        static_cast<std::size_t>(seal.data() - record.text().data()) + kDayDigits + 1;
    DayNumber day = 0;
    std::from_chars(seal.data(), seal.data() + std::min(kDayDigits, seal.size()), day);
    const bool whole = seal.size() == kSealSize && day != 0 &&
                       seal.substr(kDayDigits + 1) == hashDigits(key, record.text(), hashAt);
    return whole ? std::optional(day) : std::nullopt;
}

ContentHash hashWithoutSeal(const RecordText& record) {
    if (record.stored().hash) {
        return *record.stored().hash;
    }
    return hashWithoutSeal(record.text(), sealOf(record));
}

RecordText examined(const RecordText& record) {
    StoredRecord known = record.stored();
    known.seal = sealOf(record);
    known.hash = hashWithoutSeal(record.text(), known.seal);
    known.files = tableOf(record);
    return {record.storage(), record.text(), known};
}

DayNumber appendSealed(std::string& out, std::string_view key, const RecordText& record,
                       DayNumber day) {
    const std::string_view text = record.text();
    const std::size_t start = out.size();
    out += text;
    const std::string_view seal = sealOf(record);
    if (seal.size() != kSealSize) {
        return 0;
    }
    const auto sealAt = static_cast<std::size_t>(seal.data() - text.data());
    const std::size_t hashAt = sealAt + kDayDigits + 1;
    out.replace(start + sealAt, kDayDigits + 1, fmt::format("{:0{}} ", day, kDayDigits));
    const std::string hash = hashDigits(key, std::string_view(out).substr(start), hashAt);
    out.replace(start + hashAt, kHashDigits, hash);
    return day;
}

}  // namespace Vesk
