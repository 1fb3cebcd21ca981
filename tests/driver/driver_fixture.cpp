#include "driver/driver_fixture.h"

#include <random>
#include <sstream>

#include "grammar/loaders.h"
#include "platform/files.h"
#include "support/console_capture.h"
#include "tools/static/static_tools.h"

namespace Vesk::test {
namespace {

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

/// As the application does, also after a failure.
struct CacheSaver {
    ProjectCache& cache;

    explicit CacheSaver(ProjectCache& saved) : cache(saved) {}
    CacheSaver(const CacheSaver&) = delete;
    CacheSaver& operator=(const CacheSaver&) = delete;
    ~CacheSaver() { cache.save(); }
};

}  // namespace

std::vector<std::string> BuildOutcome::linesWith(std::string_view part) const {
    std::vector<std::string> found;
    std::istringstream lines(messages);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(part) != std::string::npos) {
            found.push_back(line);
        }
    }
    return found;
}

DriverTest::DriverTest() {
    std::random_device random;
    directory_ = std::filesystem::weakly_canonical(
        std::filesystem::temp_directory_path() /
        platform::pathFromUtf8("vesk driver té " + std::to_string(random())));
    std::filesystem::create_directories(directory_);
}

DriverTest::~DriverTest() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::string DriverTest::readable(std::string text) const {
    replaceAll(text, platform::pathToUtf8(directory_), "DIR");
    replaceAll(text, "\\", "/");
    return text;
}

void DriverTest::underAll(const std::string& assignment) {
    fill(*base_, parseAssignment(assignment, directory_));
}

BuildOutcome DriverTest::build(std::string_view unitText, std::string_view target, int threshold) {
    const std::filesystem::path file = directory_ / "vesk.txt";
    std::error_code error;
    EXPECT_TRUE(platform::writeWholeFile(file, "unit main\n" + std::string(unitText),
                                         platform::Append::no, error));
    BuildOutcome outcome;
    ConsoleCapture capture(threshold);
    try {
        ProjectStore store;
        Project& project = store.addStandaloneUnit(file, directory_);
        ProjectCatalog catalog(std::move(store), *base_, Context());
        catalog.setActive(project);
        Toolbox staticTools;
        createStaticTools(staticTools);
        const Toolbox noTools;
        FileStates states;
        ProjectCache cache(directory_, states);
        cache.load();
        Driver driver({catalog, staticTools,
                       [&](const Project&) -> const Toolbox& { return noTools; },
                       [&](const Project&) -> ProjectCache& { return cache; }, options_});
        const CacheSaver saver{cache};
        outcome.outputs = driver.build(catalog.locate({{}, {}, std::string(target)}));
    } catch (const VeskException& exception) {
        outcome.error = readable(exception.report());
    } catch (const std::exception& exception) {
        outcome.error = "std: " + readable(reportOf(exception));
    }
    outcome.messages = readable(capture.text());
    return outcome;
}

}  // namespace Vesk::test
