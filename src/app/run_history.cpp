#include "app/run_history.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "app/project_root.h"
#include "base/collector.h"
#include "base/console.h"
#include "cache/cache_file.h"
#include "platform/files.h"

namespace Vesk {
namespace {

std::filesystem::path directoryOf(const Settings& settings) {
    const console::Collector silence{{}};
    return findProjectRoot(settings).directory;
}

}  // namespace

std::vector<report::PastRun> earlierRuns(const Settings& settings) {
    std::error_code missing;
    const auto text =
        platform::readWholeFile(directoryOf(settings) / report::kHistoryFileName, missing);
    return text ? report::runsIn(*text) : std::vector<report::PastRun>();
}

void keepRun(const Settings& settings, report::PastRun run, std::vector<report::PastRun> earlier) {
    const std::filesystem::path directory = directoryOf(settings);
    if (settings.dryRun || run.target.empty() || !platform::isFile(directory / kCacheFileName)) {
        return;
    }
    earlier.push_back(std::move(run));
    const std::filesystem::path file = directory / report::kHistoryFileName;
    std::filesystem::path fresh = file;
    fresh += ".new";
    std::error_code error;
    if (!platform::writePrivateFile(fresh, report::historyText(earlier), platform::Append::no,
                                    error) ||
        !platform::replaceFile(fresh, file, error)) {
        console::warning("Unable to keep this run in '{}': {}.", platform::pathToUtf8(file),
                         error.message());
        std::error_code ignored;
        platform::removeFile(fresh, ignored);
    }
}

}  // namespace Vesk
