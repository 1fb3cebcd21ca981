// What the tables of options and variables give for completion.

#include <algorithm>

#include "app/completion.h"
#include "app/options.h"
#include "base/ci_string.h"
#include "tools/variables.h"

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

bool isChoice(const Variable& variable) noexcept {
    return variable.type.starts_with('`') ||
           (variable.type == "string" && variable.meaning.starts_with('`'));
}

/// The words in backquotes at the start of a text, as in "`create` or `append`".
std::vector<std::string> wordsAtStart(std::string_view text) {
    std::vector<std::string> words;
    while (text.starts_with('`')) {
        const std::size_t end = text.find('`', 1);
        words.emplace_back(text.substr(1, end - 1));
        text.remove_prefix(std::min(text.size(), end + 1));
        if (text.starts_with(" (")) {  // "`object` (compile only), "
            text.remove_prefix(std::min(text.size(), text.find(')') + 1));
        }
        for (const std::string_view between : {", ", " or "}) {
            if (text.starts_with(between)) {
                text.remove_prefix(between.size());
                break;
            }
        }
    }
    return words;
}

/// "`-fuse-ld=`" is what a variable becomes, not what it can be.
bool isValue(const std::string& word) {
    return !word.empty() && word.front() != '-' && word.front() != '/' && word.back() != '=';
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
        if (equalsIgnoringCase(each.name, variable) && isChoice(each)) {
            std::ranges::copy_if(
                wordsAtStart(each.type.starts_with('`') ? each.type : each.meaning),
                std::back_inserter(values), isValue);
        }
    });
    return values;
}

}  // namespace Vesk
