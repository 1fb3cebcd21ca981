#include "editor/evaluation.h"

#include <exception>
#include <utility>

#include "base/console.h"
#include "driver/builtin_variables.h"
#include "driver/input_context.h"
#include "driver/tool_choice.h"
#include "grammar/text_models.h"
#include "tools/static/static_tools.h"
#include "tools/tool_registry.h"

namespace Vesk::editor {
namespace {

constexpr int kNothing = console::level::kError + 1;
constexpr std::size_t kKeptAtLeast = 256;

/// While it lives, nothing is printed: what a build would say is no news here.
class Quiet {
  public:
    Quiet() : before_(console::threshold()) { console::setThreshold(kNothing); }
    ~Quiet() { console::setThreshold(before_); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

  private:
    int before_;
};

/// Runs something that may fail in any of vesk's ways; what went wrong goes into the outlook.
template <class Work>
bool succeeds(Outlook& outlook, Work work) {
    try {
        work();
        return true;
    } catch (const VeskException& error) {
        outlook.failure = error.text();
        outlook.notes = error.notes();
    } catch (const std::exception& error) {
        outlook.failure = error.what();
    }
    return false;
}

std::string displayName(const BlockPlace& place) {
    return place.block->name.text;
}

}  // namespace

Evaluation::Evaluation(Workspace& workspace, const ProjectView& project, std::string profile) {
    const Quiet quiet;
    createStaticTools(staticTools_);
    project_.root = project.root;
    project_.name = project.name;
    Outlook ignored;
    succeeds(ignored, [&] { loadProject(project, profile); });
    builtins_ = builtinVariables(project_.root);
    const Context nothing;
    layers_ = implicitLayers(project_, *builtins_, nothing);
    const auto layersOf = [this](const Project&) { return layers_; };
    const std::vector<const Project*> projects{&project_};
    if (!succeeds(ignored, [&] {
            declaredTools_ =
                std::make_unique<DeclaredTools>(workspace.registry(), projects, layersOf);
        })) {
        project_.tools.clear();
        declaredTools_ = std::make_unique<DeclaredTools>(Registry{}, projects, layersOf);
    }
}

void Evaluation::loadProject(const ProjectView& view, const std::string& profile) {
    if (view.file == nullptr) {
        return;
    }
    ProjectFile file = projectOfText(view.file->text(), view.file->path());
    project_.file = view.file->path();
    project_.profiles = std::move(file.profiles);
    for (ToolEntry& tool : file.tools) {
        if (tool.context && isKnownToolType(tool.context->textOf("tool_type").value_or(""))) {
            project_.tools.push_back(std::move(tool));
        }
    }
    if (const ProfileEntry* const found = project_.findProfile(profile)) {
        project_.profile = found->name;
    }
}

Outlook Evaluation::outlook(const BlockPlace& place) const {
    const Quiet quiet;
    Outlook outlook;
    if (!place.piece->tree->errors.empty()) {
        return outlook;
    }
    const std::string_view text = place.document->textOf(*place.piece);
    succeeds(outlook, [&] {
        const Unit unit = unitOfText(text, place.document->path());
        outlook.target = unit.findTarget(place.block->name.text);
    });
    if (!outlook.target) {
        return outlook;
    }
    std::shared_ptr<Context> trial;
    const bool chosen = succeeds(outlook, [&] {
        trial =
            InputContext::forToolChoice(outlook.target, displayName(place), {nullptr, layers_, {}});
        outlook.tool =
            chooseTool(*trial, displayName(place), staticTools_, declaredTools_->of(project_)).tool;
    });
    outlook.needsToolchain = !chosen && trial && namesToolchainSources(*trial);
    return outlook;
}

const Outlook& Evaluation::outlookFor(const BlockPlace& place) {
    Kept& kept = kept_[place.piece->tree.get()];
    if (!kept.tree) {
        kept.tree = place.piece->tree;
        if (kept_.size() > kKeptAtLeast && kept_.size() > 2 * place.document->pieces().size()) {
            forgetOld();
        }
    }
    const auto [entry, isNew] =
        kept_[place.piece->tree.get()].outlooks.try_emplace(place.block->name.text);
    if (isNew) {
        entry->second = outlook(place);
    }
    return entry->second;
}

/// What belongs to texts that nobody has any more.
void Evaluation::forgetOld() {
    std::erase_if(kept_, [](const auto& entry) { return entry.second.tree.use_count() == 1; });
}

std::optional<std::string> Evaluation::valueOf(const BlockPlace& place,
                                               const std::string& variable) {
    const Quiet quiet;
    const Outlook& known = outlookFor(place);
    std::optional<std::string> text;
    Outlook ignored;
    if (known.target) {
        succeeds(ignored, [&] {
            const auto context = InputContext::forToolChoice(known.target, displayName(place),
                                                             {settingsFor(place), layers_, {}});
            if (context->find(variable) != nullptr) {
                text = context->valueOfVariable(variable)->toDisplayString();
            }
        });
    }
    return text;
}

const AssignmentMap* Evaluation::settingsFor(const BlockPlace& place) {
    const Matcher* const tool = outlookFor(place).tool;
    return tool == nullptr ? nullptr : &tool->declaredSettings();
}

void Evaluations::selectProfile(std::string profile) {
    profile_ = std::move(profile);
    made_.clear();
}

Evaluation& Evaluations::of(Workspace& workspace, const ProjectView& project) {
    const std::string key = platform::pathToUtf8(project.root) + "\n" +
                            (project.file == nullptr ? project.name : std::string());
    Made& made = made_[key];
    const std::uint64_t revision = project.file == nullptr ? 0 : project.file->revision();
    if (!made.evaluation || made.revision != revision || made.file != project.file) {
        made = {revision, project.file, std::make_unique<Evaluation>(workspace, project, profile_)};
    }
    return *made.evaluation;
}

}  // namespace Vesk::editor
