#include "driver/builtin_variables.h"

#include <fmt/format.h>
#include <utility>

#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

void add(Context& context, const char* name, std::string text) {
    context.addAssignment(textAssignment(name, std::move(text)), ModifierMode::Keep);
}

/// Empty when the system is of no family that we know.
std::string osFamily() {
    if (platform::isDirectory("C:\\")) {
        return "windows";
    }
    return platform::isDirectory("/bin") ? "unix" : "";
}

}  // namespace

std::shared_ptr<Context> builtinVariables(const fs::path& projectRoot) {
    auto context = std::make_shared<Context>();
    if (std::string family = osFamily(); !family.empty()) {
        add(*context, "os_family", std::move(family));
    }
    const platform::LocalMonth now = platform::currentLocalMonth();
    add(*context, "year", fmt::format("{:04}", now.year));
    add(*context, "month", std::to_string(now.month));
    add(*context, "project_root", platform::pathToUtf8(projectRoot));
    add(*context, "output_def_dir", kDefaultOutputDirectory);
    return context;
}

}  // namespace Vesk
