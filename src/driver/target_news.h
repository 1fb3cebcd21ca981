// What becomes of targets that are not built, told to all who want to know.
#pragma once

#include <string>

#include "driver/build_setting.h"
#include "events/events.h"

namespace Vesk {

inline void tellFailed(const BuildSetting& setting, const events::Subject& target,
                       const std::string& said) {
    setting.events->failed(target.target, said);
    events::emit(events::TargetFinished{target, events::Outcome::Failed, said, 0, 0});
}

/// For the reason for which another one failed.
inline void tellFailedLike(const BuildSetting& setting, const std::string& other,
                           const events::Subject& target, const std::string& said) {
    setting.events->failedLike(other, target.target);
    events::emit(events::TargetFinished{target, events::Outcome::Failed, said, 0, 0});
}

/// For the sake of another one, by its name.
inline void tellSkipped(const BuildSetting& setting, const events::Subject& target,
                        const std::string& needed) {
    setting.events->skipped(target.target, needed);
    events::emit(events::TargetFinished{target, events::Outcome::Skipped, "needs " + needed, 0, 0});
}

}  // namespace Vesk
