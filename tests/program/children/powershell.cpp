// Stands in for PowerShell. It knows the statements below; anything else is exit status 64, so that
// a command that is not expected fails loudly. With POWERSHELL_LOG set it appends its own command
// line to that file.
#include <algorithm>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <system_error>

#include "platform/environment.h"
#include "platform/files.h"
#include "program/children/arguments.h"

namespace Vesk::test {

namespace {

namespace fs = std::filesystem;

constexpr int kNotUnderstood = 64;
/// A text in apostrophes; an apostrophe in it is doubled.
const std::string kText = "'((?:[^']|'')*)'";
const std::regex kRemove("if \\(Test-Path -LiteralPath " + kText +
                         "\\) \\{ Remove-Item -LiteralPath " + kText + " -Recurse -Force \\}");
const std::regex kMakeDirectory("New-Item -ItemType Directory -Force -Path " + kText +
                                " \\| Out-Null");
const std::regex kCopy("Copy-Item -LiteralPath " + kText + " -Destination " + kText + " -Force");
const std::regex kWrite("Write-Output " + kText);
const std::regex kExit("exit (\\d+)");

/// The status is that of the last statement, as with the real one.
int runScript(std::string script) {
    std::smatch found;
    const auto accept = [&](const std::regex& statement) {
        return std::regex_search(script, found, statement, std::regex_constants::match_continuous);
    };
    const auto text = [&found](int group) {
        return std::regex_replace(found.str(group), std::regex("''"), "'");
    };
    const auto path = [&text](int group) { return platform::pathFromUtf8(text(group)); };
    std::error_code error;
    while (!script.empty()) {
        error.clear();
        if (accept(kRemove)) {
            fs::remove_all(path(2), error);
        } else if (accept(kMakeDirectory)) {
            fs::create_directories(path(1), error);
        } else if (accept(kCopy)) {
            // Not overwrite_existing: the library for Windows refuses it, taking any two files
            // there for one.
            fs::remove(path(2), error);
            fs::copy_file(path(1), path(2), error);
        } else if (accept(kWrite)) {
            put(text(1) + "\n");
        } else if (accept(kExit)) {
            return std::stoi(found.str(1));
        } else {
            throw std::runtime_error("not understood: " + script);
        }
        script = std::regex_replace(found.suffix().str(), std::regex("^; *"), "");
    }
    return error ? 1 : 0;
}

void log(const Arguments& arguments) {
    const auto file = platform::environmentVariable("POWERSHELL_LOG");
    std::error_code error;
    if (file &&
        !platform::writeWholeFile(platform::pathFromUtf8(*file), wholeCommandLine(arguments) + "\n",
                                  platform::Append::yes, error)) {
        throw std::system_error(error, *file);
    }
}

}  // namespace

int run(const Arguments& arguments) {
    try {
        log(arguments);
        const auto command = std::find(arguments.begin(), arguments.end(), "-Command");
        if (arguments.end() - command != 2) {
            throw std::runtime_error("one text after -Command expected");
        }
        return runScript(command[1]);
    } catch (const std::exception& error) {
        put(std::string("powershell: ") + error.what() + "\n");
        return kNotUnderstood;
    }
}

}  // namespace Vesk::test
