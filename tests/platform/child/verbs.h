// A small program that tests start as a child process: its first argument says what it does.
#pragma once

#include <string>
#include <vector>

namespace Vesk::test {

/// Runs the verb `arguments[0]` with the other arguments; returns the exit code.
int runVerb(const std::vector<std::string>& arguments);

}  // namespace Vesk::test
