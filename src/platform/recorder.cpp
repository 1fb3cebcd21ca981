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
std::string recorded;  // of each question its letter, the answer's digest, the subject, a zero

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

/// Zero, which is as good a hash as any, for what cannot be read.
std::uint64_t contentAnswer(const char* path) {
    XXH3_state_t* const state = XXH3_createState();
    XXH3_128bits_reset(state);
    const bool complete = readPieces(pathFromUtf8(path), [state](std::string_view piece) {
        XXH3_128bits_update(state, piece.data(), piece.size());
    });
    const std::uint64_t hash = complete ? XXH3_128bits_digest(state).low64 : 0;
    XXH3_freeState(state);
    return hash;
}

/// The digest of the answer now; nothing for what is no question.
std::optional<std::uint64_t> answerTo(Question question, const char* subject) {
    std::error_code error;
    switch (question) {
        case Question::Status:
            return statusAnswer(subject);
        case Question::Content:
            return contentAnswer(subject);
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

void appendQuestion(std::string& questions, Question question, std::string_view subject,
                    std::uint64_t answer) {
    std::array<char, sizeof answer> digest;
    std::memcpy(digest.data(), &answer, sizeof answer);
    questions += static_cast<char>(question);
    questions.append(digest.data(), digest.size()).append(subject).append(1, '\0');
}

}  // namespace

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
    if (scope != nullptr) {
        appendQuestion(scope->recording, question, subject, answer);
    }
    if (active.load(std::memory_order_relaxed)) {
        const std::lock_guard lock(mutex);
        appendQuestion(recorded, question, subject, answer);
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
    recorded.clear();
    repeatable = true;
    active = true;
}

std::optional<std::string> recordingSoFar() {
    const std::lock_guard lock(mutex);
    return repeatable ? std::optional(recorded) : std::nullopt;
}

RecordingPause::RecordingPause() noexcept : wasActive_(active.exchange(false)) {}

RecordingPause::~RecordingPause() {
    active = wasActive_;
}

std::optional<std::string> takeRecording() {
    active = false;
    return repeatable ? std::optional(std::exchange(recorded, {})) : std::nullopt;
}

namespace {

constexpr std::size_t kDigestBytes = sizeof(std::uint64_t);

/// Takes the first question off a recording, with its zero. Nothing for bytes that are none.
std::optional<std::string_view> takeQuestion(std::string_view& questions) {
    const std::size_t subject = 1 + kDigestBytes;
    const std::size_t end = questions.find('\0', subject);
    if (subject >= questions.size() || end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view question = questions.substr(0, end + 1);
    questions.remove_prefix(question.size());
    return question;
}

bool isStillAnswered(std::string_view question) {
    std::uint64_t answer = 0;
    std::memcpy(&answer, question.data() + 1, kDigestBytes);
    return answerTo(static_cast<Question>(question.front()), question.data() + 1 + kDigestBytes) ==
           answer;
}

}  // namespace

std::string questionBytes(Question question, std::string_view subject, std::uint64_t answer) {
    std::string bytes;
    appendQuestion(bytes, question, subject, answer);
    return bytes;
}

bool eachQuestion(std::string_view recording, const std::function<void(std::string_view)>& take) {
    while (!recording.empty()) {
        const auto question = takeQuestion(recording);
        if (!question) {
            return false;
        }
        take(*question);
    }
    return true;
}

bool stillValid(std::string_view recording) {
    while (!recording.empty()) {
        const auto question = takeQuestion(recording);
        if (!question || !isStillAnswered(*question)) {
            return false;
        }
    }
    return true;
}

std::vector<std::string_view> questionsIn(std::string_view recording) {
    std::vector<std::string_view> questions;
    eachQuestion(recording,
                 [&questions](std::string_view question) { questions.push_back(question); });
    return questions;
}

std::string_view subjectOf(std::string_view question) noexcept {
    constexpr std::size_t kStart = 1 + kDigestBytes;
    return question.size() > kStart ? question.substr(kStart, question.size() - kStart - 1)
                                    : std::string_view();
}

std::optional<std::vector<std::uint32_t>> differingAnswers(
    std::string_view recording, const std::function<bool(std::uint32_t)>& mayDiffer) {
    std::vector<std::uint32_t> differing;
    for (std::uint32_t number = 0; !recording.empty(); ++number) {
        const auto question = takeQuestion(recording);
        if (!question) {
            return std::nullopt;
        }
        if (!isStillAnswered(*question)) {
            if (!mayDiffer(number)) {
                return std::nullopt;
            }
            differing.push_back(number);
        }
    }
    return differing;
}

}  // namespace Vesk::platform
