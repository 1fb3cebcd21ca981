#include "keep/visit_store.h"

#include <system_error>
#include <utility>

#include "base/bytes.h"
#include "platform/files.h"

namespace Vesk {
namespace {

// A file is the header and blocks, of each its hash and its entries. An entry is key, day, what it
// has, and that: a visit, which takes the place of an earlier one of that key, or ends it if it is
// empty; or the record that the earlier one depends on from now on.
constexpr std::string_view kHeader = "VESK_VISITS_5\n";

/// A file may grow by what it has when it is written as a whole, and by so much.
constexpr std::size_t kSlack = std::size_t{64} * 1024;

enum class Has : std::uint8_t { Visit, Record };

void append(Encoder& out, const ContentHash& key, DayNumber day, Has has) {
    out.hash(key);
    out.number(day);
    out.number(static_cast<std::uint64_t>(has));
}

void appendVisit(Encoder& out, std::string_view visit, const std::optional<ContentHash>& record) {
    if (!record || visit.empty()) {
        out.piece(visit);
        return;
    }
    const std::string_view rest = withoutRecord(visit);
    out.number(visit.size());
    out.hash(*record);
    out.bytes += rest;
}

}  // namespace

void VisitStore::load(const std::filesystem::path& directory) {
    file_ = directory / kFileName;
    std::error_code error;
    loaded_ = platform::FileView::open(file_, error);
    if (loaded_ && loaded_->bytes().starts_with(kHeader)) {
        takeBlocks(loaded_->bytes().substr(kHeader.size()));
    }
}

/// Up to the first that is not whole, as after a kill; then the whole file is written again.
void VisitStore::takeBlocks(std::string_view bytes) {
    Decoder decoder(bytes);
    while (!decoder.atEnd()) {
        const ContentHash hash = decoder.hash();
        const std::string_view block = decoder.piece();
        if (!decoder.good() || hashText(block) != hash) {
            return;
        }
        takeEntries(block);
        writtenBytes_ = writtenBytes_ == 0 ? block.size() : writtenBytes_;
    }
    fileBytes_ = loaded_->bytes().size();
}

void VisitStore::takeEntries(std::string_view bytes) {
    Decoder decoder(bytes);
    const std::uint64_t count = decoder.number();
    if (count < bytes.size()) {
        entries_.reserve(entries_.size() + count);
    }
    bool goesOn = decoder.good();
    while (goesOn && !decoder.atEnd()) {
        goesOn = takeEntry(decoder);
    }
}

/// False for bytes that are none.
bool VisitStore::takeEntry(Decoder& decoder) {
    const ContentHash key = decoder.hash();
    const auto day = static_cast<DayNumber>(decoder.number());
    if (decoder.number() == static_cast<std::uint64_t>(Has::Record)) {
        const ContentHash record = decoder.hash();
        const auto found = entries_.find(key);
        if (decoder.good() && found != entries_.end()) {
            found->second.day = day;
            found->second.renewed = record;
        }
        return decoder.good();
    }
    Entry entry;
    entry.day = day;
    entry.visit = decoder.piece();
    entry.isInFile = true;
    if (decoder.good()) {
        entries_.insert_or_assign(key, std::move(entry));
    }
    return decoder.good();
}

std::optional<KeptVisit> VisitStore::decoded(const Entry& entry) {
    auto visit = decodedVisit(entry.visit);
    if (visit && entry.renewed) {
        visit->record = *entry.renewed;
    }
    return visit;
}

/// It has been asked for; null when there is none.
VisitStore::Entry* VisitStore::findEntry(const ContentHash& key) {
    const auto found = entries_.find(key);
    if (found == entries_.end() || found->second.visit.empty()) {
        return nullptr;
    }
    Entry& entry = found->second;
    if (isDueAgain(entry.day, today_)) {
        setNew(key, entry);
    }
    return &entry;
}

std::optional<KeptVisit> VisitStore::find(const ContentHash& key) {
    const Entry* const entry = findEntry(key);
    return entry != nullptr ? decoded(*entry) : std::nullopt;
}

std::optional<ContentHash> VisitStore::hash(const ContentHash& key) {
    const auto found = entries_.find(key);
    if (found == entries_.end() || found->second.visit.empty()) {
        return std::nullopt;
    }
    Entry& entry = found->second;
    if (!entry.hash) {
        entry.hash = hashText(withoutRecord(entry.visit));
    }
    return entry.hash;
}

std::optional<std::string_view> VisitStore::findText(const ContentHash& key) {
    const Entry* const entry = findEntry(key);
    return entry != nullptr ? std::optional(entry->visit) : std::nullopt;
}

void VisitStore::put(const ContentHash& key, const KeptVisit& visit, RecordHash record) {
    putText(key, encoded(visit));  // what is put may refer to what it replaces
    Entry& entry = entries_.at(key);
    entry.record = std::move(record);
    entry.stands = true;
}

std::optional<KeptVisit> VisitStore::findStanding(const ContentHash& key) const {
    const auto found = entries_.find(key);
    return found != entries_.end() && found->second.stands && !found->second.visit.empty()
               ? decoded(found->second)
               : std::nullopt;
}

void VisitStore::putText(const ContentHash& key, std::string text) {
    Entry& entry = entries_[key];
    entry.own = std::move(text);
    entry.visit = entry.own;
    entry.hash.reset();
    entry.renewed.reset();
    entry.isInFile = false;
    entry.record = nullptr;
    setNew(key, entry);
}

void VisitStore::setNew(const ContentHash& key, Entry& entry) {
    entry.day = today_;
    if (!std::exchange(entry.isNew, true)) {
        news_.push_back(key);
    }
}

void VisitStore::renew(const ContentHash& key, RecordHash record) {
    Entry& entry = entries_.at(key);
    entry.record = std::move(record);
    setNew(key, entry);
}

/// What is kept of a visit whose record is not in the cache is nothing.
void VisitStore::completeNews() {
    for (const ContentHash& key : news_) {
        Entry& entry = entries_.at(key);
        if (entry.record) {
            entry.renewed = entry.record();
            if (!entry.renewed) {
                entry.visit = {};
                entry.isInFile = false;
            }
        }
    }
}

std::string VisitStore::newEntries() const {
    Encoder out;
    out.number(news_.size());
    for (const ContentHash& key : news_) {
        const Entry& entry = entries_.at(key);
        if (entry.isInFile && entry.renewed) {
            append(out, key, entry.day, Has::Record);
            out.hash(*entry.renewed);
        } else {
            append(out, key, entry.day, Has::Visit);
            appendVisit(out, entry.visit, entry.renewed);
        }
    }
    return std::move(out.bytes);
}

std::string VisitStore::allEntries() const {
    Encoder out;
    out.number(entries_.size());
    for (const auto& [key, entry] : entries_) {
        if (!entry.visit.empty() && !isOutdated(entry.day, today_)) {
            append(out, key, entry.day, Has::Visit);
            appendVisit(out, entry.visit, entry.renewed);
        }
    }
    return std::move(out.bytes);
}

/// What has been read of the file belongs to it, so it is replaced, not overwritten.
bool VisitStore::write(std::string_view bytes, bool isWhole) const {
    std::error_code error;
    if (!isWhole) {
        return platform::writePrivateFile(file_, bytes, platform::Append::yes, error);
    }
    std::filesystem::path temporary = file_;
    temporary += ".tmp";
    if (platform::writePrivateFile(temporary, bytes, platform::Append::no, error) &&
        platform::replaceFile(temporary, file_, error)) {
        return true;
    }
    platform::removeFile(temporary, error);
    return false;
}

void VisitStore::writeBlock(std::string_view start, const std::string& entries) {
    Encoder out;
    out.bytes = start;
    out.hash(hashText(entries));
    out.piece(entries);
    const bool isWhole = !start.empty();
    const bool written = write(out.bytes, isWhole);
    if (isWhole) {
        writtenBytes_ = entries.size();
    }
    fileBytes_ = !written ? 0 : isWhole ? out.bytes.size() : fileBytes_ + out.bytes.size();
}

void VisitStore::save() {
    if (news_.empty()) {
        return;
    }
    completeNews();
    const std::string entries = newEntries();
    if (fileBytes_ != 0 && fileBytes_ + entries.size() < 2 * writtenBytes_ + kSlack) {
        writeBlock({}, entries);
    } else {
        writeBlock(kHeader, allEntries());
    }
    for (const ContentHash& key : news_) {
        Entry& entry = entries_.at(key);
        entry.isNew = false;
        entry.isInFile = fileBytes_ != 0 && !entry.visit.empty();
    }
    news_.clear();
}

}  // namespace Vesk
