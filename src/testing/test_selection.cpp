#include "testing/test_selection.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

#include "base/attempt.h"
#include "driver/input_context.h"
#include "driver/target_wishes.h"
#include "testing/test_names.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

std::string displayNameOf(const TargetLocation& location) {
    return location.unit->name + "::" + location.target->name;
}

class TestFinder {
  public:
    TestFinder(const ProjectCatalog& catalog, const TestScope& scope)
        : catalog_(catalog), scope_(scope) {}

    std::vector<TargetLocation> find() {
        if (scope_.from) {
            findBelow(*scope_.from);
        } else {
            for (const auto& unit : catalog_.active().units()) {
                for (const auto& target : unit->targets) {
                    takeIfTest({&catalog_.active(), unit, target});
                }
            }
        }
        return std::move(tests_);
    }

  private:
    void findBelow(const TargetLocation& start) {
        std::deque<TargetLocation> waiting = {start};
        std::unordered_set<const Target*> known = {start.target.get()};
        for (; !waiting.empty(); waiting.pop_front()) {
            const TargetLocation location = waiting.front();
            takeIfTest(location);
            for (const DependencyReference& reference : dependenciesOf(location)) {
                TargetLocation next = catalog_.locate(reference, *location.project, *location.unit);
                if (known.insert(next.target.get()).second) {
                    waiting.push_back(std::move(next));
                }
            }
        }
    }

    void takeIfTest(const TargetLocation& location) {
        const bool wanted =
            scope_.pattern.empty() ||
            testNameFits(location.unit->name, location.target->name, scope_.pattern);
        if (wanted && location.target->parameters.empty() && isTest(location)) {
            tests_.push_back(location);
        }
    }

    /// Null if that needs what only a build can tell, such as the outputs of dependencies.
    std::shared_ptr<Context> trialContext(const TargetLocation& location) const {
        std::shared_ptr<Context> context;
        succeeds([&] {
            context = InputContext::forToolChoice(
                location.target, displayNameOf(location),
                {nullptr, catalog_.implicitLayers(*location.project), {}});
        });
        return context;
    }

    bool isTest(const TargetLocation& location) const {
        const std::shared_ptr<Context> context = trialContext(location);
        if (!context || context->find(kTestVariable) == nullptr) {
            return false;
        }
        try {
            return saysYes(*context, kTestVariable);
        } catch (...) {
            rethrowWithNote("in target " + displayNameOf(location) + " (" +
                            location.target->place() + ")");
        }
    }

    std::vector<DependencyReference> dependenciesOf(const TargetLocation& location) const {
        std::vector<DependencyReference> references;
        std::shared_ptr<Context> context;
        for (const DependencyRecord& record : location.target->dependencies()) {
            if (record.kind == DependencyKind::Direct) {
                references.push_back(record.reference);
                continue;
            }
            context = context ? context : trialContext(location);
            if (context) {
                addListed(*context, record.macro, references);
            }
        }
        return references;
    }

    /// What the variable of a macro lists. A build of the target reports what is wrong with it.
    static void addListed(Context& context, const IdentifierPath& macro,
                          std::vector<DependencyReference>& references) {
        succeeds([&] {
            const std::string text = context.resolveIdentifier(macro)->toString();
            for (const std::string& item : parseDynamicDependencies(text)) {
                references.push_back(parseDynamicDependency(item, text).reference);
            }
        });
    }

    const ProjectCatalog& catalog_;
    const TestScope& scope_;
    std::vector<TargetLocation> tests_;
};

}  // namespace

std::vector<TargetLocation> findTests(const ProjectCatalog& catalog, const TestScope& scope) {
    return TestFinder(catalog, scope).find();
}

}  // namespace Vesk
