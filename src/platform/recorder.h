// What a run has asked about the world around it, and whether the answers are still the same.
//
// While a run is recorded, every function of this floor that reads files, directories, links, the
// environment, the date or the registry of Windows records what it was asked and what it answered.
// A run that only asked, that wrote no file and started no process, would do exactly the same again
// for as long as every answer stays the same.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk::platform {

/// From now on questions are recorded.
void startRecording();

/// What has been asked since then, as `takeRecording` gives it.
std::optional<std::string> recordingSoFar();

/// While it lives, questions are not recorded, for somebody who asks them again at the end.
class RecordingPause {
  public:
    RecordingPause() noexcept;
    ~RecordingPause();
    RecordingPause(const RecordingPause&) = delete;
    RecordingPause& operator=(const RecordingPause&) = delete;

  private:
    bool wasActive_;
};

/// Ends the recording. All questions with their answers, as bytes for `stillValid`. Nothing when
/// the run did more than ask, or when an answer may change without a trace: a file that was written
/// a moment ago can be written once more and keep its times.
std::optional<std::string> takeRecording();

/// What was asked in scopes, with the answers.
struct Questions {
    std::string recording;   ///< bytes for `stillValid`
    bool repeatable = true;  ///< as for `takeRecording`; no more questions are of use without it
};

/// While it lives, what this thread asks is also recorded apart from the rest. One scope may be in
/// another; the inner one records then.
class QuestionScope {
  public:
    explicit QuestionScope(Questions& questions) noexcept;
    ~QuestionScope();
    QuestionScope(const QuestionScope&) = delete;
    QuestionScope& operator=(const QuestionScope&) = delete;

  private:
    Questions* outer_;
};

/// Adds what another scope has recorded to the scope around, if there is one: for an answer that is
/// remembered. The rest of the run has recorded it before.
void recordAgain(const Questions& questions);

/// Asks all of it again. False at the first answer that differs, and for bytes that are no such
/// recording. What it asks is recorded like any other question.
bool stillValid(std::string_view recording);

/// The questions of a recording, each of which is one by itself.
std::vector<std::string_view> questionsIn(std::string_view recording);

/// What a question is about: the path of a file, the name of a variable.
std::string_view subjectOf(std::string_view question) noexcept;

/// Asks all of it again, to its end. The numbers, counted from zero, of the questions whose answers
/// differ. Nothing at the first one of those that `mayDiffer` does not allow, and for bytes that
/// are no such recording.
std::optional<std::vector<std::uint32_t>> differingAnswers(
    std::string_view recording, const std::function<bool(std::uint32_t)>& mayDiffer);

}  // namespace Vesk::platform
