#include "tools/android/zip_file.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <limits>
#include <system_error>
#include <utility>

#include "base/exception.h"

namespace Vesk {

namespace {

// The format is PKWARE's "APPNOTE.TXT"; its numbers are little-endian.
constexpr std::uint32_t kLocalMark = 0x04034B50;
constexpr std::uint32_t kDirectoryMark = 0x02014B50;
constexpr std::uint32_t kEndMark = 0x06054B50;
constexpr std::size_t kLocalSize = 30;
constexpr std::size_t kDirectorySize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::uint16_t kVersion = 20;
constexpr std::uint16_t kUtf8Flag = 1U << 11U;
constexpr std::uint16_t kFirstDay = 0x21;  // 1980-01-01, the earliest date in the format

// The signer reads this to keep an entry where it is.
constexpr std::uint16_t kAlignmentField = 0xD935;
constexpr std::size_t kAlignmentFieldSize = 6;
constexpr std::uint16_t kWord = 4;
constexpr std::uint16_t kPage = 16384;

constexpr std::size_t kBufferSize = std::size_t{1} << 18U;

void append16(std::string& bytes, std::size_t value) {
    bytes += static_cast<char>(value & 0xFFU);
    bytes += static_cast<char>((value >> 8U) & 0xFFU);
}

void append32(std::string& bytes, std::size_t value) {
    append16(bytes, value & 0xFFFFU);
    append16(bytes, (value >> 16U) & 0xFFFFU);
}

std::uint32_t numberAt(std::string_view bytes, std::size_t offset, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
        value = (value << 8U) | static_cast<unsigned char>(bytes[offset + i]);
    }
    return value;
}

std::uint16_t read16(std::string_view bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(numberAt(bytes, offset, 2));
}

std::uint32_t read32(std::string_view bytes, std::size_t offset) {
    return numberAt(bytes, offset, 4);
}

constexpr std::array<std::uint32_t, 256> makeChecksumTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1U) != 0 ? 0xEDB88320U ^ (value >> 1U) : value >> 1U;
        }
        table[i] = value;
    }
    return table;
}

std::uint32_t checksumOf(std::string_view bytes) noexcept {
    static constexpr auto kTable = makeChecksumTable();
    std::uint32_t value = 0xFFFFFFFFU;
    for (const char c : bytes) {
        value = kTable[(value ^ static_cast<unsigned char>(c)) & 0xFFU] ^ (value >> 8U);
    }
    return ~value;
}

[[noreturn]] void throwDamaged(const std::string& file) {
    throw VeskException(fmt::format(
        "'{}' is not a ZIP archive, or it is damaged. If a build makes it, remove it.", file));
}

/// The record that ends the directory. A comment of at most 64 KiB may follow it.
std::size_t findEnd(std::string_view bytes) {
    constexpr std::size_t kMaxComment = 0xFFFF;
    const std::size_t last = bytes.size() < kEndSize ? 0 : bytes.size() - kEndSize;
    const std::size_t first = last > kMaxComment ? last - kMaxComment : 0;
    for (std::size_t at = last + 1; bytes.size() >= kEndSize && at-- > first;) {
        if (read32(bytes, at) == kEndMark) {
            return at;
        }
    }
    return std::string_view::npos;
}

std::uint16_t alignmentOf(const ZipEntry& entry) noexcept {
    return entry.name.ends_with(".so") ? kPage : kWord;
}

/// Fills up to the next multiple of the alignment.
std::string alignmentField(std::uint64_t dataStart, std::uint16_t alignment) {
    const std::uint64_t least = dataStart + kAlignmentFieldSize;
    const std::size_t padding = (alignment - least % alignment) % alignment;
    std::string field;
    append16(field, kAlignmentField);
    append16(field, 2 + padding);
    append16(field, alignment);
    field.append(padding, '\0');
    return field;
}

/// What the entry's header and its line in the directory have in common.
std::string commonFields(const ZipEntry& entry) {
    const bool plain = std::ranges::all_of(
        entry.name, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    std::string fields;
    append16(fields, kVersion);
    append16(fields, plain ? 0 : kUtf8Flag);
    append16(fields, entry.method);
    append16(fields, 0);
    append16(fields, kFirstDay);
    append32(fields, entry.checksum);
    append32(fields, entry.packedSize);
    append32(fields, entry.size);
    append16(fields, entry.name.size());
    return fields;
}

}  // namespace

ZipFile::ZipFile(const std::filesystem::path& file) : name_(platform::pathToUtf8(file)) {
    std::error_code error;
    auto bytes = platform::readWholeFile(file, error, std::numeric_limits<std::uint32_t>::max());
    if (!bytes) {
        throw VeskException(fmt::format("Unable to read '{}': {}.", name_, error.message()));
    }
    bytes_ = std::move(*bytes);
    const std::size_t end = findEnd(bytes_);
    if (end == std::string::npos) {
        throwDamaged(name_);
    }
    std::size_t at = read32(bytes_, end + 16);
    for (std::size_t count = read16(bytes_, end + 10); count > 0; --count) {
        if (at + kDirectorySize > end || read32(bytes_, at) != kDirectoryMark) {
            throwDamaged(name_);
        }
        const std::size_t nameSize = read16(bytes_, at + 28);
        const std::size_t local = read32(bytes_, at + 42);
        if (at + kDirectorySize + nameSize > end || local + kLocalSize > end ||
            read32(bytes_, local) != kLocalMark) {
            throwDamaged(name_);
        }
        ZipEntry entry;
        entry.name = bytes_.substr(at + kDirectorySize, nameSize);
        entry.method = read16(bytes_, at + 10);
        entry.checksum = read32(bytes_, at + 16);
        entry.packedSize = read32(bytes_, at + 20);
        entry.size = read32(bytes_, at + 24);
        const std::size_t data =
            local + kLocalSize + read16(bytes_, local + 26) + read16(bytes_, local + 28);
        if (data + entry.packedSize > end) {
            throwDamaged(name_);
        }
        entry.offset = static_cast<std::uint32_t>(data);
        entries_.push_back(std::move(entry));
        at += kDirectorySize + nameSize + read16(bytes_, at + 30) + read16(bytes_, at + 32);
    }
}

std::string_view ZipFile::packedBytes(const ZipEntry& entry) const {
    return std::string_view(bytes_).substr(entry.offset, entry.packedSize);
}

ZipWriter::ZipWriter(const std::filesystem::path& file)
    : file_(platform::pathToUtf8(file)), writer_(file) {
    if (!writer_.isOpen()) {
        throw VeskException(fmt::format("Unable to write '{}'. Is its directory writable?", file_));
    }
}

void ZipWriter::copy(const ZipFile& from, const ZipEntry& entry) {
    copy(from, entry, entry.name);
}

void ZipWriter::copy(const ZipFile& from, const ZipEntry& entry, std::string name) {
    ZipEntry copied = entry;
    copied.name = std::move(name);
    write(std::move(copied), from.packedBytes(entry), from.name());
}

void ZipWriter::add(std::string name, const std::filesystem::path& file) {
    add(std::move(name), file, platform::pathToUtf8(file));
}

void ZipWriter::add(std::string name, const std::filesystem::path& file,
                    const std::string& origin) {
    std::error_code error;
    const auto bytes =
        platform::readWholeFile(file, error, std::numeric_limits<std::uint32_t>::max());
    if (!bytes) {
        throw VeskException(fmt::format("Unable to read '{}': {}.", origin, error.message()));
    }
    ZipEntry entry;
    entry.name = std::move(name);
    entry.checksum = checksumOf(*bytes);
    entry.packedSize = static_cast<std::uint32_t>(bytes->size());
    entry.size = entry.packedSize;
    write(std::move(entry), *bytes, origin);
}

void ZipWriter::write(ZipEntry entry, std::string_view packed, const std::string& origin) {
    const auto [other, isNew] = origins_.try_emplace(entry.name, origin);
    if (!isNew) {
        throw VeskException(
            fmt::format("'{}' would be in the package twice: from '{}' and from '{}'.", entry.name,
                        other->second, origin));
    }
    const std::string common = commonFields(entry);
    std::string extra;
    if (entry.method == 0) {
        extra = alignmentField(position_ + kLocalSize + entry.name.size(), alignmentOf(entry));
    }

    append32(directory_, kDirectoryMark);
    append16(directory_, kVersion);
    directory_ += common;
    directory_.append(12, '\0');  // no extra field, no comment, first disk, no attributes
    append32(directory_, position_);
    directory_ += entry.name;

    std::string header;
    append32(header, kLocalMark);
    header += common;
    append16(header, extra.size());
    put(header);
    put(entry.name);
    put(extra);
    put(packed);
}

void ZipWriter::put(std::string_view bytes) {
    position_ += bytes.size();
    if (position_ > std::numeric_limits<std::uint32_t>::max()) {
        throw VeskException(fmt::format(
            "'{}' would grow beyond 4 GiB, which Android does not install. Deliver large assets "
            "separately from the package.",
            file_));
    }
    buffer_ += bytes;
    if (buffer_.size() >= kBufferSize) {
        flush();
    }
}

void ZipWriter::flush() {
    if (!writer_.write(buffer_)) {
        throw VeskException(fmt::format("Unable to write '{}'. Is the disk full?", file_));
    }
    buffer_.clear();
}

void ZipWriter::finish() {
    if (origins_.size() >= std::numeric_limits<std::uint16_t>::max()) {
        throw VeskException(
            fmt::format("'{}' would have {} entries; Android takes fewer than 65,535.", file_,
                        origins_.size()));
    }
    const std::uint64_t start = position_;
    std::string end;
    append32(end, kEndMark);
    append32(end, 0);  // one disk only
    append16(end, origins_.size());
    append16(end, origins_.size());
    append32(end, directory_.size());
    append32(end, start);
    append16(end, 0);  // no comment
    put(directory_);
    put(end);
    flush();
    if (!writer_.close()) {
        throw VeskException(fmt::format("Unable to write '{}'. Is the disk full?", file_));
    }
}

}  // namespace Vesk
