#include "platform/question_list.h"

#include <system_error>
#include <xxhash.h>

#include "platform/recording.h"

namespace Vesk::platform {

void QuestionList::addOnce(std::string_view question) {
    const XXH128_hash_t hash = XXH3_128bits(question.data(), question.size());
    if (known_.insert({hash.high64, hash.low64}).second) {
        recording_ += question;
    }
}

void QuestionList::addStatus(const std::string& path, const std::optional<FileStatus>& status) {
    addOnce(questionBytes(Question::Status, path, digestOfStatus(status, {})));
}

void QuestionList::addStatusNow(const std::filesystem::path& path) {
    const std::string text = pathToUtf8(path);
    std::error_code error;
    const auto status = statusAt(text.c_str(), error);
    addOnce(questionBytes(Question::Status, text, digestOfStatus(status, error)));
}

void QuestionList::addContent(std::string_view path, std::uint64_t hash) {
    addOnce(questionBytes(Question::Content, path, hash));
}

bool QuestionList::add(std::string_view recording) {
    return eachQuestion(recording, [this](std::string_view question) { addOnce(question); });
}

}  // namespace Vesk::platform
