// Findings in the Static Analysis Results Interchange Format, version 2.1.0.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "editor/diagnostic.h"
#include "editor/document.h"

namespace Vesk::editor {

struct FileFindings {
    std::string name;  ///< as the user named the file
    const Document* document = nullptr;
    std::vector<Diagnostic> found;
};

/// One run, with all rules, as JSON. `version` is vesk's.
std::string sarifReport(const std::vector<FileFindings>& files, const std::string& version);

/// "error", "warning", "note".
std::string_view levelOf(Severity severity) noexcept;

}  // namespace Vesk::editor
