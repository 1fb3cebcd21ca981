#include "build/cache/cache_record.h"

#include <algorithm>
#include <typeinfo>

#include "types/context.h"
#include "types/context_value.h"
#include "types/list_value.h"
#include "types/string_values.h"

namespace Vesk {

namespace {

bool sameItems(const VeskList& a, const VeskList& b) {
    return std::equal(a.items.begin(), a.items.end(), b.items.begin(), b.items.end(), sameValue);
}

bool sameContexts(const VeskContext& a, const VeskContext& b) {
    const std::shared_ptr<Context> left = a.context();
    const std::shared_ptr<Context> right = b.context();
    return left == right || std::equal(left->assignments().begin(), left->assignments().end(),
                                       right->assignments().begin(), right->assignments().end(),
                                       [](const auto& x, const auto& y) {
                                           return sameAssignment(x.second, y.second);
                                       });
}

bool sameInputs(const CacheRecipe& a, const CacheRecipe& b) {
    const auto same = [](const RecipeInput& x, const RecipeInput& y) {
        return sameAssignment(x.assignment, y.assignment) &&
               x.intermediate.has_value() == y.intermediate.has_value() &&
               (!x.intermediate || sameAssignment(*x.intermediate, *y.intermediate));
    };
    return std::equal(a.inputs.begin(), a.inputs.end(), b.inputs.begin(), b.inputs.end(), same);
}

}  // namespace

bool sameValue(const ValuePtr& a, const ValuePtr& b) {
    if (a == b) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    const VeskValue& left = *a;
    const VeskValue& right = *b;
    if (typeid(left) != typeid(right)) {
        return false;
    }
    if (const auto* list = dynamic_cast<const VeskList*>(&left)) {
        return sameItems(*list, static_cast<const VeskList&>(right));
    }
    if (const auto* context = dynamic_cast<const VeskContext*>(&left)) {
        return sameContexts(*context, static_cast<const VeskContext&>(right));
    }
    // A path's text alone does not say where it leads; its display form does.
    const auto* string = dynamic_cast<const VeskBaseString*>(&left);
    if (string != nullptr && dynamic_cast<const VeskPathString*>(string) == nullptr) {
        return string->text == static_cast<const VeskBaseString&>(right).text;
    }
    return left.toDisplayString() == right.toDisplayString();
}

bool sameAssignment(const Assignment& a, const Assignment& b) {
    return a.name == b.name && a.op == b.op && a.modifier == b.modifier &&
           sameValue(a.value, b.value);
}

bool sameRequest(const CacheRecord& record, const CacheRequest& request) {
    return std::equal(record.recipes.begin(), record.recipes.end(), request.recipes.begin(),
                      request.recipes.end(), sameInputs) &&
           std::equal(record.environment.begin(), record.environment.end(),
                      request.environment.begin(), request.environment.end(), sameAssignment);
}

}  // namespace Vesk
