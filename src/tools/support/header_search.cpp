#include "tools/support/header_search.h"

#include <algorithm>
#include <array>
#include <optional>

#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

/// Compilers search one kind after the other, whatever the order of the options.
enum Kind : std::size_t { Quoted, Plain, System, Kinds };

struct Option {
    std::string_view text;
    Kind kind;
};

// An option that is the beginning of another one must come after it.
constexpr std::array<Option, 8> kOptions = {{{"-iquote", Quoted},
                                             {"-isystem", System},
                                             {"-imsvc", System},
                                             {"/imsvc", System},
                                             {"-external:I", System},
                                             {"/external:I", System},
                                             {"-I", Plain},
                                             {"/I", Plain}}};

using Directories = std::array<std::vector<std::string>, Kinds>;

/// The directory as the compiler will spell it in front of a header's name, made absolute.
std::string directoryNamed(std::string_view name, const std::string& root) {
    while (name.starts_with("./")) {
        name.remove_prefix(2);
    }
    return name == "." ? root : normalPath(name, root);
}

void takeFlags(const std::vector<std::string>& words, const std::string& root,
               Directories& directories) {
    std::optional<Kind> pending;
    for (const std::string& word : words) {
        if (pending) {
            directories[*pending].push_back(directoryNamed(word, root));
            pending.reset();
            continue;
        }
        const auto option = std::ranges::find_if(
            kOptions, [&word](const Option& each) { return word.starts_with(each.text); });
        if (option == kOptions.end()) {
            continue;
        }
        const std::string_view value = std::string_view(word).substr(option->text.size());
        if (value.empty()) {
            pending = option->kind;
        } else {
            directories[option->kind].push_back(directoryNamed(value, root));
        }
    }
}

}  // namespace

std::shared_ptr<const HeaderSearch> headerSearch(const TargetContext& target,
                                                 const TargetPaths& paths,
                                                 std::initializer_list<const char*> flagVariables,
                                                 const std::vector<std::string>& furtherFlags) {
    Directories directories;
    for (const char* variable : flagVariables) {
        takeFlags(entriesOf(target, variable), paths.root(), directories);
    }
    std::ranges::move(paths.absolute(entriesOf(target, "INCLUDE_DIRS")),
                      std::back_inserter(directories[Plain]));
    std::ranges::move(paths.absolute(entriesOf(target, "SYSTEM_INCLUDE_DIRS")),
                      std::back_inserter(directories[System]));
    takeFlags(furtherFlags, paths.root(), directories);
    auto search = std::make_shared<HeaderSearch>();
    for (std::vector<std::string>& kind : directories) {
        std::ranges::move(kind, std::back_inserter(search->directories));
    }
    if (search->directories.empty()) {
        return nullptr;
    }
    return search;
}

}  // namespace Vesk
