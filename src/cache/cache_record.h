// What the cache remembers of a target, and what it is asked.
//
// Both are kept as the text that stands in the cache file, so that asking whether anything has
// changed is comparing bytes and looking at files, and saving is copying.
//
// A record is made of parts, which the file calls recipes. The first is about the target as a
// whole, the second about its variables; one for each recipe follows. The first part's outputs hold
// a table of all files with their states, and each part's outputs say by number which of them it
// reads and writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"
#include "types/context/assignment.h"

namespace Vesk {

/// A record as text, without its key. Never changes.
class RecordText {
  public:
    struct Part {
        std::string_view inputs;  ///< from the line of their number on
        std::string_view outputs;
    };

    explicit RecordText(std::string text);

    /// A piece of a text that `storage` keeps alive and that `skipRecord` has accepted.
    RecordText(std::shared_ptr<const std::string> storage, std::string_view text)
        : storage_(std::move(storage)), text_(text) {}

    struct Layout {
        std::vector<Part> parts;
        std::string_view environment;
    };

    std::string_view text() const noexcept { return text_; }

    /// Of the first parts, and without the environment, when there are more than `atMost`.
    Layout layout(std::size_t atMost = std::numeric_limits<std::size_t>::max()) const;
    const std::shared_ptr<const std::string>& storage() const noexcept { return storage_; }

  private:
    std::shared_ptr<const std::string> storage_;
    std::string_view text_;
};

class CacheReader;

/// Steps over the text of a record without its key. Null, or the name of the field at fault.
const char* skipRecord(CacheReader& reader);

/// Inputs as they stand in a part; a value that no source text can give back stands as its display
/// text.
void appendInputs(std::string& out, const std::vector<RecipeInput>& inputs);

inline constexpr std::size_t kTargetPart = 0;
inline constexpr std::size_t kVariablesPart = 1;
inline constexpr std::size_t kFirstRecipePart = 2;

/// What decides whether a recipe runs again.
enum class Judged : std::uint8_t {
    WithTarget,  ///< anything that changed of its target
    Alone,       ///< what changed of itself: it has outputs of its own
};

/// What a build of the target would consist of now.
struct CacheRequest {
    struct Part {
        std::string inputs;              ///< as in RecordText
        std::vector<std::string> reads;  ///< files, absolute, as FileStates takes them
        std::vector<std::string> writes;
        std::string source;  ///< the one that a compiler is given, among the reads
        std::filesystem::path dependencyFile;
        std::shared_ptr<const HeaderSearch> headerSearch;  ///< see Recipe
        std::filesystem::path outputDirectory;             ///< see Recipe
        std::vector<std::string> byProducts;  ///< files that only the commands themselves need
        std::filesystem::path directory;      ///< of the relative paths in it
        std::shared_ptr<const ToolEnvironment> toolEnvironment;  ///< see Command
        Judged judged = Judged::WithTarget;
        Declaration declaration = Declaration::Partial;  ///< see Recipe
    };

    std::vector<Part> parts;
    std::string environment;  ///< as in RecordText

    /// Why nothing of an earlier build is taken; empty: what stands is.
    std::string_view again = {};
};

}  // namespace Vesk
