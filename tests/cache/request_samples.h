// Requests and records for tests of the cache.
#pragma once

#include <string>

#include "cache/cache_text.h"
#include "cache/project_cache.h"
#include "cache/record_fields.h"
#include "cache/record_writer.h"
#include "platform/support.h"

namespace Vesk::test {

/// What a target with one command asks. Only the command and the files differ between targets.
inline CacheRequest requestFor(const std::string& command, std::vector<std::string> reads = {},
                               std::vector<std::string> writes = {}) {
    CacheRequest request;
    request.parts.resize(kFirstRecipePart + 1);
    CacheRequest::Part& target = request.parts[kTargetPart];
    appendInputs(target.inputs,
                 {{textAssignment(std::string(requestField::kWrites), ""), std::nullopt}});
    target.reads = std::move(reads);
    target.writes = std::move(writes);
    appendInputs(request.parts[kVariablesPart].inputs,
                 {{textAssignment("cmdline", command), std::nullopt}});
    appendInputs(request.parts[kFirstRecipePart].inputs,
                 {{textAssignment("command", command), std::nullopt}});
    request.environment = "0\n";
    return request;
}

/// The record of a build of it that has just ended.
inline RecordText recordOf(const CacheRequest& request, FileStates& states,
                           const TrackingRoot& root) {
    states.look(request.parts[kTargetPart].reads);
    const Freshness nothing(request, nullptr, states, root);
    BuildResults results;
    results.outcomes.assign(request.parts.size(), StepOutcome::Ran);
    results.outputs = {textAssignment("result", "0")};
    results.startedAt = platform::fileClock();
    return makeRecord(request, results, nothing, states, root).value();
}

}  // namespace Vesk::test
