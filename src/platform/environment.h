// The environment of this process. All names and values are UTF-8.
//
// Reading is safe from any thread as long as nobody changes the environment; changes are made on
// the main thread only, while no child is being started.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Vesk::platform {

/// The value of a variable; nothing when it is unset, an empty string when it is set but empty.
std::optional<std::string> environmentVariable(const std::string& name);

/// Sets a variable for this process and its future children. False when the system refuses.
bool setEnvironmentVariable(const std::string& name, const std::string& value);

/// Removes a variable. Removing one that is not set succeeds. False when the system refuses.
bool removeEnvironmentVariable(const std::string& name);

/// Every "NAME=value" of the process, in the system's order.
std::vector<std::string> environmentEntries();

}  // namespace Vesk::platform
