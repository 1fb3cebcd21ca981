// The options of the command line.
#pragma once

#include <string>
#include <vector>

#include "app/settings.h"

namespace Vesk {

/// Reads the arguments, without the program's name, into the settings. Arguments that begin with
/// "-" and are no option are ignored. -v changes the console's threshold at once.
///
/// Throws std::runtime_error "unknown switch" for -f or -o as the last argument,
/// std::invalid_argument for -l without a unit, std::out_of_range for a number beyond 32 bits.
void parseCommandLine(const std::vector<std::string>& arguments, Settings& settings);

/// What -h prints, with a line end after the last line.
extern const char* const kHelpText;

}  // namespace Vesk
