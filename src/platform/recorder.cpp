#include "platform/recorder.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>
#include <xxhash.h>

#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/recording.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace Vesk::platform {

namespace {

constexpr char kBits32 = '3';
constexpr char kBits64 = '6';
constexpr char kRegistrySeparator = '\n';

std::atomic<bool> active{false};
std::atomic<bool> repeatable{true};
std::mutex mutex;
thread_local Questions* scope = nullptr;
std::string recording;  // of each question its letter, the answer's digest, the subject, a zero

/// Of a directory only which one it is: what is in it is a question of its own, and its times
/// change with it.
std::uint64_t digestOfStatus(const std::optional<FileStatus>& status,
                             const std::error_code& error) noexcept {
    if (!status) {
        return error ? 1 : 0;
    }
    std::array<std::uint64_t, 6> parts = {status->directory ? 2U
                                          : status->regular ? 1U
                                                            : 0U,
                                          status->device, status->number};
    if (!status->directory) {
        parts[3] = status->size;
        parts[4] = static_cast<std::uint64_t>(status->modifiedNanoseconds);
        parts[5] = static_cast<std::uint64_t>(status->changedNanoseconds);
    }
    return XXH3_64bits(parts.data(), sizeof parts);
}

std::uint64_t digestOfTimes(const std::optional<FileStatus>& status) noexcept {
    if (!status || !status->directory) {
        return 0;
    }
    const std::array<std::uint64_t, 2> parts = {
        static_cast<std::uint64_t>(status->modifiedNanoseconds),
        static_cast<std::uint64_t>(status->changedNanoseconds)};
    return XXH3_64bits(parts.data(), sizeof parts);
}

std::uint64_t statusAnswer(const char* path) {
    std::error_code error;
    const auto status = statusAt(path, error);
    if (isRecording()) {
        recordStatus(std::string(path), status, error);
    }
    return digestOfStatus(status, error);
}

std::uint64_t timesAnswer(const char* path) {
    std::error_code error;
    const auto status = statusAt(path, error);
    if (status && isRecording()) {
        recordTimes(path, *status);
    }
    return digestOfTimes(status);
}

std::uint64_t registryAnswer(std::string_view subject) {
    const std::size_t end = subject.find(kRegistrySeparator);
    if (end == std::string_view::npos || end == 0) {
        return 0;
    }
    const auto view = subject.front() == kBits32 ? RegistryView::Bits32 : RegistryView::Bits64;
    return digestIfAny(registryText(std::string(subject.substr(1, end - 1)),
                                    std::string(subject.substr(end + 1)), view));
}

/// The digest of the answer now; nothing for what is no question.
std::optional<std::uint64_t> answerTo(Question question, const char* subject) {
    std::error_code error;
    switch (question) {
        case Question::Status:
            return statusAnswer(subject);
        case Question::Times:
            return timesAnswer(subject);
        case Question::Entries:
            return digestOfEntries(listDirectory(pathFromUtf8(subject), error), error);
        case Question::Canonical:
            return digestOf(pathToUtf8(canonicalPath(pathFromUtf8(subject), error)));
        case Question::Variable:
            return digestIfAny(environmentVariable(subject));
        case Question::Month:
            return digestOf(currentLocalMonth());
        case Question::Registry:
            return registryAnswer(subject);
    }
    return std::nullopt;
}

}  // namespace

bool isRecording() noexcept {
    return scope != nullptr || active.load(std::memory_order_relaxed);
}

void record(Question question, std::string_view subject, std::uint64_t answer) {
    if (!isRecording()) {
        return;
    }
    if (subject.find('\0') != std::string_view::npos) {
        recordSideEffect();
        return;
    }
    std::array<char, sizeof answer> digest;
    std::memcpy(digest.data(), &answer, sizeof answer);
    const auto appendTo = [&](std::string& questions) {
        questions += static_cast<char>(question);
        questions.append(digest.data(), digest.size()).append(subject).append(1, '\0');
    };
    if (scope != nullptr) {
        appendTo(scope->recording);
    }
    if (active.load(std::memory_order_relaxed)) {
        const std::lock_guard lock(mutex);
        appendTo(recording);
    }
}

void recordSideEffect() noexcept {
    repeatable = false;
    if (scope != nullptr) {
        scope->repeatable = false;
    }
}

QuestionScope::QuestionScope(Questions& questions) noexcept
    : outer_(std::exchange(scope, &questions)) {}

QuestionScope::~QuestionScope() {
    scope = outer_;
}

void recordAgain(const Questions& questions) {
    if (scope != nullptr) {
        scope->recording += questions.recording;
        scope->repeatable = scope->repeatable && questions.repeatable;
    }
}

void recordStatus(const std::filesystem::path& path, const std::optional<FileStatus>& status,
                  const std::error_code& error) {
    if (isRecording()) {
        recordStatus(pathToUtf8(path), status, error);
    }
}

void recordStatus(const std::string& path, const std::optional<FileStatus>& status,
                  const std::error_code& error) {
    if (!isRecording()) {
        return;
    }
    if (status && !status->directory && isRecent(*status)) {
        recordSideEffect();
    }
    record(Question::Status, path, digestOfStatus(status, error));
}

void recordTimes(const std::string& directory, const FileStatus& status) {
    if (!isRecording()) {
        return;
    }
    if (isRecent(status)) {
        recordSideEffect();
    }
    record(Question::Times, directory, digestOfTimes(status));
}

std::uint64_t digestOf(std::string_view text) noexcept {
    return XXH3_64bits(text.data(), text.size());
}

std::uint64_t digestIfAny(const std::optional<std::string>& text) noexcept {
    return text ? digestOf(std::string_view(*text)) : 0;
}

std::uint64_t digestOf(const LocalMonth& month) noexcept {
    return static_cast<std::uint64_t>(month.year) * 100 + static_cast<std::uint64_t>(month.month);
}

void recordRegistry(std::string_view key, std::string_view name, RegistryView view,
                    const std::optional<std::string>& text) {
    if (isRecording()) {
        std::string subject(1, view == RegistryView::Bits32 ? kBits32 : kBits64);
        subject.append(key).append(1, kRegistrySeparator).append(name);
        record(Question::Registry, subject, digestIfAny(text));
    }
}

void startRecording() {
    recording.clear();
    repeatable = true;
    active = true;
}

std::optional<std::string> takeRecording() {
    active = false;
    return repeatable ? std::optional(std::exchange(recording, {})) : std::nullopt;
}

namespace {

/// Hands over letter, answer and subject of each question, until `take` says no. False then, and
/// for bytes that are no recording.
template <class Take>
bool eachQuestion(std::string_view questions, Take take) {
    constexpr std::size_t kDigestBytes = sizeof(std::uint64_t);
    for (std::size_t at = 0; at < questions.size();) {
        const std::size_t subject = at + 1 + kDigestBytes;
        const std::size_t end = questions.find('\0', subject);
        if (subject >= questions.size() || end == std::string_view::npos) {
            return false;
        }
        std::uint64_t answer = 0;
        std::memcpy(&answer, questions.data() + at + 1, kDigestBytes);
        if (!take(static_cast<Question>(questions[at]), answer, questions.data() + subject)) {
            return false;
        }
        at = end + 1;
    }
    return true;
}

}  // namespace

bool stillValid(std::string_view recording) {
    return eachQuestion(recording,
                        [](Question question, std::uint64_t answer, const char* subject) {
                            return answerTo(question, subject) == answer;
                        });
}

}  // namespace Vesk::platform
