// Short ways to write down targets and tools.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/matcher.h"
#include "types/model/target.h"
#include "types/values/identifier_value.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk::test {

inline ValuePtr str(std::string text) {
    return std::make_shared<VeskString>(std::move(text));
}
inline ValuePtr num(std::int32_t value) {
    return std::make_shared<VeskInt>(value);
}
inline ValuePtr list(std::vector<ValuePtr> items) {
    return std::make_shared<VeskList>(std::move(items));
}
inline ValuePtr path(std::string text, std::filesystem::path base = {}) {
    return std::make_shared<VeskPathString>(std::move(text), std::move(base));
}
inline ValuePtr identifier(std::string name) {
    return std::make_shared<VeskIdentifier>(IdentifierPath::ofName(std::move(name)));
}

/// `name = value`; no value: a bare name.
inline Assignment var(const char* name, ValuePtr value = nullptr,
                      AssignModifier modifier = AssignModifier::None) {
    Assignment assignment;
    assignment.name = name;
    assignment.op = value ? AssignOperator::Assign : AssignOperator::None;
    assignment.value = std::move(value);
    assignment.modifier = modifier;
    return assignment;
}

inline Assignment out(const char* name, ValuePtr value = nullptr) {
    return var(name, std::move(value), AssignModifier::Output);
}
inline Assignment must(const char* name, ValuePtr value = nullptr) {
    return var(name, std::move(value), AssignModifier::Must);
}

template <class C = Context, class... Args>
std::shared_ptr<C> contextOf(const std::vector<Assignment>& assignments, Args&&... args) {
    auto context = std::make_shared<C>(std::forward<Args>(args)...);
    for (const Assignment& assignment : assignments) {
        context->addAssignment(assignment, ModifierMode::Copy);
    }
    return context;
}

inline std::shared_ptr<TargetContext> targetOf(const std::vector<Assignment>& assignments) {
    return contextOf<TargetContext>(assignments, std::make_shared<const Target>(), "main::app");
}

inline AssignmentMap mapOf(const std::vector<Assignment>& assignments) {
    AssignmentMap map;
    for (const Assignment& assignment : assignments) {
        map.emplace(assignment.name, assignment);
    }
    return map;
}

/// A tool made of nothing but tables, with a verdict of its own where one is given.
class TableMatcher : public Matcher {
  public:
    TableMatcher(const char* name, const AssignmentMap& wants, const AssignmentMap& needs,
                 const AssignmentMap& must = {}, const AssignmentMap& others = {})
        : Matcher(name, "table", wants, needs, must, others) {}

    std::unique_ptr<Matcher> clone() const override {
        return std::make_unique<TableMatcher>(*this);
    }
    std::shared_ptr<Builder> createBuilder(const Context&) const override { return nullptr; }

    MatchResult verdict{{}, MatchNote::BuildPossible};

  protected:
    MatchResult matchTool(const Context&) const override { return verdict; }
};

}  // namespace Vesk::test
