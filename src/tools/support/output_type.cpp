#include "tools/support/output_type.h"

#include <fmt/format.h>
#include <utility>
#include <vector>

#include "base/exception.h"
#include "base/text.h"

namespace Vesk {

OutputType outputTypeOf(const Context& target) {
    static const std::vector<std::pair<std::string, OutputType>> types = {
        {"executable", OutputType::Executable},   {"static", OutputType::Static},
        {"shared", OutputType::Shared},           {"object", OutputType::Object},
        {"relocatable", OutputType::Relocatable},
    };
    const std::string asked = target.textOf("OUTPUT_TYPE").value_or("");
    if (asked.empty()) {
        return OutputType::Executable;
    }
    std::vector<std::string> words;
    for (const auto& [word, type] : types) {
        if (equalsIgnoringCase(word, asked)) {
            return type;
        }
        words.push_back(word);
    }
    VeskException error(
        fmt::format("OUTPUT_TYPE '{}' is not one of {}.", asked, joined(words, ", ")));
    error.addNote(didYouMean(asked, words));
    throw error;
}

bool hasSuffix(const std::string& name) noexcept {
    const std::size_t dot = name.find_last_of("./");
    return dot != std::string::npos && name[dot] == '.' && dot > 0 && dot + 1 < name.size() &&
           asciiLower(name[dot + 1]) >= 'a' && asciiLower(name[dot + 1]) <= 'z';
}

std::string decorated(const std::string& name, const std::string& prefix,
                      const std::string& suffix) {
    const std::size_t file = name.find_last_of("/\\") + 1;
    return name.substr(0, file) + prefix + name.substr(file) + suffix;
}

}  // namespace Vesk
