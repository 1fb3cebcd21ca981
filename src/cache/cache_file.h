// The file in which a project's records are kept between builds.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "cache/cache_index.h"
#include "cache/cache_record.h"
#include "cache/record_seal.h"

namespace Vesk {

inline constexpr const char* kCacheFileName = ".vesk_cache";

/// Receives one record of the file. The key is a piece of the same text.
using RecordSink = std::function<void(std::string_view key, RecordText record)>;

/// Reads the file and passes its records on in file order. False after a fault, which a warning
/// describes; the records passed on so far must then be discarded. A missing file has no records.
bool loadCacheFile(const std::filesystem::path& file, const RecordSink& take);

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

    /// Whether the file is in place now. All failures have been reported by then.
    bool finish();

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
    bool failed_ = false;
};

}  // namespace Vesk
