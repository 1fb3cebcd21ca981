#include "app/positionals.h"

#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/ci_string.h"
#include "base/exception.h"
#include "base/text.h"
#include "grammar/loaders.h"
#include "platform/system.h"
#include "types/values/identifier_value.h"
#include "types/values/simple_values.h"

namespace Vesk {
namespace {

bool contains(std::string_view text, std::string_view part) noexcept {
    return text.find(part) != std::string_view::npos;
}

bool hasTarget(const Project& project, const DependencyReference& reference) {
    if (!reference.ns.empty()) {
        return false;
    }
    const auto unit = project.findUnit(reference.unit);
    return unit && unit->findTarget(reference.target);
}

std::optional<DependencyReference> targetNamedBy(const std::string& word, const Project& project) {
    if (contains(word, "::") && !contains(word, "=")) {
        return splitDependencyString(word);
    }
    try {
        DependencyReference reference = splitDependencyString(word);
        if (hasTarget(project, reference)) {
            return reference;
        }
    } catch (const std::runtime_error&) {
        // Not in the form of a target's name: a profile or an assignment.
    }
    return std::nullopt;
}

void takeProfile(Positionals& taken, const std::string& name) {
    if (!taken.profile.empty()) {
        throw VeskException("Profile already set to '" + taken.profile +
                            "'. It can only be set once.");
    }
    taken.profile = name;
}

std::string suggestionFor(const std::string& word, const Project& project) {
    std::vector<std::string> names = project.mainUnit()->targetNames();
    for (std::string& name : project.profileNames()) {
        names.push_back(std::move(name));
    }
    return didYouMean(word, names);
}

/// How a shell hands on a text with its quotes, and how to do without them.
std::string howToGiveText(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string name(trimmed(word.substr(0, equals)));
    const std::string text = equals == std::string::npos ? "text" : word.substr(equals + 1);
    const bool plain = text.find_first_of(" \t\"'$&|;<>()*?\\`") == std::string::npos;
    const std::string define = "--define=" + name + "=" + text;
    const std::string quoted =
        platform::kWindows ? name + R"(=\")" + text + R"(\")" : "'" + name + "=\"" + text + "\"'";
    return fmt::format("for text write {}, or {} with quotes that reach vesk",
                       plain                ? define
                       : platform::kWindows ? '"' + define + '"'
                                            : "'" + define + "'",
                       quoted);
}

void addHelp(VeskException& error, const std::string& word, const Project& project) {
    error.addNote("'" + word + "' names no target of unit '" + project.mainUnit()->name +
                  "' and no profile, so it was read as an assignment");
    error.addNote(suggestionFor(word, project));
    if (contains(word, "=")) {
        error.addNote(howToGiveText(word));
    }
}

/// Whether the text after the operator starts with the value that was read. It does not when
/// characters were skipped that begin no value: without its quotes, "-O2 -g" is read as O2. What
/// follows a value does not matter.
bool startsWithValue(const VeskValue& value, std::string_view word) {
    const std::string_view written = trimmed(word.substr(word.find('=') + 1));
    if (valueAs<VeskInt>(&value) != nullptr) {
        return written.find_first_of("0123456789") == (written.starts_with('-') ? 1U : 0U);
    }
    const auto* identifier = valueAs<VeskIdentifier>(&value);
    return identifier == nullptr || written.starts_with(identifier->path.segments.front().name);
}

/// Of a dotted name.
std::string_view firstName(std::string_view path) noexcept {
    path = trimmed(path);
    return path.substr(0, path.find_first_of(".["));
}

void reportMisreading(const Assignment& assignment, const std::string& word, const Project& project,
                      Doubts doubts) {
    if (assignment.op == AssignOperator::None) {
        reportDoubt(doubts,
                    "'" + word +
                        "' is neither a target nor a profile; as an assignment it clears the "
                        "variable '" +
                        assignment.name.str() + "'.",
                    {suggestionFor(word, project)});
    } else if (assignment.value && !startsWithValue(*assignment.value, word)) {
        reportDoubt(doubts, "'" + word + "' was read as '" + assignment.toDisplayString() + "'.",
                    {howToGiveText(word)});
    }
}

Assignment parsedAssignment(const std::string& word, const Project& project) {
    try {
        return parseAssignment(word, std::filesystem::current_path());
    } catch (VeskException& error) {
        addHelp(error, word, project);
        throw;
    }
}

}  // namespace

Positionals classifyPositionals(const std::vector<std::string>& words, const Project& project) {
    Positionals taken;
    for (const std::string& word : words) {
        if (auto reference = targetNamedBy(word, project)) {
            if (taken.target) {
                taken.others.push_back({word, true});
            } else {
                taken.target = std::move(reference);
            }
        } else if (const ProfileEntry* profile = project.findProfile(word)) {
            takeProfile(taken, profile->name);
        } else {
            taken.others.push_back({word});
        }
    }
    return taken;
}

Assignment parsePositionalAssignment(const std::string& word, const Project& project,
                                     Doubts doubts) {
    Assignment assignment = parsedAssignment(word, project);
    reportMisreading(assignment, word, project, doubts);
    return assignment;
}

void rethrowWithLostQuotes(const Positionals& words, const std::string& missing) {
    for (const OtherWord& word : words.others) {
        const std::size_t equals = word.text.find('=');
        if (!word.isTarget && equals != std::string::npos &&
            equalsIgnoringCase(firstName(word.text.substr(equals + 1)), firstName(missing))) {
            rethrowWithNote("'" + word.text + "' on the command line names that variable; " +
                            howToGiveText(word.text));
        }
    }
    throw;
}

}  // namespace Vesk
