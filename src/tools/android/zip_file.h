// Reading and writing ZIP archives, as far as Android packages need it.
//
// No ZIP64: Android does not install packages of 4 GiB or of 65,535 entries. Names are UTF-8 with
// forward slashes. Errors are VeskExceptions that name the file.
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
    std::uint16_t method = 0;  ///< 0: stored as it is
    std::uint32_t checksum = 0;
    std::uint32_t packedSize = 0;  ///< bytes in the archive
    std::uint32_t size = 0;        ///< bytes once unpacked
    std::uint32_t offset = 0;      ///< of the packed bytes in the archive
};

/// An archive in memory.
class ZipFile {
  public:
    /// Throws for a file that cannot be read, and for one that is no archive or is cut off.
    explicit ZipFile(const std::filesystem::path& file);

    /// In the order of the archive's directory.
    const std::vector<ZipEntry>& entries() const noexcept { return entries_; }

    /// As the archive holds them, packed or not.
    std::string_view packedBytes(const ZipEntry& entry) const;

    const std::string& name() const noexcept { return name_; }

  private:
    std::string name_;
    std::string bytes_;
    std::vector<ZipEntry> entries_;
};

/// Writes an archive from its start to its end. The same entries give the same bytes: no times are
/// kept. Data that is stored as it is can be mapped into memory from the package: it starts at a
/// multiple of 4 bytes, native libraries at one of 16 KiB, the largest page that Android has.
class ZipWriter {
  public:
    /// Throws when the file cannot be written.
    explicit ZipWriter(const std::filesystem::path& file);

    /// Takes an entry over, packed as it is. The second form gives it another name.
    void copy(const ZipFile& from, const ZipEntry& entry);
    void copy(const ZipFile& from, const ZipEntry& entry, std::string name);

    /// Stores a file. Throws when it cannot be read and when `name` is taken.
    void add(std::string name, const std::filesystem::path& file);

    /// The same for a copy of the file that messages name.
    void add(std::string name, const std::filesystem::path& file, const std::string& origin);

    /// Writes the directory. Without it the file is no archive.
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
    std::map<std::string, std::string> origins_;  ///< by name: what each entry was made of
};

}  // namespace Vesk
