// Starting a program without a shell, in such a way that it does not notice.
#pragma once

#include <string>
#include <vector>

#include "platform/process.h"

namespace Vesk::platform {

/// The null-terminated vector that the system takes; it does not write to the strings.
std::vector<char*> pointersTo(const std::vector<std::string>& strings);

/// A child's environment, as the system takes it. Refers to the request.
class ChildEnvironment {
  public:
    explicit ChildEnvironment(const ProcessRequest& request);

    char* const* forShell() const noexcept;

    /// With PWD as a shell sets it for the programs that it starts in another directory.
    char* const* forProgram() const noexcept;

    /// A variable's value, null without one. `name` ends with "=".
    const char* valueOf(std::string_view name) const noexcept;

  private:
    std::vector<char*> given_;
    std::string directory_;
    std::vector<char*> moved_;
};

/// The file of the program that `directArguments` name, found as a shell finds it. Empty when there
/// is none, or when where it is looked for depends on the child's directory.
std::string programFile(const ProcessRequest& request, const ChildEnvironment& environment);

}  // namespace Vesk::platform
