// The shape of a document: what it holds, what can be folded, what can be done with it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "editor/workspace.h"

namespace Vesk::editor {

enum class OutlineKind : std::uint8_t { Unit, Target, Profile, Tool, Output, File };

struct OutlineItem {
    OutlineKind kind;
    std::string name;
    std::string detail;
    TextSpan span;      ///< all of it
    TextSpan nameSpan;  ///< in it
    std::vector<OutlineItem> children;
};

/// Blocks with their outputs, units with their files.
std::vector<OutlineItem> outlineOf(const Document& document);

/// Of the projects that are loaded; those whose name has the letters of the query in their order.
struct FoundTarget {
    BlockPlace place;
    std::string unit;
    std::string project;
};
std::vector<FoundTarget> targetsLike(const Workspace& workspace, std::string_view query);

/// Blocks, lists and comments of more than one line.
struct Fold {
    std::uint32_t firstLine;
    std::uint32_t lastLine;
    bool comment;
};
std::vector<Fold> foldsOf(const Document& document);

/// What can be run for a target, "unit::target" from `directory`.
struct Lens {
    TextSpan span;
    std::string target;
    std::string directory;
    std::string file;  ///< to be given with -f; empty: the project finds the target
};
std::vector<Lens> lensesOf(Workspace& workspace, const Document& document);

}  // namespace Vesk::editor
