// What reaches a list of a target on several ways, such as an include directory of a library that
// two of its dependencies use, stands in it once.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "types/values/list_value.h"

namespace Vesk {

/// The items that dependencies have moved into one list. Most come again and again from the same
/// lists further down, as the same objects: those are told apart without looking at their texts.
class MovedItems {
  public:
    /// Takes note of a list that is about to be moved; equal items become the same object.
    void add(VeskList& list);

    /// Takes the last of each item of the list just added that was moved before off another list.
    void removeRepeated(VeskList& list) const;

  private:
    const ValuePtr& known(const ValuePtr& item, bool& isNew);

    std::unordered_map<std::string, ValuePtr> byText_;
    std::unordered_set<const VeskValue*> known_;     ///< all of byText_
    std::unordered_set<const VeskValue*> repeated_;  ///< of the list just added
    std::unordered_set<std::string>
        repeatedTexts_;  ///< of those among them that copies do not share
};

}  // namespace Vesk
