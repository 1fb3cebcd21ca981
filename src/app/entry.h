// The process around the application.
#pragma once

#include <string>
#include <vector>

namespace Vesk {

class VeskApplication;

/// A whole run of the program: installs the handlers, prepares the console, parses the arguments
/// (without the program's name), runs the mode and returns the exit status. Reports all errors.
int runProgram(const std::vector<std::string>& arguments);

/// Parses and runs; what escapes is reported and becomes the exit status: 1, or 128 and the
/// signal's number when the user asked to stop.
int runReporting(VeskApplication& application, const std::vector<std::string>& arguments);

}  // namespace Vesk
