// The cache step alone: records looked up, compared with the files, loaded and saved. Every record
// has one command, which reads a source of its own and a header that all share, and writes an
// output. The targets share a thousand sources, so that what is measured is not the disk.

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cache/cache_file.h"
#include "cache/cache_text.h"
#include "cache/project_cache.h"
#include "cache/record_writer.h"
#include "platform/files.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFiles = 1000;

struct Target {
    std::string key;
    CacheRequest request;
};

/// A project that has been built, with its cache file.
class Project {
  public:
    explicit Project(std::size_t size)
        : directory_(fs::temp_directory_path() / ("vesk bench " + std::to_string(size))) {
        fs::create_directories(directory_);
        for (std::size_t i = 0; i < kFiles; ++i) {
            std::ofstream(file("source", i)) << "int f" << i << "() { return " << i << "; }\n";
            std::ofstream(file("object", i)) << "object " << i << '\n';
        }
        std::ofstream(directory_ / "header.h") << "int shared;\n";
        for (std::size_t i = 0; i < size; ++i) {
            targets_.push_back(target(i));
        }
        build();
    }

    ~Project() {
        std::error_code ignored;
        fs::remove_all(directory_, ignored);
    }
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    const fs::path& directory() const { return directory_; }
    const std::vector<Target>& targets() const { return targets_; }

    RecordText record(const Target& target, FileStates& states, const TrackingRoot& root) const {
        const Freshness nothing(target.request, nullptr, states, root);
        BuildResults results;
        results.outcomes.assign(target.request.parts.size(), StepOutcome::Ran);
        results.outputs = {textAssignment("result", "0")};
        results.startedAt = platform::fileClock();
        return makeRecord(target.request, results, nothing, states, root).value();
    }

  private:
    std::string file(const char* kind, std::size_t number) const {
        return platform::pathToUtf8(directory_ / (kind + std::to_string(number % kFiles)));
    }

    Target target(std::size_t number) const {
        const std::string source = file("source", number);
        const std::string object = file("object", number);
        const std::string command =
            "cc -O2 -Wall -c " + source + " -o " + object + " -DN=" + std::to_string(number);
        Target target{"bench main::target" + std::to_string(number), {}};
        auto& parts = target.request.parts;
        parts.resize(kFirstRecipePart + 1);
        appendInputs(parts[kTargetPart].inputs, {{textAssignment("writes", ""), std::nullopt}});
        appendInputs(parts[kVariablesPart].inputs,
                     {{textAssignment("cmdline", command), std::nullopt}});
        appendInputs(parts[kFirstRecipePart].inputs,
                     {{textAssignment("command", command), std::nullopt}});
        parts[kFirstRecipePart].reads = {source, platform::pathToUtf8(directory_ / "header.h")};
        parts[kFirstRecipePart].writes = {object};
        target.request.environment = "0\n";
        return target;
    }

    void build() const {
        FileStates states;
        ProjectCache cache(directory_, states);
        for (const Target& target : targets_) {
            states.look(target.request.parts[kFirstRecipePart].reads);
            cache.upsert(target.key, record(target, states, cache.root()), 0);
        }
        cache.save();
    }

    fs::path directory_;
    std::vector<Target> targets_;
};

/// One project of each size, made when it is first asked for.
const Project& projectOf(const benchmark::State& state) {
    static std::map<std::int64_t, Project> projects;
    return projects.try_emplace(state.range(0), static_cast<std::size_t>(state.range(0)))
        .first->second;
}

void countRecords(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void load(benchmark::State& state) {
    const Project& project = projectOf(state);
    for (auto round : state) {
        FileStates states;
        ProjectCache cache(project.directory(), states);
        cache.load();
    }
    countRecords(state);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(
                                                     project.directory() / kCacheFileName)));
}

/// Asks for every record; `examine` looks at the files as well, as a build does once.
void obtainAll(benchmark::State& state, bool examine) {
    const Project& project = projectOf(state);
    std::optional<FileStates> states(std::in_place);
    std::optional<ProjectCache> cache;
    for (auto round : state) {
        state.PauseTiming();
        if (examine || !cache) {
            cache.reset();
            states.emplace();
            cache.emplace(project.directory(), *states);
            cache->load();
        }
        state.ResumeTiming();
        for (const Target& target : project.targets()) {
            const ObtainResult result = cache->obtain(target.key, target.request, Claim::no, 0);
            if (result.answer != CacheAnswer::Hit) {
                state.SkipWithError("a record is no hit");
                return;
            }
        }
    }
    countRecords(state);
}

void compare(benchmark::State& state) {
    obtainAll(state, false);
}
void compareAndExamine(benchmark::State& state) {
    obtainAll(state, true);
}

void lookUp(benchmark::State& state) {
    const Project& project = projectOf(state);
    FileStates states;
    ProjectCache cache(project.directory(), states);
    cache.load();
    for (auto round : state) {
        for (const Target& target : project.targets()) {
            // A token that is not current: found, and nothing else done.
            cache.release(target.key, ~std::uint64_t{0});
        }
    }
    countRecords(state);
}

void makeAndUpsert(benchmark::State& state) {
    const Project& project = projectOf(state);
    FileStates states;
    const TrackingRoot root(project.directory());
    for (auto round : state) {
        ProjectCache cache(project.directory(), states);
        for (const Target& target : project.targets()) {
            cache.upsert(target.key, project.record(target, states, root), 0);
        }
    }
    countRecords(state);
}

void save(benchmark::State& state) {
    const Project& project = projectOf(state);
    FileStates states;
    ProjectCache cache(project.directory(), states);
    cache.load();
    const RecordText record = project.record(project.targets().front(), states, cache.root());
    static std::size_t news = 0;  // the file keeps what earlier rounds have added
    for (auto round : state) {
        cache.upsert("bench main::news" + std::to_string(news++), record, 0);
        if (!cache.save()) {
            state.SkipWithError("saving failed");
            return;
        }
    }
    countRecords(state);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1000, 100'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(lookUp)->Apply(sizes);
BENCHMARK(compare)->Apply(sizes);
BENCHMARK(compareAndExamine)->Apply(sizes);
BENCHMARK(makeAndUpsert)->Apply(sizes);
BENCHMARK(load)->Apply(sizes);
BENCHMARK(save)->Apply(sizes);

}  // namespace
}  // namespace Vesk

BENCHMARK_MAIN();
