// What the commands of test targets run, so that they say the same on every system.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <sstream>
#include <system_error>
#include <thread>

#include "base/text.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/system.h"
#include "program/children/arguments.h"

namespace Vesk::test {

namespace {

namespace fs = std::filesystem;

constexpr int kUsage = 64;

void write(const std::string& file, const std::string& text) {
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(file), text, platform::Append::no,
                                  error)) {
        throw std::system_error(error, file);
    }
}

/// args TEXT...: each argument in brackets, a line an argument.
int args(const Arguments& arguments) {
    put("[" + joined(arguments, "]\n[") + "]\n");
    return 0;
}

/// print TEXT...: the arguments as one line.
int print(const Arguments& arguments) {
    put(joined(arguments, " ") + "\n");
    return 0;
}

/// bytes: what no XML can hold, between texts that it can.
int bytes(const Arguments&) {
    put(std::string("\x1b[31mred \xff\0 ]]> <& \xef\xbf\xbf\n", 23));
    return 0;
}

/// env NAME...: what the variables hold.
int env(const Arguments& arguments) {
    for (const std::string& name : arguments) {
        const auto value = platform::environmentVariable(name);
        put(name + (value ? "=" + *value : " is not set") + "\n");
    }
    return 0;
}

/// cwd: the name of the current directory.
int cwd(const Arguments&) {
    put(platform::pathToUtf8(fs::current_path().filename()) + "\n");
    return 0;
}

/// exit NUMBER
int exitWith(const Arguments& arguments) {
    return std::stoi(arguments.at(0));
}

/// touch FILE...: makes files, their content is their name.
int touch(const Arguments& arguments) {
    for (const std::string& file : arguments) {
        write(file, file + "\n");
    }
    return 0;
}

/// copy FROM TO
int copy(const Arguments& arguments) {
    std::error_code error;
    const auto bytes = platform::readWholeFile(platform::pathFromUtf8(arguments.at(0)), error);
    if (!bytes) {
        put("copy: there is no '" + arguments[0] + "'\n");
        return 1;
    }
    write(arguments.at(1), *bytes);
    return 0;
}

/// False when it takes so long that it hangs; longer than the tests wait for a child to be gone.
template <class Condition>
bool waitFor(const Condition& holds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(15);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// meet MINE OTHER... [-- STATUS]: makes the first file, waits until the others are there too.
int meet(const Arguments& arguments) {
    write(arguments.at(0), "");
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == "--") {
            return std::stoi(arguments.at(i + 1));
        }
        if (!waitFor([&] { return fs::exists(platform::pathFromUtf8(arguments[i])); })) {
            put("meet: '" + arguments[i] + "' never came\n");
            return 1;
        }
    }
    return 0;
}

volatile std::sig_atomic_t caught = 0;

extern "C" void onSignal(int signal) {
    std::signal(signal, onSignal);  // Windows takes a handler away when it has been called
    caught = signal;
}

/// move FROM TO
int moveFile(const Arguments& arguments) {
    fs::rename(platform::pathFromUtf8(arguments.at(0)), platform::pathFromUtf8(arguments.at(1)));
    return 0;
}

/// As Windows ends a program at Ctrl-C; its emulator would let it end as if all were well.
extern "C" void endByControlC(int /*signal*/) {
    std::_Exit(static_cast<int>(0xC000013AU));
}

/// linger STARTED [ASKED]: makes the first file and stays until it is told to end; with a second
/// file, makes that when it is told to, and stays.
int linger(const Arguments& arguments) {
    if (arguments.size() == 1 && platform::kWindows) {
        std::signal(SIGINT, endByControlC);
    }
    if (arguments.size() > 1) {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
    }
    write(arguments.at(0), "");
    if (waitFor([] { return caught != 0; })) {
        write(arguments.at(1), "");
        waitFor([] { return false; });
    }
    return 1;
}

/// with_env NAME=VALUE... -- PROGRAM ARGUMENT...: sets variables that an emulator sets itself when
/// it starts a program. "NAME=" without a value removes the variable. Ctrl-C is left to the
/// program.
int withEnv(const Arguments& arguments) {
    std::signal(SIGINT, onSignal);
    auto position = arguments.begin();
    for (; position != arguments.end() && *position != "--"; ++position) {
        const std::size_t equals = position->find('=');
        const std::string name = position->substr(0, equals);
        const std::string value = position->substr(equals + 1);
        if (value.empty()) {
            platform::removeEnvironmentVariable(name);
        } else {
            platform::setEnvironmentVariable(name, value);
        }
    }
    platform::ProcessRequest request;
    request.arguments = Arguments(position + 1, arguments.end());
    // The arguments of tests hold no backslashes in front of quotes.
    for (const std::string& argument : request.arguments) {
        request.commandLine += request.commandLine.empty() ? "\"" : " \"";
        for (const char c : argument) {
            request.commandLine += c == '"' ? "\\\"" : std::string(1, c);
        }
        request.commandLine += '"';
    }
    const platform::ProcessResult result = platform::runProcess(request);
    return result.started ? result.status : kUsage;
}

/// /D /C TEXT: stands in for the command interpreter of Windows. The text is a verb with arguments
/// that hold no blanks; it is done by this very process.
int interpret(const Arguments& arguments) {
    std::istringstream words(arguments.at(1));
    return run(Arguments(std::istream_iterator<std::string>(words), {}));
}

using Verb = int (*)(const Arguments&);

const std::map<std::string, Verb>& verbs() {
    static const std::map<std::string, Verb> table = {
        {"args", args},    {"bytes", bytes},   {"copy", copy},     {"cwd", cwd},
        {"env", env},      {"exit", exitWith}, {"meet", meet},     {"print", print},
        {"touch", touch},  {"linger", linger}, {"move", moveFile}, {"with_env", withEnv},
        {"/D", interpret},
    };
    return table;
}

}  // namespace

int run(const Arguments& arguments) {
    const auto verb = verbs().find(arguments.empty() ? std::string() : arguments[0]);
    if (verb == verbs().end()) {
        put("child: unknown verb\n");
        return kUsage;
    }
    try {
        return verb->second(Arguments(arguments.begin() + 1, arguments.end()));
    } catch (const std::exception& error) {
        put("child " + arguments[0] + ": " + error.what() + "\n");
        return kUsage;
    }
}

}  // namespace Vesk::test
