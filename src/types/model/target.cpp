#include "types/model/target.h"

#include <algorithm>
#include <utility>

#include "base/ci_string.h"
#include "base/exception.h"
#include "platform/files.h"

namespace Vesk {

namespace {

std::shared_ptr<const TargetText> textOf(ContextTemplate body) {
    return std::make_shared<const TargetText>(
        std::vector<DependencyRecord>(), std::make_shared<const ContextTemplate>(std::move(body)));
}

}  // namespace

const std::shared_ptr<const TargetText>& Target::text() const {
    if (!text_) {
        text_ = source_ ? source_->read(*this, number_) : textOf({});
    }
    return text_;
}

bool Target::mayName(std::string_view variable) const {
    const auto holds = [variable](std::string_view text) {
        return !std::ranges::search(text, variable, {}, asciiLower, asciiLower).empty();
    };
    // Values may be shown otherwise than they are written, but for the letters in them; paths with
    // the directory of the file before them.
    const bool isWord = std::ranges::all_of(variable, [](char c) {
        return c == '_' || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z');
    });
    return text_ || !source_ || !isWord || holds(source_->written(number_)) ||
           (file && holds(platform::pathToUtf8(*file)));
}

void Target::setText(std::shared_ptr<const TargetText> text) {
    text_ = std::move(text);
}

void Target::setSource(std::shared_ptr<TargetTextSource> source, std::size_t number) {
    source_ = std::move(source);
    number_ = number;
}

void Target::setBody(ContextTemplate written) {
    setText(textOf(std::move(written)));
}

std::string Target::place() const {
    return (file ? platform::pathToUtf8(*file) + ":" : std::string("line ")) + std::to_string(line);
}

void Unit::reserve(std::size_t count) {
    targets.reserve(count);
    index_.reserve(count);
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
    const auto position = index_.find(targetName);
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
