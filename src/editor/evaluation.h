// What a build would make of targets: their tools and values. It works on the models that builds
// use, made of the texts at hand; of a text with errors there is nothing to evaluate.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "driver/declared_tools.h"
#include "editor/workspace.h"
#include "project/implicit_layers.h"
#include "tools/toolbox.h"
#include "types/model/target.h"

namespace Vesk::editor {

/// What is known of one target.
struct Outlook {
    std::shared_ptr<const Target> target;  ///< null: its text has errors
    const Matcher* tool = nullptr;         ///< null: none fits
    std::string failure;                   ///< why the target or its tool could not be made
    std::vector<std::string> notes;
    bool needsToolchain = false;  ///< it names sources, and no toolchain of this machine fits
};

/// A project under a profile.
class Evaluation {
  public:
    /// The project file's text is read as it was when it last had no errors.
    Evaluation(Workspace& workspace, const ProjectView& project, std::string profile);

    /// Kept for as long as the target's text stays the same.
    const Outlook& outlookFor(const BlockPlace& place);

    /// The text that a variable of the target would have; nothing where only a build can tell, or
    /// where there is none.
    std::optional<std::string> valueOf(const BlockPlace& place, const std::string& variable);

    /// The tool's settings that a target reads, by name; null without a tool.
    const AssignmentMap* settingsFor(const BlockPlace& place);

  private:
    struct Kept {
        std::shared_ptr<const SyntaxTree> tree;
        std::map<std::string, Outlook> outlooks;  ///< by the target's name
    };

    void loadProject(const ProjectView& view, const std::string& profile);
    Outlook outlook(const BlockPlace& place) const;
    void forgetOld();

    Project project_;
    std::shared_ptr<Context> builtins_;
    ImplicitLayers layers_;
    Toolbox staticTools_;
    std::unique_ptr<DeclaredTools> declaredTools_;
    std::unordered_map<const SyntaxTree*, Kept> kept_;
};

/// The evaluations of a session, each made again when its project file changes.
class Evaluations {
  public:
    /// The profile under which values are shown; empty: none.
    void selectProfile(std::string profile);
    const std::string& profile() const noexcept { return profile_; }

    Evaluation& of(Workspace& workspace, const ProjectView& project);

  private:
    struct Made {
        std::uint64_t revision = 0;
        const Document* file = nullptr;
        std::unique_ptr<Evaluation> evaluation;
    };

    std::string profile_;
    std::map<std::string, Made> made_;  ///< by the project's root and name
};

}  // namespace Vesk::editor
