// Answers that are remembered for the whole run.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/recorder.h"

namespace Vesk::platform {

/// By text. Whoever gets an answer from here has asked all that was asked to find it: the questions
/// are recorded for him as well.
template <class Answer>
class Remembered {
  public:
    /// `find` gives the answer the first time. What it throws is not remembered.
    template <class Find>
    const Answer& get(const std::string& key, Find find) {
        auto known = known_.find(key);
        if (known == known_.end()) {
            Entry entry;
            try {
                const QuestionScope scope(entry.asked);
                entry.answer.emplace(find());
            } catch (...) {
                recordAgain(entry.asked);
                throw;
            }
            known = known_.emplace(key, std::move(entry)).first;
        }
        recordAgain(known->second.asked);
        return *known->second.answer;
    }

  private:
    struct Entry {
        std::optional<Answer> answer;
        Questions asked;
    };

    std::map<std::string, Entry> known_;
};

}  // namespace Vesk::platform
