#include "driver/cache_request.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <optional>
#include <unordered_set>

#include "cache/cache_text.h"
#include "cache/file_state.h"
#include "cache/record_fields.h"
#include "platform/files.h"
#include "types/context_value.h"
#include "types/list_value.h"
#include "types/string_values.h"

namespace Vesk {
namespace {

/// What a toolchain declares about itself; a new version of a compiler has the same command line.
constexpr std::string_view kToolchainPrefix = "toolchain_";

using PathSink = std::function<void(std::string)>;

void collectPaths(const VeskValue* value, const PathSink& take);

void collectPaths(const Context& context, const PathSink& take) {
    for (const auto& [name, assignment] : context.assignments()) {
        collectPaths(assignment.value.get(), take);
    }
}

void collectPaths(const VeskValue* value, const PathSink& take) {
    if (const auto* path = valueAs<VeskPathString>(value)) {
        if (!path->text.empty()) {
            take(trackedPath(path->text, path->baseDirectory));
        }
    } else if (const auto* list = valueAs<VeskList>(value)) {
        for (const ValuePtr& item : list->items) {
            collectPaths(item.get(), take);
        }
    } else if (const auto* nested = valueAs<VeskContext>(value)) {
        if (nested->owns()) {  // else it is a context that somebody else has, such as a dependant's
            collectPaths(*nested->context(), take);
        }
    }
}

void sortUnique(std::vector<std::string>& files) {
    std::ranges::sort(files);
    const auto rest = std::ranges::unique(files);
    files.erase(rest.begin(), rest.end());
}

/// The value with every path below the root written as seen from there.
ValuePtr relativeValue(const ValuePtr& value, const TrackingRoot& root) {
    if (const auto* path = valueAs<VeskPathString>(value.get())) {
        const std::string tracked = trackedPath(path->text, path->baseDirectory);
        return std::make_shared<VeskPathString>(std::string(root.stored(tracked)),
                                                std::filesystem::path());
    }
    if (const auto* list = valueAs<VeskList>(value.get())) {
        std::vector<ValuePtr> items;
        for (const ValuePtr& item : list->items) {
            items.push_back(relativeValue(item, root));
        }
        return std::make_shared<VeskList>(std::move(items));
    }
    return value;
}

Assignment relativeAssignment(const Assignment& assignment, const TrackingRoot& root) {
    Assignment relative = assignment;
    relative.value = relativeValue(assignment.value, root);
    return relative;
}

std::string storedDirectory(const std::filesystem::path& directory, const TrackingRoot& root) {
    const std::string below = trackedPath(directory / "");
    const std::string_view stored = root.stored(below);
    return stored.empty() ? "." : std::string(stored);
}

/// Where commands run that no directory is given for. Nothing in here changes it.
const std::filesystem::path& currentDirectory() {
    static const std::filesystem::path directory = [] {
        std::error_code gone;
        return std::filesystem::current_path(gone);
    }();
    return directory;
}

/// Null for a target that sets none.
const Context* environmentOf(const TargetContext& target) {
    const Assignment* variables = target.find(kEnvironmentVariable);
    const auto* nested =
        variables != nullptr ? valueAs<VeskContext>(variables->value.get()) : nullptr;
    return nested != nullptr ? nested->context().get() : nullptr;
}

class RequestMaker {
  public:
    RequestMaker(const TargetInputs& question, const TrackingRoot& root)
        : question_(question), root_(root), hidden_(question.hidden) {
        if (const Context* variables = environmentOf(question.target)) {
            hidden_.add(*variables);
        }
    }

    CacheRequest make() {
        request_.parts.resize(kFirstRecipePart);
        for (const Recipe& recipe : question_.recipes) {
            request_.parts.push_back(recipePart(recipe));
        }
        request_.parts[kSurroundingsPart] = surroundings();
        request_.parts[kVariablesPart].inputs = variables();
        request_.environment = environment();
        return std::move(request_);
    }

  private:
    /// Stands for the variables of the recipe's tool environment, which is mostly one for all
    /// recipes of a target.
    const std::string& markOf(const Recipe& recipe) {
        if (marked_ != recipe.toolEnvironment.get()) {
            std::string text;
            for (const std::string& variable : recipe.toolEnvironment->variables) {
                text.append(variable).append(1, '\0');
            }
            const ContentHash hash = hashText(text);
            mark_ = fmt::format("{:x}{:x}", hash.high, hash.low);
            marked_ = recipe.toolEnvironment.get();
        }
        return mark_;
    }

    CacheRequest::Part recipePart(const Recipe& recipe) {
        CacheRequest::Part part;
        std::vector<RecipeInput> inputs = {
            {textAssignment("command", hidden_.masked(recipe.command)), std::nullopt}};
        const std::filesystem::path& directory =
            recipe.workingDirectory.empty() ? currentDirectory() : recipe.workingDirectory;
        inputs.push_back({textAssignment("cwd", storedDirectory(directory, root_)), std::nullopt});
        for (const std::string& command : recipe.furtherCommands) {
            inputs.push_back({textAssignment("command", hidden_.masked(command)), std::nullopt});
        }
        if (recipe.toolEnvironment) {
            inputs.push_back({textAssignment("surroundings", markOf(recipe)), std::nullopt});
        }
        for (const SupportFile& file : recipe.supportFiles) {
            inputs.push_back(
                {textAssignment("arguments", hidden_.masked(file.content)), std::nullopt});
        }
        for (const RecipeInput& input : recipe.inputs) {
            RecipeInput& copy =
                inputs.emplace_back(RecipeInput{comparable(input.assignment), std::nullopt});
            if (input.intermediate) {
                copy.intermediate = comparable(*input.intermediate);
                collectPaths(input.assignment.value.get(),
                             [&part](const std::string& path) { part.source = path; });
            }
            collectPaths(input.assignment.value.get(),
                         [&part](std::string path) { part.reads.push_back(std::move(path)); });
        }
        for (const Assignment& output : recipe.outputs) {
            collectPaths(output.value.get(),
                         [&part](std::string path) { part.writes.push_back(std::move(path)); });
        }
        part.judged = part.writes.empty() ? Judged::WithTarget : Judged::Alone;
        part.declaration =
            recipe.dependencyFile.empty() ? recipe.declaration : Declaration::Complete;
        if (part.judged == Judged::Alone && part.declaration == Declaration::Partial) {
            addFilesInText(recipe, part);
        }
        sortUnique(part.reads);
        appendInputs(part.inputs, inputs);
        part.dependencyFile = recipe.dependencyFile;
        part.headerSearch = recipe.headerSearch;
        part.outputDirectory = recipe.outputDirectory;
        part.directory = recipe.workingDirectory;
        part.toolEnvironment = recipe.toolEnvironment;
        return part;
    }

    /// Every file that a path value of the target names, outputs of dependencies included.
    const std::vector<std::string>& namedFiles() {
        if (namedFiles_) {
            return *namedFiles_;
        }
        std::vector<std::string>& files = namedFiles_.emplace();
        for (const auto& [name, assignment] : question_.target.assignments()) {
            if (assignment.modifier != AssignModifier::Output) {
                collectPaths(assignment.value.get(),
                             [&files](std::string path) { files.push_back(std::move(path)); });
            }
        }
        sortUnique(files);
        return files;
    }

    /// A command may be given more files than its builder knows of, among its flags.
    void addFilesInText(const Recipe& recipe, CacheRequest::Part& part) {
        for (const std::string& file : namedFiles()) {
            if (std::ranges::find(part.writes, file) != part.writes.end()) {
                continue;
            }
            const std::string_view stored = root_.stored(file);
            const auto names = [&](const std::string& text) {
                return text.find(stored) != std::string::npos;
            };
            if (names(recipe.command) ||
                std::ranges::any_of(recipe.supportFiles, names, &SupportFile::content)) {
                part.reads.push_back(file);
            }
        }
    }

    /// Files and dependencies of the target as a whole.
    CacheRequest::Part surroundings() {
        CacheRequest::Part part;
        const std::unordered_set<std::string> reports = dependencyFiles();
        // Recipes that stand alone know what they read and write.
        const bool allStandAlone = std::ranges::all_of(
            request_.parts.begin() + kFirstRecipePart, request_.parts.end(),
            [](const CacheRequest::Part& recipe) { return recipe.judged == Judged::Alone; });
        for (const Assignment& output : question_.outputs) {
            const auto takeUnlessReport = [&](std::string path) {
                if (!reports.contains(path)) {
                    part.writes.push_back(std::move(path));
                }
            };
            if (allStandAlone) {
                collectMade(output, takeUnlessReport);
            } else {
                collectPaths(output.value.get(), takeUnlessReport);
            }
        }
        sortUnique(part.writes);
        if (!allStandAlone) {
            part.reads = readByAll(part.writes);
        }
        appendNumber(part.inputs, question_.dependencies.size() + 2);
        for (const DependencyStamp& dependency : question_.dependencies) {
            appendTextInput(part.inputs, std::string(requestField::kDependency) + dependency.name,
                            dependency.stamp);
        }
        appendTextInput(part.inputs, requestField::kReads, storedLines(part.reads));
        appendTextInput(part.inputs, requestField::kWrites, storedLines(part.writes));
        return part;
    }

    /// The files of an output, without those that the target was given under the same name and only
    /// hands on, as a library does with the libraries that it needs: others make them.
    void collectMade(const Assignment& output, const PathSink& take) const {
        const auto* list = valueAs<VeskList>(output.value.get());
        const Assignment* own = question_.target.find(output.name);
        const auto* given = own != nullptr ? valueAs<VeskList>(own->value.get()) : nullptr;
        if (list == nullptr || given == nullptr) {
            collectPaths(output.value.get(), take);
            return;
        }
        std::unordered_set<std::string_view> texts;
        for (const ValuePtr& item : given->items) {
            if (const auto* path = valueAs<VeskPathString>(item.get())) {
                texts.insert(path->text);
            }
        }
        for (const ValuePtr& item : list->items) {
            const auto* path = valueAs<VeskPathString>(item.get());
            if (path == nullptr || !texts.contains(path->text)) {
                collectPaths(item.get(), take);
            }
        }
    }

    /// Once the cache has read them nothing needs them any more.
    std::unordered_set<std::string> dependencyFiles() const {
        std::unordered_set<std::string> files;
        for (const Recipe& recipe : question_.recipes) {
            if (!recipe.dependencyFile.empty()) {
                files.insert(trackedPath(recipe.dependencyFile));
            }
        }
        return files;
    }

    static void appendTextInput(std::string& out, std::string_view name, std::string_view text) {
        appendTextAssignment(out, name, text);
        out += "0\n";
    }

    /// What path values name, without what the target makes and what compilers will tell of.
    std::vector<std::string> readByAll(const std::vector<std::string>& outputs) {
        std::unordered_set<std::string> others(outputs.begin(), outputs.end());
        for (const CacheRequest::Part& part : request_.parts) {
            others.insert(part.writes.begin(), part.writes.end());
            if (!part.dependencyFile.empty()) {
                others.insert(part.reads.begin(), part.reads.end());
            }
        }
        std::vector<std::string> files;
        std::ranges::copy_if(namedFiles(), std::back_inserter(files),
                             [&others](const std::string& file) { return !others.contains(file); });
        return files;
    }

    std::string storedLines(const std::vector<std::string>& files) const {
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

    std::string variables() const {
        std::vector<RecipeInput> inputs;
        for (const Assignment& variable : question_.builder.variablesRead(question_.target)) {
            inputs.push_back({comparable(variable), std::nullopt});
        }
        std::string text;
        appendInputs(text, inputs);
        return text;
    }

    Assignment comparable(const Assignment& assignment) const {
        return hidden_.masked(relativeAssignment(assignment, root_));
    }

    std::string environment() const {
        std::string text;
        std::size_t count = 0;
        for (const auto& [name, assignment] : question_.target.assignments()) {
            if (isToolchainSetting(name)) {
                appendComparableAssignment(text, comparable(assignment));
                ++count;
            }
        }
        if (const Context* variables = environmentOf(question_.target)) {
            for (const auto& [name, assignment] : variables->assignments()) {
                appendTextAssignment(
                    text, std::string(kEnvironmentVariable) + "." + name.str(),
                    hashInstead(assignment.value ? assignment.value->toString() : ""));
                ++count;
            }
        }
        return std::to_string(count) + "\n" + text;
    }

    static bool isToolchainSetting(const CiString& name) {
        return CiString(name.str().substr(0, kToolchainPrefix.size())) ==
               CiString(std::string(kToolchainPrefix));
    }

    const TargetInputs& question_;
    const TrackingRoot& root_;
    HiddenValues hidden_;
    std::optional<std::vector<std::string>> namedFiles_;
    const ToolEnvironment* marked_ = nullptr;
    std::string mark_;
    CacheRequest request_;
};

}  // namespace

CacheRequest cacheRequest(const TargetInputs& question, const TrackingRoot& root) {
    return RequestMaker(question, root).make();
}

std::vector<std::string> pathsIn(const Assignment& assignment) {
    std::vector<std::string> paths;
    collectPaths(assignment.value.get(),
                 [&paths](std::string path) { paths.push_back(std::move(path)); });
    return paths;
}

}  // namespace Vesk
