#include "app/kept_visits.h"

#include <system_error>

#include "app/version.h"
#include "base/bytes.h"
#include "base/console.h"
#include "base/exception.h"
#include "cache/cache_file.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {

VisitKeeping visitKeeping(const Settings& settings) {
    const std::string wish = platform::environmentVariable(kKeepVariable).value_or("");
    // What a dry run and --why say of a target depends on what is built before it.
    if (wish == "no" || settings.dryRun || settings.why) {
        return {};
    }
    // What a run with more messages says is not kept, nor taken for what one with fewer says.
    VisitKeeping use;
    use.keeps = console::threshold() == console::kDefaultThreshold;
    const bool mayTake = console::threshold() >= console::kDefaultThreshold && !settings.rebuild;
    use.checks = mayTake && wish == "check";
    use.takes = mayTake && settings.compileCommands.empty() && !use.checks;
    return use;
}

namespace {

/// Another build of vesk may find otherwise.
void addProgram(Encoder& out) {
    out.piece(kVersion);
    if (const auto program = platform::fileStatus(platform::executable())) {
        out.number(program->number);
        out.number(program->size);
        out.number(static_cast<std::uint64_t>(program->modifiedNanoseconds));
    }
}

ContentHash outlineKey(const std::string& file) {
    return hashText({"outline\n", file});
}

}  // namespace

KeptOutlines::KeptOutlines(VisitStore& store, VisitKeeping use) : store_(store), use_(use) {
    Encoder out;
    addProgram(out);
    const ContentHash program = hashText(out.bytes);
    out.bytes.clear();
    out.hash(program);
    maker_ = std::move(out.bytes);
}

/// Nothing for one that another build of vesk has made.
std::optional<std::string_view> KeptOutlines::kept(const ContentHash& key) {
    auto outline = store_.findText(key);
    if (!outline || !outline->starts_with(maker_)) {
        return std::nullopt;
    }
    outline->remove_prefix(maker_.size());
    return outline;
}

std::optional<std::string_view> KeptOutlines::find(const std::string& file) {
    return use_.takes ? kept(outlineKey(file)) : std::nullopt;
}

void KeptOutlines::put(const std::string& file, std::string_view outline) {
    const ContentHash key = outlineKey(file);
    constexpr std::size_t kHashBytes = sizeof(ContentHash);  // of the file's text
    if (const auto before = use_.checks ? kept(key) : std::nullopt;
        before && *before != outline &&
        before->substr(0, kHashBytes) == outline.substr(0, kHashBytes)) {
        throw VeskException("The kept outline of '" + file + "' would have been wrong.");
    }
    if (use_.keeps) {
        store_.putText(key, maker_ + std::string(outline));
    }
}

ContentHash surroundingsOfRun(const Registry& registry, const Context& builtins,
                              const Request& request, const platform::Questions& asked) {
    Encoder out;
    addProgram(out);
    out.piece(platform::pathToUtf8(std::filesystem::current_path()));
    out.piece(platform::pathToUtf8(registry.file));
    out.hash(registry.hash);
    for (const auto& [name, assignment] : builtins.assignments()) {
        out.piece(assignment.toDisplayString());
    }
    for (const OtherWord& word : request.words.others) {
        out.piece(word.text);
    }
    out.piece(request.assignments->dump());
    out.piece(asked.recording);
    return hashText(out.bytes);
}

ContentHash surroundingsIn(const Project& project, const ContentHash& run) {
    Encoder out;
    out.hash(run);
    for (const std::filesystem::path& path : {project.file, project.root}) {
        out.piece(platform::pathToUtf8(path));
    }
    out.hash(project.hash);
    out.piece(project.profile);
    return hashText(out.bytes);
}

void loadVisits(VisitStore& store, const std::filesystem::path& directory) {
    const std::filesystem::path file = directory / VisitStore::kFileName;
    // A pattern may look at this directory. The file is there before, so that it is no news after.
    if (!platform::isFile(file) && platform::isFile(directory / kCacheFileName)) {
        std::error_code ignored;
        platform::writePrivateFile(file, "", platform::Append::no, ignored);
    }
    store.load(directory);
}

void saveVisits(VisitStore& store, const std::filesystem::path& directory) {
    if (platform::isFile(directory / kCacheFileName)) {
        store.save();
    }
}

}  // namespace Vesk
