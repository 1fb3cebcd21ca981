#include "project/implicit_layers.h"

#include "platform/files.h"

namespace Vesk {
namespace {

void addProfile(ImplicitLayers& layers, const Project& project, std::string_view name) {
    if (const ProfileEntry* entry = project.findProfile(name)) {
        layers.push_back(entry->context);
    }
}

}  // namespace

ImplicitLayers implicitLayers(const Project& project, const Context& base,
                              const Context& overrides) {
    const std::shared_ptr<Context> under = base.deepCopy();
    under->addAssignment(textAssignment("PROJECT_ROOT", platform::pathToUtf8(project.root)),
                         ModifierMode::Keep);
    ImplicitLayers layers{under};
    addProfile(layers, project, kDefaultProfile);
    if (!project.profile.empty() && !equalsIgnoringCase(project.profile, kDefaultProfile)) {
        addProfile(layers, project, project.profile);
    }
    const auto over = std::make_shared<Context>();
    over->addAssignment(textAssignment("PROFILE", project.profile), ModifierMode::Keep);
    over->mergeContext(overrides, ModifierMode::Keep);
    layers.push_back(over);
    return layers;
}

std::shared_ptr<Context> mergedLayers(const ImplicitLayers& layers) {
    auto context = std::make_shared<Context>();
    for (const std::shared_ptr<const Context>& layer : layers) {
        context->mergeContext(*layer, ModifierMode::Keep);
    }
    return context;
}

}  // namespace Vesk
