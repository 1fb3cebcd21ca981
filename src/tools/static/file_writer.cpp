#include "tools/static/file_writer.h"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/exception.h"
#include "platform/files.h"
#include "tools/support/parent_directory.h"
#include "types/context/context_value.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

constexpr const char* kFileName = "FILENAME";
constexpr const char* kText = "TEXT";
constexpr const char* kSeparator = "SEPARATOR";
constexpr const char* kMode = "MODE";

constexpr std::string_view kSources[] = {"WRITE_FILE", "FILE_WRITER"};
constexpr Misnomer kMisnomers[] = {{"FILE", kFileName}, {"CONTENT", kText}, {"CONTENTS", kText}};
constexpr Variable kInputs[] = {
    {"WRITE_FILE", "no value", "required", "the target is a file that is written"},
    {"FILE_WRITER", "no value", "", "the same as `WRITE_FILE`"},
    {kFileName, "string, path", "required", "the file; its directory must exist",
     R"x(P"(version.h)")x"},
    {kText, "string, list, context", "required",
     "what is written: a string as it is, the elements of a list, the dump of a context",
     R"("#define VERSION 3")"},
    {kSeparator, "string", "a line feed", "stands between the elements of a list", R"(", ")"},
    {kMode, "string", "`create`", "`create` or `append`", R"("append")"},
};
constexpr Variable kOutputs[] = {
    {"FILE", "path", "", "the file that was written"},
    {kText, "string", "", "its text"},
};
constexpr VariableGroup kInputGroup = {"File writer", VariableRole::Input, kInputs};
constexpr VariableGroup kOutputGroup = {"File writer: outputs", VariableRole::Output, kOutputs};
constexpr const VariableGroup* kVariables[] = {&kInputGroup, &kOutputGroup};

const AssignmentMap& wantsTable() {
    static const AssignmentMap table = makeTable({{kSeparator, "\n"}, {kMode, "create"}});
    return table;
}

const AssignmentMap& needsTable() {
    static const AssignmentMap table = makeTable({{kFileName}, {kText}});
    return table;
}

std::string serializedItem(const ValuePtr& item) {
    if (!item) {
        throw VeskException("File writer cannot serialize an empty list item.");
    }
    const bool isContext = valueAs<VeskContext>(item.get()) != nullptr;
    return isContext ? item->toDisplayString() : item->toString();
}

std::string serialized(const ValuePtr& value, std::string_view separator) {
    if (const auto* list = valueAs<VeskList>(value.get())) {
        std::string text;
        for (std::size_t i = 0; i < list->items.size(); ++i) {
            text += i == 0 ? std::string_view() : separator;
            text += serializedItem(list->items[i]);
        }
        return text;
    }
    const bool isString = valueAs<VeskBaseString>(value.get()) != nullptr;
    const bool isContext = valueAs<VeskContext>(value.get()) != nullptr;
    if (!isString && !isContext) {
        throw VeskException("File writer variable 'TEXT' must be a string, list, or context.");
    }
    return serializedItem(value);
}

/// The path that the target gives: absolute for a path value, otherwise relative to the current
/// directory.
std::filesystem::path fileOf(const Context& target) {
    const Assignment* assignment = target.find(kFileName);
    const auto* name =
        assignment == nullptr ? nullptr : valueAs<VeskBaseString>(assignment->value.get());
    if (name == nullptr) {
        throw VeskException(
            fmt::format("File writer variable '{}' must be a string or path.", kFileName));
    }
    return platform::pathFromUtf8(name->toString());
}

void requireParentDirectory(const std::filesystem::path& file) {
    const std::filesystem::path parent = parentDirectory(file);
    if (!parent.empty() && !platform::isDirectory(parent)) {
        VeskException error(fmt::format("File writer parent directory does not exist: '{}'.",
                                        platform::pathToUtf8(parent)));
        error.addNote(
            "the file writer makes no directories; make it first, or name one that exists");
        throw error;
    }
}

[[noreturn]] void throwFileError(std::string text, const std::error_code& why) {
    VeskException error(std::move(text));
    error.addNote(why.message());
    throw error;
}

// In two steps, because the two failures have different messages.
void writeFile(const std::filesystem::path& file, std::string_view text, bool append) {
    platform::FileWriter writer(file, append ? platform::Append::yes : platform::Append::no);
    if (!writer.isOpen()) {
        throwFileError(
            fmt::format("File writer could not open '{}' for writing.", platform::pathToUtf8(file)),
            writer.error());
    }
    if (!writer.write(text) || !writer.close()) {
        throwFileError(
            fmt::format("File writer could not write to '{}'.", platform::pathToUtf8(file)),
            writer.error());
    }
}

}  // namespace

const ToolTypeRegistration RegisterFileWriterMatcher({
    .word = "file_writer",
    .factory = matcherFactory<FileWriterMatcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kVariables,
});

FileWriterMatcher::FileWriterMatcher(const CiString& name, const AssignmentMap& must,
                                     const AssignmentMap& others)
    : Matcher(name, "file_writer", wantsTable(), needsTable(), must, others) {}

std::unique_ptr<Matcher> FileWriterMatcher::clone() const {
    return std::make_unique<FileWriterMatcher>(*this);
}

std::shared_ptr<Builder> FileWriterMatcher::createBuilder(const Context&) const {
    return std::make_shared<FileWriterBuilder>(wants());
}

MatchResult FileWriterMatcher::matchTool(const Context& target) const {
    const bool asked = std::ranges::any_of(
        kSources, [&target](std::string_view name) { return target.find(name) != nullptr; });
    return {{{kFileName, MatchKind::ExactMatch}, {kText, MatchKind::ExactMatch}},
            asked ? MatchNote::BuildPossible : MatchNote::BuildImpossible};
}

FileWriterBuilder::FileWriterBuilder(const AssignmentMap& settings)
    : Builder(needsTable(), settings) {}

std::shared_ptr<Context> FileWriterBuilder::expectedCompletion(TargetContext&) {
    return std::make_shared<Context>();
}

std::shared_ptr<Context> FileWriterBuilder::complete(TargetContext& target, int) {
    const std::string text = textOf(target);
    const bool append = appends(target);
    const std::filesystem::path file = fileOf(target);
    requireParentDirectory(file);
    writeFile(file, text, append);
    return std::make_shared<Context>();
}

RecipeSet FileWriterBuilder::createRecipes(TargetContext& target) {
    RecipeSet set;
    set.assignments.push_back(resolvedAssignment(
        kText, std::make_shared<VeskRawString>(textOf(target)), AssignModifier::Output));

    const std::filesystem::path file = fileOf(target);
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(file, error);
    const std::string path = platform::pathToUtf8(error ? file : absolute);
    set.assignments.push_back(
        resolvedAssignment("FILE", std::make_shared<VeskPathString>(path, std::filesystem::path()),
                           AssignModifier::Output));
    set.ok = true;
    return set;
}

std::string FileWriterBuilder::textOf(const Context& target) const {
    const ValuePtr separator = settingOr(target, kSeparator);
    const Assignment* text = target.find(kText);
    return serialized(text == nullptr ? nullptr : text->value,
                      separator ? separator->toString() : std::string("\n"));
}

bool FileWriterBuilder::appends(const Context& target) const {
    const ValuePtr value = settingOr(target, kMode);
    const std::string mode = value ? value->toString() : std::string("create");
    if (equalsIgnoringCase(mode, "append")) {
        return true;
    }
    if (!equalsIgnoringCase(mode, "create")) {
        throw VeskException(fmt::format(
            "File writer variable 'MODE' must be either 'create' or 'append', got '{}'.", mode));
    }
    return false;
}

}  // namespace Vesk
