#include "tools/static/powershell_tool.h"

#include "tools/static/basic_tool.h"

namespace Vesk {

namespace {

constexpr std::string_view kSources[] = {"pwsh"};
constexpr Misnomer kMisnomers[] = {
    {"powershell", "pwsh"},
    {"workdir", "cwd"},
    {"working_dir", "cwd"},
    {"working_directory", "cwd"},
};

constexpr Variable kCommandVariables[] = {
    {"pwsh", "string, list", "required",
     "a command for PowerShell, or several, which start together", R"("Get-Date")"},
};
constexpr VariableGroup kCommandGroup = {"Commands", VariableRole::Input, kCommandVariables};
constexpr const VariableGroup* kVariables[] = {&kCommandGroup, &kCommandPlace, &kCommandResult};

const AssignmentMap& wantsTable() {
    static const AssignmentMap table = makeTable({{"cwd"}});
    return table;
}

const AssignmentMap& needsTable() {
    static const AssignmentMap table = makeTable({{"pwsh"}});
    return table;
}

}  // namespace

const ToolTypeRegistration RegisterPowerShellMatcher({
    .word = "pwsh",
    .factory = matcherFactory<PowerShellMatcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kVariables,
});

PowerShellMatcher::PowerShellMatcher(const CiString& name, const AssignmentMap& must,
                                     const AssignmentMap& others)
    : Matcher(name, "pwsh", wantsTable(), needsTable(), must, others) {}

std::unique_ptr<Matcher> PowerShellMatcher::clone() const {
    return std::make_unique<PowerShellMatcher>(*this);
}

std::shared_ptr<Builder> PowerShellMatcher::createBuilder(const Context&) const {
    return std::make_shared<BasicBuilder>("pwsh", shell::kPowershell);
}

MatchResult PowerShellMatcher::matchTool(const Context&) const {
    return {{}, MatchNote::BuildPossible};
}

}  // namespace Vesk
