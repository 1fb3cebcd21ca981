// The file writer writes a text of the target into a file, in vesk's own process.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tools/builder.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterFileWriterMatcher;

/// Fits targets that assign FILENAME and TEXT together with FILE_WRITER or WRITE_FILE.
class FileWriterMatcher : public Matcher {
  public:
    FileWriterMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;

  protected:
    MatchResult matchTool(const Context& target) const override;
};

class FileWriterBuilder : public Builder {
  public:
    /// `settings` supply SEPARATOR and MODE if a target does not.
    explicit FileWriterBuilder(const AssignmentMap& settings);

    std::string name() const override { return "file_writer"; }

    /// Writes the file: bytes as they are, with no line end added. Everything is checked before the
    /// file is touched. Throws VeskException.
    Overlap overlap(const TargetContext&) const override { return Overlap::WhenAsked; }
    LookedFor lookedFor(const TargetContext&) const override { return {false, {}}; }
    std::shared_ptr<Context> expectedCompletion(TargetContext& target) override;
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

    /// The text and the file's absolute path as the outputs TEXT and FILE.
    RecipeSet createRecipes(TargetContext& target) override;

  private:
    std::string textOf(const Context& target) const;
    bool appends(const Context& target) const;
};

}  // namespace Vesk
