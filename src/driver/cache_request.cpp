#include "driver/cache_request.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_set>

#include "driver/mentioned_files.h"
#include "driver/target_environment.h"
#include "driver/value_paths.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using Part = CacheRequest::Part;

HiddenValues hiddenIn(const TargetInputs& inputs) {
    HiddenValues hidden = inputs.hidden;
    if (const Context* variables = environmentOf(inputs.target)) {
        hidden.add(*variables);
    }
    return hidden;
}

class RequestMaker {
  public:
    RequestMaker(const TargetInputs& inputs, const TrackingRoot& root)
        : inputs_(inputs), root_(root), text_(root, hiddenIn(inputs)) {}

    CacheRequest make() {
        request_.parts.resize(kFirstRecipePart);
        for (const Recipe& recipe : inputs_.recipes) {
            request_.parts.push_back(recipePart(recipe));
        }
        request_.parts[kTargetPart] = targetPart();
        request_.parts[kVariablesPart].inputs =
            text_.variables(inputs_.builder.variablesRead(inputs_.target));
        request_.environment = text_.environment(inputs_.target);
        return std::move(request_);
    }

  private:
    Part recipePart(const Recipe& recipe) {
        Part part;
        part.inputs = text_.recipe(recipe);
        for (const RecipeInput& input : recipe.inputs) {
            const std::size_t before = part.reads.size();
            appendPaths(part.reads, input.assignment);
            if (input.intermediate && part.reads.size() > before) {
                part.source = part.reads.back();
            }
        }
        for (const Assignment& output : recipe.outputs) {
            appendPaths(part.writes, output);
        }
        part.judged = part.writes.empty() ? Judged::WithTarget : Judged::Alone;
        part.declaration =
            recipe.dependencyFile.empty() ? recipe.declaration : Declaration::Complete;
        if (part.judged == Judged::Alone && part.declaration == Declaration::Partial) {
            addMentionedFiles(recipe, part);
        }
        sortUnique(part.reads);
        part.headerSearch = recipe.headerSearch;
        part.outputDirectory = recipe.outputDirectory;
        if (!recipe.dependencyFile.empty()) {
            part.dependencyFile = trackedPath(recipe.dependencyFile);
            part.byProducts.push_back(part.dependencyFile);
        }
        for (const SupportFile& file : recipe.supportFiles) {
            part.byProducts.push_back(trackedPath(file.path));
        }
        part.directory = platform::pathToUtf8(recipe.workingDirectory);
        part.toolEnvironment = recipe.toolEnvironment;
        return part;
    }

    const std::vector<std::string>& namedFiles() {
        return namedFiles_ ? *namedFiles_ : namedFiles_.emplace(filesNamedBy(inputs_.target));
    }

    void addMentionedFiles(const Recipe& recipe, Part& part) {
        for (std::string& file : filesMentioned(recipe, namedFiles(), root_)) {
            if (std::ranges::find(part.writes, file) == part.writes.end()) {
                part.reads.push_back(std::move(file));
            }
        }
    }

    /// Files and dependencies of the target as a whole.
    Part targetPart() {
        Part part;
        // Recipes that stand alone know what they read and write.
        const bool allStandAlone =
            std::ranges::all_of(request_.parts.begin() + kFirstRecipePart, request_.parts.end(),
                                [](const Part& recipe) { return recipe.judged == Judged::Alone; });
        part.writes = made(allStandAlone);
        if (!allStandAlone) {
            part.reads = readByAll(part.writes);
        }
        part.inputs = text_.target(inputs_.dependencies, part.reads, part.writes);
        return part;
    }

    /// The files among the target's outputs.
    std::vector<std::string> made(bool allStandAlone) const {
        std::vector<std::string> files;
        const std::unordered_set<std::string> reports = dependencyFiles();
        const auto take = [&](std::string path) {
            if (!reports.contains(path)) {
                files.push_back(std::move(path));
            }
        };
        for (const Assignment& output : inputs_.outputs) {
            if (allStandAlone) {
                eachPathMade(output, inputs_.target, take);
            } else {
                eachPath(output.value.get(), take);
            }
        }
        sortUnique(files);
        return files;
    }

    /// Once the cache has read them nothing needs them any more.
    std::unordered_set<std::string> dependencyFiles() const {
        std::unordered_set<std::string> files;
        for (const Part& part : request_.parts) {
            if (!part.dependencyFile.empty()) {
                files.insert(part.dependencyFile);
            }
        }
        return files;
    }

    /// What path values name, without what the target makes and what compilers will report.
    std::vector<std::string> readByAll(const std::vector<std::string>& outputs) {
        std::unordered_set<std::string> others(outputs.begin(), outputs.end());
        for (const Part& part : request_.parts) {
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

    const TargetInputs& inputs_;
    const TrackingRoot& root_;
    RequestText text_;
    std::optional<std::vector<std::string>> namedFiles_;
    CacheRequest request_;
};

}  // namespace

CacheRequest cacheRequest(const TargetInputs& inputs, const TrackingRoot& root) {
    return RequestMaker(inputs, root).make();
}

}  // namespace Vesk
