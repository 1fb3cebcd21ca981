// What can stand where the cursor is on a command line, for the completion of shells.
//
// Nothing is built, written, locked or reported for it. What cannot be read is left out: files are
// often broken while somebody works on them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/settings.h"

namespace Vesk {

struct Candidate {
    std::string text;  ///< the whole word; with "=", "::" or "/" at its end more follows
    std::string description;
};

/// The words that may stand in the place of the last one, and begin like it. `before` holds what
/// VESK_OPTIONS says. Empty where a file is wanted, which shells complete themselves.
std::vector<Candidate> completions(const std::vector<std::string>& words, const Settings& before);

/// Those for an option with an attached argument or without; `word` begins with a dash.
std::vector<Candidate> optionCandidates();

/// "NAME=" for each variable that a target can give.
std::vector<Candidate> variableCandidates();

/// The values that the table of variables names for a variable of a choice, without quotes.
std::vector<std::string> tabledValues(std::string_view variable);

}  // namespace Vesk
