#include "driver/kept_recipes.h"

#include <algorithm>
#include <span>
#include <unordered_set>
#include <utility>

#include "base/bytes.h"
#include "cache/record_files.h"
#include "driver/mentioned_files.h"
#include "driver/target_build.h"
#include "driver/target_environment.h"
#include "driver/value_paths.h"
#include "platform/files.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

/// Finding the files that commands mention takes time for each pair of them.
constexpr std::size_t kMostPairs = 200'000;

void append(Encoder& out, const std::vector<std::string>& texts) {
    out.number(texts.size());
    for (const std::string& text : texts) {
        out.piece(text);
    }
}

std::vector<std::string_view> takePieces(Decoder& in) {
    std::vector<std::string_view> pieces;
    for (std::uint64_t count = in.number(); count > 0 && in.good(); --count) {
        pieces.push_back(in.piece());
    }
    return pieces;
}

std::vector<std::string> takeTexts(Decoder& in) {
    const std::vector<std::string_view> pieces = takePieces(in);
    return {pieces.begin(), pieces.end()};
}

template <class Enum>
void appendEnum(Encoder& out, Enum value) {
    out.number(static_cast<std::uint64_t>(value));
}

template <class Enum>
void takeEnum(Decoder& in, Enum& value) {
    value = static_cast<Enum>(in.number());
}

/// All but the commands and the files.
std::string encodedKind(const Recipe& recipe) {
    Encoder out;
    out.piece(platform::pathToUtf8(recipe.workingDirectory));
    out.number(recipe.shell);
    out.number(recipe.searchDirectories.size());
    for (const std::filesystem::path& directory : recipe.searchDirectories) {
        out.piece(platform::pathToUtf8(directory));
    }
    out.number(recipe.toolEnvironment ? 1 : 0);
    if (recipe.toolEnvironment) {
        append(out, recipe.toolEnvironment->variables);
        append(out, recipe.toolEnvironment->systemDirectories);
    }
    out.number(recipe.headerSearch ? 1 : 0);
    if (recipe.headerSearch) {
        append(out, recipe.headerSearch->directories);
    }
    out.number(recipe.stage);
    appendEnum(out, recipe.role);
    appendEnum(out, recipe.start);
    appendEnum(out, recipe.declaration);
    appendEnum(out, recipe.oldOutputs);
    return std::move(out.bytes);
}

Recipe takeKind(Decoder& in) {
    Recipe recipe;
    recipe.workingDirectory = platform::pathFromUtf8(in.piece());
    recipe.shell = static_cast<std::uint32_t>(in.number());
    for (const std::string_view directory : takePieces(in)) {
        recipe.searchDirectories.push_back(platform::pathFromUtf8(directory));
    }
    if (in.number() != 0) {
        auto environment = std::make_shared<ToolEnvironment>();
        environment->variables = takeTexts(in);
        environment->systemDirectories = takeTexts(in);
        recipe.toolEnvironment = std::move(environment);
    }
    if (in.number() != 0) {
        recipe.headerSearch =
            std::make_shared<HeaderSearch>(HeaderSearch{.directories = takeTexts(in)});
    }
    recipe.stage = static_cast<std::uint32_t>(in.number());
    takeEnum(in, recipe.role);
    takeEnum(in, recipe.start);
    takeEnum(in, recipe.declaration);
    takeEnum(in, recipe.oldOutputs);
    return recipe;
}

bool compiles(const Recipe& recipe) {
    return recipe.role == RecipeRole::Compile;
}

bool isPlain(const Recipe& recipe) {
    return !recipe.action && recipe.outputDirectory.empty() && recipe.environment.empty() &&
           recipe.secretVariables.empty() && !recipe.deadline;
}

class RecipeEncoder {
  public:
    explicit RecipeEncoder(const TargetBuild& build)
        : build_(build), request_(build.cache().request()), context_(*build.subject().context) {}

    std::string bytes() {
        if (!canBeKept()) {
            return {};
        }
        for (const Recipe& recipe : build_.recipes()) {
            kindOf_.push_back(numberOfKind(encodedKind(recipe)));
        }
        Encoder out;
        out.piece(build_.recipes().empty() ? std::string() : outputDirectory());
        append(out, directories());
        out.number(build_.isList() ? 1 : 0);
        append(out, build_.ownFiles());
        out.number(request_.parts[kTargetPart].reads.size());
        append(out, kinds_);
        out.number(build_.recipes().size());
        for (std::size_t i = 0; i < build_.recipes().size(); ++i) {
            appendSingle(out, i);
        }
        return std::move(out.bytes);
    }

  private:
    std::string outputDirectory() const {
        return platform::pathToUtf8(BuildEnv(environmentSettings(context_)).outputDirectory());
    }

    bool canBeKept() {
        const std::vector<Recipe>& recipes = build_.recipes();
        if (!build_.subject().builder->onlyMakesRecipes() || environmentOf(context_) != nullptr ||
            !std::ranges::all_of(recipes, isPlain)) {
            return false;
        }
        if (std::ranges::any_of(recipes, compiles)) {
            others_ = filesOfOthers();
        }
        return others_.size() * recipes.size() <= kMostPairs;
    }

    /// What the context names and the target's recipes neither read nor make.
    std::vector<std::string> filesOfOthers() const {
        std::unordered_set<std::string_view> own;
        for (const CacheRequest::Part& part : request_.parts) {
            own.insert(part.reads.begin(), part.reads.end());
            own.insert(part.writes.begin(), part.writes.end());
        }
        std::vector<std::string> files;
        for (const auto& [name, assignment] : context_.assignments()) {
            appendPaths(files, assignment);
        }
        sortUnique(files);
        std::erase_if(files, [&own](const std::string& file) { return own.contains(file); });
        return files;
    }

    std::size_t numberOfKind(std::string kind) {
        const auto found = std::ranges::find(kinds_, kind);
        const auto number = static_cast<std::size_t>(found - kinds_.begin());
        if (found == kinds_.end()) {
            kinds_.push_back(std::move(kind));
        }
        return number;
    }

    std::vector<std::string> directories() const {
        std::vector<std::string> directories;
        for (const std::string& file : request_.parts[kTargetPart].writes) {
            directories.emplace_back(directoryOf(file));
        }
        sortUnique(directories);
        return directories;
    }

    void appendSingle(Encoder& out, std::size_t number) {
        const Recipe& recipe = build_.recipes()[number];
        const CacheRequest::Part& part = request_.parts[kFirstRecipePart + number];
        out.number(kindOf_[number]);
        out.piece(recipe.command);
        append(out, recipe.furtherCommands);
        out.piece(recipe.dependencyFile.empty() ? "" : trackedPath(recipe.dependencyFile));
        out.number(recipe.supportFiles.size());
        for (const SupportFile& file : recipe.supportFiles) {
            out.piece(trackedPath(file.path));
            out.piece(file.content);
        }
        append(out, compiles(recipe)
                        ? filesMentioned(recipe, others_, build_.subject().cache.root())
                        : std::vector<std::string>());
        appendEnum(out, part.judged);
        out.number(part.reads.size());
        const auto source = std::ranges::find(part.reads, part.source);
        out.number(source == part.reads.end()
                       ? 0
                       : static_cast<std::size_t>(source - part.reads.begin()) + 1);
    }

    const TargetBuild& build_;
    const CacheRequest& request_;
    const Context& context_;
    std::vector<std::string> others_;
    std::vector<std::string> kinds_;
    std::vector<std::size_t> kindOf_;
};

/// The files with these numbers.
std::vector<std::string> named(std::span<const std::size_t> numbers,
                               const std::vector<RecordFile>& files, const TrackingRoot& root) {
    std::vector<std::string> paths;
    paths.reserve(numbers.size());
    for (const std::size_t number : numbers) {
        paths.push_back(root.absolute(files[number].path));
    }
    return paths;
}

}  // namespace

std::string encodedRecipes(const TargetBuild& build) {
    return RecipeEncoder(build).bytes();
}

bool KeptRecipes::takeAll(std::string_view bytes) {
    Decoder in(bytes);
    outputDirectory_ = in.piece();
    directories_ = takeTexts(in);
    isList_ = in.number() != 0;
    ownFiles_ = takeTexts(in);
    reads_ = in.number();
    for (const std::string_view kind : takePieces(in)) {
        Decoder pieces(kind);
        Recipe common = takeKind(pieces);
        std::string directory = platform::pathToUtf8(common.workingDirectory);
        kinds_.push_back({std::move(common), std::move(directory)});
    }
    const std::uint64_t count = in.number();
    singles_.reserve(std::min<std::uint64_t>(count, bytes.size()));
    for (std::uint64_t i = 0; i < count && in.good(); ++i) {
        Single& single = singles_.emplace_back();
        single.kind = in.number();
        single.command = in.piece();
        single.furtherCommands = takePieces(in);
        single.dependencyFile = in.piece();
        for (std::uint64_t files = in.number(); files > 0 && in.good(); --files) {
            const std::string_view path = in.piece();
            single.supportFiles.emplace_back(path, in.piece());
        }
        single.mentioned = takePieces(in);
        takeEnum(in, single.judged);
        single.reads = in.number();
        single.source = in.number();
        if (single.kind >= kinds_.size() || single.source > single.reads) {
            return false;
        }
    }
    return in.good() && in.atEnd();
}

CacheRequest::Part KeptRecipes::partOf(const Single& single) const {
    const Recipe& common = kinds_[single.kind].common;
    CacheRequest::Part part;
    part.judged = single.judged;
    part.declaration = single.dependencyFile.empty() ? common.declaration : Declaration::Complete;
    part.dependencyFile = single.dependencyFile;
    part.headerSearch = common.headerSearch;
    part.directory = kinds_[single.kind].directory;
    part.toolEnvironment = common.toolEnvironment;
    if (!single.dependencyFile.empty()) {
        part.byProducts.emplace_back(single.dependencyFile);
    }
    for (const auto& [path, content] : single.supportFiles) {
        part.byProducts.emplace_back(path);
    }
    return part;
}

/// The texts are those of the record, and so are the files.
bool KeptRecipes::makeRequest(const RecordText& record, const TrackingRoot& root) {
    const auto content = contentOf(record);
    const std::vector<RecordFile>& files = content->files();
    if (content->isFaulty() || content->parts().size() != kFirstRecipePart + singles_.size()) {
        return false;
    }
    request.parts.resize(kFirstRecipePart);
    for (const Single& single : singles_) {
        request.parts.push_back(partOf(single));
    }
    for (std::size_t i = 0; i < content->parts().size(); ++i) {
        CacheRequest::Part& part = request.parts[i];
        part.inputs = content->parts()[i].inputs;
        const RecordContent::Numbers& reads = content->reads(i);
        const RecordContent::Numbers& writes = content->writes(i);
        if (!reads || !writes) {
            return false;
        }
        const Single* const single =
            i >= kFirstRecipePart ? &singles_[i - kFirstRecipePart] : nullptr;
        const std::size_t declared = single != nullptr  ? single->reads
                                     : i == kTargetPart ? reads_
                                                        : 0;
        if (reads->size() < declared ||
            (single != nullptr && single->judged == Judged::Alone && writes->empty())) {
            return false;
        }
        part.reads = named(std::span(*reads).first(declared), files, root);
        if (single != nullptr && single->source != 0) {
            part.source = part.reads[single->source - 1];
        }
        part.writes = named(*writes, files, root);
    }
    request.environment = content->environment();
    return true;
}

std::optional<KeptRecipes> KeptRecipes::decoded(std::string_view bytes, const RecordText& record,
                                                const TrackingRoot& root) {
    KeptRecipes kept;
    if (bytes.empty() || !kept.takeAll(bytes) || !kept.makeRequest(record, root)) {
        return std::nullopt;
    }
    kept.recipes.resize(kept.singles_.size());
    for (std::size_t i = 0; i < kept.recipes.size(); ++i) {
        const Recipe& common = kept.kinds_[kept.singles_[i].kind].common;
        kept.recipes[i].stage = common.stage;
        kept.recipes[i].role = common.role;
        kept.recipes[i].start = common.start;
    }
    return kept;
}

void KeptRecipes::complete(Recipe& recipe, std::size_t number,
                           const std::vector<std::string>& writes) const {
    const Single& single = singles_[number];
    if (!recipe.command.empty()) {
        return;
    }
    recipe = kinds_[single.kind].common;
    recipe.command = single.command;
    recipe.furtherCommands.assign(single.furtherCommands.begin(), single.furtherCommands.end());
    recipe.dependencyFile = platform::pathFromUtf8(single.dependencyFile);
    for (const auto& [path, content] : single.supportFiles) {
        recipe.supportFiles.push_back({platform::pathFromUtf8(path), std::string(content)});
    }
    for (const std::string& file : writes) {
        recipe.outputs.push_back(resolvedAssignment(
            "OUTPUT", std::make_shared<VeskPathString>(file, std::filesystem::path()),
            AssignModifier::Output));
    }
}

std::vector<std::string> KeptRecipes::mentioned(std::size_t recipe) const {
    const auto& files = singles_[recipe].mentioned;
    return {files.begin(), files.end()};
}

}  // namespace Vesk
