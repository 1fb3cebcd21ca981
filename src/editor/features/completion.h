// What may be written at a place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "editor/evaluation.h"
#include "editor/features/spot.h"
#include "tools/variables.h"

namespace Vesk::editor {

enum class ProposalKind : std::uint8_t {
    Target,
    Unit,
    Project,
    Profile,
    Variable,
    Output,
    Value,
    Keyword,
    File,
    Directory,
};

struct Proposal {
    ProposalKind kind;
    std::string label;
    std::string detail;         ///< in a line
    std::string documentation;  ///< Markdown
    std::string text;           ///< to insert; empty: the label
};

struct Proposals {
    std::vector<Proposal> items;
    TextSpan replaced;  ///< what stands there already and is typed over
};

Proposals proposalsAt(const Cursor& cursor, Evaluations& evaluations);

/// A variable with the role that it has for a tool.
struct KnownVariable {
    const Variable* variable;
    VariableRole role;
};

/// What a tool of that type, or with an empty word any tool, knows; each name once for each role.
std::vector<KnownVariable> knownVariables(std::string_view toolWord);

/// "compile(source, object)".
std::string signatureOf(const Block& block);

}  // namespace Vesk::editor
