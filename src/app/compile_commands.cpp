#include "app/compile_commands.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "base/exception.h"
#include "platform/files.h"

namespace Vesk {

void CompileCommands::add(const std::vector<Recipe>& recipes) {
    for (const Recipe& recipe : recipes) {
        for (const RecipeInput& input : recipe.inputs) {
            if (!input.intermediate) {
                continue;
            }
            const std::filesystem::path directory = recipe.workingDirectory.empty()
                                                        ? std::filesystem::current_path()
                                                        : recipe.workingDirectory;
            entries_.push_back({platform::pathToUtf8(directory), recipe.command,
                                input.assignment.value->toString(),
                                input.intermediate->value->toString()});
        }
    }
}

void CompileCommands::write(const std::string& path) const {
    auto entries = nlohmann::ordered_json::array();
    for (const Entry& entry : entries_) {
        entries.push_back({{"directory", entry.directory},
                           {"command", entry.command},
                           {"file", entry.file},
                           {"output", entry.output}});
    }
    constexpr int kIndent = 2;
    // A path on POSIX may not be UTF-8, which JSON has to be.
    const std::string text =
        entries.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(path), text, platform::Append::no,
                                  error)) {
        throw VeskException("Unable to write compilation database '" + path +
                            "': " + error.message() + ".");
    }
}

}  // namespace Vesk
