#include "platform/windows/child_output.h"

namespace Vesk::platform {

namespace {

constexpr DWORD kPipeSize = 1024 * 1024;

// How often the pipes are looked into while the child runs. A blocking read would not end with the
// child when a process that it leaves behind keeps the pipe open.
constexpr DWORD kLookMilliseconds = 5;

// More than a pipe holds; whoever writes more after the child's end is not the child.
constexpr int kMostReadsAfterEnd = 64;

bool leadToSamePlace() noexcept {
    const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (output == error || (::GetConsoleMode(output, &mode) && ::GetConsoleMode(error, &mode))) {
        return true;
    }
    BY_HANDLE_FILE_INFORMATION first{};
    BY_HANDLE_FILE_INFORMATION second{};
    return ::GetFileType(output) == FILE_TYPE_DISK && ::GetFileType(error) == FILE_TYPE_DISK &&
           ::GetFileInformationByHandle(output, &first) &&
           ::GetFileInformationByHandle(error, &second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

HANDLE inheritableCopy(HANDLE handle) noexcept {
    HANDLE copy = nullptr;
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
        !::DuplicateHandle(::GetCurrentProcess(), handle, ::GetCurrentProcess(), &copy, 0, TRUE,
                           DUPLICATE_SAME_ACCESS)) {
        return nullptr;
    }
    return copy;
}

}  // namespace

ChildOutput::ChildOutput() : input_(inheritableCopy(::GetStdHandle(STD_INPUT_HANDLE))) {}

ChildOutput::~ChildOutput() {
    if (!attributes_.empty()) {
        ::DeleteProcThreadAttributeList(
            reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes_.data()));
    }
}

void ChildOutput::takeNoInput() {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    input_.close();
    input_ = Handle(::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  &inheritable, OPEN_EXISTING, 0, nullptr));
}

void ChildOutput::takeOurInput() {
    HANDLE copy = nullptr;
    const HANDLE self = ::GetCurrentProcess();
    if (::DuplicateHandle(self, ::GetStdHandle(STD_INPUT_HANDLE), self, &copy, 0, TRUE,
                          DUPLICATE_SAME_ACCESS)) {
        input_.close();
        input_ = Handle(copy);
    }
}

bool ChildOutput::add(Stream stream) {
    HANDLE ours = nullptr;
    HANDLE theirs = nullptr;
    if (!::CreatePipe(&ours, &theirs, nullptr, kPipeSize)) {
        return false;
    }
    pipes_.push_back({stream, Handle(ours), Handle(theirs)});
    return ::SetHandleInformation(theirs, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) != 0;
}

bool ChildOutput::open() {
    pipes_.reserve(2);
    return add(Stream::Output) && (leadToSamePlace() || add(Stream::Error));
}

bool ChildOutput::applyTo(STARTUPINFOEXW& startup) {
    const HANDLE input = input_.get();
    for (const Pipe& pipe : pipes_) {
        inherited_.push_back(pipe.theirs.get());
    }
    if (input_.valid()) {
        inherited_.push_back(input);
    }
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::string space(size, '\0');
    const auto list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(space.data());
    if (!::InitializeProcThreadAttributeList(list, 1, 0, &size)) {
        return false;
    }
    attributes_ = std::move(space);
    startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(attributes_.data());
    startup.StartupInfo.dwFlags |= STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = input;
    startup.StartupInfo.hStdOutput = pipes_.front().theirs.get();
    startup.StartupInfo.hStdError = pipes_.back().theirs.get();
    return ::UpdateProcThreadAttribute(startup.lpAttributeList, 0,
                                       PROC_THREAD_ATTRIBUTE_HANDLE_LIST, inherited_.data(),
                                       inherited_.size() * sizeof(HANDLE), nullptr, nullptr) != 0;
}

bool ChildOutput::readWhatIsThere(const OutputSink& sink) {
    bool any = false;
    for (const Pipe& pipe : pipes_) {
        DWORD available = 0;
        DWORD count = 0;
        if (::PeekNamedPipe(pipe.ours.get(), nullptr, 0, nullptr, &available, nullptr) &&
            available > 0 &&
            ::ReadFile(pipe.ours.get(), buffer_.data(), static_cast<DWORD>(buffer_.size()), &count,
                       nullptr) &&
            count > 0) {
            sink(pipe.stream, std::string_view(buffer_).substr(0, count));
            any = true;
        }
    }
    return any;
}

void ChildOutput::read(HANDLE child, const OutputSink& sink) {
    for (Pipe& pipe : pipes_) {
        pipe.theirs.close();
    }
    input_.close();
    buffer_.resize(kPipeSize / 4);
    while (::WaitForSingleObject(child, kLookMilliseconds) == WAIT_TIMEOUT) {
        while (readWhatIsThere(sink)) {}
    }
    for (int i = 0; i < kMostReadsAfterEnd && readWhatIsThere(sink); ++i) {}
}

}  // namespace Vesk::platform
