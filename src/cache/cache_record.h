// What the cache remembers of a target, and what it is asked for.
//
// Both are kept as the text of the cache file, so checking for changes means comparing bytes and
// looking at files, and saving means copying.
//
// A record consists of parts, which the file calls recipes. The first part describes the target as
// a whole, the second its variables; then follows one part for each recipe. The first part's
// outputs contain a table of all files with their states. Each part's outputs list by number which
// of these files it reads and writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/content_hash.h"
#include "base/day_number.h"
#include "run/recipe.h"
#include "types/context/assignment.h"

namespace Vesk {

class RecordContent;

/// What is known of a record that need not be found in its text.
struct StoredRecord {
    std::string_view whole;           ///< in the file that it was read from, with its key, or empty
    DayNumber day = 0;                ///< in its seal there; 0: it has none
    std::optional<ContentHash> hash;  ///< without its seal
    std::string_view seal;            ///< empty: not known
    std::optional<std::string_view> files;  ///< its table of files
};

/// A record as text, without its key. Immutable.
class RecordText {
  public:
    struct Part {
        std::string_view inputs;  ///< starting with the line that gives their number
        std::string_view outputs;
    };

    explicit RecordText(std::string text);

    /// A piece of a text that `storage` keeps alive and that `skipRecord` has accepted.
    RecordText(std::shared_ptr<const void> storage, std::string_view text,
               const StoredRecord& stored = {})
        : storage_(std::move(storage)), text_(text), stored_(stored) {}

    struct Layout {
        std::vector<Part> parts;
        std::string_view environment;
    };

    std::string_view text() const noexcept { return text_; }

    /// If there are more than `atMost` parts: only the first ones, and no environment.
    Layout layout(std::size_t atMost = std::numeric_limits<std::size_t>::max()) const;
    const std::shared_ptr<const void>& storage() const noexcept { return storage_; }
    const StoredRecord& stored() const noexcept { return stored_; }

    /// What has been found out by taking it apart (see RecordContent), for those who get a copy.
    /// Null: nobody has kept it.
    const std::shared_ptr<const RecordContent>& content() const noexcept { return content_; }
    void keep(std::shared_ptr<const RecordContent> content) { content_ = std::move(content); }

  private:
    explicit RecordText(const std::shared_ptr<const std::string>& text)
        : storage_(text), text_(*text) {}

    std::shared_ptr<const void> storage_;
    std::string_view text_;
    StoredRecord stored_;
    std::shared_ptr<const RecordContent> content_;
};

class CacheReader;

/// Steps over the text of a record without its key. Returns null, or the name of the faulty field.
const char* skipRecord(CacheReader& reader);

/// Appends inputs in the form that a part has. A value that no source text can express is written
/// as its display text.
void appendInputs(std::string& out, const std::vector<RecipeInput>& inputs);

inline constexpr std::size_t kTargetPart = 0;
inline constexpr std::size_t kVariablesPart = 1;
inline constexpr std::size_t kFirstRecipePart = 2;

/// Which changes make a recipe run again.
enum class Judged : std::uint8_t {
    WithTarget,  ///< any change in its target
    Alone,       ///< only changes of its own, as it has outputs of its own
};

/// What a build of the target would consist of now.
struct CacheRequest {
    struct Part {
        std::string inputs;              ///< as in RecordText
        std::vector<std::string> reads;  ///< files, absolute, as FileStates takes them
        std::vector<std::string> writes;
        std::string source;          ///< the one given to the compiler, among `reads`
        std::string dependencyFile;  ///< see Recipe; absolute, as FileStates takes it, or empty
        std::shared_ptr<const HeaderSearch> headerSearch;  ///< see Recipe
        std::filesystem::path outputDirectory;             ///< see Recipe
        std::vector<std::string> byProducts;  ///< files that only the commands themselves use
        std::string directory;                ///< base of relative paths in `dependencyFile`
        std::shared_ptr<const ToolEnvironment> toolEnvironment;  ///< see Command
        Judged judged = Judged::WithTarget;
        Declaration declaration = Declaration::Partial;  ///< see Recipe
    };

    std::vector<Part> parts;
    std::string environment;  ///< as in RecordText

    /// Why no earlier result may be reused; empty if it may.
    std::string_view again = {};
};

}  // namespace Vesk
