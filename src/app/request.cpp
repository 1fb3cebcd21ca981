#include "app/request.h"

#include <utility>

#include "base/console.h"
#include "base/exception.h"

namespace Vesk {
namespace {

void loadImports(const Workspace& workspace, const Positionals& words, const Registry* registry) {
    if (!workspace.project->standalone()) {
        workspace.loader->loadImports(*workspace.project, words.profile);
    }
    if (registry != nullptr && words.target && !words.target->ns.empty()) {
        workspace.loader->loadRequested(*workspace.project, words.target->ns);
    }
}

/// As they are written; `merged` gets what they amount to.
ContextTemplate readAssignments(const Positionals& words, const Project& project, Context& merged) {
    ContextTemplate written;
    for (const auto& [word, isTarget] : words.others) {
        if (isTarget) {
            console::error("Only one target name can be specified");
            continue;
        }
        written.assignments.push_back(parsePositionalAssignment(word, project));
        try {
            fill(merged, written.assignments.back());
        } catch (...) {
            rethrowWithNote("in '" + word + "' on the command line");
        }
    }
    return written;
}

std::shared_ptr<Context> withoutAppends(const Context& context) {
    auto assigned = std::make_shared<Context>();
    for (const auto& [name, assignment] : context.assignments()) {
        if (assignment.op != AssignOperator::Append && assignment.written.empty()) {
            assigned->addAssignment(deepCopy(assignment), ModifierMode::Copy);
        }
    }
    return assigned;
}

}  // namespace

Request readRequest(const Settings& settings, Workspace& workspace, const UserRegistry& registry) {
    Request request;
    request.words = classifyPositionals(settings.positionals, *workspace.project);
    loadImports(workspace, request.words, registry.ifRead());
    request.assignments = std::make_shared<Context>();
    request.overrides = request.assignments;
    ContextTemplate written =
        readAssignments(request.words, *workspace.project, *request.assignments);
    if (workspace.commandLineTarget) {
        workspace.commandLineTarget->setBody(std::move(written));
        request.overrides = withoutAppends(*request.assignments);
    }
    return request;
}

}  // namespace Vesk
