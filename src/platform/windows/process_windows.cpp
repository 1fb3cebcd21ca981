#include "platform/process.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <system_error>
#include <windows.h>
// clang-format off: it needs the types of the one above
#include <psapi.h>
// clang-format on

#include "platform/alarm.h"
#include "platform/interrupt.h"
#include "platform/recording.h"
#include "platform/windows/child_output.h"
#include "platform/windows/console_interrupt.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"

namespace Vesk::platform {

namespace {

bool setKillOnClose(HANDLE job, bool kill) noexcept {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = kill ? JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE : 0;
    return ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits,
                                     sizeof(limits)) != 0;
}

HANDLE ownJob = nullptr;

/// Puts this process into a job that dies with it. Children are born into the job, so there is no
/// moment at which one could escape; when the system refuses, we do without. A process that ends
/// itself lifts the limit first: what a command leaves running on purpose (a server that compilers
/// share) is none of our business. After an interruption it stays: an interpreter that Ctrl-C ended
/// may have left its program behind.
void enterJob() {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    if (job.valid() && setKillOnClose(job.get(), true)) {
        if (::AssignProcessToJobObject(job.get(), ::GetCurrentProcess())) {
            ownJob = job.release();
            std::atexit([] {
                if (interruptSignal() == 0) {
                    setKillOnClose(ownJob, false);
                }
            });
        }
    }
}

void enterJobOnce() {
    static std::once_flag once;
    std::call_once(once, enterJob);
}

double secondsOf(std::uint64_t ticks) noexcept {
    constexpr double kTick = 1e-7;
    return static_cast<double>(ticks) * kTick;
}

std::uint64_t processorTicks(const FILETIME& time) noexcept {
    constexpr unsigned kHalf = 32;
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << kHalf) | time.dwLowDateTime;
}

/// Of a process alone.
ProcessUsage usageOf(HANDLE process) noexcept {
    ProcessUsage usage;
    FILETIME began{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (::GetProcessTimes(process, &began, &ended, &kernel, &user)) {
        usage.processorSeconds = secondsOf(processorTicks(kernel) + processorTicks(user));
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (::GetProcessMemoryInfo(process, &memory, sizeof(memory))) {
        usage.peakMemory = memory.PeakWorkingSetSize;
    }
    return usage;
}

/// Of all processes that a job has had; zeros where the system does not say.
ProcessUsage usageOfJob(HANDLE job) noexcept {
    ProcessUsage usage;
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION times{};
    if (::QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &times, sizeof(times),
                                    nullptr)) {
        usage.processorSeconds =
            secondsOf(static_cast<std::uint64_t>(times.TotalUserTime.QuadPart) +
                      static_cast<std::uint64_t>(times.TotalKernelTime.QuadPart));
    }
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    if (::QueryInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits),
                                    nullptr)) {
        usage.peakMemory = limits.PeakJobMemoryUsed;
    }
    return usage;
}

/// A child that can be killed, and measured, with all that it starts. It is born asleep, so that it
/// has started nothing before it is in its job.
class JobChild {
  public:
    explicit JobChild(HANDLE process) : process_(process), job_(nullptr) {
        Handle job(::CreateJobObjectW(nullptr, nullptr));
        if (job.valid() && ::AssignProcessToJobObject(job.get(), process)) {
            job_ = std::move(job);
        }
    }

    void killAt(std::chrono::steady_clock::time_point when) {
        try {
            alarm_.emplace(when, [this] { kill(); });
        } catch (const std::system_error&) {
            kill();  // without a thread that watches over it, it might run forever
        }
    }

    /// When it has ended. Not every system counts for jobs.
    ProcessUsage usage() const noexcept {
        const ProcessUsage own = usageOf(process_);
        const ProcessUsage all = job_.valid() ? usageOfJob(job_.get()) : own;
        return {std::max(own.processorSeconds, all.processorSeconds),
                std::max(own.peakMemory, all.peakMemory)};
    }

    /// When it has ended: whether it was killed.
    bool wasKilled() { return alarm_ && alarm_->stop(); }

  private:
    void kill() const {
        constexpr UINT kStatus = 1;
        if (!job_.valid() || !::TerminateJobObject(job_.get(), kStatus)) {
            ::TerminateProcess(process_, kStatus);
        }
    }

    HANDLE process_;
    Handle job_;
    std::optional<Alarm> alarm_;  ///< last: nothing is killed when the rest is gone
};

/// The entries, each followed by a zero, and one more zero.
std::wstring environmentBlock(const std::vector<std::string>& entries) {
    std::wstring block;
    for (const std::string& entry : entries) {
        block += toWide(entry);
        block += L'\0';
    }
    if (entries.empty()) {
        block += L'\0';
    }
    block += L'\0';
    return block;
}

ProcessResult notStarted(DWORD error) noexcept {
    return {false, static_cast<int>(error)};
}

}  // namespace

ProcessResult runProcess(const ProcessRequest& request) {
    recordSideEffect();
    if (interruptSignal() != 0) {
        return notStarted(ERROR_CANCELLED);
    }
    enterJobOnce();
    std::wstring commandLine = toWide(request.commandLine);
    std::wstring environment;
    DWORD flags = 0;
    if (request.environment) {
        environment = environmentBlock(*request.environment);
        flags = CREATE_UNICODE_ENVIRONMENT;
    }
    std::wstring directory = request.workingDirectory.native();
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof(startup.StartupInfo);
    ChildOutput output;
    if (request.deadline) {
        output.takeNoInput();
    }
    if (request.output && request.readsInput && !request.deadline) {
        output.takeOurInput();
    }
    if (request.deadline || request.measures) {
        flags |= CREATE_SUSPENDED;
    }
    const bool reads = request.output && output.open() && output.applyTo(startup);
    if (reads) {
        startup.StartupInfo.cb = sizeof(startup);
        flags |= EXTENDED_STARTUPINFO_PRESENT;
    } else {
        startup.StartupInfo = {};
        startup.StartupInfo.cb = sizeof(startup.StartupInfo);
    }
    PROCESS_INFORMATION information{};
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, reads ? TRUE : FALSE,
                          flags, environment.empty() ? nullptr : environment.data(),
                          directory.empty() ? nullptr : directory.c_str(), &startup.StartupInfo,
                          &information)) {
        return notStarted(::GetLastError());
    }
    const Handle thread(information.hThread);
    const Handle process(information.hProcess);
    std::optional<JobChild> own;
    if (request.deadline || request.measures) {
        own.emplace(process.get());
        ::ResumeThread(thread.get());
    }
    if (request.deadline) {
        own->killAt(*request.deadline);
    }
    if (reads) {
        output.read(process.get(), request.output);
    }
    DWORD exitCode = 0;
    if (::WaitForSingleObject(process.get(), INFINITE) != WAIT_OBJECT_0 ||
        !::GetExitCodeProcess(process.get(), &exitCode)) {
        exitCode = ::GetLastError();
    }
    noteExitCode(exitCode);
    const bool killed = own && own->wasKilled();
    return {true, static_cast<int>(exitCode), killed, own ? own->usage() : ProcessUsage()};
}

std::optional<std::string> captureShellOutput(const std::string& command, int* status,
                                              Dependence dependence) {
    if (dependence == Dependence::Unknown) {
        recordSideEffect();
    }
    if (interruptSignal() != 0) {
        return std::nullopt;
    }
    enterJobOnce();
    // The interpreter drops the first and the last quote of its command text, except when there is
    // nothing but one pair around a plain program path. A pair around the whole text is what it
    // drops then, whatever the text holds.
    std::FILE* const pipe = ::_wpopen((L"\"" + toWide(command) + L"\"").c_str(), L"r");
    if (pipe == nullptr) {
        return std::nullopt;
    }
    std::string output;
    std::array<char, 16384> buffer;
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
        output.append(buffer.data(), count);
    }
    const int code = ::_pclose(pipe);
    if (status != nullptr) {
        *status = code;
    }
    return output;
}

std::string systemErrorText(int code) {
    wchar_t* text = nullptr;
    const DWORD size = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string result = fromWide({text, size});
    ::LocalFree(text);
    result.erase(result.find_last_not_of(" .\r\n") + 1);
    return result.empty() ? "Windows error " + std::to_string(code) : result;
}

}  // namespace Vesk::platform
