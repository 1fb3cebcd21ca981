// Reads and writes ZIP archives, as far as Android packages need it.
//
// ZIP64 is not supported: Android installs no packages of 4 GiB or 65,535 entries. Names are UTF-8
// with forward slashes. Errors are VeskExceptions that name the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace Vesk {

struct ZipEntry {
    std::string name;
    std::uint16_t method = 0;  ///< 0: stored uncompressed
    std::uint32_t checksum = 0;
    std::uint32_t packedSize = 0;  ///< bytes in the archive
    std::uint32_t size = 0;        ///< bytes once unpacked
    std::uint32_t offset = 0;      ///< of the packed bytes in the archive
};

/// An archive in memory.
class ZipFile {
  public:
    /// Throws for a file that cannot be read, is not an archive, or is truncated.
    explicit ZipFile(const std::filesystem::path& file);

    /// In the order of the archive's directory.
    const std::vector<ZipEntry>& entries() const noexcept { return entries_; }

    /// As the archive holds them, compressed or not.
    std::string_view packedBytes(const ZipEntry& entry) const;

    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
    std::string bytes_;
    std::vector<ZipEntry> entries_;
};

/// Writes an archive from start to end. The same entries give the same bytes, since no times are
/// kept. Uncompressed data can be mapped into memory from the package: it starts at a multiple of 4
/// bytes, native libraries at one of 16 KiB, the largest page size that Android has.
class ZipWriter {
  public:
    /// Throws if the file cannot be written.
    explicit ZipWriter(const std::filesystem::path& file);

    /// Copies an entry, compressed or not. The second form gives it another name.
    void copy(const ZipFile& from, const ZipEntry& entry);
    void copy(const ZipFile& from, const ZipEntry& entry, std::string name);

    /// Stores a file. Throws if it cannot be read or if `name` is taken.
    void add(std::string name, const std::filesystem::path& file);

    /// The same for a copy; messages name the original file.
    void add(std::string name, const std::filesystem::path& file, const std::string& origin);

    /// Writes the directory. Without it the file is not an archive.
    void finish();

  private:
    void write(ZipEntry entry, std::string_view packed, const std::string& origin);
    void put(std::string_view bytes);
    void flush();

    std::string file_;
    platform::FileWriter writer_;
    std::string buffer_;
    std::uint64_t position_ = 0;
    std::string directory_;
    std::map<std::string, std::string> origins_;  ///< by name: what each entry was made from
};

}  // namespace Vesk
