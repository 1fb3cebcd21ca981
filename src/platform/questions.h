// What a run has asked about the world around it, and whether the answers are still the same.
//
// While questions are noted, every function of this floor that tells something about files,
// folders, links, the environment, the date or the registry of Windows notes what it was asked and
// what it answered. A run that only asked, that wrote no file and started no process, would do
// exactly the same again for as long as every answer stays the same.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vesk::platform {

/// From now on questions are noted.
void startNotingQuestions();

/// Ends that. All questions with their answers, as bytes for `answersAreTheSame`. Nothing when the
/// run did more than ask, or when an answer may change without a trace: a file that was written a
/// moment ago can be written once more and keep its times.
std::optional<std::string> questionsNoted();

/// Asks all of it again. False at the first answer that differs, and for bytes that are no such
/// notes. Not while questions are being noted.
bool answersAreTheSame(std::string_view notes);

}  // namespace Vesk::platform
