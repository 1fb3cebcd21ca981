#include "app/vesk_application.h"

#include <algorithm>
#include <array>

#include "app/command_line.h"
#include "app/modes/modes.h"
#include "app/seen_run.h"
#include "platform/environment.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

constexpr const char* kSourceUnit = "vesk_app";

struct Mode {
    RunMode number;
    int (*run)(const Settings& settings);
};

int workOnTargets(const Settings& settings) {
    switch (settings.work) {
        case Work::Build:
            return runSeen(settings, [&settings] { return modes::build(settings); });
        case Work::Test:
            return runSeen(settings, [&settings] { return modes::test(settings); });
        case Work::ListTests:
            return modes::listTests(settings);
        case Work::Clean:
            break;
    }
    return modes::clean(settings);
}

constexpr std::array kModes = {
    Mode{RunMode::Build, workOnTargets},
    Mode{RunMode::ListProfiles, modes::listProfiles},
    Mode{RunMode::ListUnits, modes::listUnits},
    Mode{RunMode::ListTargets, modes::listTargets},
    Mode{RunMode::Register, modes::registerProject},
    Mode{RunMode::FindCompilers, modes::findCompilers},
    Mode{RunMode::CreateProject, modes::createProject},
    Mode{RunMode::Version, modes::printVersion},
    Mode{RunMode::Help, modes::printHelp},
    Mode{RunMode::Options, modes::printOptions},
    Mode{RunMode::Explain, modes::explainVariables},
    Mode{RunMode::VariableTables, modes::printVariableTables},
    Mode{RunMode::Init, modes::init},
    Mode{RunMode::Complete, modes::complete},
    Mode{RunMode::Format, modes::format},
    Mode{RunMode::Lint, modes::lint},
    Mode{RunMode::LanguageServer, modes::languageServer},
};

}  // namespace

void VeskApplication::parse(const std::vector<std::string>& arguments) {
    settings_.arguments = arguments;
    if (const auto text = platform::environmentVariable(kOptionsVariable); text) {
        parseOptionsVariable(*text, settings_);
        // No argument holds a NUL, so this one differs from all of them.
        settings_.arguments.push_back(*text + '\0');
    }
    if (const auto text = platform::environmentVariable(kStrictVariable);
        text && !text->empty() && *text != "0") {
        settings_.doubts = Doubts::Refuse;
        settings_.arguments.push_back(kStrictVariable + std::string(1, '\0'));
    }
    settings_.givenForAll = settings_.given.size();
    parseCommandLine(arguments, settings_);
    reportDoubtfulOptions(settings_);
}

int VeskApplication::run() const {
    const auto* const mode = std::ranges::find(kModes, settings_.runMode, &Mode::number);
    if (mode == kModes.end()) {
        throw InternalError(kSourceUnit, __LINE__, __func__);
    }
    return mode->run(settings_);
}

}  // namespace Vesk
