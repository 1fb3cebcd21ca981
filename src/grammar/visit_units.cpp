// Unit files: targets and their dependencies.
#include "base/exception.h"
#include "grammar/tree_parts.h"
#include "grammar/visitor.h"
#include "types/model/target.h"

namespace Vesk {

antlrcpp::Any VeskVisitorImpl::visitVeskUnit(Parser::VeskUnitContext* tree) {
    Unit unit;
    if (auto* name = tree->unit_name()) {
        unit.name = name->IDENTIFIER()->getText();
        unit.nameDeclared = true;
    }
    unit.files.push_back(*file_);
    for (auto* target : partsOf<Parser::TargetContext>(*tree)) {
        unit.addTarget(taken<TargetPtr>(visitTarget(target)));
    }
    return unit;
}

antlrcpp::Any VeskVisitorImpl::visitTarget(Parser::TargetContext* tree) {
    auto target = std::make_shared<Target>();
    target->name = targetName_ = tree->IDENTIFIER()->getText();
    target->file = file_;
    target->line = lineOf(tree);
    for (auto* parameter : partsOf<Parser::Parameter_nameContext>(*tree)) {
        addParameter(*target, parameter);
    }
    std::vector<DependencyRecord> dependencies;
    for (auto* dependency : partsOf<Parser::DependencyContext>(*tree)) {
        dependencies.push_back(taken<DependencyRecord>(visitDependency(dependency)));
    }
    auto body = taken<TemplatePtr>(visitContext(partOf<Parser::ContextContext>(*tree)));
    try {
        target->setText(
            std::make_shared<const TargetText>(std::move(dependencies), std::move(body)));
    } catch (...) {
        rethrowWithNote("in target '" + target->name + "'");
    }
    target->hash = hashOf(tree);
    targetName_.clear();
    return TargetPtr(std::move(target));
}

ContentHash targetHash(const std::string& file, std::uint32_t line, std::uint32_t column,
                       std::string_view text) {
    return hashText({file, "\n", std::to_string(line), ":", std::to_string(column), "\n", text});
}

ContentHash VeskVisitorImpl::hashOf(Tree* tree) const {
    antlr4::Token* const start = tree->getStart();
    const std::string text = start->getInputStream()->getText(
        antlr4::misc::Interval(start->getStartIndex(), tree->getStop()->getStopIndex()));
    const SourcePlace place = placeOf(tree);
    return targetHash(name_, place.line, place.column, text);
}

/// Parameters are variables, so their names compare without regard to case.
void VeskVisitorImpl::addParameter(Target& target, Parser::Parameter_nameContext* tree) const {
    std::string name = tree->getText();
    for (const std::string& other : target.parameters) {
        if (equalsIgnoringCase(other, name)) {
            fail(tree, "Target '" + target.name + "' has two parameters named '" + other + "'.");
        }
    }
    target.parameters.push_back(std::move(name));
}

antlrcpp::Any VeskVisitorImpl::visitDependency(Parser::DependencyContext* tree) {
    DependencyRecord record;
    record.place = placeOf(tree);
    record.merge = partOf<Parser::Dependency_modifierContext>(*tree) != nullptr;
    auto* identifier = partOf<Parser::Dependency_identifierContext>(*tree);
    if (auto* macro = partOf<Parser::Dependency_macroContext>(*identifier)) {
        record.kind = DependencyKind::Macro;
        record.macro = taken<IdentifierPath>(visitDependency_macro(macro));
    } else {
        record.reference = taken<DependencyReference>(
            visitDirect_dependency(partOf<Parser::Direct_dependencyContext>(*identifier)));
    }
    for (auto* parameter : partsOf<Parser::Dependency_parameterContext>(*tree)) {
        if (auto* path = parameter->identifier()) {
            record.parameters.push_back(taken<IdentifierPath>(visitIdentifier(path)));
        } else {
            setSourceParameter(record, parameter);
        }
    }
    if (auto* alias = partOf<Parser::Dependency_aliasContext>(*tree)) {
        record.aliasKind = taken<AliasKind>(visitDependency_alias(alias));
        record.alias = tree->IDENTIFIER()->getText();
    }
    return record;
}

void VeskVisitorImpl::setSourceParameter(DependencyRecord& record,
                                         Parser::Dependency_parameterContext* tree) const {
    if (record.kind != DependencyKind::Macro) {
        fail(tree, "The source parameter marker '.' can only be used with a dynamic dependency.");
    }
    if (record.sourceParameter || !record.parameters.empty()) {
        fail(tree, "The source parameter marker '.' must be the first dependency parameter.");
    }
    record.sourceParameter = true;
}

antlrcpp::Any VeskVisitorImpl::visitDirect_dependency(Parser::Direct_dependencyContext* tree) {
    const auto names = tree->IDENTIFIER();
    DependencyReference reference;
    reference.target = names.back()->getText();
    if (names.size() > 1) {
        reference.unit = names[names.size() - 2]->getText();
    }
    if (names.size() > 2) {
        reference.ns = names[names.size() - 3]->getText();
    }
    return reference;
}

antlrcpp::Any VeskVisitorImpl::visitDependency_macro(Parser::Dependency_macroContext* tree) {
    return visitIdentifier(tree->identifier());
}

antlrcpp::Any VeskVisitorImpl::visitDependency_alias(Parser::Dependency_aliasContext* tree) {
    return tree->ALIAS() != nullptr ? AliasKind::Single : AliasKind::Merge;
}

}  // namespace Vesk
