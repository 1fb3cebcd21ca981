#include "keep/visit_store.h"

#include <system_error>
#include <utility>

#include "keep/encoding.h"
#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeader = "VESK_VISITS_2\n";
constexpr std::size_t kHashDigits = 32;

/// What follows the header and the hash of it, if the file is whole.
std::optional<std::string_view> contentOf(std::string_view bytes) {
    const std::size_t start = kHeader.size() + kHashDigits + 1;
    if (!bytes.starts_with(kHeader) || bytes.size() < start) {
        return std::nullopt;
    }
    const std::string_view content = bytes.substr(start);
    const bool whole = bytes.substr(kHeader.size(), kHashDigits) == digits(hashText(content));
    return whole ? std::optional(content) : std::nullopt;
}

}  // namespace

void VisitStore::load(const std::filesystem::path& directory) {
    file_ = directory / kFileName;
    std::error_code error;
    auto bytes = platform::readWholeFile(file_, error);
    if (!bytes) {
        return;
    }
    loaded_ = std::move(*bytes);
    if (const auto content = contentOf(loaded_)) {
        takeEntries(*content);
    }
}

void VisitStore::takeEntries(std::string_view bytes) {
    Decoder decoder(bytes);
    const std::uint64_t count = decoder.number();
    if (count < bytes.size()) {
        entries_.reserve(count);
    }
    while (decoder.good() && !decoder.atEnd()) {
        const ContentHash key = decoder.hash();
        Entry entry;
        entry.day = static_cast<DayNumber>(decoder.number());
        entry.visit = decoder.piece();
        if (decoder.good()) {
            entries_.insert_or_assign(key, std::move(entry));
        }
    }
}

std::optional<KeptVisit> VisitStore::find(const ContentHash& key) {
    const auto found = entries_.find(key);
    if (found == entries_.end() || found->second.visit.empty()) {
        return std::nullopt;
    }
    Entry& entry = found->second;
    changed_ = changed_ || entry.day + kDaysKept / 3 <= today_;
    entry.day = today_;
    return decodedVisit(entry.visit);
}

void VisitStore::put(const ContentHash& key, const KeptVisit& visit, RecordHash record) {
    std::string bytes = encoded(visit);
    Entry& entry = entries_[key];
    entry.own = std::move(bytes);  // what is put may refer to what it replaces
    entry.visit = entry.own;
    entry.day = today_;
    entry.record = std::move(record);
    changed_ = true;
}

void VisitStore::renew(const ContentHash& key, RecordHash record) {
    Entry& entry = entries_.at(key);
    if (entry.own.empty()) {
        entry.own = std::string(entry.visit);
        entry.visit = entry.own;
    }
    entry.record = std::move(record);
    changed_ = true;
}

std::string VisitStore::bytes() {
    Encoder out;
    out.number(entries_.size());
    for (auto& [key, entry] : entries_) {
        if (entry.record) {
            const auto record = entry.record();
            if (!record) {
                continue;
            }
            setRecord(entry.own, *record);
            entry.visit = entry.own;
        }
        if (entry.day + kDaysKept >= today_) {
            out.hash(key);
            out.number(entry.day);
            out.piece(entry.visit);
        }
    }
    return std::move(out.bytes);
}

void VisitStore::save() {
    if (!std::exchange(changed_, false)) {
        return;
    }
    const std::string content = bytes();
    std::string file(kHeader);
    file.append(digits(hashText(content))).append("\n").append(content);
    std::error_code ignored;
    platform::writePrivateFile(file_, file, platform::Append::no, ignored);
}

}  // namespace Vesk
