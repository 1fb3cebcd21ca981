// What the words of the command line mean that are not options.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/doubts.h"
#include "project/project.h"
#include "types/context/assignment.h"
#include "types/model/dependency.h"

namespace Vesk {

/// A word that is to be reported or parsed.
struct OtherWord {
    std::string text;
    bool isTarget = false;  ///< a second target; else an assignment
};

struct Positionals {
    std::optional<DependencyReference> target;  ///< the first word that names one
    std::string profile;                        ///< spelled as it is defined; empty without one
    std::vector<OtherWord> others;              ///< all other words, in order
};

/// Sorts the words: a target of the project (or any "unit::target"), then a profile of it, else an
/// assignment. Throws VeskException for a second profile, std::runtime_error for a word such as
/// "::app".
Positionals classifyPositionals(const std::vector<std::string>& words, const Project& project);

/// Parses a word that is neither target nor profile. Relative paths in it are relative to the
/// current directory. What is probably not meant is reported as a doubt: a bare word, which clears
/// a variable, may be a mistyped target, and a text may have lost its quotes to the shell. Throws
/// VeskException, with notes that say what the word could have been.
Assignment parsePositionalAssignment(const std::string& word, const Project& project,
                                     Doubts doubts);

/// Throws the error being handled again. When a word is an assignment of the name that the error
/// says is missing, a note is added: the shell took the quotes of a text. Call inside a catch block
/// only.
[[noreturn]] void rethrowWithLostQuotes(const Positionals& words, const std::string& missing);

}  // namespace Vesk
