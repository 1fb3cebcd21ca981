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
/// Life: filled by merging assignments; `evaluateConditions` merges the bodies that apply;
/// `resolveVariables` gives every variable its final value; then it is read. Always held by a
/// shared pointer. Not locked.
class Context : public Resolver, public std::enable_shared_from_this<Context> {
  public:
    using Map = std::map<CiString, Assignment, CiLess>;

    /// The value of a path as it would be after resolving; nothing stored changes before
    /// `resolveVariables` runs. Names that this context lacks are looked for in the enclosing one;
    /// `ascii` is the character set where no variable has that name. Throws NotFoundException,
    /// MissingVariable, NotAContext, IndexException, IdentifierError, LoopFoundException.
    ValuePtr resolveIdentifier(const IdentifierPath& path) override;
    void reportMissing(const IdentifierPath& path) override;

    /// Writes the dump, a message a line, when the level reaches the console's threshold.
    virtual void print(int level) const;

    /// Inserts a copy, or merges into the assignment of that name, at once and by the rules of the
    /// values, but that what is appended to a path makes a list of paths. So bodies are filled.
    /// Throws AssignmentException for a forbidden merge, and what appending throws.
    void addAssignment(const Assignment& assignment, ModifierMode mode);

    /// Merges what belongs to different layers of a target: an append that meets an unresolved
    /// reference, in the value or in what is stored, or that would turn one into text, is held back
    /// and made when variables are resolved, in order, instead of failing. What replaces a value
    /// drops what is held for it.
    void mergeAssignment(const Assignment& assignment, ModifierMode mode);
    void mergeAssignment(const Assignment& assignment) {
        mergeAssignment(assignment, writtenMode(assignment));
    }

    /// Merges copies of the other's assignments like this, in its map order, and takes over its
    /// conditions and held appends.
    void mergeContext(const Context& other, ModifierMode mode);

    /// The assignment that the keys lead to; the last one names it. Throws InternalError for no
    /// keys, NotFoundException, MissingVariable, NotAContext.
    Assignment& getAssignment(const std::vector<Key>& keys);

    const Assignment* find(std::string_view name) const;
    Assignment* find(std::string_view name);
    bool erase(std::string_view name);  ///< with what is held for it
    const Map& assignments() const noexcept { return assignments_; }

    /// The text (toString) of a variable's value; nothing when it is missing or has no value.
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

    /// The same without the announcement and without dropping hints; for nested contexts.
    void resolveAll();

    /// Makes the held appends whose references resolve now; the others stay held.
    void placeHeldAppends();
    bool hasHeldAppends(std::string_view name) const { return heldAppends_.has(name); }

    /// The value of a stored assignment as it would be after resolving; an empty string when it
    /// has none. Throws as `resolveIdentifier`.
    ValuePtr valueOfVariable(std::string_view name);

    /// Replaces each hint's value by what it stands for: the named variable's value where there is
    /// one, else the name's text. Throws VeskException for a hint that is no identifier.
    void resolveHints();

    /// Nothing is reported about unknown variables from now on; for trial evaluations.
    void setSilent() noexcept { resolution_.setSilent(); }

    /// Where names are looked for that this context lacks. Not owned: whoever has this context
    /// resolved names the enclosing one again.
    void setEnclosing(Context* enclosing) noexcept;

    /// A copy that shares nothing that can change.
    std::shared_ptr<Context> deepCopy() const;

    /// The dump: a line "{", a line for each assignment, and "}" without a line end.
    std::string dump() const;

    /// Names that variables have here, for suggestions.
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
