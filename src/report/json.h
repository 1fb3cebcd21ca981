// How reports write JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "report/run_record.h"

namespace Vesk::report {

using Json = nlohmann::ordered_json;

/// On one line. What a command writes need not be UTF-8, which JSON has to be.
inline std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// What all reports say of a visit.
Json visitJson(const VisitRecord& visit);

/// Leaves out what says nothing.
inline void addText(Json& json, const char* name, const std::string& text) {
    if (!text.empty()) {
        json[name] = text;
    }
}

}  // namespace Vesk::report
