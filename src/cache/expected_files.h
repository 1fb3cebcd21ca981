// What the next run would ask of the files that records name, if all stays as it is.
#pragma once

#include <string>
#include <unordered_map>

#include "cache/file_state.h"
#include "cache/file_states.h"
#include "platform/question_list.h"
#include "platform/recorder.h"

namespace Vesk {

/// The questions are made of the states in the records: what the system says by now may be news to
/// them. Only directories are looked at, when all else is saved: vesk's own files come and go
/// there.
class ExpectedFiles {
  public:
    /// They go to `questions`, which outlives this.
    explicit ExpectedFiles(platform::QuestionList& questions) : questions_(questions) {}

    /// That the file is in this state, as FileStates::compare sees it. The path is absolute. False
    /// if no question tells that, or if it can be seen that it is not.
    bool add(const std::string& path, const FileState& state);

  private:
    bool addLooking(const std::string& path, const FileState& state);

    platform::QuestionList& questions_;
    FileStates now_;
    /// By path, of what is not a file.
    std::unordered_map<std::string, platform::Questions> asked_;
};

}  // namespace Vesk
