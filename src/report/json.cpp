#include "report/json.h"

#include "report/event_lines.h"

namespace Vesk::report {

Json visitJson(const VisitRecord& visit) {
    Json json{{"target", visit.name()},
              {"project", visit.about.project},
              {"unit", visit.about.unit},
              {"place", visit.about.place}};
    addText(json, "profile", visit.about.profile);
    addText(json, "arguments", visit.about.arguments);
    addText(json, "tool", visit.tool);
    json["outcome"] = nameOf(visit.outcome);
    json["kept"] = visit.kept;
    return json;
}

}  // namespace Vesk::report
