#include "driver/request_text.h"

#include <algorithm>
#include <fmt/format.h>

#include "cache/cache_record.h"
#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "cache/record_fields.h"
#include "driver/target_environment.h"
#include "driver/value_paths.h"

namespace Vesk {
namespace {

/// What a toolchain declares about itself; a new version of a compiler has the same command line.
constexpr std::string_view kToolchainPrefix = "toolchain_";

bool isToolchainSetting(const CiString& name) {
    return equalsIgnoringCase(std::string_view(name.str()).substr(0, kToolchainPrefix.size()),
                              kToolchainPrefix);
}

/// Where commands run that no directory is given for. Nothing in here changes it.
const std::filesystem::path& currentDirectory() {
    static const std::filesystem::path directory = [] {
        std::error_code gone;
        return std::filesystem::current_path(gone);
    }();
    return directory;
}

void appendTextInput(std::string& out, std::string_view name, std::string_view text) {
    appendTextAssignment(out, name, text);
    out += "0\n";
}

}  // namespace

RequestText::RequestText(const TrackingRoot& root, HiddenValues hidden)
    : root_(root), hidden_(std::move(hidden)) {}

Assignment RequestText::comparable(const Assignment& assignment) const {
    return hidden_.masked(relativeTo(root_, assignment));
}

std::string RequestText::directory(const std::filesystem::path& directory) const {
    const std::string below =
        trackedPath((directory.empty() ? currentDirectory() : directory) / "");
    const std::string_view stored = root_.stored(below);
    return stored.empty() ? "." : std::string(stored);
}

const std::string& RequestText::hashOf(const ToolEnvironment& environment) {
    if (hashed_ != &environment) {
        std::string text;
        for (const std::string& variable : environment.variables) {
            text.append(variable).append(1, '\0');
        }
        const ContentHash hash = hashText(text);
        hash_ = fmt::format("{:x}{:x}", hash.high, hash.low);
        hashed_ = &environment;
    }
    return hash_;
}

std::string RequestText::recipe(const Recipe& recipe) {
    std::vector<RecipeInput> inputs;
    const auto add = [&inputs](const char* name, std::string text) {
        inputs.push_back({textAssignment(name, std::move(text)), std::nullopt});
    };
    add("command", hidden_.masked(recipe.command));
    add("cwd", directory(recipe.workingDirectory));
    for (const std::string& command : recipe.furtherCommands) {
        add("command", hidden_.masked(command));
    }
    if (recipe.toolEnvironment) {
        add("surroundings", hashOf(*recipe.toolEnvironment));
    }
    for (const SupportFile& file : recipe.supportFiles) {
        add("arguments", hidden_.masked(file.content));
    }
    for (const RecipeInput& input : recipe.inputs) {
        inputs.push_back({comparable(input.assignment), std::nullopt});
        if (input.intermediate) {
            inputs.back().intermediate = comparable(*input.intermediate);
        }
    }
    std::string text;
    appendInputs(text, inputs);
    return text;
}

std::string RequestText::variables(const std::vector<Assignment>& variables) const {
    std::vector<RecipeInput> inputs;
    for (const Assignment& variable : variables) {
        inputs.push_back({comparable(variable), std::nullopt});
    }
    std::string text;
    appendInputs(text, inputs);
    return text;
}

std::string RequestText::lines(const std::vector<std::string>& files) const {
    std::vector<std::string_view> stored;
    for (const std::string& file : files) {
        stored.push_back(root_.stored(file));
    }
    std::ranges::sort(stored);
    std::string text;
    for (const std::string_view file : stored) {
        text += file;
        text += '\n';
    }
    return text;
}

std::string RequestText::target(const std::vector<DependencyStamp>& dependencies,
                                const std::vector<std::string>& reads,
                                const std::vector<std::string>& writes) const {
    std::string text;
    appendNumber(text, dependencies.size() + 2);
    for (const DependencyStamp& dependency : dependencies) {
        appendTextInput(text, std::string(requestField::kDependency) + dependency.name,
                        dependency.stamp);
    }
    appendTextInput(text, requestField::kReads, lines(reads));
    appendTextInput(text, requestField::kWrites, lines(writes));
    return text;
}

std::string RequestText::environment(const Context& target) const {
    std::string text;
    std::size_t count = 0;
    for (const auto& [name, assignment] : target.assignments()) {
        if (isToolchainSetting(name)) {
            appendComparableAssignment(text, comparable(assignment));
            ++count;
        }
    }
    for (const auto& [name, value] : environmentVariables(target)) {
        appendTextAssignment(text, std::string(kEnvironmentVariable) + "." + name,
                             hashInstead(value));
        ++count;
    }
    return std::to_string(count) + "\n" + text;
}

}  // namespace Vesk
