#include "app/kept_database.h"

#include <optional>
#include <string_view>
#include <system_error>

#include "app/compile_commands.h"
#include "app/kept_visits.h"
#include "base/bytes.h"
#include "base/ci_string.h"
#include "base/content_hash.h"
#include "base/exception.h"
#include "platform/files.h"
#include "platform/recorder.h"

namespace Vesk {
namespace {

const CiString kCompileCommands = "COMPILE_COMMANDS";

/// The texts from which all targets are visited, and what surrounds them. Nothing if not all of it
/// is known.
std::optional<ContentHash> sourcesOf(const Session& session) {
    if (!session.surroundings) {
        return std::nullopt;
    }
    Encoder out;
    for (const Project* project : session.catalog.projects()) {
        out.hash(surroundingsIn(*project, *session.surroundings));
        for (const auto& unit : project->units()) {
            out.piece(unit->name);
            for (const auto& target : unit->targets) {
                if (!target->hash) {
                    return std::nullopt;
                }
                out.hash(*target->hash);
            }
        }
    }
    return hashText(out.bytes);
}

/// What is remembered of a database.
struct KeptDatabase {
    ContentHash sources;
    ContentHash text;        ///< of the file
    std::string_view asked;  ///< of the system while targets were visited; see platform/recorder.h
};

std::string bytesOf(const KeptDatabase& kept) {
    Encoder out;
    out.hash(kept.sources);
    out.hash(kept.text);
    out.piece(kept.asked);
    return std::move(out.bytes);
}

std::optional<KeptDatabase> decodedDatabase(std::string_view bytes) {
    Decoder in(bytes);
    KeptDatabase kept{in.hash(), in.hash(), in.piece()};
    return in.good() && in.atEnd() ? std::optional(kept) : std::nullopt;
}

/// Whether a database would come out as the one that is kept.
bool isCurrent(const std::optional<std::string_view>& bytes, const ContentHash& sources,
               const ContentHash& text) {
    const auto kept = bytes ? decodedDatabase(*bytes) : std::nullopt;
    return kept && kept->sources == sources && kept->text == text &&
           platform::stillValid(kept->asked);
}

ContentHash keyOf(const std::string& path) {
    return hashText({"compilation database\n", path});
}

std::string textFromVisits(const Session& session, const BuildSetting& setting,
                           const std::string& old, platform::Questions& asked) {
    const platform::QuestionScope scope(asked);
    CompileCommands commands;
    commands.addProject(setting, session.catalog.active());
    return commands.textOver(old);
}

}  // namespace

std::string compilationDatabaseOf(const ProjectCatalog& catalog, const Project& project) {
    const std::shared_ptr<Context> context = catalog.implicitContext(project);
    if (context->find(kCompileCommands) == nullptr) {
        return {};
    }
    const std::string text = context->valueOfVariable(kCompileCommands)->toString();
    return text.empty() ? text : platform::pathToUtf8(project.root / platform::pathFromUtf8(text));
}

void keepDatabaseCurrent(const std::string& path, const Session& session,
                         const BuildSetting& setting, VisitKeeper* keeper) {
    const VisitKeeping use = keeper != nullptr ? keeper->use() : VisitKeeping();
    const ContentHash key = keyOf(path);
    const auto sources = keeper != nullptr ? sourcesOf(session) : std::nullopt;
    const std::string old = CompileCommands::textAt(path);
    const bool current = sources && (use.takes || use.checks) &&
                         isCurrent(keeper->store().findText(key), *sources, hashText(old));
    if (current && !use.checks) {
        return;
    }
    platform::Questions asked;
    const std::string text = textFromVisits(session, setting, old, asked);
    if (current && text != old) {
        throw VeskException("The compilation database '" + path +
                            "' would have been left as it is by mistake.");
    }
    CompileCommands::write(path, text, old);
    if (sources && use.keeps && asked.repeatable &&
        !setting.options.hidden.showIn(std::string_view(asked.recording))) {
        keeper->store().putText(
            key, bytesOf({.sources = *sources, .text = hashText(text), .asked = asked.recording}));
    }
}

bool expectDatabase(const std::string& path, const Session& session, VisitStore& store,
                    platform::QuestionList& questions) {
    const auto bytes = store.findText(keyOf(path));
    const auto kept = bytes ? decodedDatabase(*bytes) : std::nullopt;
    if (!kept || kept->sources != sourcesOf(session)) {
        return false;
    }
    questions.addContent(path, kept->text.low);
    return questions.add(kept->asked);
}

}  // namespace Vesk
