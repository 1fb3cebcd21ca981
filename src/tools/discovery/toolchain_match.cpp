#include "tools/discovery/toolchain_match.h"

#include <fmt/format.h>
#include <optional>
#include <string>

#include "base/exception.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"
#include "tools/support/target_paths.h"
#include "tools/tool_registry.h"

namespace Vesk {

namespace {

bool beginsWithWord(std::string_view text, std::string_view word) noexcept {
    return equalsIgnoringCase(text.substr(0, word.size()), word) &&
           (text.size() == word.size() || text[word.size()] == ' ');
}

bool isTrivial(const Assignment* assignment) {
    return assignment == nullptr || !assignment->value;
}

/// Compares one target's demands with one toolchain.
class Comparison {
  public:
    Comparison(const ToolchainTraits& toolchain, const AssignmentMap& declared,
               const Context& target)
        : toolchain_(toolchain), declared_(declared), target_(target) {}

    MatchResult result() {
        noteSubjects();
        if (result_.matches.empty() || spellsOutCommands(target_)) {
            return {};
        }
        compareSettings();
        if (!refused_ && !isNativeTriple(triple()) && !askedForTarget_) {
            refused_ = true;
        }
        if (refused_) {
            return {};
        }
        preferDefault();
        result_.note = MatchNote::BuildPossible;
        return std::move(result_);
    }

  private:
    std::string own(std::string_view name) const { return textIn(declared_, name); }

    std::string triple() const { return declaredTriple(declared_); }

    void noteSubjects() {
        for (const std::string_view subject : toolchain_.subjects) {
            const Assignment* assignment = target_.find(subject);
            if (assignment != nullptr && assignment->modifier != AssignModifier::Output) {
                result_.matches.emplace(subject, MatchKind::ExactMatch);
            }
        }
    }

    /// Records a setting that the target asks for. True if the toolchain has it.
    template <class F>
    bool compare(const char* name, F fits) {
        const Assignment* asked = target_.find(name);
        if (isTrivial(asked)) {
            return false;
        }
        const std::string text = asked->value->toString();
        if (fits(text)) {
            result_.matches.insert_or_assign(name, MatchKind::ExactMatch);
            return true;
        }
        if (asked->modifier == AssignModifier::Hint) {
            preferenceMissed_ = true;
        } else {
            refused_ = true;
        }
        return false;
    }

    bool compareEqual(const char* name) {
        return compare(name, [&](const std::string& asked) { return asked == own(name); });
    }

    void compareVersion() {
        const std::string version = own("toolchain_version");
        if (version.empty()) {
            // It cannot be known; a toolchain with a known version comes first.
            preferenceMissed_ |= !isTrivial(target_.find("toolchain_version")) ||
                                 !isTrivial(target_.find("toolchain_min_version"));
            return;
        }
        compare("toolchain_version",
                [&](const std::string& asked) { return versionFits(version, asked); });
        compare("toolchain_min_version",
                [&](const std::string& asked) { return compareVersions(version, asked) >= 0; });
    }

    void compareSettings() {
        compareVersion();
        compare("tool_type", [&](const std::string& asked) {
            return equalsIgnoringCase(asked, toolchain_.toolType);
        });
        const std::string name = own("toolchain_name");
        askedForFamily_ = compare("toolchain_name", [&](const std::string& asked) {
            return beginsWithWord(name, asked);
        });
        askedForTarget_ |= askedForFamily_ &&
                           equalsIgnoringCase(name, target_.textOf("toolchain_name").value_or(""));
        compareEqual("toolchain_suffix");
        askedForTarget_ |= compareEqual("toolchain_prefix");
        askedForTarget_ |= compare("toolchain_path", [&](const std::string& asked) {
            return normalPath(asked) == normalPath(own("toolchain_path"));
        });
        const auto fitsTriple = [&](const std::string& asked) {
            return tripleFits(triple(), asked);
        };
        askedForTarget_ |= compare("toolchain_target", fitsTriple);
        if (!toolchain_.anyTarget) {
            askedForTarget_ |= compare("TARGET_TRIPLE", fitsTriple);
        }
    }

    /// Whether the target asks only for a system, which several machines can have. Products for
    /// this machine's processor can run here.
    bool askedForSystem() const {
        const std::string asked = target_.textOf("toolchain_target").value_or("native");
        const std::string own = triple();
        return asked.find('-') == std::string::npos && !equalsIgnoringCase(asked, "native") &&
               !tripleFits(std::string_view(own).substr(0, own.find('-')), asked);
    }

    /// A wish that is not met costs more than any default gains.
    void preferDefault() {
        const MatchKind full = preferenceMissed_ ? MatchKind::PartialMatch : MatchKind::ExactMatch;
        if (preferenceMissed_) {
            for (const std::string_view subject : toolchain_.subjects) {
                if (const auto match = result_.matches.find(subject);
                    match != result_.matches.end()) {
                    match->second = full;
                }
            }
        }
        if (askedForSystem() && isNativeMachine(triple())) {
            result_.matches.emplace("toolchain_machine", MatchKind::PartialMatch);
        }
        const std::string word = own(kToolchainDefault);
        if (word.empty()) {
            result_.matches.emplace(kToolchainDefault, full);
        } else if (word == kMachineDefault || (word == kFamilyDefault && askedForFamily_)) {
            result_.matches.emplace(kToolchainDefault, MatchKind::PartialMatch);
        }
    }

    const ToolchainTraits& toolchain_;
    const AssignmentMap& declared_;
    const Context& target_;
    MatchResult result_;
    bool refused_ = false;
    bool preferenceMissed_ = false;
    bool askedForTarget_ = false;
    bool askedForFamily_ = false;
};

}  // namespace

std::vector<CiString> toolchainSettings() {
    return {"toolchain_version", "toolchain_min_version", "toolchain_name", "toolchain_target",
            "toolchain_prefix",  "toolchain_suffix",      "toolchain_path", "tool_type",
            "TARGET_TRIPLE"};
}

const AssignmentMap& toolchainWants() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {"toolchain_version"}, {"toolchain_min_version"}});
    return table;
}

void requireToolchainPath(const Matcher& matcher, const char* matcherClass) {
    if (!matcher.wants().at("toolchain_path").value) {
        throw VeskException(
            fmt::format("{} requires want variable 'toolchain_path'.", matcherClass));
    }
}

std::string declaredTriple(const AssignmentMap& declared) {
    std::string triple = textIn(declared, "toolchain_target");
    return triple.empty() ? std::string(tripleOfPrefix(textIn(declared, "toolchain_prefix")))
                          : triple;
}

MatchResult matchToolchain(const ToolchainTraits& toolchain, const AssignmentMap& declared,
                           const Context& target) {
    return Comparison(toolchain, declared, target).result();
}

}  // namespace Vesk
