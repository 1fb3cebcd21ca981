#include "grammar/loaders.h"

#include <fmt/format.h>
#include <system_error>
#include <typeinfo>
#include <utility>

#include "base/console.h"
#include "base/text.h"
#include "grammar/error_listeners.h"
#include "grammar/recognisers.h"
#include "grammar/source_file.h"
#include "grammar/text_stream.h"
#include "grammar/visitor.h"
#include "platform/files.h"

namespace Vesk {

namespace {

using Parser = grammar::VeskTopParser;

/// A kind of file whose errors are collected.
template <class FileTree, class TopTree>
struct FileScheme {
    const char* kind;     ///< as in "Project file '...' not found."
    const char* noModel;  ///< the error when the visit gives nothing
    FileKind fileKind;
    FileTree* (Parser::*startRule)();
    TopTree* (FileTree::*top)();
};

std::filesystem::path canonicalPath(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path canonical = platform::canonicalPath(path, error);
    if (error) {
        throw std::filesystem::filesystem_error("weakly_canonical", path, error);
    }
    return canonical;
}

template <class Model, class Tree>
Model modelOf(Tree* tree, const std::filesystem::path& path, FileKind kind, const char* noModel) {
    std::filesystem::path canonical = canonicalPath(path);
    std::string name = platform::pathToUtf8(canonical);
    VeskVisitorImpl visitor(std::move(canonical), std::move(name), kind);
    try {
        return taken<Model>(tree->accept(&visitor));
    } catch (const std::bad_cast&) {
        throw VeskException(noModel);
    }
}

/// The tree of a file without errors, or null. All of the file is split into tokens first, so that
/// one with too many open brackets is refused before anything else is said about it.
template <class FileTree>
FileTree* parseFast(Recognisers& recognisers, FileTree* (Parser::*startRule)()) {
    makeFast(recognisers);
    recognisers.tokens.fill();
    return tryRule(recognisers, startRule);
}

/// Parses again what `parseFast` found faulty, printing the errors as they are found.
template <class FileTree>
[[noreturn]] void reportToConsole(const SourceFile& file, FileTree* (Parser::*startRule)()) {
    console::flush();  // the runtime writes to standard error by itself
    TextStream input(file.text(), file.name());
    Recognisers recognisers(&input);
    (recognisers.parser.*startRule)();
    throw VeskException(file.name() + " Parsing failed due to syntax errors.");
}

/// The same, throwing all errors at once.
template <class FileTree>
[[noreturn]] void throwCollected(const SourceFile& file, FileTree* (Parser::*startRule)()) {
    TextStream input(file.text(), file.name());
    Recognisers recognisers(&input);
    ThrowingErrorListener listener(file.name());
    recognisers.lexer.removeErrorListeners();
    recognisers.lexer.addErrorListener(&listener);
    recognisers.parser.removeErrorListeners();
    recognisers.parser.addErrorListener(&listener);
    (recognisers.parser.*startRule)();
    throw VeskException(joined(listener.messages(), "\n"));
}

template <class Model, class FileTree, class TopTree>
Model parseCollecting(const std::filesystem::path& path,
                      const FileScheme<FileTree, TopTree>& scheme) {
    const SourceFile file(path);
    if (!file.failure().empty()) {
        throw NotFoundException(scheme.kind, file.name(),
                                file.missing() ? "" : "it cannot be read: " + file.failure());
    }
    TextStream input(file.text(), file.name());
    Recognisers recognisers(&input);
    FileTree* const tree = parseFast(recognisers, scheme.startRule);
    if (tree == nullptr) {
        throwCollected(file, scheme.startRule);
    }
    return modelOf<Model>((tree->*scheme.top)(), path, scheme.fileKind, scheme.noModel);
}

}  // namespace

Unit parseUnitFile(const std::filesystem::path& path) {
    const SourceFile file(path);
    if (!file.failure().empty()) {
        throw VeskException(
            fmt::format("Unable to open file! '{}': {}.", file.name(), file.failure()));
    }
    console::trace("Parsing {}\n", file.name());
    TextStream input(file.text(), file.name());
    Recognisers recognisers(&input);
    auto* const tree = parseFast(recognisers, &Parser::unitFile);
    if (tree == nullptr) {
        reportToConsole(file, &Parser::unitFile);
    }
    return modelOf<Unit>(tree->veskUnit(), path, FileKind::Unit, "Unable to parse unit file.");
}

ProjectFile parseProjectFile(const std::filesystem::path& path) {
    static constexpr FileScheme<Parser::ProjFileContext, Parser::VeskProjectContext> kScheme = {
        "Project file", "Unable to parse project file.", FileKind::Project, &Parser::projFile,
        &Parser::ProjFileContext::veskProject};
    return parseCollecting<ProjectFile>(path, kScheme);
}

RegistryFile parseRegistryFile(const std::filesystem::path& path) {
    static constexpr FileScheme<Parser::RegistryFileContext, Parser::VeskRegistryContext> kScheme =
        {"Registry file", "Unable to parse registry file.", FileKind::Registry,
         &Parser::registryFile, &Parser::RegistryFileContext::veskRegistry};
    return parseCollecting<RegistryFile>(path, kScheme);
}

Assignment parseAssignment(const std::string& text, const std::filesystem::path& base) {
    VeskErrorCounter counter("assignment", true);
    VeskVisitorImpl visitor(base);
    TextStream input(text, counter.name());
    Recognisers recognisers(&input);
    makeFast(recognisers);
    if (auto* const tree = tryRule(recognisers, &Parser::assignment)) {
        return taken<Assignment>(visitor.visitAssignment(tree));
    }

    console::flush();
    input.seek(0);
    Recognisers reporting(&input);
    reporting.parser.removeErrorListeners();
    reporting.parser.addErrorListener(&counter);
    auto* const tree = reporting.parser.assignment();
    if (reporting.parser.getNumberOfSyntaxErrors() > 0 || counter.count() > 0) {
        throw VeskException(fmt::format("Parsing {} failed due to syntax errors.", counter.name()));
    }
    return taken<Assignment>(visitor.visitAssignment(tree));
}

}  // namespace Vesk
