#include "tools/support/flag_files.h"

#include <algorithm>
#include <array>

#include "base/ci_string.h"
#include "tools/support/value_lists.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

// Not every option with a file counts: many name a file to be written, and a file that a command
// reads and writes would never be up to date.
constexpr std::array<std::string_view, 18> kReadingOptions = {"T",
                                                              "script",
                                                              "version-script",
                                                              "dynamic-list",
                                                              "export-dynamic-symbol-list",
                                                              "retain-symbols-file",
                                                              "symbol-ordering-file",
                                                              "just-symbols",
                                                              "plugin",
                                                              "fplugin",
                                                              "specs",
                                                              "include",
                                                              "imacros",
                                                              "fprofile-use",
                                                              "def",
                                                              "order",
                                                              "wholearchive",
                                                              "manifestinput"};

bool isOption(std::string_view word) noexcept {
    return word.starts_with('-');
}

bool readsFile(std::string_view option) noexcept {
    const std::size_t start = option.find_first_not_of("-/");
    const std::string_view name = option.substr(std::min(start, option.size()));
    return std::ranges::any_of(kReadingOptions, [name](std::string_view each) {
        return each == "T" ? name == each : equalsIgnoringCase(name, each);
    });
}

class FlagFiles {
  public:
    FlagFiles(const TargetContext& target, const TargetPaths& paths)
        : target_(target), paths_(paths) {}

    void takeFrom(const char* variable) {
        takePathValues(variable);
        bool isFileNext = true;
        for (const std::string& word : entriesOf(target_, variable)) {
            if (word.front() == '@') {
                take(std::string_view(word).substr(1));
            } else if (!isOption(word) && isFileNext) {
                take(word);
            }
            takeParts(word);
            isFileNext = !isOption(word) || readsFile(word);
        }
    }

    std::vector<std::string> found;

  private:
    void take(std::string_view name) {
        // Asking the system about every word would be slow.
        if (name.find_first_of("./\\") == std::string_view::npos) {
            return;
        }
        std::string path = normalPath(name, paths_.root());
        if (std::ranges::find(found, path) == found.end() && isFile(path)) {
            found.push_back(std::move(path));
        }
    }

    void takePathValues(const char* variable) {
        const Assignment* assignment = target_.find(variable);
        const VeskValue* value = assignment == nullptr ? nullptr : assignment->value.get();
        const auto takeIfPath = [this](const VeskValue* each) {
            if (const auto* path = valueAs<VeskPathString>(each)) {
                take(path->toString());
            }
        };
        takeIfPath(value);
        if (const auto* list = valueAs<VeskList>(value)) {
            for (const ValuePtr& item : list->items) {
                takeIfPath(item.get());
            }
        }
    }

    /// "-Wl,-T,app.ld", "--version-script=lib.map", "/DEF:lib.def": an option and its argument.
    void takeParts(std::string_view word) {
        constexpr std::string_view kSeparators = ",=:";
        for (std::size_t end = word.find_first_of(kSeparators); end != std::string_view::npos;
             end = word.find_first_of(kSeparators)) {
            const bool reads = readsFile(word.substr(0, end));
            word.remove_prefix(end + 1);
            if (reads) {
                take(word.substr(0, word.find(',')));
            }
        }
    }

    const TargetContext& target_;
    const TargetPaths& paths_;
};

}  // namespace

std::vector<std::string> flagFiles(const TargetContext& target, const TargetPaths& paths,
                                   std::initializer_list<const char*> variables) {
    FlagFiles files(target, paths);
    for (const char* variable : variables) {
        files.takeFrom(variable);
    }
    return std::move(files.found);
}

}  // namespace Vesk
