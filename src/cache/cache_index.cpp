#include "cache/cache_index.h"

#include <string>
#include <system_error>

#include "platform/files.h"

namespace Vesk {
namespace {

// An index is the header, the hash of the rest, the hash of the cache file, and of each record the
// sizes of its key and text, the day in its seal, its hash, and where in its text its table of
// files is.
constexpr std::string_view kIndexHeader = "VESK_INDEX_1\n";

std::filesystem::path indexOf(const std::filesystem::path& cacheFile) {
    std::filesystem::path file = cacheFile;
    file += ".index";
    return file;
}

/// The lines before the first record: the header and the number of records.
std::size_t sizeOfStart(std::string_view content) noexcept {
    return content.find('\n', content.find('\n') + 1) + 1;
}

/// What the file has of one record, from a position on.
struct Place {
    std::string_view key;
    std::string_view record;
    std::string_view whole;
};

/// Nothing if it does not fit.
std::optional<Place> placeAt(std::string_view content, std::size_t position, std::size_t keySize,
                             std::size_t recordSize) {
    const std::size_t lengthLine = content.find('\n', position) + 1;
    if (lengthLine == 0 || keySize >= content.size() - lengthLine ||
        recordSize > content.size() - lengthLine - keySize - 1) {
        return std::nullopt;
    }
    const std::size_t record = lengthLine + keySize + 1;
    return Place{content.substr(lengthLine, keySize), content.substr(record, recordSize),
                 content.substr(position, record + recordSize - position)};
}

/// The hash, and then all that it covers.
std::string sealed(std::string_view rest) {
    Encoder out;
    out.bytes.reserve(kIndexHeader.size() + sizeof(ContentHash) + rest.size());
    out.bytes = kIndexHeader;
    out.hash(hashText(rest));
    out.bytes += rest;
    return std::move(out.bytes);
}

/// Nothing for bytes that were not made by `sealed`.
std::optional<std::string_view> unsealed(std::string_view bytes) {
    constexpr std::size_t kStart = kIndexHeader.size() + sizeof(ContentHash);
    if (bytes.size() < kStart || !bytes.starts_with(kIndexHeader)) {
        return std::nullopt;
    }
    Decoder decoder(bytes.substr(kIndexHeader.size(), sizeof(ContentHash)));
    const std::string_view rest = bytes.substr(kStart);
    return decoder.hash() == hashText(rest) ? std::optional(rest) : std::nullopt;
}

}  // namespace

void CacheIndexWriter::add(std::string_view key, std::string_view record,
                           const StoredRecord& stored) {
    records_.number(key.size());
    records_.number(record.size());
    records_.number(stored.day);
    records_.hash(*stored.hash);
    records_.number(stored.files->size());
    if (!stored.files->empty()) {
        records_.number(static_cast<std::size_t>(stored.files->data() - record.data()));
    }
}

void CacheIndexWriter::write(const std::filesystem::path& cacheFile) const {
    Encoder out;
    out.bytes.reserve(sizeof(ContentHash) + records_.bytes.size());
    out.hash(hasher_.hash());
    out.bytes += records_.bytes;
    std::error_code ignored;
    platform::writePrivateFile(indexOf(cacheFile), sealed(out.bytes), platform::Append::no,
                               ignored);
}

IndexUse takeIndexed(const std::filesystem::path& cacheFile, std::string_view content,
                     const ContentHash& hash, const IndexedSink& take) {
    std::error_code ignored;
    const auto bytes = platform::readWholeFile(indexOf(cacheFile), ignored);
    const auto rest = bytes ? unsealed(*bytes) : std::nullopt;
    if (!rest) {
        return IndexUse::none;
    }
    Decoder decoder(*rest);
    if (decoder.hash() != hash) {
        return IndexUse::none;
    }
    std::size_t position = sizeOfStart(content);
    while (!decoder.atEnd()) {
        const std::uint64_t keySize = decoder.number();
        const std::uint64_t recordSize = decoder.number();
        StoredRecord stored;
        stored.day = static_cast<DayNumber>(decoder.number());
        stored.hash = decoder.hash();
        const std::uint64_t filesSize = decoder.number();
        const std::uint64_t filesAt = filesSize > 0 ? decoder.number() : 0;
        const auto place = placeAt(content, position, keySize, recordSize);
        if (!decoder.good() || !place || filesAt > recordSize || filesSize > recordSize - filesAt) {
            return IndexUse::faulty;
        }
        stored.whole = place->whole;
        stored.files = place->record.substr(filesAt, filesSize);
        take(place->key, place->record, stored);
        position += place->whole.size();
    }
    return position == content.size() ? IndexUse::all : IndexUse::faulty;
}

}  // namespace Vesk
