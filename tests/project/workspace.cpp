#include "project/workspace.h"

#include <algorithm>
#include <random>

#include "base/exception.h"
#include "platform/files.h"
#include "platform/system.h"
#include "support/console_capture.h"

namespace Vesk::test {

namespace fs = std::filesystem;

Workspace::Workspace() {
    std::random_device random;
    const std::string name =
        "vesk it's \xC3\xBC\xE7\x95\x8C " + std::to_string(random()) + std::to_string(random());
    root_ = fs::canonical(fs::temp_directory_path()) / platform::pathFromUtf8(name);
    fs::create_directories(root_);
    registry.file = root_ / kRegistryFileName;
}

Workspace::~Workspace() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

fs::path Workspace::path(const std::string& relative) const {
    return (root_ / platform::pathFromUtf8(relative)).make_preferred();
}

void Workspace::write(const std::string& relative, const std::string& text) const {
    fs::create_directories(path(relative).parent_path());
    std::error_code error;
    ASSERT_TRUE(platform::writeWholeFile(path(relative), text, platform::Append::no, error))
        << error.message();
}

std::string Workspace::read(const std::string& relative) const {
    std::error_code error;
    return platform::readWholeFile(path(relative), error).value_or("(" + error.message() + ")");
}

std::string Workspace::failureOf(const std::function<void()>& action) const {
    try {
        action();
        return {};
    } catch (const VeskException& exception) {
        return readable(exception.report());
    } catch (const std::exception& exception) {
        return readable(reportOf(exception));
    }
}

std::string Workspace::outputOf(const std::function<void()>& action) const {
    ConsoleCapture capture;
    const std::string failure = failureOf(action);
    const std::string text = readable(capture.text());
    EXPECT_EQ(failure, "");
    return text;
}

std::string Workspace::readable(std::string text) const {
    const auto replaceAll = [&text](const std::string& from, const std::string& to) {
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
            text.replace(at, from.size(), to);
            at += to.size();
        }
    };
    if (platform::kWindows) {
        std::replace(text.begin(), text.end(), '\\', '/');
    }
    const auto generic = root_.generic_u8string();
    replaceAll(std::string(generic.begin(), generic.end()), "<ws>");
    return text;
}

}  // namespace Vesk::test
