#include "driver/value_paths.h"

#include <algorithm>
#include <unordered_set>

#include "types/context/context_value.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

void eachPath(const Context& context, const PathSink& take) {
    for (const auto& [name, assignment] : context.assignments()) {
        eachPath(assignment.value.get(), take);
    }
}

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

}  // namespace

void eachPath(const VeskValue* value, const PathSink& take) {
    if (const auto* path = valueAs<VeskPathString>(value)) {
        if (!path->text.empty()) {
            take(trackedPath(path->text, path->baseDirectory));
        }
    } else if (const auto* list = valueAs<VeskList>(value)) {
        for (const ValuePtr& item : list->items) {
            eachPath(item.get(), take);
        }
    } else if (const auto* nested = valueAs<VeskContext>(value)) {
        if (nested->owns()) {
            eachPath(*nested->context(), take);
        }
    }
}

std::vector<std::string> pathsIn(const Assignment& assignment) {
    std::vector<std::string> paths;
    appendPaths(paths, assignment);
    return paths;
}

void appendPaths(std::vector<std::string>& files, const Assignment& assignment) {
    eachPath(assignment.value.get(),
             [&files](std::string path) { files.push_back(std::move(path)); });
}

std::vector<std::string> filesNamedBy(const Context& target) {
    std::vector<std::string> files;
    for (const auto& [name, assignment] : target.assignments()) {
        if (assignment.modifier != AssignModifier::Output) {
            appendPaths(files, assignment);
        }
    }
    sortUnique(files);
    return files;
}

void eachPathMade(const Assignment& output, const Context& target, const PathSink& take) {
    const auto* list = valueAs<VeskList>(output.value.get());
    const Assignment* own = target.find(output.name);
    const auto* given = own != nullptr ? valueAs<VeskList>(own->value.get()) : nullptr;
    if (list == nullptr || given == nullptr) {
        eachPath(output.value.get(), take);
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
            eachPath(item.get(), take);
        }
    }
}

Assignment relativeTo(const TrackingRoot& root, const Assignment& assignment) {
    Assignment relative = assignment;
    relative.value = relativeValue(assignment.value, root);
    return relative;
}

void sortUnique(std::vector<std::string>& files) {
    std::ranges::sort(files);
    const auto rest = std::ranges::unique(files);
    files.erase(rest.begin(), rest.end());
}

}  // namespace Vesk
