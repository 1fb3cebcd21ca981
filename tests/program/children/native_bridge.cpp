// A compiler for tests under Wine. Named gcc.exe it runs the system's own x86_64-w64-mingw32-gcc on
// its arguments, with paths of drive Z: as the system knows them, and ends as that ends. A file
// gcc.native beside it names another program to run.
//
// Wine starts programs of the system, but does not tell how they end. So a script runs the program,
// and leaves its output and its status in files.
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <windows.h>

#include "platform/files.h"
#include "platform/windows/wide.h"
#include "program/children/arguments.h"

namespace Vesk::test {

namespace {

constexpr auto kPoll = std::chrono::milliseconds(5);
constexpr auto kPatience = std::chrono::minutes(5);
constexpr int kTries = 100;

std::string nativeProgram() {
    std::wstring text(MAX_PATH, L'\0');
    text.resize(::GetModuleFileNameW(nullptr, text.data(), static_cast<DWORD>(text.size())));
    std::filesystem::path path(text);
    std::error_code error;
    return platform::readWholeFile(path.replace_extension(".native"), error)
        .value_or("x86_64-w64-mingw32-" + platform::pathToUtf8(path.stem()));
}

/// In single quotes, "Z:" and its backslashes gone.
std::string nativeArgument(std::string text) {
    for (std::size_t at = text.find("Z:"); at != std::string::npos; at = text.find("Z:", at)) {
        text.erase(at, 2);
        for (std::size_t i = at; i < text.size(); ++i) {
            text[i] = text[i] == '\\' ? '/' : text[i];
        }
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string content(const std::string& file) {
    std::error_code error;
    return platform::readWholeFile(platform::pathFromUtf8("Z:" + file), error).value_or("");
}

/// On a busy machine Wine fails to now and then.
bool tryToStart(const std::string& script) {
    std::wstring commandLine = platform::toWide("sh " + script);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    return ::CreateProcessW(L"Z:\\bin\\sh", commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                            nullptr, &startup, &process) != FALSE;
}

bool start(const std::string& script) {
    for (int tries = 0; tries < kTries; ++tries) {
        if (tryToStart(script)) {
            return true;
        }
        std::this_thread::sleep_for(kPoll);
    }
    return false;
}

}  // namespace

int run(const Arguments& arguments) {
    const std::string base = "/tmp/vesk-bridge-" + std::to_string(::GetCurrentProcessId()) + "-" +
                             std::to_string(::GetTickCount64());
    std::string script = nativeProgram();
    for (const std::string& argument : arguments) {
        script += " " + nativeArgument(argument);
    }
    script += " >" + base + ".out 2>" + base + ".err\necho $? >" + base + ".t\nmv " + base + ".t " +
              base + ".rc\n";
    std::error_code error;
    platform::writeWholeFile(platform::pathFromUtf8("Z:" + base), script, platform::Append::no,
                             error);
    if (!start(base)) {
        return 125;
    }
    const auto started = std::chrono::steady_clock::now();
    while (content(base + ".rc").empty()) {
        if (std::chrono::steady_clock::now() - started > kPatience) {
            return 125;
        }
        std::this_thread::sleep_for(kPoll);
    }
    put(content(base + ".out"));
    platform::writeBytes(platform::Stream::Error, content(base + ".err"));
    const int status = std::stoi(content(base + ".rc"));
    for (const char* ending : {"", ".out", ".err", ".rc"}) {
        std::filesystem::remove(platform::pathFromUtf8("Z:" + base + ending), error);
    }
    return status;
}

}  // namespace Vesk::test
