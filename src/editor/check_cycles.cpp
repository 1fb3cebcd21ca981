#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>

#include "base/text.h"
#include "editor/checks.h"
#include "editor/names.h"

namespace Vesk::editor {
namespace {

struct Node;

struct Edge {
    Node* to;
    const DependencySymbol* dependency;
};

struct Node {
    BlockPlace place;
    std::vector<Edge> edges;
    std::size_t leftToTake = 0;  ///< edges to targets that may be part of a cycle
    std::vector<Node*> dependants;
    bool taken = false;
};

/// The targets that the document's targets need, all the way down.
class Graph {
  public:
    explicit Graph(const Checked& checked) {
        forEachBlock(checked.document,
                     [&](const BlockPlace& place) { node(place, checked.project, *checked.unit); });
        while (!unread_.empty()) {
            const auto [from, project, unit] = unread_.front();
            unread_.pop_front();
            addEdges(*from, *project, *unit);
        }
        takeWhatIsInNoCycle();
    }

    const std::deque<Node>& nodes() const noexcept { return nodes_; }

    /// The way from a target to another, both included; empty without one. Only what may be part of
    /// a cycle is walked over.
    static std::vector<const Node*> way(const Node* from, const Node* to) {
        std::unordered_map<const Node*, const Node*> before{{from, nullptr}};
        std::deque<const Node*> next{from};
        while (!next.empty() && !before.contains(to)) {
            const Node* const here = next.front();
            next.pop_front();
            for (const Edge& edge : here->edges) {
                if (!edge.to->taken && before.try_emplace(edge.to, here).second) {
                    next.push_back(edge.to);
                }
            }
        }
        std::vector<const Node*> found;
        for (const Node* step = before.contains(to) ? to : nullptr; step != nullptr;
             step = before[step]) {
            found.insert(found.begin(), step);
        }
        return found;
    }

  private:
    struct Unread {
        Node* node;
        const ProjectView* project;
        const UnitView* unit;
    };

    Node& node(const BlockPlace& place, const ProjectView& project, const UnitView& unit) {
        const auto [entry, isNew] = byBlock_.try_emplace(place.block, nullptr);
        if (isNew) {
            nodes_.push_back({place, {}, 0, {}, false});
            entry->second = &nodes_.back();
            unread_.push_back({entry->second, &project, &unit});
        }
        return *entry->second;
    }

    void addEdges(Node& from, const ProjectView& project, const UnitView& unit) {
        for (const DependencySymbol& dependency : from.place.block->dependencies) {
            const DependencyTarget meant = resolve(dependency, project, unit);
            if (meant.target) {
                Node& to = node(meant.target, *meant.project, *meant.unit);
                from.edges.push_back({&to, &dependency});
                to.dependants.push_back(&from);
            }
        }
    }

    /// Takes targets away that need nothing which is still there, until none is left or only those
    /// are that need a cycle.
    void takeWhatIsInNoCycle() {
        std::vector<Node*> free;
        for (Node& node : nodes_) {
            node.leftToTake = node.edges.size();
            if (node.leftToTake == 0) {
                free.push_back(&node);
            }
        }
        while (!free.empty()) {
            Node* const node = free.back();
            free.pop_back();
            node->taken = true;
            for (Node* dependant : node->dependants) {
                if (--dependant->leftToTake == 0) {
                    free.push_back(dependant);
                }
            }
        }
    }

    std::deque<Node> nodes_;
    std::unordered_map<const Block*, Node*> byBlock_;
    std::deque<Unread> unread_;
};

std::string chainText(const Node& first, const std::vector<const Node*>& way) {
    std::vector<std::string> names{first.place.block->name.text};
    for (const Node* step : way) {
        names.push_back(step->place.block->name.text);
    }
    return joined(names, " -> ");
}

}  // namespace

void checkCycles(const Checked& checked, Diagnostics& found) {
    if (checked.unit == nullptr) {
        return;
    }
    const Graph graph(checked);
    for (const Node& node : graph.nodes()) {
        if (node.taken || node.place.document != &checked.document) {
            continue;
        }
        for (const Edge& edge : node.edges) {
            if (edge.to->taken) {
                continue;
            }
            const std::vector<const Node*> way = Graph::way(edge.to, &node);
            if (!way.empty()) {
                found.push_back({rule::kCycle, Severity::Error,
                                 node.place.piece->inDocument(edge.dependency->span),
                                 "Targets need each other: " + chainText(node, way) + "."});
            }
        }
    }
}

}  // namespace Vesk::editor
