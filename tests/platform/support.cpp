#include "platform/support.h"

#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <system_error>
#include <thread>

#include "platform/files.h"
#include "platform/system.h"

namespace Vesk::test {

namespace {

/// As the C runtime of Windows reads it back, for arguments without a backslash before a quote or
/// the end; a POSIX shell reads it alike for the same arguments without `$` and backquotes.
std::string inQuotes(const std::string& argument) {
    std::string quoted = "\"";
    for (const char c : argument) {
        quoted += c == '"' ? "\\\"" : std::string(1, c);
    }
    return quoted + "\"";
}

}  // namespace

TempDir::TempDir() {
    std::random_device random;
    const std::string name = "vesk tëst " + std::to_string(random()) + std::to_string(random());
    path_ = std::filesystem::temp_directory_path() / platform::pathFromUtf8(name);
    std::filesystem::create_directory(path_);
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::operator/(std::string_view name) const {
    return path_ / platform::pathFromUtf8(name);
}

std::string TempDir::text(std::string_view name) const {
    return platform::pathToUtf8(*this / name);
}

std::string contentOf(const std::filesystem::path& path) {
    std::error_code error;
    const auto content = platform::readWholeFile(path, error);
    EXPECT_TRUE(content.has_value()) << platform::pathToUtf8(path) << ": " << error.message();
    return content.value_or("");
}

void write(const std::filesystem::path& path, std::string_view bytes) {
    std::error_code error;
    EXPECT_TRUE(platform::writeWholeFile(path, bytes, platform::Append::no, error))
        << platform::pathToUtf8(path) << ": " << error.message();
}

void waitForFile(const std::filesystem::path& path) {
    for (;;) {
        const auto status = platform::fileStatus(path);
        if (status && status->size > 0) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

std::filesystem::path childProgram() {
    return platform::pathFromUtf8(VESK_TEST_CHILD);
}

std::string childCommand(const std::vector<std::string>& arguments) {
    std::string command = inQuotes(VESK_TEST_CHILD);
    for (const std::string& argument : arguments) {
        command += ' ' + inQuotes(argument);
    }
    return command;
}

platform::ProcessRequest childRequest(std::vector<std::string> arguments) {
    platform::ProcessRequest request;
    request.commandLine = childCommand(arguments);
    request.arguments = {VESK_TEST_CHILD};
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    return request;
}

}  // namespace Vesk::test
