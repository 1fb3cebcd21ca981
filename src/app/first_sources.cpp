#include "app/first_sources.h"

#include <algorithm>
#include <array>
#include <iterator>
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

/// The directory in the path of a file that has one of these names, with all above it; empty: none.
template <std::size_t count>
std::string_view directoryAmong(std::string_view path,
                                const std::array<std::string_view, count>& names) {
    for (std::size_t start = 0, slash = path.find('/'); slash != std::string_view::npos;
         start = slash + 1, slash = path.find('/', start)) {
        if (isOneOf(lowerCased(path.substr(start, slash - start)), names)) {
            return path.substr(0, slash);
        }
    }
    return {};
}

struct Place {
    SourceRole role = SourceRole::Own;
    std::string_view directory = {};  ///< that says so
};

Place placeOf(std::string_view path) {
    constexpr std::array<std::string_view, 7> kAside = {"contrib", "debian",  "doc",    "docs",
                                                        "fuzz",    "fuzzing", "ossfuzz"};
    constexpr std::array<std::string_view, 6> kExamples = {"example", "examples", "demo",
                                                           "demos",   "sample",   "samples"};
    if (const auto directory = directoryAmong(path, kAside); !directory.empty()) {
        return {SourceRole::Aside, directory};
    }
    if (const auto directory = directoryAmong(path, kExamples); !directory.empty()) {
        return {SourceRole::Example, directory};
    }
    return {};
}

/// Where a source looks for a header first.
std::string beside(std::string_view source, const std::string& header) {
    const std::string_view directory = directoryOf(source);
    return normalPath(directory.empty() ? header : std::string(directory) + "/" + header);
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

    /// An `#if` that is open. It asks for something, as `#ifdef X` does and `#else` does not. Each
    /// of its branches begins as deep in braces as it does.
    struct Condition {
        bool asks;
        int depth;
    };

    void takeCondition(std::string_view directive) {
        if (directive.starts_with("if")) {
            const bool negated =
                directive.starts_with("ifndef") || trimmed(directive.substr(2)).starts_with('!');
            conditions_.push_back({!negated, depth_});
        } else if (directive.starts_with("el") && !conditions_.empty()) {
            conditions_.back().asks = false;
            depth_ = conditions_.back().depth;
        } else if (directive.starts_with("endif") && !conditions_.empty()) {
            conditions_.pop_back();
        }
    }

    bool onRequest() const { return std::ranges::any_of(conditions_, &Condition::asks); }

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
    std::vector<Condition> conditions_;
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
            if (!files_.contains(beside(file, name)) &&
                !take(name, [](std::string_view) { return true; })) {
                noteUnmade(name);
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

    /// Included headers of which there is only what they are made from.
    std::vector<UnmadeHeader> unmade() const {
        std::vector<UnmadeHeader> headers;
        for (const auto& [name, madeFrom] : unmade_) {
            headers.push_back({name, madeFrom});
        }
        return headers;
    }

  private:
    /// The directory with the shortest path below which there is a header of that name.
    template <class Fits>
    bool take(const std::string& name, Fits fits) {
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
        return best.has_value();
    }

    /// A file of its name with one more suffix, such as "config.h.in".
    void noteUnmade(const std::string& name) {
        const auto isTemplate = [&](const std::string& file) {
            const std::string_view rest = std::string_view(file).substr(0, file.rfind('.'));
            return rest == name || rest.ends_with("/" + name);
        };
        const auto found = std::ranges::find_if(files_, isTemplate);
        if (found != files_.end() && !extensionOf(name).empty()) {
            unmade_.emplace(name, *found);
        }
    }

    std::set<std::string> files_;
    std::vector<std::string> headers_;
    std::set<std::string> found_;
    std::map<std::string, std::string> unmade_;
};

/// What sources include of each other.
class Fragments {
  public:
    void add(const std::string& file, const SourceOutline& outline) {
        if (outline.quoted.empty() && outline.bracketed.empty()) {
            selfContained_.insert(file);
        }
        for (const std::string& name : outline.quoted) {
            included_.insert(beside(file, name));
        }
    }

    /// Others include the file, and it includes nothing: alone it is not meant to be compiled.
    bool contain(const std::string& file) const {
        return selfContained_.contains(file) && included_.contains(file);
    }

  private:
    std::set<std::string> selfContained_;
    std::set<std::string> included_;
};

/// If nothing is the project's own, everything is.
void settleRoles(std::vector<FirstSource>& sources, const Fragments& fragments) {
    const bool anyOwn =
        std::ranges::find(sources, SourceRole::Own, &FirstSource::role) != sources.end();
    for (FirstSource& source : sources) {
        if (!anyOwn) {
            source.role = SourceRole::Own;
        } else if (fragments.contain(source.path) && source.role == SourceRole::Own) {
            source.role = SourceRole::Fragment;
        }
    }
}

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
    std::vector<std::string> own;
    std::ranges::copy_if(files, std::back_inserter(own), [](const std::string& file) {
        return placeOf(file).role != SourceRole::Aside;
    });
    IncludeDirectories includes(own);
    Fragments fragments;
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
        const auto [role, apart] = placeOf(file);
        if (role != SourceRole::Aside) {
            includes.add(file, outline);
        }
        if (source) {
            fragments.add(file, outline);
            found.sources.push_back({file, cpp, outline.hasMain, role, std::string(apart)});
            found.usesMath = found.usesMath || (role != SourceRole::Aside && usesMath(outline));
        }
    }
    settleRoles(found.sources, fragments);
    found.includeDirectories = includes.found();
    found.unmade = includes.unmade();
    return found;
}

}  // namespace Vesk
