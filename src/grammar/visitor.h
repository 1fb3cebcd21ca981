// From parse tree to model.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "VeskTopParserBaseVisitor.h"

#include "base/content_hash.h"
#include "base/source_place.h"
#include "grammar/model.h"
#include "types/context/context_template.h"
#include "types/values/value.h"

namespace Vesk {

class Target;
struct DependencyRecord;

/// Visits the tree of a text without syntax errors. Each visit returns what its rule stands for,
/// with the type named at its group; `taken` extracts it. Errors carry a note with file and line.
class VeskVisitorImpl : public grammar::VeskTopParserBaseVisitor {
  public:
    using Any = antlrcpp::Any;
    using Parser = grammar::VeskTopParser;
    using TargetPtr = std::shared_ptr<const Target>;
    using TemplatePtr = std::shared_ptr<const ContextTemplate>;

    /// For a file. Messages call it `name`.
    VeskVisitorImpl(std::shared_ptr<const std::filesystem::path> file, std::string name,
                    FileKind kind);

    /// For a text that is not a file. Relative paths in it are relative to `base`.
    explicit VeskVisitorImpl(std::filesystem::path base);

    // Unit files: Unit, TargetPtr, DependencyRecord, DependencyReference, IdentifierPath,
    // AliasKind.
    Any visitVeskUnit(Parser::VeskUnitContext* tree) override;
    Any visitTarget(Parser::TargetContext* tree) override;
    Any visitDependency(Parser::DependencyContext* tree) override;
    Any visitDirect_dependency(Parser::Direct_dependencyContext* tree) override;
    Any visitDependency_macro(Parser::Dependency_macroContext* tree) override;
    Any visitDependency_alias(Parser::Dependency_aliasContext* tree) override;

    // Contexts: TemplatePtr, then Condition (its body is set by cond_context), ConditionOperator.
    Any visitContext(Parser::ContextContext* tree) override;
    Any visitCond_context(Parser::Cond_contextContext* tree) override;
    Any visitCondition(Parser::ConditionContext* tree) override;
    Any visitBool_expr(Parser::Bool_exprContext* tree) override;
    Any visitBool_operator(Parser::Bool_operatorContext* tree) override;

    // Assignments: Assignment, AssignModifier, AssignOperator.
    Any visitAssignment(Parser::AssignmentContext* tree) override;
    Any visitAssignment_modifier(Parser::Assignment_modifierContext* tree) override;
    Any visitAssign_operator(Parser::Assign_operatorContext* tree) override;

    // Values: ValuePtr.
    Any visitValueNode(Parser::ValueNodeContext* tree) override;
    Any visitList(Parser::ListContext* tree) override;

    // Names: IdentifierPath, IdentifierSegment, then PathIndex.
    Any visitIdentifier(Parser::IdentifierContext* tree) override;
    Any visitSegment(Parser::SegmentContext* tree) override;
    Any visitIndex(Parser::IndexContext* tree) override;
    Any visitIndexExpr(Parser::IndexExprContext* tree) override;
    Any visitRange(Parser::RangeContext* tree) override;
    Any visitRegex(Parser::RegexContext* tree) override;

    // Project and registry files: the two models, their entries, and vectors of entries for the
    // sections; uri and path give the location as a std::string.
    Any visitVeskProject(Parser::VeskProjectContext* tree) override;
    Any visitProj_import_section(Parser::Proj_import_sectionContext* tree) override;
    Any visitProj_import(Parser::Proj_importContext* tree) override;
    Any visitProj_path_import(Parser::Proj_path_importContext* tree) override;
    Any visitProj_registry_import(Parser::Proj_registry_importContext* tree) override;
    Any visitBuild_tools(Parser::Build_toolsContext* tree) override;
    Any visitBuild_tool(Parser::Build_toolContext* tree) override;
    Any visitUnits(Parser::UnitsContext* tree) override;
    Any visitUnit(Parser::UnitContext* tree) override;
    Any visitProfiles(Parser::ProfilesContext* tree) override;
    Any visitProfile(Parser::ProfileContext* tree) override;
    Any visitVeskRegistry(Parser::VeskRegistryContext* tree) override;
    Any visitProjects(Parser::ProjectsContext* tree) override;
    Any visitProject(Parser::ProjectContext* tree) override;
    Any visitUri(Parser::UriContext* tree) override;
    Any visitPath(Parser::PathContext* tree) override;

  private:
    using Tree = antlr4::ParserRuleContext;

    ContentHash hashOf(Tree* tree) const;
    void addParameter(Target& target, Parser::Parameter_nameContext* tree) const;
    void setSourceParameter(DependencyRecord& record,
                            Parser::Dependency_parameterContext* tree) const;
    ValuePtr integerValue(Parser::ValueNodeContext* tree) const;
    ValuePtr nestedContext(Parser::ContextContext* tree);
    ValuePtr pathValue(std::string text) const;
    std::shared_ptr<Context> instantiated(const ContextTemplate& source, const Tree* tree) const;

    /// The place where a part of the tree begins.
    SourcePlace placeOf(const Tree* tree) const;

    /// Throws VeskException with notes that show the place.
    [[noreturn]] void fail(const Tree* tree, std::string message) const;

    std::shared_ptr<const std::filesystem::path> file_;  ///< null for a text that is not a file
    std::filesystem::path baseDirectory_;                ///< of path values
    std::string name_;                                   ///< empty for a text that is not a file
    std::uint32_t fileNumber_ = 0;  ///< in places; 0 for a text that is not a file
    std::string targetName_;        ///< the target being visited
    std::string key_;               ///< the variable being visited
    FileKind kind_;
    bool inTool_ = false;
};

/// A hash of all that a visit can learn about the target from its text: the place and the text
/// itself. Messages call the file `file`.
ContentHash targetHash(const std::string& file, std::uint32_t line, std::uint32_t column,
                       std::string_view text);

/// The result of a visit. Throws std::bad_cast if the result has another type.
template <class T>
T taken(antlrcpp::Any result) {
    return std::move(result.as<T>());
}

/// The line on which a part of the tree begins.
std::uint32_t lineOf(const antlr4::ParserRuleContext* tree);

/// The text without so many characters at the start and at the end.
std::string stripped(const std::string& tokenText, std::size_t front, std::size_t back);

}  // namespace Vesk
