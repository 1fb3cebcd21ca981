#include "tools/variable_values.h"

#include <algorithm>
#include <string_view>

namespace Vesk {
namespace {

/// The words in backquotes at the start of a text, as in "`create` or `append`".
std::vector<std::string> wordsAtStart(std::string_view text) {
    std::vector<std::string> words;
    while (text.starts_with('`')) {
        const std::size_t end = text.find('`', 1);
        words.emplace_back(text.substr(1, end - 1));
        text.remove_prefix(std::min(text.size(), end + 1));
        if (text.starts_with(" (")) {  // "`object` (compile only), "
            text.remove_prefix(std::min(text.size(), text.find(')') + 1));
        }
        for (const std::string_view between : {", ", " or "}) {
            if (text.starts_with(between)) {
                text.remove_prefix(between.size());
                break;
            }
        }
    }
    return words;
}

/// "`-fuse-ld=`" is what a variable becomes, not what it can be.
bool isNoValue(const std::string& word) {
    return word.empty() || word.front() == '-' || word.front() == '/' || word.back() == '=';
}

}  // namespace

std::vector<std::string> valuesOf(const Variable& variable) {
    std::vector<std::string> values;
    if (variable.type.starts_with('`')) {
        values = wordsAtStart(variable.type);
    } else if (variable.type == "string") {
        values = wordsAtStart(variable.meaning);
    }
    std::erase_if(values, isNoValue);
    return values;
}

}  // namespace Vesk
