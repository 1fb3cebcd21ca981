// Stands in for PowerShell. It knows a handful of statements; anything else is exit status 64, so
// that a command that is not expected fails loudly. With POWERSHELL_LOG set it appends its own
// command line to that file.
//
//   if (Test-Path -LiteralPath 'x') { STATEMENT }
//   Remove-Item -LiteralPath 'x' -Recurse -Force
//   New-Item -ItemType Directory -Force -Path 'x' | Out-Null
//   Copy-Item -LiteralPath 'x' -Destination 'y' -Force
//   Write-Output 'x'
//   exit N
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "platform/environment.h"
#include "platform/files.h"
#include "program/children/arguments.h"

namespace Vesk::test {

namespace {

namespace fs = std::filesystem;

constexpr int kNotUnderstood = 64;

struct NotUnderstood : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a command text from front to back.
class Script {
  public:
    explicit Script(std::string text) : text_(std::move(text)) {}

    bool atEnd() const { return position_ == text_.size(); }

    bool accept(const std::string& word) {
        skipBlanks();
        if (text_.compare(position_, word.size(), word) != 0) {
            return false;
        }
        position_ += word.size();
        skipBlanks();
        return true;
    }

    void expect(const std::string& word) {
        if (!accept(word)) {
            throw NotUnderstood("'" + word + "' expected at " + std::to_string(position_));
        }
    }

    /// A text in apostrophes, an apostrophe in it is doubled.
    std::string quoted() {
        expect("'");
        std::string value;
        while (position_ < text_.size()) {
            const char next = text_[position_++];
            if (next != '\'') {
                value += next;
            } else if (position_ < text_.size() && text_[position_] == '\'') {
                value += text_[position_++];
            } else {
                skipBlanks();
                return value;
            }
        }
        throw NotUnderstood("a text without end");
    }

    int number() {
        std::size_t used = 0;
        const int value = std::stoi(text_.substr(position_), &used);
        position_ += used;
        return value;
    }

  private:
    void skipBlanks() {
        position_ = std::min(text_.find_first_not_of(' ', position_), text_.size());
    }

    std::string text_;
    std::size_t position_ = 0;
};

class PowerShell {
  public:
    explicit PowerShell(std::string text) : script_(std::move(text)) {}

    int run() {
        while (!script_.atEnd() && !ended_) {
            statement(true);
            script_.accept(";");
        }
        return status_;
    }

  private:
    void statement(bool active) {
        if (script_.accept("if (Test-Path -LiteralPath")) {
            const bool exists = fs::exists(platform::pathFromUtf8(script_.quoted()));
            script_.expect(") {");
            statement(active && exists);
            script_.expect("}");
        } else if (script_.accept("Remove-Item -LiteralPath")) {
            const std::string path = script_.quoted();
            script_.expect("-Recurse -Force");
            perform(active, [&](std::error_code& error) {
                fs::remove_all(platform::pathFromUtf8(path), error);
            });
        } else if (script_.accept("New-Item -ItemType Directory -Force -Path")) {
            const std::string path = script_.quoted();
            script_.expect("| Out-Null");
            perform(active, [&](std::error_code& error) {
                fs::create_directories(platform::pathFromUtf8(path), error);
            });
        } else if (script_.accept("Copy-Item -LiteralPath")) {
            copyItem(active);
        } else if (script_.accept("Write-Output")) {
            put(script_.quoted() + "\n");
        } else {
            script_.expect("exit");
            status_ = script_.number();
            ended_ = true;
        }
    }

    void copyItem(bool active) {
        const std::string from = script_.quoted();
        script_.expect("-Destination");
        const std::string to = script_.quoted();
        script_.expect("-Force");
        perform(active, [&](std::error_code& error) {
            fs::copy_file(platform::pathFromUtf8(from), platform::pathFromUtf8(to),
                          fs::copy_options::overwrite_existing, error);
        });
    }

    /// The status is that of the last statement, as with the real one.
    template <class Action>
    void perform(bool active, const Action& action) {
        if (active) {
            std::error_code error;
            action(error);
            status_ = error ? 1 : 0;
        }
    }

    Script script_;
    int status_ = 0;
    bool ended_ = false;
};

void log(const Arguments& arguments) {
    const auto file = platform::environmentVariable("POWERSHELL_LOG");
    std::error_code error;
    if (file &&
        !platform::writeWholeFile(platform::pathFromUtf8(*file), wholeCommandLine(arguments) + "\n",
                                  platform::Append::yes, error)) {
        throw std::system_error(error, *file);
    }
}

}  // namespace

int run(const Arguments& arguments) {
    try {
        log(arguments);
        const auto command = std::find(arguments.begin(), arguments.end(), "-Command");
        if (arguments.end() - command != 2) {
            throw NotUnderstood("one text after -Command expected");
        }
        return PowerShell(command[1]).run();
    } catch (const std::exception& error) {
        put(std::string("powershell: ") + error.what() + "\n");
        return kNotUnderstood;
    }
}

}  // namespace Vesk::test
