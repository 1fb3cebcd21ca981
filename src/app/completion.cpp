#include "app/completion.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

#include "app/command_line.h"
#include "app/completion_projects.h"
#include "app/options.h"
#include "base/attempt.h"
#include "base/ci_string.h"
#include "tools/tool_registry.h"
#include "types/context/context.h"

namespace Vesk {
namespace {

using Candidates = std::vector<Candidate>;

/// What may stand for the argument that the table of options calls so.
struct ListedValues {
    std::string_view argument;
    std::array<std::string_view, 4> values;
};

constexpr std::array kChoices = {
    ListedValues{"STYLE", {"auto", "line", "plain", "none"}},
    ListedValues{"[=KIND]", {"c", "c++", "lib"}},
    ListedValues{"[=stale]", {"stale"}},
    ListedValues{"[=full]", {"full"}},
};

/// A command line up to the word that is completed.
class CommandLine {
  public:
    CommandLine(const std::vector<std::string>& words, const Settings& before)
        : settings_(before), word_(words.empty() ? std::string() : words.back()) {
        if (words.size() > 1) {
            previous_ = words[words.size() - 2];
            read({words.begin(), words.end() - 1});
        }
        console::setThreshold(console::level::kError + 1);
    }

    Candidates all() {
        if (const Option* const option = optionBefore(); option != nullptr) {
            return option->form == ArgumentForm::Unit ? unitsToList() : Candidates();
        }
        if (word_.starts_with('-')) {
            const std::size_t equals = word_.find('=');
            return equals == std::string::npos ? optionCandidates()
                                               : argumentsOf(word_.substr(0, equals));
        }
        if (const std::size_t equals = word_.find('='); equals != std::string::npos) {
            return assignments(word_.substr(0, equals), "\"");
        }
        return names();
    }

  private:
    void read(const std::vector<std::string>& words) {
        // The last word may want an argument, and any may be wrong.
        succeeds([&] { parseCommandLine(words, settings_); });
    }

    /// The option of which the word is the argument, one that takes any word or a unit.
    const Option* optionBefore() const {
        const std::string_view name = withoutDashes(previous_);
        for (const Option& option : options()) {
            const bool takesWord =
                option.form == ArgumentForm::Path || option.form == ArgumentForm::Unit;
            if (takesWord && name.size() < previous_.size() &&
                (equalsIgnoringCase(name, option.longForm) ||
                 equalsIgnoringCase(name, option.shortForm))) {
                return &option;
            }
        }
        return nullptr;
    }

    static std::string_view withoutDashes(std::string_view word) {
        for (int dashes = 0; dashes < 2 && word.starts_with('-'); ++dashes) {
            word.remove_prefix(1);
        }
        return word;
    }

    Candidates argumentsOf(const std::string& start) {
        Candidates found;
        for (const Option& option : options()) {
            if (!option.section.empty() &&
                equalsIgnoringCase(withoutDashes(start), option.longForm)) {
                addArguments(found, option);
            }
        }
        for (Candidate& candidate : found) {
            candidate.text.insert(0, start + "=");
        }
        return found;
    }

    void addArguments(Candidates& found, const Option& option) {
        for (const ListedValues& choice : kChoices) {
            if (choice.argument == option.argument) {
                std::ranges::transform(choice.values, std::back_inserter(found),
                                       [](std::string_view value) {
                                           return Candidate{std::string(value), {}};
                                       });
            }
        }
        if (option.argument == "VARIABLE") {
            found = variableCandidates();
            std::ranges::for_each(found, [](Candidate& each) { each.text.pop_back(); });
        } else if (option.argument == "NAME=TEXT") {
            found = definitions(word_.substr(word_.find('=') + 1));
        } else if (option.argument == "[=PATTERN]") {
            addTests(found);
        }
        std::erase_if(found, [](const Candidate& each) { return each.text.empty(); });
    }

    Candidates definitions(const std::string& written) {
        const std::size_t equals = written.find('=');
        return equals == std::string::npos ? variableCandidates()
                                           : assignments(written.substr(0, equals), "");
    }

    void addTests(Candidates& found) {
        for (OutlinedTarget& target : project().targets("")) {
            if (target.isTest) {
                found.push_back({std::move(target.name), std::move(target.description)});
            }
        }
    }

    /// "NAME=value" for what can be told of the variable.
    Candidates assignments(const std::string& name, std::string_view quote) {
        std::vector<std::string> values = tabledValues(name);
        const auto take = [&](const ToolEntry& tool) {
            const Assignment* const value = tool.context ? tool.context->find(name) : nullptr;
            if (value != nullptr && value->value && name.starts_with("toolchain_")) {
                values.push_back(value->value->toString());
            }
        };
        for (const auto& [toolName, tool] : registry().tools) {
            take(tool);
        }
        std::ranges::for_each(project().file.tools, take);
        std::ranges::sort(values);
        values.erase(std::unique(values.begin(), values.end()), values.end());
        Candidates found;
        for (const std::string& value : values) {
            found.push_back({name + "=" + std::string(quote) + value + std::string(quote), {}});
        }
        return found;
    }

    Candidates unitsToList() {
        Candidates found;
        for (const UnitEntry& unit : project().file.units) {
            found.push_back({unit.name.empty() ? kMainUnitAlias : unit.name, "a unit"});
        }
        addProjects(found);
        return found;
    }

    Candidates names() {
        Candidates found;
        if (settings_.runMode == RunMode::Format || settings_.runMode == RunMode::Lint) {
            return found;  // these take files, which a shell offers where there is nothing else
        }
        const std::size_t colons = word_.find("::");
        const std::size_t slash = word_.find('/');
        if (slash < colons) {
            const std::string name = word_.substr(0, slash);
            addNamesOf(found, projectCalled(name, project(), registry()), name + "/");
            return found;
        }
        if (colons == std::string::npos) {
            addTargets(found, project().targets(""), "");
            addProfiles(found);
            addProjects(found);
            addVariables(found);
        }
        addNamesOf(found, project(), "");
        return found;
    }

    /// "unit::target" behind "unit::", else "unit::".
    void addNamesOf(Candidates& found, const ProjectAtHand& from, const std::string& start) {
        const std::size_t colons = word_.find("::");
        if (colons != std::string::npos) {
            const std::string unit = word_.substr(start.size(), colons - start.size());
            addTargets(found, from.targets(unit), start + unit + "::");
            return;
        }
        for (const UnitEntry& unit : from.file.units) {
            if (!unit.name.empty()) {
                found.push_back({start + unit.name + "::", "a unit"});
            }
        }
    }

    static void addTargets(Candidates& found, std::vector<OutlinedTarget> targets,
                           const std::string& start) {
        for (OutlinedTarget& target : targets) {
            found.push_back({start + target.name, std::move(target.description)});
        }
    }

    void addProfiles(Candidates& found) {
        for (const ProfileEntry& profile : project().file.profiles) {
            if (!equalsIgnoringCase(profile.name, kDefaultProfile)) {
                found.push_back({profile.name, "a profile"});
            }
        }
    }

    void addProjects(Candidates& found) {
        for (ProjectName& each : projectNames(project(), registry())) {
            found.push_back({std::move(each.name) + "/", std::move(each.place)});
        }
    }

    /// There are more than anybody wants to see who has written nothing yet.
    void addVariables(Candidates& found) const {
        if (!word_.empty()) {
            std::ranges::move(variableCandidates(), std::back_inserter(found));
        }
    }

    const ProjectAtHand& project() {
        if (!project_) {
            project_ = projectAtHand(settings_);
        }
        return *project_;
    }

    const Registry& registry() {
        if (!registry_) {
            registry_ = registryAtHand();
        }
        return *registry_;
    }

    Settings settings_;
    std::string word_;
    std::string previous_;
    std::optional<ProjectAtHand> project_;
    std::optional<Registry> registry_;
};

/// Those that begin like the word; where there is none, without regard to case.
Candidates thatBegin(const std::string& word, Candidates candidates) {
    const auto isOther = [&](const Candidate& each) { return !each.text.starts_with(word); };
    if (std::ranges::all_of(candidates, isOther)) {
        std::erase_if(candidates, [&](const Candidate& each) {
            return !equalsIgnoringCase(each.text.substr(0, word.size()), word);
        });
    } else {
        std::erase_if(candidates, isOther);
    }
    return candidates;
}

}  // namespace

std::vector<Candidate> completions(const std::vector<std::string>& words, const Settings& before) {
    const std::string word = words.empty() ? std::string() : words.back();
    Candidates found = thatBegin(word, CommandLine(words, before).all());
    const auto sameText = [](const Candidate& a, const Candidate& b) { return a.text == b.text; };
    std::ranges::stable_sort(found, {}, &Candidate::text);
    found.erase(std::unique(found.begin(), found.end(), sameText), found.end());
    return found;
}

}  // namespace Vesk
