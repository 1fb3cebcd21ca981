#include "build/cache/dependency_file.h"

#include "platform/files.h"

namespace Vesk {
namespace {

/// Behind the target. Its own blanks need not be escaped, and "C:\" has a colon too.
std::string_view afterTarget(std::string_view rule) {
    for (std::size_t at = rule.find(':'); at != std::string_view::npos;
         at = rule.find(':', at + 1)) {
        const std::string_view rest = rule.substr(at + 1);
        if (rest.empty() ||
            std::string_view(" \t\r\n").find(rest.front()) != std::string_view::npos) {
            return rest;
        }
    }
    return {};
}

/// How many bytes the line break at the front of the text has; 0 without one.
std::size_t lineBreak(std::string_view text) {
    return text.starts_with('\n') ? 1 : text.starts_with("\r\n") ? 2 : 0;
}

}  // namespace

std::vector<std::string> prerequisites(std::string_view makefile) {
    std::string_view text = afterTarget(makefile);
    std::vector<std::string> names;
    std::string name;
    const auto endName = [&] {
        if (!name.empty()) {
            names.push_back(std::move(name));
            name.clear();
        }
    };
    while (!text.empty() && lineBreak(text) == 0) {
        const char c = text.front();
        const std::string_view rest = text.substr(1);
        std::size_t used = 1;
        if (c == ' ' || c == '\t') {
            endName();
        } else if (c == '\\' && lineBreak(rest) > 0) {
            endName();
            used += lineBreak(rest);
        } else if ((c == '\\' && (rest.starts_with(' ') || rest.starts_with('#'))) ||
                   (c == '$' && rest.starts_with('$'))) {
            name += rest.front();
            used = 2;
        } else {
            name += c;
        }
        text.remove_prefix(used);
    }
    endName();
    return names;
}

std::optional<std::vector<std::string>> readDependencyFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto content = platform::readWholeFile(file, error);
    if (!content) {
        return std::nullopt;
    }
    return prerequisites(*content);
}

}  // namespace Vesk
