// What the tables of options and variables give for completion.

#include <algorithm>
#include <iterator>

#include "app/completion.h"
#include "app/options.h"
#include "base/ci_string.h"
#include "tools/variable_values.h"

namespace Vesk {
namespace {

std::string plain(std::string_view markdown) {
    std::string text(markdown);
    std::erase(text, '`');
    return text;
}

void addForms(std::vector<Candidate>& candidates, const Option& option) {
    const std::string meaning(option.meaning);
    if (!option.shortForm.empty()) {
        candidates.push_back({"-" + std::string(option.shortForm), meaning});
    }
    const std::string name = "--" + std::string(option.longForm);
    if (option.form != ArgumentForm::Attached) {
        candidates.push_back({name, meaning});
    }
    if (option.form == ArgumentForm::Attached || option.form == ArgumentForm::AttachedIfAny) {
        candidates.push_back({name + "=", meaning});
    }
}

template <class Use>
void forEachInput(Use use) {
    for (const RegisteredGroup& registered : registeredGroups()) {
        if (registered.group->role == VariableRole::Input) {
            std::ranges::for_each(registered.group->variables, use);
        }
    }
}

}  // namespace

std::vector<Candidate> optionCandidates() {
    std::vector<Candidate> candidates;
    for (const Option& option : options()) {
        if (!option.section.empty()) {
            addForms(candidates, option);
        }
    }
    return candidates;
}

std::vector<Candidate> variableCandidates() {
    std::vector<Candidate> candidates;
    forEachInput([&](const Variable& variable) {
        candidates.push_back({std::string(variable.name) + "=", plain(variable.meaning)});
    });
    return candidates;
}

std::vector<std::string> tabledValues(std::string_view variable) {
    std::vector<std::string> values;
    forEachInput([&](const Variable& each) {
        if (equalsIgnoringCase(each.name, variable)) {
            std::ranges::move(valuesOf(each), std::back_inserter(values));
        }
    });
    return values;
}

}  // namespace Vesk
