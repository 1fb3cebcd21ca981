// How a context gives its variables their final values.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/ci_string.h"
#include "types/context/assignment.h"
#include "types/context/missing_variables.h"
#include "types/values/identifier_path.h"
#include "types/values/value.h"
#include "types/values/value_size.h"

namespace Vesk {

class Context;

/// A value is resolved when it is asked for, after everything that it refers to. Until `begin` the
/// results are kept aside, since later assignments may still change what a reference leads to; from
/// then on they are stored. Part of a context, which it refers to.
class Resolution {
  public:
    explicit Resolution(Context& context) noexcept : context_(context) {}
    Resolution(const Resolution&) = delete;
    Resolution& operator=(const Resolution&) = delete;

    /// Both as `Context` says.
    ValuePtr resolveIdentifier(const IdentifierPath& path);
    void reportMissing(std::string place, const IdentifierPath& path);

    /// The value of one of the context's variables as it would be after resolving; an empty string
    /// when it has none.
    ValuePtr valueOf(Assignment& assignment);

    /// The value of any assignment as it would be in the context, whatever is kept.
    ValuePtr resolvedCopy(const Assignment& assignment);

    /// Puts the value in place of a reference to it; leaves other values as they are. `name` is the
    /// variable that holds it.
    void follow(ValuePtr& reference, const CiString& name);

    /// Gives the variable its final value, if it has none yet.
    void resolve(Assignment& assignment);

    /// From now on results are stored.
    void begin();

    /// What was looked up may have changed.
    void forget() noexcept { lookedUp_.clear(); }

    void setEnclosing(Context* enclosing) noexcept { enclosing_ = enclosing; }
    void setSilent() noexcept { silent_ = true; }

    /// Goes on from where that of the context that is copied stands.
    void continueFrom(const Resolution& other) noexcept;

  private:
    ValuePtr lookUp(std::string_view name, bool dotted);
    ValuePtr applyIndex(const ValuePtr& value, const PathIndex& index, const IdentifierPath& path,
                        std::size_t element);

    Context& context_;
    Context* enclosing_ = nullptr;
    std::map<CiString, ValuePtr, CiLess> lookedUp_;  ///< results before `begin`, until a change
    std::vector<std::string> inProgress_;            ///< names being resolved, outermost first
    MissingVariables missing_;
    ValueSize size_;  ///< of all that is resolved
    bool begun_ = false;
    bool silent_ = false;
};

}  // namespace Vesk
