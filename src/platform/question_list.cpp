#include "platform/question_list.h"

#include <system_error>
#include <xxhash.h>

#include "platform/recording.h"

namespace Vesk::platform {

void QuestionList::reserve(std::size_t count, std::size_t bytes) {
    numbers_.reserve(count);
    recording_.reserve(bytes);
}

QuestionList::Number QuestionList::addQuestion(std::string_view question) {
    const XXH128_hash_t hash = XXH3_128bits(question.data(), question.size());
    const auto [found, isNew] =
        numbers_.try_emplace(Digest{hash.high64, hash.low64}, static_cast<Number>(numbers_.size()));
    if (isNew) {
        recording_ += question;
    }
    if (collected_ != nullptr) {
        collected_->push_back(found->second);
    }
    return found->second;
}

void QuestionList::addStatus(const std::string& path, const std::optional<FileStatus>& status) {
    addQuestion(questionBytes(Question::Status, path, digestOfStatus(status, {})));
}

void QuestionList::addStatusNow(const std::filesystem::path& path) {
    const std::string text = pathToUtf8(path);
    std::error_code error;
    const auto status = statusAt(text.c_str(), error);
    addQuestion(questionBytes(Question::Status, text, digestOfStatus(status, error)));
}

void QuestionList::addContent(std::string_view path, std::uint64_t hash) {
    addQuestion(questionBytes(Question::Content, path, hash));
}

bool QuestionList::add(std::string_view recording) {
    return eachQuestion(recording, [this](std::string_view question) { addQuestion(question); });
}

}  // namespace Vesk::platform
