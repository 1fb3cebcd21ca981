#include "platform/environment.h"

#include <cstdlib>

#include "platform/recording.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): not every libc declares it

namespace Vesk::platform {

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* const text = std::getenv(name.c_str());
    auto value = text == nullptr ? std::nullopt : std::optional<std::string>(text);
    record(Question::Variable, name, digestIfAny(value));
    return value;
}

bool setEnvironmentVariable(const std::string& name, const std::string& value) {
    // A zero byte would cut the name or the value short in silence.
    if (name.find('\0') != std::string::npos || value.find('\0') != std::string::npos) {
        return false;
    }
    return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}

bool removeEnvironmentVariable(const std::string& name) {
    return ::unsetenv(name.c_str()) == 0;
}

std::vector<std::string> environmentEntries() {
    recordSideEffect();  // nobody wants to hold all of it against the next run
    std::vector<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        entries.emplace_back(*entry);
    }
    return entries;
}

}  // namespace Vesk::platform
