#include "editor/features/completion.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <system_error>

#include "base/ci_string.h"
#include "base/text.h"
#include "editor/features/completion_place.h"
#include "editor/features/hover.h"
#include "editor/names.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"
#include "tools/variable_values.h"

namespace Vesk::editor {
namespace {

bool takesFiles(const Variable& variable) {
    return variable.type.find("file") != std::string_view::npos ||
           variable.type.find("path") != std::string_view::npos ||
           variable.type.find("director") != std::string_view::npos;
}

class Proposer {
  public:
    Proposer(const Cursor& cursor, Evaluations& evaluations)
        : cursor_(cursor),
          evaluations_(evaluations),
          place_(completionPlaceAt(cursor.document, cursor.place)),
          spot_(spotAt(cursor.document, cursor.place)),
          project_(cursor.workspace.projectOf(cursor.document)),
          unit_(project_.unitOf(cursor.document)) {}

    Proposals run() {
        proposals_.replaced = place_.word;
        switch (place_.kind) {
            case PlaceKind::TopLevel:
                addSections();
                break;
            case PlaceKind::Dependency:
                addDependencies();
                break;
            case PlaceKind::Name:
                addNames();
                break;
            case PlaceKind::Value:
            case PlaceKind::Reference:
                addReadable();
                break;
            case PlaceKind::Text:
                addTexts();
                break;
            case PlaceKind::Path:
                addFiles();
                break;
            case PlaceKind::Import:
                addImports();
                break;
            case PlaceKind::Nothing:
                break;
        }
        return std::move(proposals_);
    }

  private:
    void add(ProposalKind kind, std::string label, std::string detail = {},
             std::string documentation = {}, std::string text = {}) {
        proposals_.items.push_back(
            {kind, std::move(label), std::move(detail), std::move(documentation), std::move(text)});
    }

    // --- Heads of targets ---

    void addDependencies() {
        if (unit_ == nullptr) {
            return;
        }
        const std::string& before = place_.before;
        const std::size_t slash = before.find('/');
        const std::size_t colons = before.find("::");
        const ProjectView* project = &project_;
        if (slash != std::string::npos) {
            project = project_.findImport(before.substr(0, slash));
        }
        if (project == nullptr) {
            return;
        }
        if (colons != std::string::npos) {
            const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
            if (const UnitView* unit = project->findUnit(before.substr(start, colons - start))) {
                addTargets(*unit);
            }
            return;
        }
        if (slash == std::string::npos) {
            addTargets(*unit_);
            for (const std::string& name : project_.importNames()) {
                add(ProposalKind::Project, name, "a project", {}, name + "/");
            }
        }
        for (const UnitView& unit : project->units) {
            if (&unit != unit_) {
                add(ProposalKind::Unit, unit.name, "a unit of " + project->name, {},
                    unit.name + "::");
            }
        }
    }

    void addTargets(const UnitView& unit) {
        for (const auto& [name, place] : unit.targets) {
            if (place.block != spot_.block.block) {
                const auto& parameters = place.block->parameters;
                add(ProposalKind::Target, name, signatureOf(*place.block), {},
                    parameters.empty() ? std::string() : signatureOf(*place.block));
            }
        }
    }

    // --- Blocks ---

    const Block* block() const { return spot_.block.block; }

    /// The type of the tool that builds the target as it is; empty when that cannot be told.
    std::string toolWord() {
        if (block() == nullptr || block()->kind != BlockKind::Target) {
            return {};
        }
        Evaluation& evaluation = evaluations_.of(cursor_.workspace, project_);
        if (const Matcher* const tool = evaluation.outlookFor(spot_.block).tool) {
            return tool->typeWord();
        }
        for (const ToolType* type : toolTypes()) {  // the text has errors: its words tell
            for (const std::string_view source : type->sources) {
                if (std::ranges::any_of(block()->writes, [source](const Write& write) {
                        return equalsIgnoringCase(write.name.text, source);
                    })) {
                    return std::string(type->word);
                }
            }
        }
        return {};
    }

    void addNames() {
        const bool inTool = place_.section == "tools";
        for (const KnownVariable& known : knownVariables(inTool ? std::string() : toolWord())) {
            const bool fits =
                inTool ? known.role == VariableRole::Setting : known.role == VariableRole::Input;
            if (fits) {
                addVariable(known);
            }
        }
        if (inTool) {
            add(ProposalKind::Variable, "tool_type", "string", "the type of the tool");
        }
        add(ProposalKind::Keyword, "if", "a condition");
    }

    void addVariable(const KnownVariable& known) {
        add(ProposalKind::Variable, std::string(known.variable->name),
            std::string(known.variable->type), describe(*known.variable, known.role));
    }

    // --- Values ---

    void addReadable() {
        if (block() == nullptr) {
            return;
        }
        if (place_.before.find('.') != std::string::npos) {
            addOutputs();
            return;
        }
        std::set<CiString, CiLess> seen;
        const auto once = [&](ProposalKind kind, const std::string& name, std::string detail) {
            if (!name.empty() && seen.emplace(name).second) {
                add(kind, name, std::move(detail));
            }
        };
        for (const Name& parameter : block()->parameters) {
            once(ProposalKind::Variable, parameter.text, "a parameter");
        }
        for (const Write& write : block()->writes) {
            if (!write.nested) {
                once(ProposalKind::Variable, write.name.text, "of this target");
            }
        }
        for (const DependencySymbol& dependency : block()->dependencies) {
            const bool ofUnit = dependency.alias.empty() && !dependency.unit.empty();
            once(ProposalKind::Target,
                 !dependency.alias.empty() ? dependency.alias.text
                 : ofUnit                  ? dependency.unit.text
                                           : dependency.target.text,
                 "a dependency");
        }
        for (const BlockPlace& place : project_.blocks(BlockKind::Profile)) {
            for (const Write& write : place.block->writes) {
                once(ProposalKind::Variable, write.name.text,
                     "of profile " + place.block->name.text);
            }
        }
        for (const KnownVariable& known : knownVariables("")) {
            if (known.role == VariableRole::BuiltIn) {
                addVariable(known);
            }
        }
        if (place_.kind == PlaceKind::Value) {
            addQuotedValues();
        }
    }

    /// Behind `lib.`: what the target gives, and what its tool does.
    void addOutputs() {
        Read read;
        std::string_view rest = place_.before;
        while (!rest.empty()) {
            const std::size_t dot = rest.find('.');
            read.path.push_back({std::string(rest.substr(0, dot)), {}});
            rest = dot == std::string_view::npos ? std::string_view() : rest.substr(dot + 1);
        }
        if (unit_ == nullptr || read.path.empty()) {
            return;
        }
        const OutputOf output = outputOf(*block(), read, *unit_);
        if (output.dependency == nullptr) {
            for (const DependencySymbol& dependency : block()->dependencies) {
                if (dependency.unit.text == read.path.front().text) {
                    add(ProposalKind::Target, dependency.target.text, "a dependency");
                }
            }
            return;
        }
        const DependencyTarget meant = resolve(*output.dependency, project_, *unit_);
        if (meant.target) {
            addOutputsOf(meant);
        }
    }

    void addOutputsOf(const DependencyTarget& meant) {
        for (const Write& write : meant.target.block->writes) {
            if (write.modifier == "^" && !write.nested) {
                add(ProposalKind::Output, write.name.text, "of " + meant.target.block->name.text);
            }
        }
        const Matcher* const tool =
            evaluations_.of(cursor_.workspace, *meant.project).outlookFor(meant.target).tool;
        if (tool != nullptr) {
            for (const KnownVariable& known : knownVariables(tool->typeWord())) {
                if (known.role == VariableRole::Output || known.role == VariableRole::Product) {
                    add(ProposalKind::Output, std::string(known.variable->name),
                        std::string(known.variable->type), describe(*known.variable, known.role));
                }
            }
        }
    }

    std::vector<KnownVariable> assigned() const {
        std::vector<KnownVariable> known = knownVariables("");
        std::erase_if(known, [this](const KnownVariable& each) {
            return !equalsIgnoringCase(each.variable->name, place_.variable);
        });
        return known;
    }

    std::vector<std::string> values() const {
        std::vector<std::string> words;
        if (equalsIgnoringCase(place_.variable, "tool_type")) {
            return toolTypeWords();
        }
        for (const KnownVariable& known : assigned()) {
            for (std::string& word : valuesOf(*known.variable)) {
                if (std::ranges::find(words, word) == words.end()) {
                    words.push_back(std::move(word));
                }
            }
        }
        return words;
    }

    void addQuotedValues() {
        for (const std::string& word : values()) {
            add(ProposalKind::Value, "\"" + word + "\"", "a value of " + place_.variable);
        }
    }

    void addTexts() {
        const std::vector<std::string> words = values();
        for (const std::string& word : words) {
            add(ProposalKind::Value, word, "a value of " + place_.variable);
        }
        const auto known = assigned();
        const bool files = place_.section == "units" || place_.section == "import" ||
                           std::ranges::any_of(known, [](const KnownVariable& each) {
                               return takesFiles(*each.variable);
                           });
        if (words.empty() && files) {
            addFiles();
        }
    }

    /// What lies in the directory that is written so far. Patterns name files from the unit file's
    /// directory, as paths do.
    void addFiles() {
        const std::size_t slash = place_.before.find_last_of("/\\");
        const std::string directory =
            slash == std::string::npos ? "." : place_.before.substr(0, slash + 1);
        if (directory.find_first_of("*?$") != std::string::npos) {
            return;
        }
        std::error_code error;
        auto entries = platform::listDirectory(
            cursor_.document.path().parent_path() / platform::pathFromUtf8(directory), error);
        std::ranges::sort(entries, {}, &platform::DirectoryEntry::name);
        for (const platform::DirectoryEntry& entry : entries) {
            if (!entry.name.starts_with('.')) {
                add(entry.directory ? ProposalKind::Directory : ProposalKind::File, entry.name, {},
                    {}, entry.directory ? entry.name + "/" : std::string());
            }
        }
    }

    // --- Project files ---

    void addSections() {
        for (const char* word : {"name", "import", "tools", "units", "profiles"}) {
            add(ProposalKind::Keyword, word, "a section of a project file");
        }
    }

    void addImports() {
        for (const BlockPlace& place : project_.blocks(BlockKind::Profile)) {
            add(ProposalKind::Profile, place.block->name.text, "a profile of this project");
        }
        for (const auto& [alias, imported] : project_.imports) {
            for (const BlockPlace& place : imported->blocks(BlockKind::Profile)) {
                add(ProposalKind::Profile, place.block->name.text, "a profile of " + alias);
            }
        }
        for (const auto& [name, path] : cursor_.workspace.registry().projects) {
            add(ProposalKind::Project, name, platform::pathToUtf8(path));
        }
    }

    const Cursor& cursor_;
    Evaluations& evaluations_;
    CompletionPlace place_;
    Spot spot_;
    const ProjectView& project_;
    const UnitView* unit_;
    Proposals proposals_;
};

}  // namespace

std::string signatureOf(const Block& block) {
    std::vector<std::string> names;
    for (const Name& parameter : block.parameters) {
        names.push_back(parameter.text);
    }
    return names.empty() ? block.name.text
                         : fmt::format("{}({})", block.name.text, joined(names, ", "));
}

std::vector<KnownVariable> knownVariables(std::string_view toolWord) {
    std::vector<KnownVariable> known;
    std::set<std::pair<std::string_view, VariableRole>> seen;
    for (const RegisteredGroup& registered : variableGroups()) {
        const auto& types = registered.toolTypes;
        const bool fits =
            toolWord.empty() || types.empty() || std::ranges::find(types, toolWord) != types.end();
        for (const Variable& variable : registered.group->variables) {
            if (fits && seen.emplace(variable.name, registered.group->role).second) {
                known.push_back({&variable, registered.group->role});
            }
        }
    }
    return known;
}

Proposals proposalsAt(const Cursor& cursor, Evaluations& evaluations) {
    return Proposer(cursor, evaluations).run();
}

}  // namespace Vesk::editor
