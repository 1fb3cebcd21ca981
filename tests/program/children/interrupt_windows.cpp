// interrupt FILE... -- PROGRAM ARGUMENT...: starts the program on a console of its own and, as soon
// as the files exist, presses Ctrl-Break there. The exit status is the program's.
#include <algorithm>
#include <filesystem>
#include <windows.h>

#include "platform/files.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"
#include "program/children/arguments.h"

namespace Vesk::test {

namespace {

constexpr int kFailed = 64;
constexpr DWORD kPatience = 60'000;
constexpr DWORD kPoll = 5;

/// The tests' arguments hold no quotes.
std::wstring commandLineOf(Arguments::const_iterator first, Arguments::const_iterator last) {
    std::wstring text;
    std::for_each(first, last, [&text](const std::string& argument) {
        text += (text.empty() ? L"\"" : L" \"") + platform::toWide(argument) + L"\"";
    });
    return text;
}

HANDLE inheritable(DWORD which) {
    HANDLE handle = ::GetStdHandle(which);
    ::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

bool exists(const std::string& file) {
    return std::filesystem::exists(platform::pathFromUtf8(file));
}

}  // namespace

int run(const Arguments& arguments) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = inheritable(STD_OUTPUT_HANDLE);
    startup.hStdError = inheritable(STD_ERROR_HANDLE);
    ::FreeConsole();
    if (!::AllocConsole()) {
        put("interrupt: there is no console\n");
        return kFailed;
    }

    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    std::wstring commandLine = commandLineOf(end + 1, arguments.end());
    PROCESS_INFORMATION information{};
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                          CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup, &information)) {
        return kFailed;
    }
    const platform::Handle thread(information.hThread);
    const platform::Handle process(information.hProcess);
    for (DWORD waited = 0; waited < kPatience && !std::all_of(arguments.begin(), end, exists);
         waited += kPoll) {
        ::Sleep(kPoll);
    }
    if (!::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, information.dwProcessId)) {
        ::TerminateProcess(process.get(), kFailed);
    }
    DWORD status = kFailed;
    ::WaitForSingleObject(process.get(), kPatience);
    ::GetExitCodeProcess(process.get(), &status);
    return static_cast<int>(status);
}

}  // namespace Vesk::test
