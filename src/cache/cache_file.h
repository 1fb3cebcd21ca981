// The file in which a project's records are kept between builds.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cache/cache_index.h"
#include "cache/cache_record.h"
#include "cache/cache_text.h"
#include "cache/record_seal.h"

namespace Vesk {

inline constexpr const char* kCacheFileName = ".vesk_cache";

/// Receives one record of the file. The key is a piece of the same text.
using RecordSink = std::function<void(std::string_view key, RecordText record)>;

/// Which cache file it is.
struct CacheFileIdentity {
    ContentHash hash;  ///< of its bytes
    std::uint64_t size = 0;
};

/// A record as it is in a file, with its key.
struct SealedRecord {
    std::string_view key;
    RecordText record;
    std::string_view fault;  ///< the name of what is faulty; empty: nothing is
};

/// Takes the next one off a text that `storage` keeps alive.
SealedRecord takeSealedRecord(CacheReader& reader, const std::shared_ptr<const void>& storage);

/// Appends a record in the form that `takeSealedRecord` takes. Gives the day in its seal; 0 if it
/// has none.
DayNumber appendSealedRecord(std::string& out, std::string_view key, const RecordText& record,
                             DayNumber day);

/// Reads the file and passes its records on in file order. False after a fault, which a warning
/// describes; the records passed on so far must then be discarded. A missing file has no records.
/// `identity`: set after success, if there is a file.
bool loadCacheFile(const std::filesystem::path& file, const RecordSink& take,
                   std::optional<CacheFileIdentity>& identity);

/// Writes the records into a new file, which replaces the old one at the end, so that there is a
/// complete file at any moment.
class CacheFileWriter {
  public:
    /// Creates the directory if it is missing.
    CacheFileWriter(std::filesystem::path file, std::size_t recordCount);
    ~CacheFileWriter();
    CacheFileWriter(const CacheFileWriter&) = delete;
    CacheFileWriter& operator=(const CacheFileWriter&) = delete;

    /// `day`: when the record was last asked for.
    void write(std::string_view key, const RecordText& record, DayNumber day);

    /// The file that is in place now. Nothing after a failure, which has been reported by then.
    std::optional<CacheFileIdentity> finish();

  private:
    struct Output;

    void put(std::string_view text);
    void flush();
    void endRun();
    void copy(std::string_view whole);
    void fail(const std::string& message);

    std::filesystem::path file_;
    std::filesystem::path temporary_;
    std::unique_ptr<Output> output_;
    CacheIndexWriter index_;
    std::string buffer_;
    std::string_view run_;  ///< behind the buffer; of the file that was read
    std::uint64_t size_ = 0;
    bool failed_ = false;
};

}  // namespace Vesk
