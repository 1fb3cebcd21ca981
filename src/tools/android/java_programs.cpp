#include "tools/android/java_programs.h"

#include <fmt/format.h>

#include "base/exception.h"
#include "platform/environment.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

std::string findIn(const std::string& kit, const std::string& file) {
    for (const char* directory : {"/bin/", "/"}) {
        if (std::string path = kit + directory + file; isFile(path)) {
            return path;
        }
    }
    return {};
}

}  // namespace

std::string requireJavaProgram(std::string_view name, const std::string& declared) {
    const std::string file = std::string(name).append(programSuffix());
    if (!declared.empty()) {
        std::string path = findIn(normalPath(declared), file);
        if (path.empty()) {
            throw VeskException(
                fmt::format("There is no '{}' in '{}' or its directory 'bin'. Correct java_path.",
                            file, declared));
        }
        return path;
    }
    if (const auto home = platform::environmentVariable("JAVA_HOME"); home && !home->empty()) {
        if (std::string path = findIn(normalPath(*home), file); !path.empty()) {
            return path;
        }
    }
    for (const std::string& directory : searchPath()) {
        if (std::string path = directory + "/" + file; isFile(path)) {
            return path;
        }
    }
    throw VeskException(fmt::format(
        "'{}' is neither in JAVA_HOME nor in PATH. Android packages need a Java development kit: "
        "install one, or say where it is with java_path.",
        file));
}

}  // namespace Vesk
