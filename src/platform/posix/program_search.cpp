#include "platform/posix/program_search.h"

#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): not every libc declares it

namespace Vesk::platform {

namespace {

constexpr std::string_view kDirectoryVariable = "PWD=";
constexpr std::string_view kPathVariable = "PATH=";

bool isProgram(const std::string& file) noexcept {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(file.c_str(), X_OK) == 0;
}

}  // namespace

std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& string : strings) {
        pointers.push_back(const_cast<char*>(string.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

ChildEnvironment::ChildEnvironment(const ProcessRequest& request) {
    if (request.environment) {
        given_ = pointersTo(*request.environment);
    }
    const char* const directory = valueOf(kDirectoryVariable);
    if (request.directArguments.empty() || request.workingDirectory.empty() ||
        directory == nullptr || request.workingDirectory.native() == directory) {
        return;
    }
    directory_.append(kDirectoryVariable).append(request.workingDirectory.native());
    for (char* const* entry = forShell(); *entry != nullptr; ++entry) {
        const bool replaced = std::string_view(*entry).starts_with(kDirectoryVariable);
        moved_.push_back(replaced ? directory_.data() : *entry);
    }
    moved_.push_back(nullptr);
}

char* const* ChildEnvironment::forShell() const noexcept {
    return given_.empty() ? environ : given_.data();
}

char* const* ChildEnvironment::forProgram() const noexcept {
    return moved_.empty() ? forShell() : moved_.data();
}

const char* ChildEnvironment::valueOf(std::string_view name) const noexcept {
    for (char* const* entry = forShell(); entry != nullptr && *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, name.data(), name.size()) == 0) {
            return *entry + name.size();
        }
    }
    return nullptr;
}

std::string programFile(const ProcessRequest& request, const ChildEnvironment& environment) {
    const std::string& name = request.directArguments.front();
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char* const path = environment.valueOf(kPathVariable);
    std::string_view rest = path == nullptr ? "" : path;
    while (!rest.empty()) {
        const std::string_view directory = rest.substr(0, rest.find(':'));
        rest.remove_prefix(directory.size() < rest.size() ? directory.size() + 1 : rest.size());
        if (!directory.starts_with('/')) {
            return {};
        }
        std::string file = std::string(directory).append("/").append(name);
        if (isProgram(file)) {
            return file;
        }
    }
    return {};
}

}  // namespace Vesk::platform
