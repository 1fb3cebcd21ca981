#include "app/compile_commands.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

#include "base/attempt.h"
#include "base/collector.h"
#include "base/exception.h"
#include "driver/driver.h"
#include "events/events.h"
#include "platform/files.h"

namespace Vesk {
namespace {

/// "out/release" of "out/release/.obj/main/app/a.c.o": where what is made under one profile goes.
std::string outputDirectoryOf(const std::string& object) {
    const std::size_t end = std::min(object.rfind("/.obj/"), object.rfind("\\.obj\\"));
    return object.substr(0, end);
}

/// Empty for a member that is not text.
std::string textIn(const nlohmann::ordered_json& entry, const char* member) {
    const auto found = entry.find(member);
    return found != entry.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// None for a text that is not a compilation database.
std::vector<nlohmann::ordered_json> entriesIn(const std::string& text) {
    const auto parsed = nlohmann::ordered_json::parse(text, nullptr, false);
    std::vector<nlohmann::ordered_json> entries;
    if (parsed.is_array()) {
        std::ranges::copy_if(parsed, std::back_inserter(entries),
                             [](const auto& entry) { return entry.is_object(); });
    }
    return entries;
}

}  // namespace

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

void CompileCommands::addProject(const BuildSetting& setting, const Project& project) {
    BuildSetting looking = setting;
    looking.options.jobCount = 1;
    looking.options.dryRun = true;
    looking.options.onlyRecipes = true;
    looking.options.keepGoing = true;
    looking.onRecipes = [this](const std::vector<Recipe>& recipes) { add(recipes); };
    console::Collector silence{{}};
    const events::Pause pause;
    auto driver = std::make_unique<Driver>(looking);
    for (const auto& unit : project.units()) {
        for (const auto& target : unit->targets) {
            const auto visit = [&] { driver->build({&project, unit, target}); };
            if (target->parameters.empty() && !succeeds(visit)) {
                driver = std::make_unique<Driver>(looking);  // the failed one is of no more use
            }
        }
    }
}

std::string CompileCommands::textOver(const std::string& old) const {
    auto entries = nlohmann::ordered_json::array();
    std::set<std::string> directories;
    for (const Entry& entry : entries_) {
        directories.insert(outputDirectoryOf(entry.output));
        entries.push_back({{"directory", entry.directory},
                           {"command", entry.command},
                           {"file", entry.file},
                           {"output", entry.output}});
    }
    for (nlohmann::ordered_json& entry : entriesIn(old)) {
        const bool replaced = directories.contains(outputDirectoryOf(textIn(entry, "output")));
        if (!replaced && platform::isFile(platform::pathFromUtf8(textIn(entry, "file")))) {
            entries.push_back(std::move(entry));
        }
    }
    constexpr int kIndent = 2;
    // A path on POSIX may not be UTF-8, which JSON has to be.
    return entries.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
           "\n";
}

std::string CompileCommands::textAt(const std::string& path) {
    std::error_code ignored;
    return platform::readWholeFile(platform::pathFromUtf8(path), ignored).value_or("");
}

void CompileCommands::write(const std::string& path, const std::string& text,
                            const std::string& old) {
    std::error_code error;
    if (text != old && !platform::writeWholeFile(platform::pathFromUtf8(path), text,
                                                 platform::Append::no, error)) {
        throw VeskException("Unable to write compilation database '" + path +
                            "': " + error.message() + ".");
    }
}

void CompileCommands::write(const std::string& path) const {
    const std::string old = textAt(path);
    write(path, textOver(old), old);
}

}  // namespace Vesk
