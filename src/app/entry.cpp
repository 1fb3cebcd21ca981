#include "app/entry.h"

#include <cstdlib>
#include <exception>

#include "app/vesk_application.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/interruption.h"
#include "base/report.h"
#include "platform/console.h"
#include "platform/crash.h"
#include "platform/interrupt.h"

namespace Vesk {
namespace {

constexpr int kFailed = 1;
constexpr int kSignalBase = 128;

std::string textOfCurrentException() {
    try {
        if (std::current_exception()) {
            throw;
        }
    } catch (const VeskException& error) {
        return error.report();
    } catch (const std::exception& error) {
        return reportOf(error);
    } catch (...) {
        // Of no kind that has a text.
    }
    return "Unknown exception!";
}

/// Exceptions that nothing caught, of tasks too.
[[noreturn]] void onTerminate() {
    const std::string text = textOfCurrentException();
    console::flush();
    platform::writeBytes(platform::Stream::Error, text + "\n");
    std::abort();
}

int reportInterruption(int signal) {
    console::error("Interrupted.");
    return kSignalBase + signal;
}

int parseAndRun(VeskApplication& application, const std::vector<std::string>& arguments) {
    application.parse(arguments);
    if (application.settings().runMode == RunMode::Build) {
        platform::installInterruptHandler();
    }
    return application.run();
}

}  // namespace

int runReporting(VeskApplication& application, const std::vector<std::string>& arguments) {
    try {
        return parseAndRun(application, arguments);
    } catch (const Interrupted& interruption) {
        return reportInterruption(interruption.signal());
    } catch (const VeskException& error) {
        reportError(error);
    } catch (const std::exception& error) {
        // Waiting for a lock ends with an error of the system when the user asks to stop.
        if (const int signal = platform::interruptSignal(); signal != 0) {
            return reportInterruption(signal);
        }
        reportError(error);
    }
    return kFailed;
}

int runProgram(const std::vector<std::string>& arguments) {
    int status = kFailed;
    {
        VeskApplication application;
        std::set_terminate(onTerminate);
        platform::installCrashHandler();
        platform::prepareConsole();
        status = runReporting(application, arguments);
    }
    console::flush();
    if (console::outputIsLost()) {
        console::error("Unable to write all of standard output.");
        return status == 0 ? kFailed : status;
    }
    return status;
}

}  // namespace Vesk
