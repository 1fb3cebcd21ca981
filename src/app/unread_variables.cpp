#include "app/unread_variables.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "base/source_place.h"
#include "base/text.h"
#include "driver/mentions.h"
#include "tools/tool_registry.h"

namespace Vesk {
namespace {

std::set<CiString> documentedNames() {
    std::set<CiString> names;
    for (const RegisteredGroup& group : registeredGroups()) {
        for (const Variable& variable : group.group->variables) {
            names.emplace(std::string(variable.name));
        }
    }
    return names;
}

/// A variable that a target or tool has itself counts as one that somebody knows.
bool knows(const Target& target, const CiString& name) {
    if (!target.mayName(name.str())) {
        return false;
    }
    return std::ranges::find(target.body().assignments, name, &Assignment::name) !=
               target.body().assignments.end() ||
           std::ranges::any_of(
               target.parameters,
               [&name](const std::string& parameter) { return name == CiString(parameter); }) ||
           mentions(target, name);
}

bool knows(const Project& project, const CiString& name) {
    return std::ranges::any_of(project.tools,
                               [&name](const ToolEntry& tool) {
                                   return tool.context->assignments().contains(name) ||
                                          mentions(*tool.context, name);
                               }) ||
           std::ranges::any_of(
               project.profiles,
               [&name](const ProfileEntry& profile) { return mentions(*profile.context, name); }) ||
           std::ranges::any_of(project.units(), [&name](const auto& unit) {
               return std::ranges::any_of(
                   unit->targets, [&name](const auto& target) { return knows(*target, name); });
           });
}

class Check {
  public:
    Check(Doubts doubts, const Session& session)
        : doubts_(doubts), session_(session), documented_(documentedNames()) {}

    /// What is typed for one build is meant for something in it.
    void runOverCommandLine() const {
        for (const Assignment* assignment : unread(*session_.request.assignments)) {
            report(*assignment, "the command line", suggestionFor(assignment->name));
        }
    }

    /// A profile may hold what units are yet to read, unless it is nearly called like something.
    void run(const ProfileEntry& profile) const {
        for (const Assignment* assignment : unread(*profile.context)) {
            const std::string suggestion = suggestionFor(assignment->name);
            if (!suggestion.empty()) {
                report(*assignment, "profile '" + profile.name + "'", suggestion);
            }
        }
    }

  private:
    std::vector<const Assignment*> unread(const Context& context) const {
        std::vector<const Assignment*> found;
        for (const auto& [name, assignment] : context.assignments()) {
            const bool gives = assignment.modifier == AssignModifier::None &&
                               assignment.op != AssignOperator::None;
            if (gives && !isRead(name)) {
                found.push_back(&assignment);
            }
        }
        return found;
    }

    void report(const Assignment& assignment, const std::string& where,
                const std::string& suggestion) const {
        std::vector<std::string> notes = placeLines(assignment.place);
        notes.push_back(suggestion);
        reportDoubt(doubts_,
                    "Nothing reads the variable '" + assignment.name.str() + "' of " + where + ".",
                    notes);
    }

    bool isRead(const CiString& name) const {
        return documented_.contains(name) || mentions(*session_.request.assignments, name) ||
               std::ranges::any_of(session_.catalog.projects(), [&name](const Project* project) {
                   return knows(*project, name);
               });
    }

    std::string suggestionFor(const CiString& name) const {
        const std::vector<std::string> meant = meantBy(name);
        if (!meant.empty()) {
            return didYouMean(meant);
        }
        std::vector<std::string> names;
        std::ranges::transform(documented_, std::back_inserter(names), &CiString::str);
        return didYouMean(name, names);
    }

    Doubts doubts_;
    const Session& session_;
    std::set<CiString> documented_;
};

}  // namespace

void reportUnreadVariables(Doubts doubts, const Session& session) {
    const Project& project = session.catalog.active();
    const ProfileEntry* const profile = project.findProfile(project.profile);
    const Context& given = *session.request.assignments;
    if (given.assignments().empty() && profile == nullptr) {
        return;
    }
    const Check check(doubts, session);
    check.runOverCommandLine();
    if (profile != nullptr) {
        check.run(*profile);
    }
}

}  // namespace Vesk
