#include "project/registry_text.h"

#include <map>

#include "platform/files.h"
#include "project/registry_comments.h"
#include "project/tool_entry.h"
#include "types/context/context_template.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

std::string_view operatorText(ConditionOperator op) {
    switch (op) {
        case ConditionOperator::Equal:
            return " = ";
        case ConditionOperator::NotEqual:
            return " != ";
        case ConditionOperator::Less:
            return " < ";
        case ConditionOperator::Greater:
            return " > ";
        case ConditionOperator::Exists:
            break;
    }
    return "";
}

/// Whether the tool is left out of every build. It stays in the file as it stands, for its author
/// to mend.
bool isBroken(const ToolEntry& entry) {
    try {
        toolTypeOf(entry);
        return false;
    } catch (const VeskException&) {
        return true;
    }
}

/// Whether the variable's merged assignment reads back as the same as all that was written of it:
/// what follows a "=" is known, what follows a "+=" or "?=" depends on what that is merged onto.
bool saysAll(const Context& context, const Assignment& merged,
             const std::vector<Assignment>& written) {
    return written.size() < 2 || (written.front().op == AssignOperator::Assign &&
                                  !merged.exported && !context.hasHeldAppends(merged.name));
}

/// The assignments that the file is to hold, in their order.
std::vector<Assignment> linesOf(const ToolEntry& entry) {
    if (entry.source && isBroken(entry)) {
        return entry.source->assignments;
    }
    std::map<CiString, std::vector<Assignment>, CiLess> written;
    if (entry.source) {
        for (const Assignment& assignment : entry.source->assignments) {
            written[assignment.name].push_back(assignment);
        }
    }
    std::vector<Assignment> lines;
    for (const auto& [name, merged] : entry.context->assignments()) {
        const std::vector<Assignment>& all = written[name];
        if (saysAll(*entry.context, merged, all)) {
            lines.push_back(merged);
        } else {
            lines.insert(lines.end(), all.begin(), all.end());
        }
    }
    return lines;
}

class RegistryWriter {
  public:
    explicit RegistryWriter(const std::string& oldText) : comments_(oldText) {}

    std::string write(const Registry& registry) {
        commentLines(comments_.takeHead(), 0);
        if (!registry.projects.empty()) {
            writeProjects(registry.projects);
        }
        if (!registry.tools.empty()) {
            text_ += registry.projects.empty() ? "" : "\n";
            writeTools(registry.tools);
        }
        commentLines(comments_.takeRest(), 0);
        return std::move(text_);
    }

  private:
    void writeProjects(const Registry::Projects& projects) {
        line(0, "projects {", anchor::sectionStart("projects"));
        for (const auto& [name, path] : projects) {
            line(2, name + " \"" + platform::pathToUtf8(path) + "\"", anchor::project(name));
        }
        line(0, "}", anchor::sectionEnd("projects"));
    }

    void writeTools(const Registry::Tools& tools) {
        line(0, "tools {", anchor::sectionStart("tools"));
        for (const auto& [name, entry] : tools) {
            try {
                writeTool(name, entry);
            } catch (VeskException& error) {
                error.addNote("in the tool '" + name + "' of the registry");
                throw;
            }
        }
        line(0, "}", anchor::sectionEnd("tools"));
    }

    void writeTool(const std::string& tool, const ToolEntry& entry) {
        line(2, tool + " {", anchor::toolStart(tool));
        for (const Assignment& assignment : linesOf(entry)) {
            line(4, assignment.toSourceString(), anchor::variable(tool, assignment.name));
        }
        const std::vector<Condition>& conditions =
            entry.context ? entry.context->conditions() : entry.source->conditions;
        for (std::size_t i = 0; i < conditions.size(); ++i) {
            const Comments comments = comments_.take(anchor::condition(tool, i));
            commentLines(comments.before, 4);
            writeCondition(conditions[i], 4);
            commentLines(comments.behind, 4);
        }
        line(2, "}", anchor::toolEnd(tool));
    }

    void writeCondition(const Condition& condition, std::size_t indent) {
        std::string head = "if " + toSourceString(*condition.left);
        if (condition.right) {
            head += operatorText(condition.op);
            head += toSourceString(*condition.right);
        }
        plainLine(indent, head + " {");
        for (const Assignment& assignment : condition.body->assignments) {
            plainLine(indent + 2, assignment.toSourceString());
        }
        for (const Condition& inner : condition.body->conditions) {
            writeCondition(inner, indent + 2);
        }
        plainLine(indent, "}");
    }

    void line(std::size_t indent, const std::string& content, const std::string& lineAnchor) {
        const Comments comments = comments_.take(lineAnchor);
        commentLines(comments.before, indent);
        text_ += std::string(indent, ' ') + content;
        bool lineComment = false;
        for (const std::string& comment : comments.behind) {
            // Nothing can stand behind a line comment but the next line.
            text_ += lineComment ? "\n" + std::string(indent, ' ') : " ";
            text_ += comment;
            lineComment = comment.starts_with("//");
        }
        text_ += '\n';
    }

    void plainLine(std::size_t indent, const std::string& content) {
        text_ += std::string(indent, ' ') + content + '\n';
    }

    void commentLines(const std::vector<std::string>& comments, std::size_t indent) {
        for (const std::string& comment : comments) {
            plainLine(indent, comment);
        }
    }

    RegistryComments comments_;
    std::string text_;
};

}  // namespace

std::string registryText(const Registry& registry, const std::string& oldText) {
    return RegistryWriter(oldText).write(registry);
}

}  // namespace Vesk
