// The texts that are open, those on disk around them, and the projects that they make up.
//
// Names are looked up in the indexes of documents, so that they are found in files that could not
// be loaded. What is returned holds until the next change or `refresh`.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "editor/document.h"
#include "platform/files.h"
#include "project/registry.h"

namespace Vesk::editor {

/// Where a block is.
struct BlockPlace {
    const Document* document = nullptr;
    const Piece* piece = nullptr;
    const Block* block = nullptr;

    explicit operator bool() const noexcept { return block != nullptr; }
    TextSpan nameSpan() const { return piece->inDocument(block->name.span); }
};

struct UnitView {
    std::string name;
    std::vector<const Document*> documents;
    std::unordered_map<std::string, BlockPlace> targets;  ///< the first of each name

    BlockPlace find(const std::string& target) const;
    std::vector<std::string> targetNames() const;
};

struct ProjectView {
    const Document* file = nullptr;  ///< null: a unit file that belongs to no project
    std::filesystem::path root;
    std::string name;
    std::vector<UnitView> units;
    std::vector<std::pair<std::string, const ProjectView*>> imports;  ///< by alias or name

    /// Null when there is none; an empty name is the unit at hand, which is no business of this.
    const UnitView* findUnit(std::string_view name) const;
    const UnitView* unitOf(const Document& document) const;
    const ProjectView* findImport(std::string_view name) const;
    std::vector<std::string> unitNames() const;
    std::vector<std::string> importNames() const;

    /// Of the project file: profiles or tools.
    std::vector<BlockPlace> blocks(BlockKind kind) const;
};

class Workspace {
  public:
    /// Texts of an editor count, whatever is on disk.
    Document& open(const std::filesystem::path& file, std::string text);
    void close(const std::filesystem::path& file);
    Document* opened(const std::filesystem::path& file);
    std::vector<const Document*> openDocuments() const;

    /// The open text, or that on disk; null when it cannot be read.
    const Document* document(const std::filesystem::path& file);

    /// Looks again at what is on disk, and forgets views.
    void refresh();

    /// The project that lists the file, or one of the file alone.
    const ProjectView& projectOf(const Document& document);

    /// The project of that file; null without a readable one.
    const ProjectView* projectAt(const std::filesystem::path& projectFile);

    /// All projects that were looked at since the last refresh.
    std::vector<const ProjectView*> projects() const;

    /// The registered projects and tools of the user; empty when they cannot be read.
    const Registry& registry();

  private:
    struct OnDisk {
        platform::FileStatus status;
        std::unique_ptr<Document> document;
        std::uint64_t lookedAt = 0;  ///< in which round
    };

    const ProjectView& standalone(const Document& document);
    void addUnits(ProjectView& view);
    void addImports(ProjectView& view);
    std::optional<std::filesystem::path> projectFileOf(const ImportSymbol& import,
                                                       const std::filesystem::path& root);
    void index(UnitView& unit) const;

    std::map<std::string, std::unique_ptr<Document>> open_;  ///< by path key
    std::map<std::string, OnDisk> onDisk_;
    std::map<std::string, std::unique_ptr<ProjectView>> projects_;
    std::optional<Registry> registry_;
    std::uint64_t round_ = 1;
};

}  // namespace Vesk::editor
