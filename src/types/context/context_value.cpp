#include "types/context/context_value.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "types/context/context.h"
#include "types/values/errors.h"
#include "types/values/string_values.h"
#include "types/values/value_size.h"

namespace Vesk {
namespace {

constexpr int kExpiredContextLine = 1402;

class ContextIterator : public IVeskValueIterator {
  public:
    ContextIterator(std::shared_ptr<const Context> context, Context::Map::const_iterator position)
        : context_(std::move(context)), position_(position) {}

    IVeskValueIterator& next() override {
        ++position_;
        return *this;
    }
    ValuePtr get() const override { return position_->second.value; }
    bool equals(const IVeskValueIterator& other) const override {
        const auto* iterator = dynamic_cast<const ContextIterator*>(&other);
        return iterator != nullptr && context_ == iterator->context_ &&
               position_ == iterator->position_;
    }

  private:
    std::shared_ptr<const Context> context_;
    Context::Map::const_iterator position_;
};

/// The contexts that this thread is writing out as text, outermost first. A context that holds a
/// reference to itself, for example as an output that is the dependant's own context, is written
/// once.
class Writing {
  public:
    explicit Writing(const Context& context)
        : isFirst_(std::find(contexts_.begin(), contexts_.end(), &context) == contexts_.end()) {
        contexts_.push_back(&context);
    }
    ~Writing() { contexts_.pop_back(); }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    bool isFirst() const noexcept { return isFirst_; }

  private:
    static thread_local std::vector<const Context*> contexts_;
    bool isFirst_;
};

thread_local std::vector<const Context*> Writing::contexts_;

bool sameAssignment(const Context::Map::value_type& a, const Context::Map::value_type& b) {
    if (a.first != b.first) {
        return false;
    }
    const ValuePtr& left = a.second.value;
    const ValuePtr& right = b.second.value;
    return left && right ? left->equals(*right) : !left && !right;
}

}  // namespace

VeskContext::VeskContext(std::shared_ptr<Context> context)
    : VeskValue(ValueKind::Context), reference_(context), owner_(std::move(context)) {}

std::shared_ptr<VeskContext> VeskContext::referringTo(const std::shared_ptr<Context>& context) {
    std::shared_ptr<VeskContext> value(new VeskContext);
    value->reference_ = context;
    return value;
}

std::shared_ptr<Context> VeskContext::context() const {
    auto context = reference_.lock();
    if (!context) {
        throw InternalError(kValueSourceUnit, kExpiredContextLine,
                            "class std::shared_ptr<class Vesk::Context> __cdecl "
                            "Vesk::VeskContext::context(void) const");
    }
    return context;
}

const VeskContext& VeskContext::contextOperand(const VeskValue& other) const {
    const auto* context = valueAs<VeskContext>(&other);
    if (context == nullptr) {
        throw BadConversion(other.typeName(), other.toDisplayString(), typeName());
    }
    return *context;
}

ValuePtr VeskContext::clone() const {
    return owner_ ? std::make_shared<VeskContext>(owner_) : referringTo(context());
}

ValuePtr VeskContext::deepCopy() const {
    return owner_ ? std::make_shared<VeskContext>(owner_->deepCopy()) : clone();
}

void VeskContext::addTo(ValueSize& size) const {
    if (!owner_) {
        return;
    }
    for (const auto& [name, assignment] : owner_->assignments()) {
        size.addBytes(name.str().size());
        if (assignment.value) {
            size.add(*assignment.value);
        }
    }
}

ValuePtr VeskContext::add(const VeskValue& other) const {
    auto sum = std::make_shared<VeskContext>(context()->deepCopy());
    sum->append(other);
    return sum;
}

void VeskContext::append(const VeskValue& other) {
    const auto* name = valueAs<VeskString>(&other);
    const VeskContext* added = name == nullptr ? &contextOperand(other) : nullptr;
    if (!owner_) {
        owner_ = context()->deepCopy();  // the context referred to belongs to someone else
        reference_ = owner_;
    }
    if (added != nullptr) {
        owner_->mergeContext(*added->context(), ModifierMode::Keep);
        return;
    }
    Assignment assignment;
    assignment.name = name->text;
    assignment.op = AssignOperator::None;
    owner_->addAssignment(assignment, ModifierMode::Keep);
}

ValuePtr VeskContext::at(const Key& key) const {
    if (!std::holds_alternative<NameKey>(key)) {
        throw IndexException("{...}", key);
    }
    return context()->getAssignment({key}).value;
}

std::string VeskContext::toString() const {
    const auto inner = context();
    const Writing writing(*inner);
    if (!writing.isFirst()) {
        return {};
    }
    std::string text;
    bool first = true;
    for (const auto& [name, assignment] : inner->assignments()) {
        text += first ? "" : " ";
        text += assignment.value ? assignment.value->toString() : std::string{};
        first = false;
    }
    return text;
}

std::string VeskContext::toDisplayString() const {
    const auto inner = context();
    const Writing writing(*inner);
    if (!writing.isFirst()) {
        return "{...}";
    }
    return inner->assignments().empty() ? "{}" : inner->dump();
}

ValueIteratorPtr VeskContext::begin() const {
    const auto inner = context();
    return std::make_unique<ContextIterator>(inner, inner->assignments().begin());
}

ValueIteratorPtr VeskContext::end() const {
    const auto inner = context();
    return std::make_unique<ContextIterator>(inner, inner->assignments().end());
}

bool VeskContext::equals(const VeskValue& other) const {
    const auto left = context();
    const auto right = contextOperand(other).context();
    return left == right ||
           std::equal(left->assignments().begin(), left->assignments().end(),
                      right->assignments().begin(), right->assignments().end(), sameAssignment);
}

bool VeskContext::greaterThan(const VeskValue& other) const {
    return std::less<>{}(contextOperand(other).context().get(), context().get());
}

bool VeskContext::lessThan(const VeskValue& other) const {
    return std::less<>{}(context().get(), contextOperand(other).context().get());
}

void VeskContext::setResolver(Resolver* resolver) {
    // A context that someone else owns keeps its own enclosing context.
    if (owner_) {
        owner_->setEnclosing(dynamic_cast<Context*>(resolver));
    }
}

ValuePtr VeskContext::resolve() {
    const auto inner = context();
    inner->resolveAll();
    return clone();
}

}  // namespace Vesk
