#include "app/first_unit.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <set>
#include <vector>

#include "base/text.h"
#include "grammar/identifier.h"

namespace Vesk {
namespace {

constexpr std::string_view kHeading =
    "// vesk builds the first target, vesk NAME the one of that name. vesk --explain=C_FLAGS says "
    "what\n"
    "// a variable means, vesk --explain lists all of them.\n";

/// As the language reads it back.
std::string quoted(const std::string& path) {
    const bool plain = path.find_first_of("\"\\$#") == std::string::npos;
    return plain ? "\"" + path + "\"" : "R\"(" + path + ")\"";
}

std::string listOf(const std::vector<std::string>& paths) {
    std::vector<std::string> texts;
    std::ranges::transform(paths, std::back_inserter(texts), quoted);
    return "[" + joined(texts, ", ") + "]";
}

std::string topOf(const std::string& path) {
    const std::size_t slash = path.find('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string extensionOf(const std::string& path) {
    return path.substr(path.rfind('.'));
}

/// A pattern for all sources of an extension in a directory below the root.
struct Pattern {
    std::string top;
    std::string extension;
    bool deep = false;

    bool meets(const std::string& path) const {
        return topOf(path) == top && extensionOf(path) == extension &&
               (deep || path.find('/', top.size() + 1) == std::string::npos);
    }

    std::string text() const {
        return (top.empty() ? "" : top + "/") + (deep ? "**/*" : "*") + extension;
    }
};

using Sources = std::vector<FirstSource>;

/// Patterns that meet these sources, so that new ones need no mention.
std::vector<Pattern> patternsFor(const Sources& sources, bool cpp) {
    std::vector<Pattern> patterns;
    for (const FirstSource& source : sources) {
        if (source.cpp != cpp) {
            continue;
        }
        Pattern pattern{topOf(source.path), extensionOf(source.path)};
        const auto known = std::ranges::find_if(patterns, [&pattern](const Pattern& each) {
            return each.top == pattern.top && each.extension == pattern.extension;
        });
        Pattern& kept =
            known == patterns.end() ? patterns.emplace_back(std::move(pattern)) : *known;
        kept.deep = kept.deep || !kept.meets(source.path);
    }
    return patterns;
}

class UnitText {
  public:
    UnitText(const FirstSources& found, std::string name, FirstUnit kind)
        : found_(found), name_(std::move(name)), kind_(kind) {
        for (const FirstSource& source : found.sources) {
            place(source).push_back(source);
        }
    }

    std::string make() {
        const bool isOneProgram = programs_.size() == 1 &&
                                  partOf(programs_.front()) == Part::Main &&
                                  (others_.empty() || kind_ != FirstUnit::Library);
        if (isOneProgram) {
            Sources all = others_;
            all.push_back(programs_.front());
            std::ranges::sort(all, {}, &FirstSource::path);
            addTarget(name_, all, {});
        } else {
            addPrograms(others_.empty() ? std::string() : takeName(libraryName()));
        }
        return std::string(kHeading) + notes() + text_;
    }

  private:
    /// Of a program.
    enum class Part { Main, Example, Test };

    Sources& place(const FirstSource& source) {
        const bool isOut =
            source.role == SourceRole::Aside || source.role == SourceRole::Fragment ||
            (source.role == SourceRole::Example && !source.hasMain && isApart(source));
        return isOut ? leftOut_ : source.hasMain ? programs_ : others_;
    }

    /// Examples of a library that is asked for are what shows that it works.
    bool isApart(const FirstSource& source) const {
        return source.role == SourceRole::Example && kind_ != FirstUnit::Library;
    }

    Part partOf(const FirstSource& program) const {
        const std::string path = "/" + program.path;
        const bool isTest =
            path.find("/test/") != std::string::npos || path.find("/tests/") != std::string::npos;
        return isTest ? Part::Test : isApart(program) ? Part::Example : Part::Main;
    }

    std::string libraryName() const {
        const bool hasPrograms = std::ranges::any_of(
            programs_, [this](const FirstSource& each) { return partOf(each) == Part::Main; });
        return name_ + (kind_ == FirstUnit::Library || !hasPrograms ? "" : "_common");
    }

    /// What a reader of the file has to know first.
    std::string notes() const {
        std::string text;
        if (!leftOut_.empty()) {
            text += "// Left out: " + leftOutText() + ".\n";
        }
        for (const UnmadeHeader& header : found_.unmade) {
            text += fmt::format(
                "// Missing: {}, which is made from {}: by a configure script or CMake, or by "
                "hand.\n",
                header.name, header.madeFrom);
        }
        return text;
    }

    /// "contrib (14 sources), what other sources include (2 sources)".
    std::string leftOutText() const {
        std::map<std::string, std::size_t> groups;
        for (const FirstSource& source : leftOut_) {
            ++groups[source.role == SourceRole::Fragment  ? "what other sources include"
                     : source.role == SourceRole::Example ? source.apart + " without main()"
                                                          : source.apart];
        }
        std::vector<std::string> texts;
        for (const auto& [group, count] : groups) {
            texts.push_back(fmt::format("{} ({})", group, counted(count, "source")));
        }
        return joined(texts, ", ");
    }

    void addPrograms(const std::string& library) {
        std::vector<std::string> names;
        std::vector<std::string> built;
        for (const FirstSource& program : programs_) {
            names.push_back(takeName(nameOf(program)));
            if (partOf(program) == Part::Main) {
                built.push_back(names.back());
            }
        }
        if (built.size() > 1) {
            text_ +=
                fmt::format("\n{}: {} {{ NO_TOOL = 1 }}\n", takeName("all"), joined(built, " "));
        }
        addThose(names, library, Part::Main);
        if (!library.empty()) {
            addLibrary(library);
        }
        addThose(names, library, Part::Example);
        addThose(names, library, Part::Test);
    }

    void addThose(const std::vector<std::string>& names, const std::string& library, Part part) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (partOf(programs_[i]) != part) {
                continue;
            }
            addTarget(names[i], {programs_[i]}, library);
            if (part == Part::Test) {
                addTest(names[i]);
            }
        }
    }

    /// What runs the program. Its path is in quotes of the command interpreter: there may be
    /// blanks.
    void addTest(const std::string& program) {
        text_ += fmt::format("\n// vesk --test runs it\n{}: {} {{\n", takeName("run_" + program),
                             program);
        addLine("TEST", "\"yes\"");
        addLine("cmdline", fmt::format("\"${{ascii[34]}}${{{}.OUTPUT}}${{ascii[34]}}\"", program));
        text_ += "}\n";
    }

    /// After its file, or the directory of one that is just called main.
    std::string nameOf(const FirstSource& program) const {
        std::string path = program.path.substr(0, program.path.rfind('.'));
        if (path == "main" || path == "src/main") {
            return name_;
        }
        if (path.ends_with("/main")) {
            path.resize(path.rfind('/'));
        }
        std::string name = identifierFrom(path.substr(path.rfind('/') + 1));
        if (partOf(program) == Part::Test) {
            std::ranges::replace(name, '-', '_');  // it will stand in a text, as a reference
        }
        return name;
    }

    std::string takeName(const std::string& wanted) {
        std::string name = wanted;
        for (int number = 2; !names_.insert(lowerCased(name)).second; ++number) {
            name = fmt::format("{}_{}", wanted, number);
        }
        return name;
    }

    /// A program; with a library it takes include directories from there.
    void addTarget(const std::string& name, const Sources& sources, const std::string& library) {
        text_ += fmt::format("\n{}: {}{{\n", name, library.empty() ? "" : "+" + library + " ");
        if (library.empty() && sources.size() > 1) {
            addPatterns(sources, leftOut_);
        } else {
            for (const FirstSource& source : sources) {
                addLine(source.cpp ? "CPP_FILES" : "C_FILES", listOf({source.path}));
            }
        }
        if (library.empty()) {
            addDirectories("INCLUDE_DIRS = ");
            addLibraries();
        }
        addFlags(sources);
        text_ += "}\n";
    }

    void addLibrary(const std::string& name) {
        text_ += fmt::format("\n{}: {{\n", name);
        addLine("OUTPUT_TYPE", "\"static\"");
        Sources excluded = programs_;
        std::ranges::copy(leftOut_, std::back_inserter(excluded));
        addPatterns(others_, excluded);
        if (!found_.includeDirectories.empty()) {
            text_ += "    // ^: targets that depend on this one with + get them too\n";
        }
        addDirectories("^INCLUDE_DIRS += ");
        addLibraries();
        addFlags(others_);
        text_ += "}\n";
    }

    void addLine(std::string_view variable, const std::string& value) {
        text_ += fmt::format("    {} = {}\n", variable, value);
    }

    void addPatterns(const Sources& sources, const Sources& excluded) {
        std::vector<std::string> left;
        for (const bool cpp : {false, true}) {
            std::vector<std::string> texts;
            for (const Pattern& pattern : patternsFor(sources, cpp)) {
                texts.push_back(pattern.text());
                for (const FirstSource& source : excluded) {
                    if (pattern.meets(source.path)) {
                        left.push_back(source.path);
                    }
                }
            }
            if (!texts.empty()) {
                addLine(cpp ? "CPP_FILES" : "C_FILES", listOf(texts));
            }
        }
        if (!left.empty()) {
            addLine("EXCLUDE_FILES", listOf(left));
        }
    }

    void addDirectories(std::string_view beginning) {
        std::vector<std::string> paths;
        for (const std::string& directory : found_.includeDirectories) {
            paths.push_back("P\"(" + directory + ")\"");
        }
        if (!paths.empty()) {
            text_ += fmt::format("    {}[{}]\n", beginning, joined(paths, ", "));
        }
    }

    void addLibraries() {
        if (found_.usesMath) {
            addLine("LIBS", "[\"m\"]");
        }
    }

    void addFlags(const Sources& sources) {
        const bool cpp = std::ranges::any_of(sources, &FirstSource::cpp);
        text_ += cpp ? "    // CPP_FLAGS = \"-std=c++20 -O2 -Wall\"\n"
                     : "    // C_FLAGS = \"-O2 -Wall\"\n";
    }

    const FirstSources& found_;
    std::string name_;
    FirstUnit kind_;
    Sources programs_;
    Sources others_;
    Sources leftOut_;
    std::set<std::string> names_;
    std::string text_;
};

}  // namespace

std::string firstUnitText(const FirstSources& found, const std::string& name, FirstUnit kind) {
    return UnitText(found, name, kind).make();
}

}  // namespace Vesk
