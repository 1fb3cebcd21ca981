#include "grammar/text_models.h"

#include "base/exception.h"
#include "grammar/recognisers.h"
#include "grammar/text_stream.h"
#include "grammar/visitor.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using Parser = grammar::VeskTopParser;

template <class Model, class FileTree, class TopTree>
Model modelOf(std::string_view text, const std::filesystem::path& file, FileKind kind,
              FileTree* (Parser::*startRule)(), TopTree* (FileTree::*top)()) {
    TextStream input(text, {});
    Recognisers recognisers(&input);
    makeFast(recognisers);
    FileTree* const tree = tryRule(recognisers, startRule);
    if (tree == nullptr) {
        throw VeskException("The text has syntax errors.");
    }
    VeskVisitorImpl visitor(std::make_shared<const std::filesystem::path>(file),
                            platform::pathToUtf8(file), kind);
    return taken<Model>((tree->*top)()->accept(&visitor));
}

}  // namespace

Unit unitOfText(std::string_view text, const std::filesystem::path& file) {
    return modelOf<Unit>(text, file, FileKind::Unit, &Parser::unitFile,
                         &Parser::UnitFileContext::veskUnit);
}

ProjectFile projectOfText(std::string_view text, const std::filesystem::path& file) {
    return modelOf<ProjectFile>(text, file, FileKind::Project, &Parser::projFile,
                                &Parser::ProjFileContext::veskProject);
}

}  // namespace Vesk
