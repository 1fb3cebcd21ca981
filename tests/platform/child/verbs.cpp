#include "platform/child/verbs.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "platform/console.h"
#include "platform/crash.h"
#include "platform/environment.h"
#include "platform/files.h"

namespace Vesk::test {

namespace {

using Arguments = std::vector<std::string>;

void put(const std::string& file, const std::string& text) {
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(file), text, platform::Append::yes,
                                  error)) {
        throw std::system_error(error, file);
    }
}

/// args FILE ...: each further argument, ended by a zero byte.
int args(const Arguments& arguments) {
    std::string text;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        text += arguments[i] + '\0';
    }
    put(arguments[0], text);
    return 0;
}

/// env FILE: the environment, a line an entry.
int env(const Arguments& arguments) {
    std::string text;
    for (const std::string& entry : platform::environmentEntries()) {
        text += entry + '\n';
    }
    put(arguments[0], text);
    return 0;
}

/// cwd FILE: the current directory.
int cwd(const Arguments& arguments) {
    put(arguments[0], platform::pathToUtf8(std::filesystem::current_path()));
    return 0;
}

int exitWith(const Arguments& arguments) {
    return std::stoi(arguments[0]);
}

/// print OUTPUT ERRORS
int print(const Arguments& arguments) {
    platform::writeBytes(platform::Stream::Output, arguments[0]);
    platform::writeBytes(platform::Stream::Error, arguments[1]);
    return 0;
}

/// fill LINES: as many lines of 64 bytes, numbered.
int fill(const Arguments& arguments) {
    for (int line = 0; line < std::stoi(arguments[0]); ++line) {
        std::string text = std::to_string(line);
        text.resize(63, '.');
        platform::writeBytes(platform::Stream::Output, text + "\n");
    }
    return 0;
}

int raiseSignal(const Arguments& arguments) {
    return std::raise(std::stoi(arguments[0]));
}

/// hold LOCK STARTED RELEASE LOG: takes the lock and reports; when RELEASE exists, logs and ends.
int hold(const Arguments& arguments) {
    const platform::FileLock lock(platform::pathFromUtf8(arguments[0]));
    put(arguments[1], "held");
    while (!std::filesystem::exists(platform::pathFromUtf8(arguments[2]))) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    put(arguments[3], "holder\n");
    return 0;
}

/// Uses the stack up: no compiler may drop the page or turn the call into a jump.
int recurse(int depth) {
    constexpr int kEndless = 1'000'000'000;
    volatile char page[4096] = {};
    page[depth % 4096] = 1;
    return depth == kEndless ? 0 : recurse(depth + 1) + page[0];
}

/// crash access|overflow
int crash(const Arguments& arguments) {
    platform::installCrashHandler();
    const std::string& how = arguments[0];
    if (how == "access") {
        // An address that no system maps.
        volatile std::uintptr_t address = 0x40;
        *reinterpret_cast<volatile int*>(address) = 1;
    } else if (how == "overflow") {
        return recurse(0);
    }
    return 0;
}

}  // namespace

int runVerb(const Arguments& arguments) {
    static const std::map<std::string, int (*)(const Arguments&)> verbs{
        {"args", args},         {"env", env},     {"cwd", cwd},
        {"exit", exitWith},     {"print", print}, {"fill", fill},
        {"raise", raiseSignal}, {"hold", hold},   {"crash", crash}};
    return verbs.at(arguments.at(0))({arguments.begin() + 1, arguments.end()});
}

}  // namespace Vesk::test
