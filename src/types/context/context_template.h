// The contents of a brace block in a file, before it is used.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "types/context/assignment.h"

namespace Vesk {

class Context;
class ContextTemplate;

/// Codes of condition operators.
enum class ConditionOperator : std::uint32_t {
    Equal = 1,
    NotEqual = 2,
    Less = 3,
    Greater = 4,
    Exists = 5,  ///< a bare identifier: true when it resolves
};

/// A conditional block: its body's assignments apply when the condition holds.
struct Condition {
    ValuePtr left;
    ValuePtr right;  ///< empty for Exists
    ConditionOperator op = ConditionOperator::Exists;
    std::shared_ptr<const ContextTemplate> body;
    SourcePlace place;
};

/// The assignments and conditional blocks of a brace block, in the order in which they are written.
class ContextTemplate {
  public:
    virtual ~ContextTemplate() = default;

    /// A new context with copies of everything, merged at once by the rules for values. Throws what
    /// merging throws, with notes.
    std::shared_ptr<Context> instantiate() const;

    std::vector<Assignment> assignments;
    std::vector<Condition> conditions;
};

/// Merges a copy of an assignment of the block into the context that the block fills. One without a
/// modifier keeps the stored modifier. Throws what merging throws, with notes.
void fill(Context& context, const Assignment& assignment);

/// A copy with its own operands.
Condition deepCopy(const Condition& condition);

}  // namespace Vesk
