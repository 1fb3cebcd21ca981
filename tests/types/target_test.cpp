#include "types/target.h"

#include <gtest/gtest.h>

#include "support/console_capture.h"
#include "types/support.h"

namespace Vesk {
namespace {

using namespace test;

std::shared_ptr<Target> targetAt(const char* name, std::uint32_t line,
                                 std::shared_ptr<const std::filesystem::path> file = nullptr) {
    auto target = std::make_shared<Target>();
    target->name = name;
    target->line = line;
    target->file = std::move(file);
    return target;
}

TEST(Target, UnitsFindTheirTargetsByExactName) {
    const auto file = std::make_shared<const std::filesystem::path>("vesk.txt");
    Unit unit;
    unit.addTarget(targetAt("b", 3, file));
    unit.addTarget(targetAt("a", 5, file));
    unit.addTarget(targetAt("B", 7));
    EXPECT_EQ(unit.targetNames(), (std::vector<std::string>{"b", "a", "B"}));
    EXPECT_EQ(unit.findTarget("B")->line, 7U);
    EXPECT_EQ(unit.findTarget("b")->place(), "vesk.txt:3");
    EXPECT_EQ(unit.findTarget("B")->place(), "line 7");
    EXPECT_EQ(unit.findTarget("c"), nullptr);
    EXPECT_EQ(outcomeOf([&] { unit.addTarget(targetAt("a", 9, file)); }),
              "VeskException: Target 'a' is defined twice: vesk.txt:5 and vesk.txt:9.");
    EXPECT_EQ(unit.targets.size(), 3U);
}

TEST(Target, ItsContextPrintsModifiers) {
    TargetContext context(targetAt("t", 1), "u::t");
    for (const auto& [name, modifier] : {std::pair{"none", AssignModifier::None},
                                         {"out", AssignModifier::Output},
                                         {"must", AssignModifier::Must},
                                         {"hint", AssignModifier::Hint}}) {
        context.addAssignment(set(name, num(1), modifier), ModifierMode::Copy);
    }
    EXPECT_EQ(context.displayName(), "u::t");
    ConsoleCapture capture(3);
    const Context& base = context;
    base.print(3);
    EXPECT_EQ(capture.text(), "{\n?hint = 1\n!must = 1\nnone = 1\n^out = 1\n}\n\n");
}

}  // namespace
}  // namespace Vesk
