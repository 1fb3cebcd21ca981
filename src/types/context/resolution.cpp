#include "types/context/resolution.h"

#include <algorithm>

#include "types/context/context.h"
#include "types/context/context_value.h"
#include "types/values/errors.h"
#include "types/values/expansion.h"
#include "types/values/identifier_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"
#include "types/values/value_size.h"

namespace Vesk {
namespace {

constexpr std::string_view kCharacterSetName = "ascii";

/// Marks a name as being resolved. Refuses a name that already is.
class InProgress {
  public:
    InProgress(std::vector<std::string>& names, const CiString& name) : names_(names) {
        const auto first = std::find_if(
            names.begin(), names.end(),
            [&name](const std::string& other) { return equalsIgnoringCase(other, name); });
        if (first != names.end()) {
            std::vector<std::string> chain(first, names.end());
            chain.push_back(name.str());
            throw LoopFoundException(name.str(), std::move(chain));
        }
        if (names.size() >= kMaxReferenceDepth) {
            throw VeskException(fmt::format(
                "Variable '{}' is reached through more than {} references to other variables.",
                name, kMaxReferenceDepth));
        }
        names_.push_back(name.str());
    }
    ~InProgress() { names_.pop_back(); }
    InProgress(const InProgress&) = delete;
    InProgress& operator=(const InProgress&) = delete;

  private:
    std::vector<std::string>& names_;
};

ValuePtr resolvedValue(const ValuePtr& value, Context& context) {
    Resolvable* resolvable = resolvableOf(value);
    if (resolvable == nullptr) {
        return value;
    }
    resolvable->setResolver(&context);
    ValuePtr resolved = resolvable->resolve();
    if (valueAs<VeskIdentifier>(value.get()) == nullptr) {
        return resolved;
    }
    // A reference gives the other variable's own value, and appends to this one must not reach it.
    const bool isContext = valueAs<VeskContext>(resolved.get()) != nullptr;
    return isContext ? resolved->deepCopy() : resolved->clone();
}

/// What a further name of a dotted path selects. The last name is a variable of a context; one in
/// the middle is a key like any other.
ValuePtr memberOf(const ValuePtr& value, const std::string& name, bool isLast) {
    if (const auto* inner = valueAs<VeskContext>(value.get())) {
        return inner->context()->valueOfVariable(name);
    }
    ValuePtr member = isLast ? nullptr : value->at(NameKey{name});
    if (!member) {
        throw NotAContext();
    }
    return member;
}

}  // namespace

ValuePtr Resolution::lookUp(std::string_view name, bool dotted) {
    if (Assignment* assignment = context_.find(name)) {
        return valueOf(*assignment);
    }
    if (enclosing_ != nullptr) {
        return enclosing_->resolution_.lookUp(name, dotted);
    }
    if (equalsIgnoringCase(name, kCharacterSetName)) {
        return std::make_shared<VeskCharSet>();
    }
    context_.throwUnknown(name, dotted);
}

ValuePtr Resolution::valueOf(Assignment& assignment) {
    if (!assignment.value) {
        return std::make_shared<VeskString>(std::string{});
    }
    if (assignment.state == ResolveState::Resolved) {
        return assignment.value;
    }
    if (begun_) {
        resolve(assignment);
        return assignment.value;
    }
    if (const auto known = lookedUp_.find(assignment.name); known != lookedUp_.end()) {
        return known->second;
    }
    ValuePtr value = resolvedCopy(assignment);
    lookedUp_.emplace(assignment.name, value);
    return value;
}

ValuePtr Resolution::resolvedCopy(const Assignment& assignment) {
    const InProgress mark(inProgress_, assignment.name);
    missing_.beginEvaluation(assignment.name.str());
    ValuePtr value = resolvedValue(assignment.value->deepCopy(), context_);
    checkSize(*value);
    return value;
}

void Resolution::resolve(Assignment& assignment) {
    if (assignment.state == ResolveState::Resolved) {
        return;
    }
    const InProgress mark(inProgress_, assignment.name);
    missing_.beginEvaluation(assignment.name.str());
    assignment.state = ResolveState::InProgress;
    if (assignment.value) {
        assignment.value = resolvedValue(assignment.value, context_);
    }
    if (assignment.exported) {
        assignment.exported = resolvedValue(assignment.exported, context_);
    }
    assignment.state = ResolveState::Resolved;
    size_.addBytes(assignment.name.str().size());
    if (assignment.value) {
        size_.add(*assignment.value);
    }
}

ValuePtr Resolution::applyIndex(const ValuePtr& value, const PathIndex& index,
                                const IdentifierPath& path, std::size_t element) {
    struct ToKey {
        Resolution& resolution;
        Key operator()(std::int64_t number) const { return IndexKey{number}; }
        Key operator()(const PathRange& range) const { return RangeKey{range.start, range.end, 1}; }
        Key operator()(const PathName& name) const { return NameKey{name.name}; }
        Key operator()(const std::shared_ptr<const IdentifierPath>& nested) const {
            return makeKey(resolution.resolveIdentifier(*nested));
        }
        Key operator()(const PathRegex& regex) const { return RegexKey{regex.pattern}; }
    };
    const Key key = std::visit(ToKey{*this}, index);
    const auto* inner = valueAs<VeskContext>(value.get());
    if (const auto* name = std::get_if<NameKey>(&key); name != nullptr && inner != nullptr) {
        return inner->context()->valueOfVariable(name->name);
    }
    ValuePtr selected = value->at(key);
    if (!selected) {
        throw IdentifierError(path.elementTexts(), element);
    }
    return selected;
}

ValuePtr Resolution::resolveIdentifier(const IdentifierPath& path) {
    ValuePtr value = lookUp(path.segments.front().name, path.segments.size() > 1);
    for (std::size_t i = 0; i < path.segments.size(); ++i) {
        const IdentifierSegment& segment = path.segments[i];
        if (i > 0) {
            value = memberOf(value, segment.name, i + 1 == path.segments.size());
        }
        for (const PathIndex& index : segment.keys) {
            value = applyIndex(value, index, path, i);
        }
    }
    return value;
}

void Resolution::reportMissing(std::string place, const IdentifierPath& path) {
    if (silent_) {
        return;
    }
    if (!inProgress_.empty()) {
        place = inProgress_.back() + "." + place;
    }
    if (enclosing_ != nullptr) {
        // The outermost context keeps count, because inner ones are copied for each evaluation.
        enclosing_->resolution_.reportMissing(std::move(place), path);
    } else if (missing_.isNew(place + path.toDisplayString())) {
        context_.Resolver::reportMissing(path);
    }
}

void Resolution::follow(ValuePtr& reference, const CiString& name) {
    if (valueAs<VeskIdentifier>(reference.get()) != nullptr) {
        const InProgress mark(inProgress_, name);
        reference = resolvedValue(reference, context_);
    }
}

void Resolution::begin() {
    forget();
    begun_ = true;
}

void Resolution::continueFrom(const Resolution& other) noexcept {
    enclosing_ = other.enclosing_;
    begun_ = other.begun_;
    silent_ = other.silent_;
}

}  // namespace Vesk
