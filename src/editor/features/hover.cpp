#include "editor/features/hover.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/ci_string.h"
#include "base/text.h"
#include "editor/features/completion.h"
#include "editor/names.h"
#include "platform/files.h"
#include "tools/matcher.h"

namespace Vesk::editor {
namespace {

constexpr std::size_t kMaxValue = 600;  // bytes that are shown

std::string codeBlock(std::string text) {
    if (text.size() > kMaxValue) {
        std::size_t end = kMaxValue;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
            --end;
        }
        text = text.substr(0, end) + " ...";
    }
    return "\n\n```\n" + text + "\n```";
}

class Teller {
  public:
    Teller(const Cursor& cursor, Evaluations& evaluations)
        : spot_(spotAt(cursor.document, cursor.place)),
          entity_(entityAt(cursor, spot_)),
          workspace_(cursor.workspace),
          evaluations_(evaluations) {}

    Hover run() {
        switch (entity_.kind) {
            case EntityKind::Target:
                return {target(), spot_.span};
            case EntityKind::Variable:
                return {variable(), spot_.span};
            case EntityKind::Parameter:
                return {fmt::format("**{}**: a parameter of `{}`", entity_.name,
                                    entity_.owner.block->name.text),
                        spot_.span};
            case EntityKind::Profile:
                return {block("profile"), spot_.span};
            case EntityKind::Unit:
                return {fmt::format("**{}**: a unit with {}", entity_.name,
                                    counted(entity_.unit->targets.size(), "target")),
                        spot_.span};
            case EntityKind::Project:
                return {fmt::format("**{}**: a project in `{}`", entity_.name,
                                    platform::pathToUtf8(entity_.project->root)),
                        spot_.span};
            default:
                return {};
        }
    }

  private:
    std::string block(std::string_view kind) const {
        std::vector<std::string> names;
        for (const Write& write : entity_.owner.block->writes) {
            names.push_back(write.name.text);
        }
        return fmt::format("**{}**: a {}{}{}", entity_.name, kind,
                           names.empty() ? "" : " that sets ", joined(names, ", "));
    }

    std::string target() {
        Evaluation& evaluation = evaluations_.of(workspace_, *entity_.project);
        const Outlook& outlook = evaluation.outlookFor(entity_.owner);
        std::string text =
            fmt::format("**{}**: a target of unit `{}`", signatureOf(*entity_.owner.block),
                        entity_.unit == nullptr ? "" : entity_.unit->name);
        if (const auto description = evaluation.valueOf(entity_.owner, "DESCRIPTION")) {
            text += "\n\n" + *description;
        }
        if (outlook.tool != nullptr) {
            text += "\n\nbuilt with " + outlook.tool->description();
        } else if (!outlook.failure.empty()) {
            text += "\n\n" + outlook.failure;
        }
        std::vector<std::string> outputs;
        for (const Write& write : entity_.owner.block->writes) {
            if (write.modifier == "^" && !write.nested) {
                outputs.push_back("`" + write.name.text + "`");
            }
        }
        return outputs.empty() ? text : text + "\n\noutputs: " + joined(outputs, ", ");
    }

    std::string variable() {
        std::string text = meaning();
        if (text.empty()) {
            text = fmt::format("**{}**", entity_.name);
        }
        if (entity_.owner.block->kind == BlockKind::Target) {
            Evaluation& evaluation = evaluations_.of(workspace_, *entity_.project);
            if (const auto value = evaluation.valueOf(entity_.owner, entity_.name)) {
                text += codeBlock(*value) + "\n\n" + origin(evaluation);
            }
        }
        return text;
    }

    /// What the tool of the target knows about it; where that is not known, what any tool does.
    std::string meaning() {
        std::vector<KnownVariable> known = knownVariables(toolWord());
        const auto isNamed = [this](const KnownVariable& each) {
            return equalsIgnoringCase(each.variable->name, entity_.name);
        };
        if (std::ranges::none_of(known, isNamed)) {
            known = knownVariables("");
        }
        std::string text;
        for (const KnownVariable& each : known) {
            if (isNamed(each)) {
                text += (text.empty() ? "" : "\n\n") + describe(*each.variable, each.role);
            }
        }
        return text;
    }

    std::string toolWord() {
        if (entity_.owner.block->kind != BlockKind::Target) {
            return {};
        }
        const Outlook& outlook =
            evaluations_.of(workspace_, *entity_.project).outlookFor(entity_.owner);
        return outlook.tool == nullptr ? std::string() : outlook.tool->typeWord();
    }

    std::string origin(Evaluation& evaluation) const {
        std::vector<std::string> from;
        if (givesVariable(*entity_.owner.block, entity_.name)) {
            from.emplace_back("this target");
        }
        for (const BlockPlace& place : entity_.project->blocks(BlockKind::Profile)) {
            const std::string& profile = place.block->name.text;
            const bool applies = equalsIgnoringCase(profile, kDefaultProfile) ||
                                 equalsIgnoringCase(profile, evaluations_.profile());
            if (applies && givesVariable(*place.block, entity_.name)) {
                from.emplace_back("profile '" + profile + "'");
            }
        }
        const AssignmentMap* const settings = evaluation.settingsFor(entity_.owner);
        if (settings != nullptr && settings->contains(entity_.name)) {
            from.emplace_back("its tool");
        }
        return "from " + (from.empty() ? std::string("vesk itself") : joined(from, ", "));
    }

    Spot spot_;
    Entity entity_;
    Workspace& workspace_;
    Evaluations& evaluations_;
};

}  // namespace

std::string describe(const Variable& variable, VariableRole role) {
    std::string text = fmt::format("**{}**: {}{}\n\n{}", variable.name, variable.type,
                                   roleText(role), variable.meaning);
    if (!variable.standard.empty()) {
        text += fmt::format("\n\ndefault: {}", variable.standard);
    }
    if (!variable.example.empty()) {
        text += fmt::format("\n\nexample: `{} = {}`", variable.name, variable.example);
    }
    return text;
}

Hover hoverAt(const Cursor& cursor, Evaluations& evaluations) {
    return Teller(cursor, evaluations).run();
}

}  // namespace Vesk::editor
