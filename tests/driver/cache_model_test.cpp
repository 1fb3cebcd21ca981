// A small project that is edited, touched, broken and killed at random. After every build that
// succeeds, its outputs are those of a clean build, and a further build has nothing to do.

#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

#include "driver/build_errors.h"
#include "driver/cache_request.h"
#include "driver/cache_step.h"
#include "driver/side_by_side.h"
#include "platform/support.h"
#include "platform/system.h"
#include "support/console_capture.h"
#include "types/context/context_value.h"
#include "types/values/string_values.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

struct Failed : std::runtime_error {
    Failed() : runtime_error("failed") {}
};
struct Killed : std::runtime_error {
    Killed() : runtime_error("killed") {}
};

constexpr const char* kWord = "WORD";

/// Hands out what it was made with.
class ModelBuilder : public Builder {
  public:
    explicit ModelBuilder(RecipeSet set = {}, Overlap overlap = Overlap::Always)
        : Builder({{kWord, {}}}), set_(std::move(set)), overlap_(overlap) {}
    std::shared_ptr<Context> complete(TargetContext&, int) override {
        return std::make_shared<Context>();
    }
    RecipeSet createRecipes(TargetContext&) override { return set_; }
    Overlap overlap(const TargetContext&) const override { return overlap_; }
    LookedFor lookedFor(const TargetContext&) const override { return {false, {}}; }

  private:
    RecipeSet set_;
    Overlap overlap_;
};

/// One command: joins its flag and the contents of its inputs into its output.
struct Step {
    std::vector<std::string> inputs;
    std::string output;
    std::uint32_t stage = 0;
    bool alone = false;    ///< declares its output, and finds included files by itself
    bool declared = true;  ///< the target says that it makes the output
};

struct ModelTarget {
    std::string name;
    std::vector<Step> steps;
    std::vector<std::string> dependencies;
};

// `mid` is made by commands that stand or fall together, `app` by a compiler and a linker; `side`
// makes a file that it does not tell of, which `late` reads.
const std::vector<ModelTarget>& targets() {
    static const std::vector<ModelTarget> all = {
        {"mid", {{{"s0", "s1"}, "m0"}, {{"s1"}, "m1"}}, {}},
        {"app",
         {{{"s2"}, "o2", 0, true}, {{"s3"}, "o3", 0, true}, {{"o2", "o3", "m0"}, "app", 1, true}},
         {"mid"}},
        {"side", {{{"s4"}, "hidden", 0, false, false}}, {}},
        {"late", {{{"hidden", "app"}, "out"}}, {"side", "app"}},
    };
    return all;
}

constexpr const char* kGrowing = "m1";

const std::vector<std::string> kSources = {"s0", "s1", "s2", "s3", "s4", "h0", "h1"};

class Model {
  public:
    /// One target after the other, or with a schedule for so many jobs.
    Model(unsigned seed, int jobs) : random_(seed) {
        options_.jobCount = jobs;
        for (const std::string& source : kSources) {
            edit(source);
        }
        // Commands look flags up on any thread, so no entry may come into being meanwhile.
        for (const ModelTarget& target : targets()) {
            words_[target.name];
            for (const Step& step : target.steps) {
                flags_[step.output];
            }
        }
    }

    /// Something happens to the project, or to the next build.
    void disturb() {
        failAt_ = killAt_ = -1;
        switch (pick(15)) {
            case 0:
            case 1:
            case 2:
                edit(source());
                break;
            case 3:
                editKeepingTime(source());
                break;
            case 4:
                touch(file());
                break;
            case 5:
                fs::remove(path(output()));
                break;
            case 6:
                write(path(output()), "by hand " + std::to_string(pick(100)));
                break;
            case 7:
                flags_[output()] = std::to_string(pick(3));
                break;
            case 8:
                edit(source());
                failAt_ = pick(4);
                break;
            case 9:
                edit(source());
                killAt_ = pick(4);
                break;
            case 10:  // a variable in a unit file or a profile
                words_[targets()[static_cast<std::size_t>(pick(4))].name] = std::to_string(pick(3));
                break;
            case 11:  // a unit file names another source
                furtherSource_ = chance();
                break;
            case 12:
                environment_ = std::to_string(pick(2));
                break;
            case 13:
                registered_ = std::to_string(pick(2));
                break;
            default:
                break;  // a build although nothing happened
        }
    }

    /// Whether the build got to its end. `ran` counts its commands.
    bool build(int& ran) {
        ran_ = 0;
        bool complete = false;
        {
            FileStates states;
            ProjectCache cache(directory_.path(), states);
            cache.load();
            try {
                options_.jobCount == 1 ? buildInOrder(cache) : buildSideBySide(cache);
                complete = true;
                cache.save();
            } catch (const Failed&) {
                cache.save();
            } catch (const Killed&) {
                // Nothing more is written.
            }
        }
        killed_ = false;
        failAt_ = killAt_ = -1;
        stamps_.clear();
        ran = ran_;
        return complete;
    }

    /// The first output that is not what a clean build makes of the files; empty when all are.
    std::string wrongOutput() {
        for (const ModelTarget& target : targets()) {
            for (const Step& step : target.steps) {
                if (!fs::exists(path(step.output)) ||
                    contentOf(path(step.output)) != made(target, step)) {
                    return step.output;
                }
            }
        }
        return {};
    }

    /// Until what is done next cannot carry the time of what has been done. File systems may stamp
    /// files with a finer clock than the one that their times are compared with.
    void waitForTheClock() const {
        using namespace std::chrono;
        const auto now = system_clock::now().time_since_epoch();
        while (platform::fileClock() <= duration_cast<nanoseconds>(now).count()) {}
    }

    bool chance() { return pick(2) == 0; }

  private:
    int pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    const std::string& source() { return kSources[static_cast<std::size_t>(pick(7))]; }
    std::string output() {
        static const std::vector<std::string> outputs = {"m0", "m1", "o2", "o3", "app", "out"};
        return outputs[static_cast<std::size_t>(pick(6))];
    }
    std::string file() { return chance() ? source() : output(); }
    fs::path path(const std::string& name) const { return directory_ / name; }

    /// Contents are of few kinds, so that edits are taken back now and then. A source may include
    /// headers by their names.
    void edit(const std::string& name) {
        std::string content = "text" + std::to_string(pick(3));
        if (name[0] == 's') {
            content += chance() ? " h0" : "";
            content += chance() ? " h1" : "";
        }
        write(path(name), content);
    }

    void editKeepingTime(const std::string& name) {
        const auto time = fs::last_write_time(path(name));
        std::string content = contentOf(path(name));
        content[4] = static_cast<char>('0' + pick(3));
        write(path(name), content);
        fs::last_write_time(path(name), time);
    }

    void touch(const std::string& name) {
        if (fs::exists(path(name))) {
            fs::last_write_time(path(name), fs::file_time_type::clock::now() +
                                                std::chrono::seconds(pick(100) - 50));
        }
    }

    std::vector<std::string> inputsOf(const Step& step) const {
        std::vector<std::string> inputs = step.inputs;
        if (furtherSource_ && step.output == kGrowing) {
            inputs.emplace_back("s4");
        }
        return inputs;
    }

    std::vector<std::string> included(const Step& step) const {
        std::vector<std::string> headers;
        for (const std::string& input : inputsOf(step)) {
            const std::string content = contentOf(path(input));
            for (const char* header : {"h0", "h1"}) {
                if (step.stage == 0 && content.find(header) != std::string::npos) {
                    headers.emplace_back(header);
                }
            }
        }
        return headers;
    }

    std::string made(const ModelTarget& target, const Step& step) {
        std::string text = "flag " + flags_.at(step.output) + "\n" + environment_ + registered_;
        text += step.alone ? "" : words_.at(target.name);
        for (const std::string& input : inputsOf(step)) {
            text += contentOf(path(input)) + "\n";
        }
        if (step.alone) {
            for (const std::string& header : included(step)) {
                text += contentOf(path(header)) + "\n";
            }
        }
        return text;
    }

    void run(const ModelTarget& target, const Step& step) {
        std::this_thread::yield();
        const std::lock_guard lock(mutex_);
        if (killed_) {
            throw Killed();
        }
        const int number = ran_++;
        const bool fails = number == failAt_;
        killed_ = number == killAt_;
        if (fails || killed_) {
            if (chance()) {
                write(path(step.output), "half");
            }
            fails ? throw Failed() : throw Killed();
        }
        write(path(step.output), made(target, step));
        if (step.alone) {
            std::string rule = step.output + ": ";
            for (const std::string& name : inputsOf(step)) {
                rule += name + " ";
            }
            for (const std::string& name : included(step)) {
                rule += name + " ";
            }
            write(path(step.output + ".d"), rule);
        }
    }

    Assignment file(const std::string& name, AssignModifier modifier = AssignModifier::None) const {
        return resolvedAssignment(
            CiString(name),
            std::make_shared<VeskPathString>(platform::pathToUtf8(path(name)), fs::path()),
            modifier);
    }

    static Assignment text(const char* name, const std::string& text) {
        return resolvedAssignment(name, std::make_shared<VeskRawString>(text));
    }

    Recipe recipeFor(const ModelTarget& target, const Step& step) {
        Recipe recipe;
        recipe.command = "join " + flags_.at(step.output) + " " + step.output;
        recipe.stage = step.stage;
        recipe.action = [this, &target, &step] { run(target, step); };
        recipe.role = !step.alone       ? RecipeRole::Any
                      : step.stage == 0 ? RecipeRole::Compile
                                        : RecipeRole::Link;
        recipe.workingDirectory = directory_.path();
        if (step.alone) {
            for (const std::string& input : inputsOf(step)) {
                recipe.inputs.push_back({file(input), std::nullopt});
            }
            recipe.outputs.push_back(file(step.output));
            if (step.stage == 0) {
                recipe.dependencyFile = path(step.output + ".d");
            }
        }
        return recipe;
    }

    std::shared_ptr<TargetContext> contextOf(const ModelTarget& target) const {
        auto context = std::make_shared<TargetContext>(std::make_shared<Target>(), target.name);
        for (const Step& step : target.steps) {
            for (const std::string& input : inputsOf(step)) {
                if (input != "hidden") {
                    context->addAssignment(file(input), ModifierMode::Copy);
                }
            }
        }
        auto environment = std::make_shared<Context>();
        environment->addAssignment(text("MODE", environment_), ModifierMode::Copy);
        context->addAssignment(
            resolvedAssignment("ENV", std::make_shared<VeskContext>(std::move(environment))),
            ModifierMode::Copy);
        context->addAssignment(text("toolchain_version", registered_), ModifierMode::Copy);
        context->addAssignment(text(kWord, words_.at(target.name)), ModifierMode::Copy);
        context->addAssignment(text("SIDE_BY_SIDE", "yes"), ModifierMode::Copy);
        return context;
    }

    RecipeSet recipesOf(const ModelTarget& target) {
        RecipeSet set;
        for (const Step& step : target.steps) {
            if (step.declared) {
                set.assignments.push_back(file(step.output, AssignModifier::Output));
            }
            set.recipes.push_back(recipeFor(target, step));
        }
        set.ok = true;
        return set;
    }

    void buildSideBySide(ProjectCache& cache) {
        const ProjectCatalog catalog{ProjectStore(), Context(), Context()};
        const Toolbox toolbox;
        const BuildSetting setting{catalog, toolbox, {}, {}, options_};
        SideBySide others(setting);
        std::map<std::string, TargetResult> results;
        try {
            for (const ModelTarget& target : targets()) {
                results[target.name] = begin(target, results, cache, setting, others);
                others.advance();
            }
            others.finish();
        } catch (const BuildFailed&) {
            others.abandon();
            killed_ ? throw Killed() : throw Failed();
        }
    }

    TargetResult begin(const ModelTarget& target, std::map<std::string, TargetResult>& results,
                       ProjectCache& cache, const BuildSetting& setting, SideBySide& others) {
        std::vector<DependencyStamp> stamps;
        ScheduledBuild::Dependencies scheduled;
        for (const std::string& name : target.dependencies) {
            const TargetResult& result = results.at(name);
            stamps.push_back({name, result.stamp});
            if (result.scheduled) {
                others.waitForStamp(*result.scheduled);
                stamps.back().stamp = result.scheduled->stamp();
                scheduled.push_back(result.scheduled);
            }
        }
        const bool alone = target.steps.front().alone;
        const auto builder = std::make_shared<ModelBuilder>(
            recipesOf(target), alone ? Overlap::Always : Overlap::WhenAsked);
        return others.build(std::make_unique<TargetBuild>(setting, BuildSubject{{0, target.name},
                                                                                target.name,
                                                                                "note",
                                                                                "model",
                                                                                builder,
                                                                                contextOf(target),
                                                                                stamps,
                                                                                cache,
                                                                                target.name}),
                            scheduled);
    }

    void buildInOrder(ProjectCache& cache) {
        for (const ModelTarget& target : targets()) {
            buildTarget(target, cache);
        }
    }

    void buildTarget(const ModelTarget& target, ProjectCache& cache) {
        const std::shared_ptr<TargetContext> context = contextOf(target);
        const RecipeSet set = recipesOf(target);
        std::vector<DependencyStamp> dependencies;
        for (const std::string& name : target.dependencies) {
            dependencies.push_back({name, stamps_[name]});
        }
        const ModelBuilder builder;
        CacheRequest request = cacheRequest(
            {*context, builder, set.assignments, set.recipes, dependencies}, cache.root());
        CacheStep step(cache, target.name, std::move(request), options_, {0, target.name});
        step.ask();
        if (!step.mustBuild()) {
            stamps_[target.name] = step.stamp();
            return;
        }
        runSteps(target, step);
        stamps_[target.name] = step.makesFiles() ? "" : std::to_string(random_());
        step.record({}, stamps_[target.name]);
    }

    void runSteps(const ModelTarget& target, CacheStep& step) {
        try {
            for (const std::uint32_t stage : {0u, 1u}) {
                std::vector<std::size_t> stale;
                for (std::size_t i = 0; i < target.steps.size(); ++i) {
                    if (target.steps[i].stage == stage && step.stale(i)) {
                        stale.push_back(i);
                    }
                }
                for (const std::size_t i : stale) {
                    run(target, target.steps[i]);
                    step.ran(i);
                }
            }
        } catch (const Failed&) {
            step.keepProgress();
            throw;
        }
    }

    TempDir directory_;
    DriverOptions options_;
    std::mutex mutex_;
    bool killed_ = false;
    std::mt19937 random_;
    std::map<std::string, std::string> flags_;
    std::map<std::string, std::string> words_;  ///< of each target
    std::string environment_;
    std::string registered_;      ///< what the registry says of the toolchain
    bool furtherSource_ = false;  ///< of the step that makes kGrowing
    std::map<std::string, std::string> stamps_;
    int failAt_ = -1;
    int killAt_ = -1;
    int ran_ = 0;
};

#ifdef __SANITIZE_THREAD__
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif

/// A seed and a number of jobs.
class CacheModel : public testing::TestWithParam<std::pair<unsigned, int>> {};

TEST_P(CacheModel, IsNeverWrongAndNeverBusyForNothing) {
    Model model(GetParam().first, GetParam().second);
    const ConsoleCapture quiet(console::level::kError + 1);
    // The emulator pays for each of the many small files, the sanitizer for each access; the code
    // that they run is the same.
    const int rounds = platform::kWindows || kThreadSanitizer ? 100 : 500;
    for (int round = 0; round < rounds; ++round) {
        model.disturb();
        const bool patient = model.chance() && model.chance();
        if (patient) {
            model.waitForTheClock();
        }
        int ran = 0;
        if (!model.build(ran)) {
            continue;
        }
        ASSERT_EQ(model.wrongOutput(), "") << "round " << round << ", commands run: " << ran;
        if (patient) {
            ASSERT_TRUE(model.build(ran));
            ASSERT_EQ(ran, 0) << "round " << round;
            ASSERT_EQ(model.wrongOutput(), "") << "round " << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CacheModel,
                         testing::Values(std::pair(1u, 1), std::pair(2u, 1), std::pair(3u, 1),
                                         std::pair(34u, 1), std::pair(63u, 1), std::pair(1u, 2),
                                         std::pair(2u, 3), std::pair(4u, 5), std::pair(34u, 8)));

}  // namespace
}  // namespace Vesk::test
