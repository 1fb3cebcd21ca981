// Contexts: assignments and conditional blocks.
#include "grammar/tree_parts.h"
#include "grammar/visitor.h"
#include "types/context/assignment.h"
#include "types/values/identifier_value.h"

namespace Vesk {

antlrcpp::Any VeskVisitorImpl::visitContext(Parser::ContextContext* tree) {
    auto context = std::make_shared<ContextTemplate>();
    context->assignments.reserve(tree->children.size() - 2);  // all but the braces
    for (antlr4::tree::ParseTree* const part : tree->children) {
        if (isPart<Parser::AssignmentContext>(*part)) {
            context->assignments.push_back(
                taken<Assignment>(visitAssignment(static_cast<Parser::AssignmentContext*>(part))));
        } else if (isPart<Parser::Cond_contextContext>(*part)) {
            context->conditions.push_back(taken<Condition>(
                visitCond_context(static_cast<Parser::Cond_contextContext*>(part))));
        }
    }
    return TemplatePtr(std::move(context));
}

antlrcpp::Any VeskVisitorImpl::visitCond_context(Parser::Cond_contextContext* tree) {
    auto condition = taken<Condition>(visitCondition(tree->condition()));
    condition.body = taken<TemplatePtr>(visitContext(tree->context()));
    return condition;
}

antlrcpp::Any VeskVisitorImpl::visitCondition(Parser::ConditionContext* tree) {
    auto condition = taken<Condition>(visitBool_expr(tree->bool_expr()));
    condition.place = placeOf(tree);
    return condition;
}

antlrcpp::Any VeskVisitorImpl::visitBool_expr(Parser::Bool_exprContext* tree) {
    Condition condition;
    auto path = taken<IdentifierPath>(visitIdentifier(tree->identifier()));
    condition.left = std::make_shared<VeskIdentifier>(std::move(path));
    if (auto* op = partOf<Parser::Bool_operatorContext>(*tree)) {
        const std::string outerKey = std::exchange(key_, condition.left->toDisplayString());
        condition.op = taken<ConditionOperator>(visitBool_operator(op));
        condition.right = taken<ValuePtr>(visitValueNode(partOf<Parser::ValueNodeContext>(*tree)));
        key_ = outerKey;
    }
    return condition;
}

antlrcpp::Any VeskVisitorImpl::visitBool_operator(Parser::Bool_operatorContext* tree) {
    switch (tree->start->getType()) {
        case Parser::EQUALS:
            return ConditionOperator::Equal;
        case Parser::NEQUALS:
            return ConditionOperator::NotEqual;
        case Parser::LESSER:
            return ConditionOperator::Less;
        case Parser::GREATER:
            return ConditionOperator::Greater;
        default:
            return {};
    }
}

antlrcpp::Any VeskVisitorImpl::visitAssignment(Parser::AssignmentContext* tree) {
    Assignment assignment;
    std::string key = tree->IDENTIFIER()->getText();
    assignment.place = placeOf(tree);
    if (auto* modifier = partOf<Parser::Assignment_modifierContext>(*tree)) {
        assignment.modifier = taken<AssignModifier>(visitAssignment_modifier(modifier));
    }
    assignment.op = AssignOperator::None;
    if (auto* op = partOf<Parser::Assign_operatorContext>(*tree)) {
        const std::string outerKey = std::exchange(key_, key);
        assignment.op = taken<AssignOperator>(visitAssign_operator(op));
        assignment.value = taken<ValuePtr>(visitValueNode(partOf<Parser::ValueNodeContext>(*tree)));
        key_ = outerKey;
    }
    assignment.name = CiString(std::move(key));
    return assignment;
}

antlrcpp::Any VeskVisitorImpl::visitAssignment_modifier(Parser::Assignment_modifierContext* tree) {
    switch (tree->start->getType()) {
        case Parser::UP:
            return AssignModifier::Output;
        case Parser::MUST:
            if (kind_ != FileKind::Registry && !inTool_) {
                fail(tree, "'!' assignment modifier is not allowed in this context.");
            }
            return AssignModifier::Must;
        case Parser::HINT:
            return AssignModifier::Hint;
        default:
            return {};
    }
}

antlrcpp::Any VeskVisitorImpl::visitAssign_operator(Parser::Assign_operatorContext* tree) {
    switch (tree->start->getType()) {
        case Parser::EQUALS:
            return AssignOperator::Assign;
        case Parser::APPEND:
            return AssignOperator::Append;
        case Parser::ASSIGNEMPTY:
            return AssignOperator::AssignEmpty;
        default:
            return {};
    }
}

}  // namespace Vesk
