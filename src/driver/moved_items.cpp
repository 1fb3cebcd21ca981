#include "driver/moved_items.h"

#include <cstddef>

namespace Vesk {
namespace {

std::string textOf(const ValuePtr& item) {
    return item ? item->typeName() + " " + item->toDisplayString() : std::string();
}

}  // namespace

const ValuePtr& MovedItems::known(const ValuePtr& item, bool& isNew) {
    const auto [place, inserted] = byText_.try_emplace(textOf(item), item);
    isNew = inserted;
    known_.insert(place->second.get());
    return place->second;
}

void MovedItems::add(VeskList& list) {
    repeated_.clear();
    repeatedTexts_.clear();
    for (ValuePtr& item : list.items) {
        bool isNew = false;
        if (!known_.contains(item.get())) {
            item = known(item, isNew);
        }
        if (isNew) {
            continue;
        }
        repeated_.insert(item.get());
        if (item && !item->isSettled()) {
            repeatedTexts_.insert(textOf(item));
        }
    }
}

void MovedItems::removeRepeated(VeskList& list) const {
    if (repeated_.empty()) {
        return;
    }
    auto objects = repeated_;
    auto texts = repeatedTexts_;
    std::vector<ValuePtr> kept;
    kept.reserve(list.items.size());
    for (auto item = list.items.rbegin(); item != list.items.rend(); ++item) {
        const bool repeated =
            objects.erase(item->get()) != 0 || (!texts.empty() && texts.erase(textOf(*item)) != 0);
        if (!repeated) {
            kept.push_back(std::move(*item));
        }
    }
    list.items.assign(std::make_move_iterator(kept.rbegin()), std::make_move_iterator(kept.rend()));
}

}  // namespace Vesk
