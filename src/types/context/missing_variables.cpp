#include "types/context/missing_variables.h"

namespace Vesk {

void MissingVariables::beginEvaluation(const std::string& variable) {
    const std::string start = variable + ".";
    for (auto entry = counts_.lower_bound(start);
         entry != counts_.end() && entry->first.starts_with(start); ++entry) {
        entry->second.seen = 0;
    }
}

bool MissingVariables::isNew(const std::string& place) {
    Count& count = counts_[place];
    if (++count.seen <= count.reported) {
        return false;
    }
    count.reported = count.seen;
    return true;
}

}  // namespace Vesk
