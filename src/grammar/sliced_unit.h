// Unit files that are read target by target.
//
// A target is parsed by itself, at its place in the file: the same tokens make the same tree there
// as in the whole text, and neither tokens nor trees of a large file are all in memory at once.
// What an outline tells of a target need not be parsed at all before somebody asks for it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "grammar/slice_trees.h"
#include "grammar/source_file.h"
#include "grammar/text_slices.h"
#include "grammar/unit_outline.h"
#include "grammar/visitor.h"
#include "types/model/target.h"

namespace Vesk {

/// Parses slices of one file.
class SliceParser {
  public:
    /// All three must outlive the parser.
    SliceParser(std::string_view text, const std::string& name,
                const std::shared_ptr<const std::filesystem::path>& file);

    /// Null for a slice that is not one target without errors. Throws what is wrong with its
    /// values.
    std::shared_ptr<const Target> target(const TextSlice& slice);

    /// Nothing for a slice that is not a `unit` line.
    std::optional<std::string> unitName(const TextSlice& slice);

  private:
    grammar::VeskTopParser::VeskUnitContext* parse(const TextSlice& slice);

    std::string_view text_;
    VeskVisitorImpl visitor_;
    SliceTrees trees_;
};

/// One file; for those of its targets that are not parsed yet it stays in memory.
class SlicedUnit : public TargetTextSource, public std::enable_shared_from_this<SlicedUnit> {
  public:
    /// `file` could be read; `canonical` is its path.
    SlicedUnit(SourceFile file, std::filesystem::path canonical);

    /// By an outline of the same text, without parsing anything; nothing if it is of another.
    std::optional<Unit> asOutlined(const UnitOutline& outline);

    /// What the text says; targets that are the same in an earlier outline, null without one, are
    /// not parsed. Nothing for a text that has to be parsed as a whole, which has errors. Throws
    /// what is wrong with its values.
    std::optional<Unit> read(const UnitOutline* earlier);

    /// Of a unit that `read` gave; refers to it.
    UnitOutline outlineOf(const Unit& unit) const;

    const std::string& name() const noexcept { return name_; }
    const SourceFile& file() const noexcept { return file_; }

    std::shared_ptr<const TargetText> read(const Target& target, std::size_t number) override;
    std::string_view written(std::size_t number) const override;

  private:
    SliceParser& parser();
    std::shared_ptr<const Target> outlined(const KnownTarget& target, std::size_t number);
    std::optional<Unit> newUnit(const UnitSlices& slices);
    ContentHash hashOf(const TextSlice& slice) const;

    SourceFile file_;
    std::shared_ptr<const std::filesystem::path> path_;
    std::string name_;  ///< the path, in messages
    std::vector<TextSlice> slices_;
    std::optional<SliceParser> parser_;
};

}  // namespace Vesk
