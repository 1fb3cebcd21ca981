#include "platform/environment.h"

#include <windows.h>

#include "platform/recording.h"
#include "platform/windows/wide.h"

namespace Vesk::platform {

namespace {

/// The system takes some of these names apart or cuts them short instead of refusing them.
bool isName(const std::string& name) {
    return !name.empty() && name.find('=') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

std::optional<std::string> valueOf(const std::string& name) {
    const std::wstring wideName = toWide(name);
    std::wstring value(256, L'\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        const DWORD size = ::GetEnvironmentVariableW(wideName.c_str(), value.data(),
                                                     static_cast<DWORD>(value.size()));
        if (size == 0 && ::GetLastError() != ERROR_SUCCESS) {
            return std::nullopt;
        }
        const bool complete = size < value.size();
        value.resize(size);
        if (complete) {
            return fromWide(value);
        }
    }
}

}  // namespace

std::optional<std::string> environmentVariable(const std::string& name) {
    auto value = valueOf(name);
    record(Question::Variable, name, digestIfAny(value));
    return value;
}

bool setEnvironmentVariable(const std::string& name, const std::string& value) {
    return isName(name) && value.find('\0') == std::string::npos &&
           ::SetEnvironmentVariableW(toWide(name).c_str(), toWide(value).c_str()) != 0;
}

bool removeEnvironmentVariable(const std::string& name) {
    return isName(name) && (::SetEnvironmentVariableW(toWide(name).c_str(), nullptr) != 0 ||
                            ::GetLastError() == ERROR_ENVVAR_NOT_FOUND);
}

std::vector<std::string> environmentEntries() {
    recordSideEffect();  // nobody wants to hold all of it against the next run
    std::vector<std::string> entries;
    wchar_t* const block = ::GetEnvironmentStringsW();
    if (block == nullptr) {
        return entries;
    }
    for (std::wstring_view entry(block); !entry.empty();
         entry = std::wstring_view(entry.data() + entry.size() + 1)) {
        entries.push_back(fromWide(entry));
    }
    ::FreeEnvironmentStringsW(block);
    return entries;
}

}  // namespace Vesk::platform
