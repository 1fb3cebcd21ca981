#include "grammar/loaders.h"

#include <fmt/format.h>
#include <optional>
#include <system_error>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "base/attempt.h"
#include "base/console.h"
#include "base/text.h"
#include "events/events.h"
#include "grammar/error_listeners.h"
#include "grammar/recognisers.h"
#include "grammar/sliced_unit.h"
#include "grammar/source_file.h"
#include "grammar/text_slices.h"
#include "grammar/text_stream.h"
#include "grammar/visitor.h"
#include "platform/files.h"
#include "platform/recorder.h"
#include "platform/recording.h"

namespace Vesk {

namespace {

using Parser = grammar::VeskTopParser;

/// A kind of file whose errors are collected.
template <class FileTree, class TopTree>
struct FileScheme {
    const char* kind;     ///< as in "Project file '...' not found."
    const char* noModel;  ///< the error if the visit gives nothing
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
    VeskVisitorImpl visitor(std::make_shared<const std::filesystem::path>(std::move(canonical)),
                            std::move(name), kind);
    try {
        return taken<Model>(tree->accept(&visitor));
    } catch (const std::bad_cast&) {
        throw VeskException(noModel);
    }
}

/// A text and the recognisers that work on it. The tree that they make lives as long as this
/// object.
struct Parse {
    explicit Parse(const SourceFile& file) : Parse(file.text(), file.name()) {}
    Parse(std::string_view text, const std::string& name)
        : input(text, name), recognisers(&input) {}

    TextStream input;
    Recognisers recognisers;
};

/// The tree of a file without errors, or null. The whole file is split into tokens first, so a file
/// with too many open brackets is refused before any other error is reported.
template <class FileTree>
FileTree* parseFast(Parse& parse, FileTree* (Parser::*startRule)()) {
    makeFast(parse.recognisers);
    parse.recognisers.tokens.fill();
    return tryRule(parse.recognisers, startRule);
}

/// Parses again what `parseFast` found faulty. Each error is printed as soon as it is found, with
/// its place below. Errors of the lexer alone do not reject the file; what they refer to is left
/// out.
Parser::UnitFileContext* parseReporting(Parse& parse, const SourceFile& file) {
    console::flush();              // the runtime writes to standard error by itself,
    platform::recordSideEffect();  // bypassing the record of what to print again
    PlaceListener places(file.name(), file.text());
    parse.recognisers.lexer.removeErrorListeners();
    parse.recognisers.lexer.addErrorListener(&places);
    parse.recognisers.parser.removeErrorListeners();
    parse.recognisers.parser.addErrorListener(&places);
    Parser::UnitFileContext* const tree = parse.recognisers.parser.unitFile();
    parse.recognisers.lexer.removeErrorListener(&places);
    parse.recognisers.parser.removeErrorListener(&places);
    if (parse.recognisers.parser.getNumberOfSyntaxErrors() > 0) {
        throw VeskException(file.name() + " Parsing failed due to syntax errors.");
    }
    return tree;
}

/// Parses again what `parseFast` found faulty, and throws all errors together.
template <class FileTree>
[[noreturn]] void throwCollected(const SourceFile& file, FileTree* (Parser::*startRule)()) {
    Parse parse(file);
    ThrowingErrorListener listener(file.name(), file.text());
    parse.recognisers.lexer.removeErrorListeners();
    parse.recognisers.lexer.addErrorListener(&listener);
    parse.recognisers.parser.removeErrorListeners();
    parse.recognisers.parser.addErrorListener(&listener);
    (parse.recognisers.parser.*startRule)();
    VeskException error(joined(listener.messages(), "\n"));
    for (const std::string& note : listener.notes()) {
        error.addNote(note);
    }
    throw error;
}

Unit parseWhole(const SourceFile& file, const std::filesystem::path& path) {
    Parse parse(file);
    std::optional<Parse> again;
    Parser::UnitFileContext* tree = parseFast(parse, &Parser::unitFile);
    if (tree == nullptr) {
        tree = parseReporting(again.emplace(file), file);
    }
    return modelOf<Unit>(tree->veskUnit(), path, FileKind::Unit, "Unable to parse unit file.");
}

/// Reads the slices of a file. Nothing when it has errors. An outline is put for the next time, but
/// not of a file of which something was said or asked: that has to be repeated.
std::optional<Unit> readSlices(SlicedUnit& file, const UnitOutline* earlier,
                               UnitOutlines* outlines) {
    std::string said;
    platform::Questions asked;
    std::optional<Unit> unit;
    try {
        const console::MessageCopy copy(said, console::MessageCopy::Shown::no);
        const platform::QuestionScope scope(asked);
        unit = file.read(earlier);
    } catch (...) {
        unit.reset();  // whoever parses it as a whole says what is wrong, in the right order
    }
    if (!unit) {
        return std::nullopt;
    }
    console::repeat(said);
    platform::recordAgain(asked);
    if (outlines != nullptr && said.empty() && asked.recording.empty()) {
        outlines->put(file.name(), encoded(file.outlineOf(*unit)));
    }
    return unit;
}

/// Nothing for a file that has to be parsed as a whole.
std::optional<Unit> readSliced(SlicedUnit& file, UnitOutlines* outlines) {
    const auto kept = outlines != nullptr ? outlines->find(file.name()) : std::nullopt;
    const auto outline = kept ? decodedOutline(*kept) : std::nullopt;
    auto unit = outline ? file.asOutlined(*outline) : std::nullopt;
    return unit ? std::move(unit) : readSlices(file, outline ? &*outline : nullptr, outlines);
}

/// Nothing for a text with errors, which are not reported here.
template <class Model, class FileTree, class TopTree>
std::optional<Model> parseFaultless(std::string_view text, const std::filesystem::path& path,
                                    const FileScheme<FileTree, TopTree>& scheme) {
    Parse parse(text, platform::pathToUtf8(path));
    FileTree* const tree = parseFast(parse, scheme.startRule);
    return tree == nullptr ? std::nullopt
                           : std::optional(modelOf<Model>((tree->*scheme.top)(), path,
                                                          scheme.fileKind, scheme.noModel));
}

/// Most of a large project's file are its units, and those need no parser. Nothing for a text that
/// has to be parsed as a whole.
template <class FileTree, class TopTree>
std::optional<ProjectFile> readWithoutUnits(std::string_view text,
                                            const std::filesystem::path& path,
                                            const FileScheme<FileTree, TopTree>& scheme) {
    auto section = unitsSectionOf(text);
    std::optional<ProjectFile> project;
    if (section &&
        succeeds([&] { project = parseFaultless<ProjectFile>(section->rest, path, scheme); }) &&
        project) {
        project->units = std::move(section->units);
    }
    return project;
}

template <class Model, class FileTree, class TopTree>
Model parseCollecting(const std::filesystem::path& path,
                      const FileScheme<FileTree, TopTree>& scheme) {
    const SourceFile file(path);
    if (!file.failure().empty()) {
        throw NotFoundException(scheme.kind, file.name(),
                                file.missing() ? "" : "it cannot be read: " + file.failure());
    }
    const events::Span span(events::Activity::Read, file.name());
    std::optional<Model> model;
    if constexpr (std::is_same_v<Model, ProjectFile>) {
        model = readWithoutUnits(file.text(), path, scheme);
    }
    if (!model) {
        model = parseFaultless<Model>(file.text(), path, scheme);
    }
    if (!model) {
        throwCollected(file, scheme.startRule);
    }
    model->hash = hashText(file.text());
    return std::move(*model);
}

}  // namespace

Unit parseUnitFile(const std::filesystem::path& path, UnitOutlines* outlines) {
    SourceFile file(path);
    if (!file.failure().empty()) {
        VeskException error("Unable to open file!");
        error.addNote(file.name() + ": " + file.failure());
        throw error;
    }
    console::trace("Parsing {}\n", file.name());
    const events::Span span(events::Activity::Read, file.name());
    const auto sliced = std::make_shared<SlicedUnit>(std::move(file), canonicalPath(path));
    auto unit = readSliced(*sliced, outlines);
    return unit ? std::move(*unit) : parseWhole(sliced->file(), path);
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
