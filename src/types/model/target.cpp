#include "types/model/target.h"

#include <utility>

#include "base/exception.h"
#include "platform/files.h"

namespace Vesk {

void Target::setBody(ContextTemplate written) {
    body = std::move(written);
    context = body.instantiate();
}

std::string Target::place() const {
    return (file ? platform::pathToUtf8(*file) + ":" : std::string("line ")) + std::to_string(line);
}

void Unit::addTarget(std::shared_ptr<const Target> target) {
    const auto [position, inserted] = index_.try_emplace(target->name, targets.size());
    if (!inserted) {
        throw VeskException("Target '" + target->name + "' is defined twice: " +
                            targets[position->second]->place() + " and " + target->place() + ".");
    }
    targets.push_back(std::move(target));
}

std::shared_ptr<const Target> Unit::findTarget(std::string_view targetName) const {
    const auto position = index_.find(std::string(targetName));
    return position == index_.end() ? nullptr : targets[position->second];
}

std::vector<std::string> Unit::targetNames() const {
    std::vector<std::string> names;
    names.reserve(targets.size());
    for (const auto& target : targets) {
        names.push_back(target->name);
    }
    return names;
}

void TargetContext::print(int level) const {
    printBlock(level, true);
}

}  // namespace Vesk
