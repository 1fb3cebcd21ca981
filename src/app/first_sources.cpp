#include "app/first_sources.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include "base/text.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "tools/support/target_paths.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 5> kCppExtensions = {".cpp", ".cc", ".cxx", ".c++", ".C"};
constexpr std::array<std::string_view, 5> kHeaderExtensions = {".h", ".hpp", ".hh", ".hxx", ".h++"};

template <std::size_t count>
bool isOneOf(std::string_view text, const std::array<std::string_view, count>& all) noexcept {
    return std::ranges::find(all, text) != all.end();
}

std::string_view extensionOf(std::string_view path) noexcept {
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : path.substr(dot);
}

std::string_view directoryOf(std::string_view path) noexcept {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

/// Hidden ones, and what builds and package managers leave beside sources.
bool isPassedOver(std::string_view name) noexcept {
    constexpr std::array<std::string_view, 4> kNames = {"out", "build", "CMakeFiles",
                                                        "node_modules"};
    return name.starts_with('.') || name.starts_with("build-") || name.starts_with("cmake-build") ||
           isOneOf(name, kNames);
}

/// All files below the directory, by their paths from there.
std::vector<std::string> filesBelow(const fs::path& directory) {
    std::vector<std::string> files;
    std::vector<std::string> waiting = {""};
    while (!waiting.empty()) {
        const std::string below = std::move(waiting.back());
        waiting.pop_back();
        std::error_code ignored;
        for (const platform::DirectoryEntry& entry :
             platform::listDirectory(directory / platform::pathFromUtf8(below), ignored)) {
            std::string path = below.empty() ? entry.name : below + "/" + entry.name;
            if (entry.file) {
                files.push_back(std::move(path));
            } else if (entry.directory && !entry.link && !isPassedOver(entry.name)) {
                waiting.push_back(std::move(path));
            }
        }
    }
    std::ranges::sort(files);
    return files;
}

// --- what a source says --------------------------------------------------------------------------

bool isWordCharacter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// Goes through the text of a source without its comments and literals.
class OutlineReader {
  public:
    explicit OutlineReader(std::string_view text) : text_(text) {}

    SourceOutline read() {
        while (at_ < text_.size()) {
            if (!passComment() && !passDirective() && !passLiteral()) {
                takeCode();
            }
        }
        // A main() that is compiled on request only, beside other code, makes no program.
        outline_.hasMain = outline_.hasMain || (mainOnRequest_ && !otherCode_);
        return std::move(outline_);
    }

  private:
    bool passComment() {
        const bool isLine = text_.substr(at_).starts_with("//");
        if (!isLine && !text_.substr(at_).starts_with("/*")) {
            return false;
        }
        const std::size_t end = text_.find(isLine ? "\n" : "*/", at_ + 2);
        at_ = end == std::string_view::npos ? text_.size() : end + (isLine ? 0 : 2);
        return true;
    }

    /// A line of the preprocessor, with those that continue it.
    bool passDirective() {
        if (text_[at_] != '#' || !atLineStart_) {
            return false;
        }
        std::size_t end = at_;
        do {
            end = std::min(text_.size(), text_.find('\n', end + 1));
        } while (end < text_.size() && text_[end - 1] == '\\');
        const std::string_view directive = trimmed(text_.substr(at_ + 1, end - at_ - 1));
        takeInclude(directive);
        takeCondition(directive);
        at_ = end;
        return true;
    }

    /// Whether each open condition asks for something, as `#ifdef X` does and `#else` does not.
    void takeCondition(std::string_view directive) {
        if (directive.starts_with("if")) {
            const bool negated =
                directive.starts_with("ifndef") || trimmed(directive.substr(2)).starts_with('!');
            conditions_.push_back(!negated);
        } else if (directive.starts_with("el") && !conditions_.empty()) {
            conditions_.back() = false;
        } else if (directive.starts_with("endif") && !conditions_.empty()) {
            conditions_.pop_back();
        }
    }

    bool onRequest() const { return std::ranges::find(conditions_, true) != conditions_.end(); }

    void takeInclude(std::string_view directive) {
        constexpr std::string_view kInclude = "include";
        if (!directive.starts_with(kInclude)) {
            return;
        }
        const std::string_view name = trimmed(directive.substr(kInclude.size()));
        const char open = name.empty() ? '\0' : name.front();
        const std::size_t end = name.find(open == '<' ? '>' : '"', 1);
        if ((open == '<' || open == '"') && end != std::string_view::npos) {
            (open == '<' ? outline_.bracketed : outline_.quoted)
                .emplace_back(name.substr(1, end - 1));
        }
    }

    /// One that is not closed ends with its line. A single quote in a number is none.
    bool passLiteral() {
        const char quote = text_[at_];
        if (quote != '"' && (quote != '\'' || (at_ > 0 && isWordCharacter(text_[at_ - 1])))) {
            return false;
        }
        for (++at_; at_ < text_.size() && text_[at_] != '\n'; ++at_) {
            if (text_[at_] == '\\') {
                ++at_;
            } else if (text_[at_] == quote) {
                ++at_;
                break;
            }
        }
        at_ = std::min(at_, text_.size());
        last_ = quote;
        return true;
    }

    void takeCode() {
        const char c = text_[at_];
        if (isWordCharacter(c)) {
            takeWord();
            return;
        }
        ++at_;
        if (c == '\n') {
            atLineStart_ = true;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            atLineStart_ = false;
            depth_ += c == '{' ? 1 : c == '}' ? -1 : 0;
            takeSign(c);
            last_ = c;
        }
    }

    void takeWord() {
        const std::size_t start = at_;
        while (at_ < text_.size() && isWordCharacter(text_[at_])) {
            ++at_;
        }
        atLineStart_ = false;
        // Not "object.main" or "Class::main".
        const bool isMain =
            text_.substr(start, at_ - start) == "main" && depth_ == 0 && isWordCharacter(last_);
        if (isMain) {
            main_ = Main::Named;
        } else if (main_ == Main::Named) {
            main_ = Main::No;
        } else if (main_ == Main::Parameters && brackets_ == 0) {
            main_ = Main::Declarations;
        }
        last_ = 'a';
    }

    /// After the name come parameters in brackets and then, in a definition, a brace; in old C with
    /// the parameters' declarations between them.
    void takeSign(char c) {
        if (main_ == Main::Named) {
            main_ = c == '(' ? Main::Parameters : Main::No;
            brackets_ = 1;
        } else if (main_ == Main::Parameters && brackets_ > 0) {
            brackets_ += c == '(' ? 1 : c == ')' ? -1 : 0;
        } else if (main_ == Main::Declarations &&
                   std::string_view("*,;[]").find(c) != std::string_view::npos) {
            return;
        } else if (main_ != Main::No) {
            bool& found = onRequest() ? mainOnRequest_ : outline_.hasMain;
            found = found || c == '{';
            main_ = Main::No;
        } else {
            otherCode_ = otherCode_ || (c == '{' && !onRequest());
        }
    }

    enum class Main { No, Named, Parameters, Declarations };

    std::string_view text_;
    std::size_t at_ = 0;
    bool atLineStart_ = true;
    char last_ = '\0';  ///< of the code; 'a' for a word
    int depth_ = 0;
    Main main_ = Main::No;
    int brackets_ = 0;
    std::vector<bool> conditions_;
    bool mainOnRequest_ = false;
    bool otherCode_ = false;
    SourceOutline outline_;
};

// --- what they need of each other ----------------------------------------------------------------

/// The directories of headers that includes need, as all files are known.
class IncludeDirectories {
  public:
    explicit IncludeDirectories(const std::vector<std::string>& files)
        : files_(files.begin(), files.end()) {
        for (const std::string& file : files) {
            if (isOneOf(extensionOf(file), kHeaderExtensions)) {
                headers_.push_back(file);
            }
        }
    }

    void add(std::string_view file, const SourceOutline& outline) {
        for (const std::string& name : outline.quoted) {
            const std::string_view directory = directoryOf(file);
            const std::string beside =
                directory.empty() ? name : std::string(directory) + "/" + name;
            if (!files_.contains(normalPath(beside))) {
                take(name, [](std::string_view) { return true; });
            }
        }
        // Most of these are the system's, and may only by chance be called like one that is here.
        for (const std::string& name : outline.bracketed) {
            take(name, [](std::string_view directory) {
                const std::string_view last = directory.substr(directory.rfind('/') + 1);
                return last == "include" || last == "inc";
            });
        }
    }

    std::vector<std::string> found() const { return {found_.begin(), found_.end()}; }

  private:
    /// The directory with the shortest path below which there is a header of that name.
    template <class Fits>
    void take(const std::string& name, Fits fits) {
        std::optional<std::string> best;
        for (const std::string& header : headers_) {
            if (header != name && !header.ends_with("/" + name)) {
                continue;
            }
            const std::string directory =
                header == name ? "." : header.substr(0, header.size() - name.size() - 1);
            if (fits(directory) && (!best || directory.size() < best->size())) {
                best = directory;
            }
        }
        if (best) {
            found_.insert(*best);
        }
    }

    std::set<std::string> files_;
    std::vector<std::string> headers_;
    std::set<std::string> found_;
};

bool usesMath(const SourceOutline& outline) {
    return std::ranges::any_of(outline.bracketed, [](const std::string& name) {
        return name == "math.h" || name == "cmath" || name == "tgmath.h" || name == "complex.h";
    });
}

}  // namespace

SourceOutline outlineOf(std::string_view text) {
    return OutlineReader(text).read();
}

FirstSources findFirstSources(const fs::path& directory) {
    FirstSources found;
    const std::vector<std::string> files = filesBelow(directory);
    IncludeDirectories includes(files);
    for (const std::string& file : files) {
        const std::string_view extension = extensionOf(file);
        const bool cpp = isOneOf(extension, kCppExtensions);
        const bool source = cpp || extension == ".c";
        if (!source && !isOneOf(extension, kHeaderExtensions)) {
            continue;
        }
        std::error_code ignored;
        const SourceOutline outline =
            outlineOf(platform::readWholeFile(directory / platform::pathFromUtf8(file), ignored)
                          .value_or(""));
        includes.add(file, outline);
        if (source) {
            found.sources.push_back({file, cpp, outline.hasMain});
            found.usesMath = found.usesMath || usesMath(outline);
        }
    }
    found.includeDirectories = includes.found();
    return found;
}

}  // namespace Vesk
