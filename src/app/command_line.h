// Reads the command line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/settings.h"

namespace Vesk {

/// Set to anything but "" and "0", it refuses doubts as --strict does.
inline constexpr const char* kStrictVariable = "VESK_STRICT";

/// The environment variable with options for every run.
inline constexpr const char* kOptionsVariable = "VESK_OPTIONS";

/// Reads the arguments, without the program's name, into the settings. Arguments that begin with
/// "-" and are not options are set aside. -v changes the console's threshold at once.
///
/// Throws std::runtime_error "unknown switch" for -f or -o as the last argument,
/// std::invalid_argument for -l without a unit, std::out_of_range for a number beyond 32 bits.
void parseCommandLine(const std::vector<std::string>& arguments, Settings& settings);

/// The same for the text of `kOptionsVariable`, whose words are separated by blanks; single and
/// double quotes group, and nothing escapes. A word that is not an option is ignored with a
/// warning. Throws likewise, with a note that names the variable, and VeskException for an open
/// quote.
void parseOptionsVariable(std::string_view text, Settings& settings);

/// The same for the options that a project has for every build. Those already given stand. A word
/// that is not an option, and an option that a project cannot give, throw VeskException.
void parseProjectOptions(std::string_view text, Settings& settings);

/// Reports the options that are none, with what they are nearly called like, and those that do
/// nothing without another one. Throws VeskException where doubts are refused.
void reportDoubtfulOptions(const Settings& settings);

}  // namespace Vesk
