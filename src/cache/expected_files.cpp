#include "cache/expected_files.h"

#include <algorithm>
#include <optional>

#include "cache/file_states.h"
#include "platform/recorder.h"

namespace Vesk {
namespace {

platform::FileStatus statusIn(const FileState& state) noexcept {
    platform::FileStatus status;
    status.regular = true;
    status.device = state.device;
    status.number = state.number;
    status.size = state.size;
    status.modifiedNanoseconds = state.modified;
    status.changedNanoseconds = state.changed;
    return status;
}

}  // namespace

void ExpectedFiles::add(const std::string& path, const FileState& state) {
    switch (state.kind) {
        case FileState::Kind::File:
            questions_.addStatus(path, statusIn(state));
            break;
        case FileState::Kind::Recent:
            questions_.addContent(path, state.hash.low);
            break;
        case FileState::Kind::Missing:
            questions_.addStatus(path, std::nullopt);
            break;
        case FileState::Kind::Directory:
        case FileState::Kind::Names:
        case FileState::Kind::Other:
            others_.push_back({path, state});
            break;
        case FileState::Kind::Unknown:
            isKnown_ = false;
            break;
    }
}

bool ExpectedFiles::complete() {
    platform::Questions asked;
    FileStates now;
    const platform::QuestionScope scope(asked);
    return isKnown_ &&
           std::ranges::all_of(others_,
                               [&now](const Expected& each) {
                                   return now.compare(each.path, each.state) ==
                                          FileStates::Comparison::Same;
                               }) &&
           asked.repeatable && questions_.add(asked.recording);
}

}  // namespace Vesk
