#include "tools/msvc/resource_script.h"

#include <set>
#include <string_view>
#include <system_error>

#include "base/ci_string.h"
#include "base/text.h"
#include "platform/files.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// Resource editors write UTF-16. Names with non-ASCII letters are not worth a converter; the rest
/// of the text stays the same.
std::string textOfFile(const std::string& path) {
    std::error_code error;
    std::string text = platform::readWholeFile(platform::pathFromUtf8(path), error).value_or("");
    if (text.starts_with("\xFF\xFE")) {
        std::string narrow;
        for (std::size_t i = 2; i + 1 < text.size(); i += 2) {
            narrow += text[i + 1] == '\0' ? text[i] : '?';
        }
        return narrow;
    }
    return text;
}

/// Calls `take` with each text in double quotes or angle brackets, and with each other word that
/// contains a dot, since the file of a resource needs no quotes.
template <class F>
void eachName(std::string_view line, F take) {
    while (!line.empty()) {
        const char first = line.front();
        const std::string_view ends = first == '"' ? "\"" : first == '<' ? ">" : " \t\r,;(\"<";
        const bool quoted = ends.size() == 1;
        const std::size_t start = quoted ? 1 : 0;
        const std::size_t end = std::min(line.find_first_of(ends, start), line.size());
        const std::string_view name = line.substr(start, end - start);
        if (name.find('.') != std::string_view::npos) {
            take(name);
        }
        const bool skips = quoted || end == start;
        line.remove_prefix(std::min(end + (skips ? 1 : 0), line.size()));
    }
}

/// "res\\app.ico": backslashes are doubled in a text, but not in an include.
std::string withSlashes(std::string_view name) {
    std::string path;
    for (const char c : name) {
        if (c != '\\') {
            path += c;
        } else if (path.empty() || path.back() != '/') {
            path += '/';
        }
    }
    return path;
}

bool isText(std::string_view path) {
    const std::string_view suffix = path.substr(std::min(path.rfind('.'), path.size()));
    for (const std::string_view each : {".rc", ".rc2", ".h", ".hpp", ".dlg", ".inc"}) {
        if (equalsIgnoringCase(suffix, each)) {
            return true;
        }
    }
    return false;
}

class Search {
  public:
    explicit Search(const std::vector<std::string>& directories) : directories_(directories) {}

    void lookInto(const std::string& path) {
        const std::string text = textOfFile(path);
        const std::string own = path.substr(0, path.rfind('/'));
        for (std::string_view rest = text; !rest.empty();) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
            if (!trimmed(line).starts_with("//")) {
                eachName(line, [&](std::string_view name) { add(own, withSlashes(name)); });
            }
        }
    }

    std::vector<std::string> found;

  private:
    void add(const std::string& own, const std::string& name) {
        std::string path = normalPath(name, own);
        for (auto directory = directories_.begin(); !isFile(path); ++directory) {
            if (directory == directories_.end()) {
                return;
            }
            path = normalPath(name, *directory);
        }
        if (!seen_.insert(path).second) {
            return;
        }
        found.push_back(path);
        if (isText(path)) {
            lookInto(path);
        }
    }

    const std::vector<std::string>& directories_;
    std::set<std::string> seen_;
};

}  // namespace

std::vector<std::string> filesOfResourceScript(const std::string& script,
                                               const std::vector<std::string>& directories) {
    Search search(directories);
    search.lookInto(script);
    return std::move(search.found);
}

}  // namespace Vesk
