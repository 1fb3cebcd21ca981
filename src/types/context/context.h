// Contexts: scopes of named assignments.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/ci_string.h"
#include "types/context/assignment.h"
#include "types/context/assignment_merge.h"
#include "types/context/context_template.h"
#include "types/context/held_appends.h"
#include "types/context/resolution.h"
#include "types/values/identifier_path.h"
#include "types/values/value.h"

namespace Vesk {

/// The source unit that internal errors of this floor name.
inline constexpr const char* kContextSourceUnit = "types/vesk_context_types";

/// A scope of variables, and conditional blocks that may add to them.
///
/// Life cycle: merging assignments fills it; `evaluateConditions` merges the bodies that apply;
/// `resolveVariables` gives every variable its final value; then it is only read. Always held by a
/// shared pointer. Has no lock.
class Context : public Resolver, public std::enable_shared_from_this<Context> {
  public:
    using Map = std::map<CiString, Assignment, CiLess>;

    /// The value that a path would have after resolving; nothing stored changes before
    /// `resolveVariables` runs. Names that this context lacks are looked up in the enclosing one;
    /// `ascii` is the character set unless a variable has that name. Throws NotFoundException,
    /// MissingVariable, NotAContext, IndexException, IdentifierError, LoopFoundException.
    ValuePtr resolveIdentifier(const IdentifierPath& path) override;
    void reportMissing(const IdentifierPath& path) override;

    /// Writes the dump, one message for each line, if the level reaches the console's threshold.
    virtual void print(int level) const;

    /// Inserts a copy, or merges into the assignment of that name at once, by the rules for values,
    /// except that appending to a path makes a list of paths. This is how bodies are filled. Throws
    /// AssignmentException for a forbidden merge, and whatever appending throws.
    void addAssignment(const Assignment& assignment, ModifierMode mode);

    /// Merges an assignment of another layer of a target. An append that meets an unresolved
    /// reference, in the value or in what is stored, or that would turn one into text, does not
    /// fail here: it is held back and made, in order, when variables are resolved. Replacing a
    /// value drops what is held for it.
    void mergeAssignment(const Assignment& assignment, ModifierMode mode);
    void mergeAssignment(const Assignment& assignment) {
        mergeAssignment(assignment, writtenMode(assignment));
    }

    /// Merges copies of the other's assignments in the same way, in its map order, and takes over
    /// its conditions and held appends.
    void mergeContext(const Context& other, ModifierMode mode);

    /// The assignment that the keys lead to; the last key names it. Throws InternalError for an
    /// empty list of keys, NotFoundException, MissingVariable, NotAContext.
    Assignment& getAssignment(const std::vector<Key>& keys);

    const Assignment* find(std::string_view name) const;
    Assignment* find(std::string_view name);
    bool erase(std::string_view name);  ///< together with what is held for it
    const Map& assignments() const noexcept { return assignments_; }

    /// The text (toString) of a variable's value; nothing if it is missing or has no value.
    std::optional<std::string> textOf(std::string_view name) const;

    void addCondition(Condition condition) { conditions_.push_back(std::move(condition)); }
    const std::vector<Condition>& conditions() const noexcept { return conditions_; }

    enum class Unresolvable {
        fails,    ///< an operand of a comparison that cannot be resolved is an error
        isFalse,  ///< the condition is false; nothing is reported
    };

    /// Whether a condition holds here. Throws what resolving and comparing throw, with a note.
    bool conditionHolds(const Condition& condition, Unresolvable unresolvable);

    /// Evaluates the conditional blocks in order and merges the bodies of those that hold.
    void evaluateConditions(Unresolvable unresolvable = Unresolvable::fails);

    /// Drops hints, makes the held appends and resolves every variable, each after those that it
    /// refers to. Announces itself at trace level. Throws what resolving throws, with a note that
    /// names the variable.
    void resolveVariables();

    /// The same without the announcement and without dropping hints, for nested contexts.
    void resolveAll();

    /// Makes the held appends whose references now resolve; the others stay held.
    void placeHeldAppends();
    bool hasHeldAppends(std::string_view name) const { return heldAppends_.has(name); }

    /// The value that a stored assignment would have after resolving; an empty string if it has
    /// none. Throws as `resolveIdentifier` does.
    ValuePtr valueOfVariable(std::string_view name);

    /// Replaces each hint's value by what it stands for: the named variable's value if there is
    /// one, otherwise the text of the name. Throws VeskException for a hint that is not an
    /// identifier.
    void resolveHints();

    /// From now on unknown variables are not reported. For trial evaluations.
    void setSilent() noexcept { resolution_.setSilent(); }

    /// The context in which names are looked up that this one lacks. Not owned: whoever has this
    /// context resolved sets the enclosing one again.
    void setEnclosing(Context* enclosing) noexcept;

    /// A copy that shares nothing that can change.
    std::shared_ptr<Context> deepCopy() const;

    /// The dump: a line "{", a line for each assignment, and "}" without a line end.
    std::string dump() const;

    /// The names of the variables here, for suggestions.
    std::vector<std::string> names() const;

  protected:
    void printBlock(int level, bool withModifiers) const;

  private:
    friend class Resolution;

    Assignment& storedAt(const std::vector<Key>& keys);
    void merge(const Assignment& assignment, ModifierMode mode, Parts parts);
    void mergeOrHold(const Assignment& assignment, ModifierMode mode, Parts parts);
    bool mustHold(const Assignment& assignment) const;
    void takeOver(const ValuePtr& value, std::size_t known);
    void placeHeldAppend(const HeldAppend& held);
    [[noreturn]] void throwUnknown(std::string_view name, bool dotted) const;

    Map assignments_;
    std::vector<Condition> conditions_;
    HeldAppends heldAppends_;
    Resolution resolution_{*this};
};

}  // namespace Vesk
