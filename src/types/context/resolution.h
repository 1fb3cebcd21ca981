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

/// A value is resolved when it is asked for, after everything that it refers to. Until `begin`,
/// results are kept aside, since later assignments may still change what a reference leads to; from
/// then on they are stored. Part of a context, which it refers to.
class Resolution {
  public:
    explicit Resolution(Context& context) noexcept : context_(context) {}
    Resolution(const Resolution&) = delete;
    Resolution& operator=(const Resolution&) = delete;

    /// See `Context` for both.
    ValuePtr resolveIdentifier(const IdentifierPath& path);
    void reportMissing(std::string place, const IdentifierPath& path);

    /// The value that one of the context's variables would have after resolving; an empty string if
    /// it has none.
    ValuePtr valueOf(Assignment& assignment);

    /// The value that any assignment would have in the context. Ignores and keeps no results.
    ValuePtr resolvedCopy(const Assignment& assignment);

    /// Replaces a reference by the value it refers to; leaves other values as they are. `name` is
    /// the variable that holds the value.
    void follow(ValuePtr& reference, const CiString& name);

    /// Gives the variable its final value if it has none yet.
    void resolve(Assignment& assignment);

    /// From now on results are stored.
    void begin();

    /// Call when what has been looked up may have changed.
    void forget() noexcept { lookedUp_.clear(); }

    void setEnclosing(Context* enclosing) noexcept { enclosing_ = enclosing; }
    void setSilent() noexcept { silent_ = true; }

    /// Continues from the state of the context that was copied.
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
    ValueSize size_;  ///< of everything resolved
    bool begun_ = false;
    bool silent_ = false;
};

}  // namespace Vesk
