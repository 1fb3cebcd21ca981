// What the next run would ask of the files that records name, if all stays as it is.
#pragma once

#include <string>
#include <vector>

#include "cache/file_state.h"
#include "platform/question_list.h"

namespace Vesk {

/// The questions are made of the states in the records: what the system says by now may be news to
/// them. Only directories are looked at, at the end: vesk's own files come and go there.
class ExpectedFiles {
  public:
    /// They go to `questions`, which outlives this.
    explicit ExpectedFiles(platform::QuestionList& questions) : questions_(questions) {}

    /// That the file is in this state, as FileStates::compare sees it. The path is absolute.
    void add(const std::string& path, const FileState& state);

    /// Whether the questions tell all of that, so far as it can be seen now.
    bool complete();

  private:
    struct Expected {
        std::string path;
        FileState state;
    };

    platform::QuestionList& questions_;
    std::vector<Expected> others_;  ///< that are not files
    bool isKnown_ = true;           ///< there is a question for each so far
};

}  // namespace Vesk
