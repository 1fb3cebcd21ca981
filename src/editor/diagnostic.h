// What is wrong with a text, and how it may be put right.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/syntax_tree.h"

namespace Vesk::editor {

enum class Severity : std::uint8_t {
    Error,    ///< a build fails
    Warning,  ///< most probably not meant
    Hint,     ///< has no effect
};

struct Edit {
    TextSpan span;
    std::string text;
};

/// A change of the same text.
struct Fix {
    std::string title;
    std::vector<Edit> edits;
};

struct Diagnostic {
    std::string_view rule;  ///< the name of one of `rules()`
    Severity severity = Severity::Error;
    TextSpan span;
    std::string message;
    std::vector<std::string> notes = {};
    std::vector<Fix> fixes = {};
};

struct Rule {
    std::string_view name;
    std::string_view meaning;
};

namespace rule {
inline constexpr std::string_view kSyntax = "syntax";
inline constexpr std::string_view kValue = "value";
inline constexpr std::string_view kDuplicate = "duplicate-name";
inline constexpr std::string_view kUnknown = "unknown-name";
inline constexpr std::string_view kArguments = "argument-count";
inline constexpr std::string_view kCycle = "cycle";
inline constexpr std::string_view kMisspelt = "misspelt-variable";
inline constexpr std::string_view kUnread = "unread-variable";
inline constexpr std::string_view kNoTool = "no-tool";
inline constexpr std::string_view kDropped = "dropped-output";
inline constexpr std::string_view kMissingFile = "missing-file";
}  // namespace rule

inline constexpr Rule kRules[] = {
    {rule::kSyntax, "the text cannot be read"},
    {rule::kValue, "a value cannot be made of what is written"},
    {rule::kDuplicate, "two of one name"},
    {rule::kUnknown, "there is no target, unit, project or profile of that name"},
    {rule::kArguments, "a target is given too few or too many arguments"},
    {rule::kCycle, "targets need each other"},
    {rule::kMisspelt, "nothing reads the variable, and one of nearly that name is known"},
    {rule::kUnread, "nothing reads the variable"},
    {rule::kNoTool, "no tool can build the target"},
    {rule::kDropped, "no dependant sees the output: the target's tool hands on no such thing"},
    {rule::kMissingFile, "a file that is named does not exist"},
};

}  // namespace Vesk::editor
