#include "platform/console.h"

#include <algorithm>
#include <cstdlib>
#include <windows.h>

namespace Vesk::platform {

namespace {

HANDLE handleOf(Stream stream) noexcept {
    return ::GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

void enableEscapes(Stream stream) noexcept {
    const HANDLE handle = handleOf(stream);
    DWORD mode = 0;
    // Only a console has a mode; a file, a pipe or no handle at all is left alone here.
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE && ::GetConsoleMode(handle, &mode)) {
        ::SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
}

UINT codePageBefore = 0;

}  // namespace

void prepareConsole() {
    enableEscapes(Stream::Output);
    enableEscapes(Stream::Error);
    codePageBefore = ::GetConsoleOutputCP();
    if (codePageBefore != 0 && codePageBefore != CP_UTF8 && ::SetConsoleOutputCP(CP_UTF8)) {
        std::atexit([] { ::SetConsoleOutputCP(codePageBefore); });
    }
}

bool writeBytes(Stream stream, std::string_view bytes) noexcept {
    // Older consoles refuse larger pieces.
    constexpr std::size_t kMaxPiece = 32 * 1024;
    const HANDLE handle = handleOf(stream);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    while (!bytes.empty()) {
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kMaxPiece));
        DWORD written = 0;
        if (!::WriteFile(handle, bytes.data(), piece, &written, nullptr)) {
            const DWORD error = ::GetLastError();
            return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA;
        }
        if (written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

std::size_t readInput(char* buffer, std::size_t size) noexcept {
    constexpr std::size_t kMaxPiece = 32 * 1024;
    const HANDLE handle = ::GetStdHandle(STD_INPUT_HANDLE);
    DWORD count = 0;
    const auto piece = static_cast<DWORD>(std::min(size, kMaxPiece));
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
        !::ReadFile(handle, buffer, piece, &count, nullptr)) {
        return 0;
    }
    return count;
}

std::optional<unsigned> terminalWidth(Stream stream) noexcept {
    const HANDLE handle = handleOf(stream);
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE || !::GetConsoleMode(handle, &mode) ||
        (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0 ||
        !::GetConsoleScreenBufferInfo(handle, &info)) {
        return std::nullopt;
    }
    return static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left + 1);
}

}  // namespace Vesk::platform
