#include "platform/crash.h"

#include <array>
#include <windows.h>

#include "platform/crash_report.h"

namespace Vesk::platform {

namespace {

// How a C++ exception that nobody catches shows up here, by compiler.
constexpr DWORD kMsvcException = 0xE06D7363;
constexpr DWORD kGccException = 0x20474343;

LONG WINAPI onUnhandledException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    CrashLine line;
    line.text("Exception caught! Code: 0x").hex(record.ExceptionCode, 8).write();
    if (record.ExceptionCode == kMsvcException || record.ExceptionCode == kGccException) {
        line.text("C++ Exception").write();
        return EXCEPTION_CONTINUE_SEARCH;
    }
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        // The second parameter is the address that could not be accessed.
        const ULONG_PTR address = record.ExceptionInformation[1];
        line.text("ACCESS VIOLATION at address: ").address(reinterpret_cast<void*>(address));
        line.write();
        std::array<void*, kMaxStackFrames> frames{};
        const USHORT count = ::CaptureStackBackTrace(0, kMaxStackFrames, frames.data(), nullptr);
        writeStackTrace(frames.data(), count);
    }
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void installCrashHandler() {
    // Room for the filter when it is the stack that has run out.
    ULONG reserve = 64 * 1024;
    ::SetThreadStackGuarantee(&reserve);
    ::SetUnhandledExceptionFilter(onUnhandledException);
}

}  // namespace Vesk::platform
