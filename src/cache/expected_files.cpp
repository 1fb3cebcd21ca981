#include "cache/expected_files.h"

#include <optional>

namespace Vesk {
bool ExpectedFiles::add(const std::string& path, const FileState& state) {
    switch (state.kind) {
        case FileState::Kind::File:
            questions_.addStatus(path, statusOf(state));
            return true;
        case FileState::Kind::Recent:
            questions_.addContent(path, state.hash.low);
            return true;
        case FileState::Kind::Missing:
            questions_.addStatus(path, std::nullopt);
            return true;
        case FileState::Kind::Directory:
        case FileState::Kind::Names:
        case FileState::Kind::Other:
            return addLooking(path, state);
        case FileState::Kind::Unknown:
            break;
    }
    return false;
}

/// What has been looked at once is not asked for again.
bool ExpectedFiles::addLooking(const std::string& path, const FileState& state) {
    platform::Questions& asked = asked_[path];
    const platform::QuestionScope scope(asked);
    return now_.compare(path, state) == FileStates::Comparison::Same && asked.repeatable &&
           questions_.add(asked.recording);
}

}  // namespace Vesk
