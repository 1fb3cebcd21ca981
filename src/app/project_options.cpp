#include "app/project_options.h"

#include <algorithm>

#include "app/command_line.h"
#include "base/exception.h"
#include "project/implicit_layers.h"

namespace Vesk {

void applyProjectOptions(Settings& settings, const Project& project, const Context& builtins) {
    if (project.profiles.empty()) {
        return;
    }
    const std::shared_ptr<Context> context =
        mergedLayers(implicitLayers(project, builtins, Context()));
    context->evaluateConditions(Context::Unresolvable::isFalse);
    const Assignment* const options = context->find(kProjectOptions);
    if (options == nullptr) {
        return;
    }
    try {
        parseProjectOptions(context->valueOfVariable(kProjectOptions)->toString(), settings);
    } catch (...) {
        rethrowWithNote(options->place, std::string("in ") + kProjectOptions + " of project '" +
                                            project.name + "'");
    }
}

}  // namespace Vesk
