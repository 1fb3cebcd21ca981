#include "report/graph.h"

#include <fmt/format.h>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "report/event_lines.h"
#include "report/json.h"
#include "report/stats.h"

namespace Vesk::report {
namespace {

/// How a target looks: told apart without colours too.
struct Look {
    const char* fill;
    const char* line;
    const char* style;
};

Look lookOf(events::Outcome outcome) noexcept {
    switch (outcome) {
        case events::Outcome::Built:
            return {"#d7f0dd", "#1a7f37", "filled,rounded,bold"};
        case events::Outcome::Fresh:
            return {"#eef1f4", "#57606a", "filled,rounded"};
        case events::Outcome::Group:
            return {"#ffffff", "#8c959f", "filled,rounded"};
        case events::Outcome::Failed:
            return {"#ffdcd8", "#cf222e", "filled,bold"};
        case events::Outcome::Skipped:
        case events::Outcome::NotBegun:
            break;
    }
    return {"#fff8e0", "#9a6700", "filled,dashed"};
}

/// The text of a name in DOT, between quotes.
std::string dotText(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        if (c == '\n') {
            result += "\\n";
        } else {
            result += c;
        }
    }
    return result += '"';
}

double secondsOf(const RunRecord& run, const VisitRecord& visit) {
    double sum = 0;
    for (const std::size_t command : visit.commands) {
        sum += seconds(run.commands[command].length());
    }
    return sum;
}

std::string outcomeText(const RunRecord& run, const VisitRecord& visit) {
    if (visit.outcome == events::Outcome::Group) {
        return {};
    }
    std::string text = run.about.dryRun && visit.outcome == events::Outcome::Built
                           ? "to build"
                           : nameOf(visit.outcome);
    if (visit.kept) {
        text += ", kept";
    }
    if (!visit.commands.empty()) {
        text += ", " + durationText(secondsOf(run, visit));
    }
    return text;
}

std::string labelOf(const RunRecord& run, const VisitRecord& visit) {
    std::string label = visit.name();
    if (!visit.about.arguments.empty()) {
        label += "(" + visit.about.arguments + ")";
    }
    if (!visit.tool.empty()) {
        label += "\n" + visit.tool;
    }
    if (const std::string outcome = outcomeText(run, visit); !outcome.empty()) {
        label += "\n" + outcome;
    }
    return label;
}

std::string nodeLine(const RunRecord& run, std::size_t number) {
    const VisitRecord& visit = run.visits[number];
    const Look look = lookOf(visit.outcome);
    return fmt::format(
        "    t{} [label={}, style=\"{}\", fillcolor=\"{}\", color=\"{}\", tooltip={}]\n", number,
        dotText(labelOf(run, visit)), look.style, look.fill, look.line, dotText(visit.about.place));
}

using ProjectName = std::pair<std::string, std::string>;  // and its profile

ProjectName projectOf(const VisitRecord& visit) {
    return {visit.about.project, visit.about.profile};
}

std::string titleOf(const ProjectName& project) {
    const std::string& name = project.first.empty() ? std::string("no project") : project.first;
    return project.second.empty() ? name : name + " (" + project.second + ")";
}

Json nodeJson(const RunRecord& run, std::size_t number) {
    const VisitRecord& visit = run.visits[number];
    Json json{{"id", number}};
    json.update(visitJson(visit));
    json["seconds"] = secondsOf(run, visit);
    return json;
}

}  // namespace

std::string graphAsDot(const RunRecord& run) {
    std::map<ProjectName, std::vector<std::size_t>> projects;
    for (std::size_t i = 0; i < run.visits.size(); ++i) {
        projects[projectOf(run.visits[i])].push_back(i);
    }
    std::string dot =
        "digraph vesk {\n"
        "  rankdir=LR\n"
        "  node [shape=box, fontname=\"Helvetica,Arial,sans-serif\", fontsize=11]\n"
        "  edge [color=\"#57606a\", arrowsize=0.7]\n"
        "  graph [fontname=\"Helvetica,Arial,sans-serif\", fontsize=12, color=\"#8c959f\"]\n";
    std::size_t cluster = 0;
    for (const auto& [project, visits] : projects) {
        dot += fmt::format("  subgraph cluster_{} {{\n    label={}\n", cluster++,
                           dotText(titleOf(project)));
        for (const std::size_t visit : visits) {
            dot += nodeLine(run, visit);
        }
        dot += "  }\n";
    }
    for (std::size_t i = 0; i < run.visits.size(); ++i) {
        for (const std::size_t needed : run.visits[i].needs) {
            dot += fmt::format("  t{} -> t{}\n", i, needed);
        }
    }
    return dot + "}\n";
}

std::string graphAsJson(const RunRecord& run) {
    Json nodes = Json::array();
    Json edges = Json::array();
    for (std::size_t i = 0; i < run.visits.size(); ++i) {
        nodes.push_back(nodeJson(run, i));
        for (const std::size_t needed : run.visits[i].needs) {
            edges.push_back({{"from", i}, {"to", needed}});
        }
    }
    return textOf(
               Json{{"version", 1}, {"targets", std::move(nodes)}, {"needs", std::move(edges)}}) +
           "\n";
}

}  // namespace Vesk::report
