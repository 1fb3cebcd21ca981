// The sections of project and registry files.
#include "base/exception.h"
#include "grammar/visitor.h"

namespace Vesk {

namespace {

/// The text between the quotes of a STRING.
std::string quotedText(antlr4::tree::TerminalNode* token) {
    return stripped(token->getText(), 1, 1);
}

std::string textOf(antlr4::tree::TerminalNode* token) {
    return token != nullptr ? token->getText() : std::string();
}

/// What both kinds of import entry have in common.
template <class Tree>
ProjectImport importEntry(Tree* tree) {
    ProjectImport entry;
    entry.line = lineOf(tree);
    if (auto* profile = tree->proj_source_profile()) {
        entry.sourceProfile = profile->IDENTIFIER()->getText();
    }
    if (auto* profile = tree->proj_import_profile()) {
        entry.importedProfile = profile->IDENTIFIER()->getText();
    }
    return entry;
}

}  // namespace

antlrcpp::Any VeskVisitorImpl::visitVeskProject(Parser::VeskProjectContext* tree) {
    ProjectFile project;
    project.path = *file_;
    if (auto* name = tree->proj_name()) {
        project.name = name->IDENTIFIER()->getText();
    }
    if (auto* section = tree->proj_import_section()) {
        project.imports = taken<std::vector<ProjectImport>>(visitProj_import_section(section));
    }
    if (auto* section = tree->build_tools()) {
        project.tools = taken<std::vector<ToolEntry>>(visitBuild_tools(section));
    }
    if (auto* section = tree->units()) {
        project.units = taken<std::vector<UnitEntry>>(visitUnits(section));
    }
    if (auto* section = tree->profiles()) {
        project.profiles = taken<std::vector<ProfileEntry>>(visitProfiles(section));
    }
    return project;
}

antlrcpp::Any VeskVisitorImpl::visitProj_import_section(Parser::Proj_import_sectionContext* tree) {
    std::vector<ProjectImport> imports;
    for (auto* entry : tree->proj_import()) {
        imports.push_back(taken<ProjectImport>(visitProj_import(entry)));
    }
    return imports;
}

antlrcpp::Any VeskVisitorImpl::visitProj_import(Parser::Proj_importContext* tree) {
    if (auto* byPath = tree->proj_path_import()) {
        return visitProj_path_import(byPath);
    }
    return visitProj_registry_import(tree->proj_registry_import());
}

antlrcpp::Any VeskVisitorImpl::visitProj_path_import(Parser::Proj_path_importContext* tree) {
    ProjectImport entry = importEntry(tree);
    entry.byPath = true;
    entry.location = quotedText(tree->STRING());
    entry.alias = textOf(tree->IDENTIFIER());
    return entry;
}

antlrcpp::Any VeskVisitorImpl::visitProj_registry_import(
    Parser::Proj_registry_importContext* tree) {
    ProjectImport entry = importEntry(tree);
    entry.location = textOf(tree->IDENTIFIER());
    return entry;
}

antlrcpp::Any VeskVisitorImpl::visitBuild_tools(Parser::Build_toolsContext* tree) {
    std::vector<ToolEntry> tools;
    for (auto* entry : tree->build_tool()) {
        tools.push_back(taken<ToolEntry>(visitBuild_tool(entry)));
    }
    return tools;
}

antlrcpp::Any VeskVisitorImpl::visitBuild_tool(Parser::Build_toolContext* tree) {
    ToolEntry tool;
    tool.name = tree->IDENTIFIER()->getText();
    tool.line = lineOf(tree);
    const bool wasInTool = std::exchange(inTool_, true);
    tool.source = taken<TemplatePtr>(visitContext(tree->context()));
    inTool_ = wasInTool;
    try {
        tool.context = instantiated(*tool.source, tree);
    } catch (const VeskException& error) {
        if (kind_ != FileKind::Registry) {
            throw;
        }
        tool.failure =
            error.report();  // one bad entry must not keep all of the user's projects from loading
    }
    return tool;
}

antlrcpp::Any VeskVisitorImpl::visitUnits(Parser::UnitsContext* tree) {
    std::vector<UnitEntry> units;
    for (auto* entry : tree->unit()) {
        units.push_back(taken<UnitEntry>(visitUnit(entry)));
    }
    return units;
}

antlrcpp::Any VeskVisitorImpl::visitUnit(Parser::UnitContext* tree) {
    UnitEntry unit;
    unit.name = tree->IDENTIFIER()->getText();
    unit.line = lineOf(tree);
    for (auto* file : tree->STRING()) {
        unit.files.push_back(quotedText(file));
    }
    return unit;
}

antlrcpp::Any VeskVisitorImpl::visitProfiles(Parser::ProfilesContext* tree) {
    std::vector<ProfileEntry> profiles;
    for (auto* entry : tree->profile()) {
        profiles.push_back(taken<ProfileEntry>(visitProfile(entry)));
    }
    return profiles;
}

antlrcpp::Any VeskVisitorImpl::visitProfile(Parser::ProfileContext* tree) {
    ProfileEntry profile;
    profile.name = tree->IDENTIFIER()->getText();
    profile.line = lineOf(tree);
    const auto source = taken<TemplatePtr>(visitContext(tree->context()));
    profile.context = instantiated(*source, tree);
    return profile;
}

antlrcpp::Any VeskVisitorImpl::visitVeskRegistry(Parser::VeskRegistryContext* tree) {
    RegistryFile registry;
    registry.path = *file_;
    if (auto* section = tree->projects()) {
        registry.projects = taken<decltype(registry.projects)>(visitProjects(section));
    }
    if (auto* section = tree->build_tools()) {
        registry.tools = taken<std::vector<ToolEntry>>(visitBuild_tools(section));
    }
    return registry;
}

antlrcpp::Any VeskVisitorImpl::visitProjects(Parser::ProjectsContext* tree) {
    decltype(RegistryFile::projects) projects;
    for (auto* entry : tree->project()) {
        projects.push_back(taken<decltype(projects)::value_type>(visitProject(entry)));
    }
    return projects;
}

antlrcpp::Any VeskVisitorImpl::visitProject(Parser::ProjectContext* tree) {
    return std::make_pair(tree->IDENTIFIER()->getText(), taken<std::string>(visitUri(tree->uri())));
}

antlrcpp::Any VeskVisitorImpl::visitUri(Parser::UriContext* tree) {
    return visitPath(tree->path());
}

antlrcpp::Any VeskVisitorImpl::visitPath(Parser::PathContext* tree) {
    return quotedText(tree->STRING());
}

}  // namespace Vesk
