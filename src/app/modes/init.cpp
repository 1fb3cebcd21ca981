#include <algorithm>
#include <fmt/format.h>

#include "app/first_unit.h"
#include "app/modes/modes.h"
#include "app/project_root.h"
#include "base/ci_string.h"
#include "base/console.h"
#include "base/exception.h"
#include "grammar/identifier.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "project/project.h"

namespace Vesk::modes {
namespace {

namespace fs = std::filesystem;

struct NewFile {
    std::string path;  ///< from the current directory, with slashes
    std::string text;
};

std::vector<NewFile> firstProgramInC() {
    return {{"main.c",
             "#include <stdio.h>\n\nint main(void) {\n    puts(\"Hello\");\n    return 0;\n}\n"}};
}

std::vector<NewFile> firstProgramInCpp() {
    return {
        {"main.cpp", "#include <iostream>\n\nint main() {\n    std::cout << \"Hello\\n\";\n}\n"}};
}

/// `name`: an identifier of C.
std::vector<NewFile> firstLibrary(const std::string& name) {
    return {
        {fmt::format("include/{}.h", name),
         fmt::format("#ifndef {0}_H\n#define {0}_H\n\nint {0}_answer(void);\n\n#endif\n", name)},
        {fmt::format("src/{}.c", name),
         fmt::format("#include \"{0}.h\"\n\nint {0}_answer(void) {{\n    return 42;\n}}\n", name)},
        {"example/main.c",
         fmt::format("#include <stdio.h>\n\n#include \"{0}.h\"\n\nint main(void) {{\n"
                     "    printf(\"%d\\n\", {0}_answer());\n    return 0;\n}}\n",
                     name)}};
}

void refuseExisting(const fs::path& file) {
    std::error_code ignored;
    if (!platform::exists(file, ignored)) {
        return;
    }
    VeskException error(fmt::format("'{}' is there already; --init overwrites nothing.",
                                    platform::pathToUtf8(file)));
    error.addNote("edit it, or move it away and try again");
    throw error;
}

void create(const fs::path& file, const std::string& text) {
    std::error_code error;
    platform::makeDirectories(file.parent_path(), error);
    if (error || !platform::writeWholeFile(file, text, platform::Append::no, error)) {
        VeskException failure("Unable to write file: " + platform::pathToUtf8(file));
        failure.addNote(error.message());
        throw failure;
    }
    console::normal("Created file '{}'.", platform::pathToUtf8(file));
}

std::vector<NewFile> firstFiles(const std::string& kind, std::string name) {
    if (equalsIgnoringCase(kind, "c++")) {
        return firstProgramInCpp();
    }
    if (!equalsIgnoringCase(kind, "lib")) {
        return firstProgramInC();
    }
    std::ranges::replace(name, '-', '_');
    return firstLibrary(name);
}

void refuseUnknownKind(const std::string& kind) {
    for (const char* known : {"", "c", "c++", "lib"}) {
        if (equalsIgnoringCase(kind, known)) {
            return;
        }
    }
    VeskException error(fmt::format("--init knows nothing of '{}'.", kind));
    error.addNote("write --init, --init=c, --init=c++ or --init=lib");
    throw error;
}

}  // namespace

int init(const Settings& settings) {
    refuseUnknownKind(settings.initKind);
    const fs::path directory = fs::current_path();
    const fs::path unitFile = directory / kUnitFileName;
    refuseExisting(unitFile);
    const std::string directoryName = platform::pathToUtf8(directory.filename());
    const std::string name = identifierFrom(directoryName.empty() ? "app" : directoryName);
    FirstSources found = findFirstSources(directory);
    if (found.sources.empty()) {
        const std::vector<NewFile> files = firstFiles(settings.initKind, name);
        for (const NewFile& file : files) {
            refuseExisting(directory / platform::pathFromUtf8(file.path));
        }
        for (const NewFile& file : files) {
            create(directory / platform::pathFromUtf8(file.path), file.text);
        }
        found = findFirstSources(directory);
    }
    const bool library = equalsIgnoringCase(settings.initKind, "lib");
    create(unitFile, firstUnitText(found, name, library ? FirstUnit::Library : FirstUnit::Program));
    if (const ProjectRoot root = findProjectRoot(settings); root.projectFile) {
        console::normal(
            "What is built here is the project in '{}': list the new file there, or build "
            "it with -f {}.",
            platform::pathToUtf8(root.directory), kUnitFileName);
    }
    return 0;
}

}  // namespace Vesk::modes
