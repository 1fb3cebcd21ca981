#include "app/request.h"

#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

void loadImports(const Workspace& workspace, const Positionals& words,
                 const UserRegistry& registry) {
    if (!workspace.project->standalone()) {
        workspace.loader->loadImports(*workspace.project, words.profile);
    }
    if (registry.isOffered() && words.target && !words.target->ns.empty()) {
        workspace.loader->loadRequested(*workspace.project, words.target->ns);
    }
}

void refuseSecondTarget(const std::string& word, Doubts doubts) {
    constexpr const char* kText = "Only one target name can be specified";
    if (doubts == Doubts::Refuse) {
        VeskException error(kText);
        error.addNote("'" + word + "' is a second one");
        throw error;
    }
    console::error(kText);
}

/// A plain text: nothing in it is read as the language.
Assignment definition(const std::string& name, const std::string& text) {
    Assignment assignment;
    assignment.name = CiString(name);
    assignment.op = AssignOperator::Assign;
    assignment.value = std::make_shared<VeskRawString>(text);
    return assignment;
}

/// As they are written; `merged` gets what they amount to.
ContextTemplate readAssignments(const Positionals& words, const Settings& settings,
                                const Project& project, Context& merged) {
    ContextTemplate written;
    for (const auto& [word, isTarget] : words.others) {
        if (isTarget) {
            refuseSecondTarget(word, settings.doubts);
            continue;
        }
        written.assignments.push_back(parsePositionalAssignment(word, project, settings.doubts));
        try {
            fill(merged, written.assignments.back());
        } catch (...) {
            rethrowWithNote("in '" + word + "' on the command line");
        }
    }
    for (const auto& [name, text] : settings.definitions) {
        written.assignments.push_back(definition(name, text));
        fill(merged, written.assignments.back());
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

Positionals selectProfile(const Settings& settings, const Workspace& workspace,
                          const UserRegistry& registry) {
    Positionals words = classifyPositionals(settings.positionals, *workspace.project);
    loadImports(workspace, words, registry);
    return words;
}

Request readRequest(const Settings& settings, Workspace& workspace, Positionals words) {
    Request request;
    request.words = std::move(words);
    request.assignments = std::make_shared<Context>();
    request.overrides = request.assignments;
    ContextTemplate written =
        readAssignments(request.words, settings, *workspace.project, *request.assignments);
    if (workspace.commandLineTarget) {
        workspace.commandLineTarget->setBody(written);
        request.overrides = withoutAppends(*request.assignments);
    }
    return request;
}

}  // namespace Vesk
