#include "tools/builder.h"

#include <utility>

#include "base/console.h"

namespace Vesk {

Builder::Builder(AssignmentMap subjects, AssignmentMap settings)
    : subjects_(std::move(subjects)), settings_(std::move(settings)) {}

void Builder::prepare(const Recipe&, BuildEnv&) {}

Overlap Builder::overlap(const TargetContext&) const {
    return Overlap::Never;
}

std::shared_ptr<Context> Builder::expectedCompletion(TargetContext& target) {
    return complete(target, 0);
}

LookedFor Builder::lookedFor(const TargetContext&) const {
    return {};
}

MatchResult Builder::match(const Context& target) const {
    MatchResult result;
    result.note = MatchNote::BuildPossible;
    for (const auto& [key, subject] : subjects_) {
        const Assignment* assignment = target.find(key);
        if (assignment != nullptr && assignment->modifier == AssignModifier::Output) {
            console::message(console::level::kSubject, console::colour::kReport,
                             "Skipping '{}' as match subject: output variable", assignment->name);
            result.note = MatchNote::BuildImpossible;
            break;
        }
    }

    for (const auto& [key, subject] : subjects_) {
        const Assignment* assignment = target.find(key);
        if (assignment == nullptr || !assignment->value) {
            continue;
        }
        const bool equal =
            subject.value && subject.value->toString() == assignment->value->toString();
        result.matches.emplace(key, equal ? MatchKind::ExactMatch : MatchKind::PartialMatch);
    }
    return result;
}

std::vector<Recipe> Builder::commandRecipes(TargetContext&) {
    return {};
}

std::vector<Command> Builder::commandsOf(const Recipe& recipe, const BuildEnv&) const {
    return commandsIn(recipe);
}

std::vector<Command> commandsIn(const Recipe& recipe) {
    std::vector<Command> commands = {recipe};
    for (const std::string& text : recipe.furtherCommands) {
        commands.push_back(recipe);
        commands.back().command = text;
    }
    return commands;
}

std::vector<Assignment> Builder::variablesRead(const Context& target) const {
    AssignmentMap read;
    for (const auto& [name, setting] : settings_) {
        const Assignment* own = target.find(name);
        read.insert_or_assign(name, own != nullptr && own->value ? *own : setting);
    }
    for (const auto& [name, subject] : subjects_) {
        if (const Assignment* own = target.find(name)) {
            read.insert_or_assign(name, *own);
        }
    }
    std::vector<Assignment> variables;
    for (auto& [name, assignment] : read) {
        if (assignment.value) {
            variables.push_back(std::move(assignment));
        }
    }
    return variables;
}

ValuePtr Builder::settingOr(const Context& target, std::string_view name) const {
    const Assignment* assignment = target.find(name);
    if (assignment != nullptr && assignment->value) {
        return assignment->value;
    }
    const auto setting = settings_.find(name);
    return setting == settings_.end() ? nullptr : setting->second.value;
}

}  // namespace Vesk
