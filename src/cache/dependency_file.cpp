#include "cache/dependency_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "platform/files.h"

namespace Vesk {
namespace {

/// Behind the target. Blanks in its name need not be escaped, and "C:\" has a colon too.
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

/// The length in bytes of the line break at the front of the text; 0 if there is none.
std::size_t lineBreak(std::string_view text) {
    return text.starts_with('\n') ? 1 : text.starts_with("\r\n") ? 2 : 0;
}

/// The file of an entry in a report: the entry itself, or a member next to the name of its module
/// or header.
void addReported(const nlohmann::json& entry, std::vector<std::string>& names) {
    if (entry.is_string() && !entry.get_ref<const std::string&>().empty()) {
        names.push_back(entry.get<std::string>());
    } else if (entry.is_object()) {
        for (const char* key : {"Header", "BMI"}) {
            if (const auto file = entry.find(key); file != entry.end() && file->is_string()) {
                names.push_back(file->get<std::string>());
            }
        }
    }
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

std::optional<std::vector<std::string>> reportedDependencies(std::string_view json) {
    const auto report = nlohmann::json::parse(json, nullptr, false);
    const auto data = report.is_object() ? report.find("Data") : report.end();
    if (!report.is_object() || data == report.end() || !data->is_object()) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (const char* key : {"ImportedModules", "PCH", "Includes", "ImportedHeaderUnits"}) {
        const auto value = data->find(key);
        if (value == data->end()) {
            continue;
        }
        if (!value->is_array()) {
            addReported(*value, names);
            continue;
        }
        // Early versions of the format give only the name of a module, which is not a file.
        const bool mayBeNames = value.key() == "ImportedModules";
        for (const nlohmann::json& entry : *value) {
            if (entry.is_object() || !mayBeNames) {
                addReported(entry, names);
            }
        }
    }
    return names;
}

std::vector<std::string> includeNotes(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t colon = line.rfind(": ");
        const std::string_view name =
            colon == std::string_view::npos ? std::string_view() : trimmed(line.substr(colon + 1));
        if (!name.empty()) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::optional<std::vector<std::string>> readDependencyFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto content = platform::readWholeFile(file, error);
    if (!content) {
        return std::nullopt;
    }
    const std::string suffix = platform::pathToUtf8(file.extension());
    if (suffix == ".json") {
        return reportedDependencies(*content);
    }
    return suffix == ".notes" ? includeNotes(*content) : prerequisites(*content);
}

}  // namespace Vesk
