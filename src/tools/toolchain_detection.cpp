#include "tools/toolchain_detection.h"

#include <exception>
#include <iterator>
#include <map>
#include <utility>

#include "base/ci_string.h"
#include "base/console.h"
#include "base/exception.h"

namespace Vesk {

namespace {

struct Detector {
    CiString toolType;
    ToolchainDetector detect;
};

using Detectors = std::multimap<int, Detector>;

/// Made on first use: registration objects of other files may run before this file's own.
Detectors& detectors() {
    static Detectors registered;
    return registered;
}

std::vector<DetectedTool> detect(const CiString& toolType, const ToolchainDetector& detector) {
    std::string reason;
    try {
        return detector();
    } catch (const VeskException& exception) {
        reason = exception.report();
    } catch (const std::exception& exception) {
        reason = reportOf(exception);
    }
    console::warning("Unable to look for toolchains of type '{}': {}", toolType, reason);
    return {};
}

}  // namespace

ToolchainDetectorRegistration::ToolchainDetectorRegistration(std::string toolType, int rank,
                                                             const ToolchainDetector& detector)
    : toolType_(std::move(toolType)) {
    detectors().emplace(rank, Detector{CiString(toolType_), detector});
}

std::vector<DetectedTool> detectToolchains() {
    std::vector<DetectedTool> all;
    for (const auto& [rank, detector] : detectors()) {
        std::vector<DetectedTool> found = detect(detector.toolType, detector.detect);
        all.insert(all.end(), std::make_move_iterator(found.begin()),
                   std::make_move_iterator(found.end()));
    }
    return all;
}

}  // namespace Vesk
