// How contexts give variables their final values.
//
// A value is resolved when it is asked for, after everything that it refers to. Before
// `resolveVariables` the results are kept aside, since later assignments may still change what a
// reference leads to; from then on they are stored.

#include <algorithm>

#include "base/console.h"
#include "base/text.h"
#include "types/context.h"
#include "types/context_value.h"
#include "types/errors.h"
#include "types/expansion.h"
#include "types/identifier_value.h"
#include "types/simple_values.h"
#include "types/string_values.h"
#include "types/value_size.h"

namespace Vesk {
namespace {

constexpr std::string_view kCharacterSetName = "ascii";

/// Marks a name as being resolved; refuses a name that is already.
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
    // A reference gives the other variable's own value: appends to this one must not reach it.
    const bool isContext = valueAs<VeskContext>(resolved.get()) != nullptr;
    return isContext ? resolved->deepCopy() : resolved->clone();
}

std::string variableNote(const Assignment& assignment) {
    return "in variable '" + assignment.name.str() + "'";
}

/// The text of a hint that names a variable, or nothing.
std::optional<IdentifierPath> hintPath(const ValuePtr& value) {
    if (const auto* identifier = valueAs<VeskIdentifier>(value.get())) {
        return identifier->path;
    }
    IdentifierPath path;
    ParseError error;
    std::size_t end = 0;
    const auto* string = valueAs<VeskBaseString>(value.get());
    if (string != nullptr && parseIdentifierPath(string->text, path, error, &end) &&
        end == string->text.size()) {
        return path;
    }
    return std::nullopt;
}

/// What a further name of a dotted path selects. The last one names a variable of a context; one in
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

void Context::reportMissing(const IdentifierPath& path) {
    reportMissingIn({}, path);
}

/// A variable is evaluated as often as somebody asks for it before it is resolved for good, but
/// each reference of its text is reported once. The outermost context keeps count: those within are
/// copied for each evaluation.
void Context::reportMissingIn(std::string place, const IdentifierPath& path) {
    if (silent_) {
        return;
    }
    if (!inProgress_.empty()) {
        place = inProgress_.back() + "." + place;
    }
    if (enclosing_ != nullptr) {
        enclosing_->reportMissingIn(std::move(place), path);
        return;
    }
    Missing& missing = missing_[place + path.toDisplayString()];
    if (++missing.seen > missing.reported) {
        missing.reported = missing.seen;
        Resolver::reportMissing(path);
    }
}

void Context::beginEvaluation(const CiString& name) {
    const std::string place = name.str() + ".";
    for (auto entry = missing_.lower_bound(place);
         entry != missing_.end() && entry->first.starts_with(place); ++entry) {
        entry->second.seen = 0;
    }
}

void Context::throwUnknown(std::string_view name, bool dotted) const {
    // Worked out where it is printed: most errors of this kind are caught and never seen.
    const auto suggestion = [self = shared_from_this(), name = std::string(name)] {
        return didYouMean(name, self->names());
    };
    if (dotted) {
        MissingVariable error{std::string(name)};
        error.addNote(suggestion);
        throw error;
    }
    NotFoundException error("Assignment", std::string(name));
    error.addNote(suggestion);
    throw error;
}

ValuePtr Context::lookUp(std::string_view name, bool dotted) {
    if (Assignment* assignment = find(name)) {
        return valueOf(*assignment);
    }
    if (enclosing_ != nullptr) {
        return enclosing_->lookUp(name, dotted);
    }
    if (equalsIgnoringCase(name, kCharacterSetName)) {
        return std::make_shared<VeskCharSet>();
    }
    throwUnknown(name, dotted);
}

ValuePtr Context::valueOfVariable(std::string_view name) {
    Assignment* assignment = find(name);
    if (assignment == nullptr) {
        throwUnknown(name, false);
    }
    return valueOf(*assignment);
}

ValuePtr Context::valueOf(Assignment& assignment) {
    if (!assignment.value) {
        return std::make_shared<VeskString>(std::string{});
    }
    if (assignment.state == ResolveState::Resolved) {
        return assignment.value;
    }
    if (resolving_) {
        resolveAssignment(assignment);
        return assignment.value;
    }
    if (const auto known = lookedUp_.find(assignment.name); known != lookedUp_.end()) {
        return known->second;
    }
    ValuePtr value = resolvedCopy(assignment);
    lookedUp_.emplace(assignment.name, value);
    return value;
}

ValuePtr Context::resolvedCopy(const Assignment& assignment) {
    const InProgress mark(inProgress_, assignment.name);
    beginEvaluation(assignment.name);
    ValuePtr value = resolvedValue(assignment.value->deepCopy(), *this);
    checkSize(*value);
    return value;
}

void Context::resolveAssignment(Assignment& assignment) {
    if (assignment.state == ResolveState::Resolved) {
        return;
    }
    const InProgress mark(inProgress_, assignment.name);
    beginEvaluation(assignment.name);
    assignment.state = ResolveState::InProgress;
    if (assignment.value) {
        assignment.value = resolvedValue(assignment.value, *this);
    }
    if (assignment.exported) {
        assignment.exported = resolvedValue(assignment.exported, *this);
    }
    assignment.state = ResolveState::Resolved;
    resolvedSize_.addBytes(assignment.name.str().size());
    if (assignment.value) {
        resolvedSize_.add(*assignment.value);
    }
}

ValuePtr Context::applyIndex(const ValuePtr& value, const PathIndex& index,
                             const IdentifierPath& path, std::size_t element) {
    struct ToKey {
        Context& context;
        Key operator()(std::int64_t number) const { return IndexKey{number}; }
        Key operator()(const PathRange& range) const { return RangeKey{range.start, range.end, 1}; }
        Key operator()(const PathName& name) const { return NameKey{name.name}; }
        Key operator()(const std::shared_ptr<const IdentifierPath>& nested) const {
            return makeKey(context.resolveIdentifier(*nested));
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

ValuePtr Context::resolveIdentifier(const IdentifierPath& path) {
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

void Context::resolveForAppend(ValuePtr& value, const CiString& name) {
    if (valueAs<VeskIdentifier>(value.get()) != nullptr) {
        const InProgress mark(inProgress_, name);
        value = resolvedValue(value, *this);
    }
}

void Context::placeHeldAppend(const HeldAppend& held) {
    Assignment addition = held.assignment;
    addition.value = resolvedCopy(addition);
    if (Assignment* stored = find(addition.name)) {
        resolveForAppend(stored->value, addition.name);
        resolveForAppend(stored->exported, addition.name);
    }
    merge(addition, held.mode, false);
    checkSize(*find(addition.name)->value);
}

void Context::placeHeldAppends() {
    std::vector<HeldAppend> waiting = std::move(heldAppends_);
    heldAppends_.clear();
    for (HeldAppend& held : waiting) {
        if (hasHeldAppends(held.assignment.name)) {
            heldAppends_.push_back(std::move(held));  // in order: behind one that still waits
            continue;
        }
        try {
            placeHeldAppend(held);
            continue;
        } catch (const NotFoundException&) {
        } catch (const MissingVariable&) {
        } catch (const NotAContext&) {
        } catch (const IndexException&) {}
        heldAppends_.push_back(std::move(held));
    }
}

void Context::resolveHints() {
    for (auto& [name, assignment] : assignments_) {
        if (assignment.modifier != AssignModifier::Hint || !assignment.value) {
            continue;
        }
        const std::optional<IdentifierPath> path = hintPath(assignment.value);
        if (!path) {
            throw VeskException("Invalid hint '" + assignment.value->toString() +
                                "': expected an identifier.");
        }
        try {
            assignment.value = resolveIdentifier(*path)->clone();
        } catch (const VeskException&) {
            assignment.value = std::make_shared<VeskString>(path->toDisplayString());
        } catch (const std::exception&) {
            assignment.value = std::make_shared<VeskString>(path->toDisplayString());
        }
        assignment.state = ResolveState::Resolved;
    }
    lookedUp_.clear();
}

void Context::resolveVariables() {
    console::trace("Resolving variables.\n");
    std::erase_if(assignments_,
                  [](const auto& entry) { return entry.second.modifier == AssignModifier::Hint; });
    resolveAll();
}

void Context::resolveAll() {
    evaluateConditions();
    const std::vector<HeldAppend> waiting = std::move(heldAppends_);
    heldAppends_.clear();
    for (const HeldAppend& held : waiting) {
        try {
            placeHeldAppend(held);
        } catch (...) {
            rethrowWithNote(held.assignment.place, variableNote(held.assignment));
        }
    }
    lookedUp_.clear();
    resolving_ = true;
    for (auto& [name, assignment] : assignments_) {
        try {
            resolveAssignment(assignment);
        } catch (...) {
            rethrowWithNote(assignment.place, variableNote(assignment));
        }
    }
}

}  // namespace Vesk
