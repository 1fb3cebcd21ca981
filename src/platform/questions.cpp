#include "platform/questions.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>
#include <xxhash.h>

#include "platform/environment.h"
#include "platform/folders.h"
#include "platform/notes.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace Vesk::platform {

namespace {

constexpr char kBits32 = '3';
constexpr char kBits64 = '6';
constexpr char kRegistrySeparator = '\n';

std::atomic<bool> taken{false};
std::atomic<bool> repeatable{true};
std::mutex mutex;
std::string notes;  // of each question its letter, the answer's digest, the subject, a zero

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
    return digestOfStatus(status, error);
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
            return digestOfTimes(statusAt(subject, error));
        case Question::Entries:
            return digestOfEntries(listFolder(pathFromUtf8(subject), error), error);
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

bool notesAreTaken() noexcept {
    return taken.load(std::memory_order_relaxed);
}

void note(Question question, std::string_view subject, std::uint64_t answer) {
    if (!notesAreTaken()) {
        return;
    }
    if (subject.find('\0') != std::string_view::npos) {
        noteDeed();
        return;
    }
    std::array<char, sizeof answer> digest;
    std::memcpy(digest.data(), &answer, sizeof answer);
    const std::lock_guard lock(mutex);
    notes += static_cast<char>(question);
    notes.append(digest.data(), digest.size()).append(subject).append(1, '\0');
}

void noteDeed() noexcept {
    repeatable = false;
}

void noteStatus(const std::filesystem::path& path, const std::optional<FileStatus>& status,
                const std::error_code& error) {
    if (notesAreTaken()) {
        noteStatus(pathToUtf8(path), status, error);
    }
}

void noteStatus(const std::string& path, const std::optional<FileStatus>& status,
                const std::error_code& error) {
    if (!notesAreTaken()) {
        return;
    }
    if (status && !status->directory && isRecent(*status)) {
        noteDeed();
    }
    note(Question::Status, path, digestOfStatus(status, error));
}

void noteTimes(const std::string& directory, const FileStatus& status) {
    if (!notesAreTaken()) {
        return;
    }
    if (isRecent(status)) {
        noteDeed();
    }
    note(Question::Times, directory, digestOfTimes(status));
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

void noteRegistry(std::string_view key, std::string_view name, RegistryView view,
                  const std::optional<std::string>& text) {
    if (notesAreTaken()) {
        std::string subject(1, view == RegistryView::Bits32 ? kBits32 : kBits64);
        subject.append(key).append(1, kRegistrySeparator).append(name);
        note(Question::Registry, subject, digestIfAny(text));
    }
}

void startNotingQuestions() {
    notes.clear();
    repeatable = true;
    taken = true;
}

std::optional<std::string> questionsNoted() {
    taken = false;
    return repeatable ? std::optional(std::exchange(notes, {})) : std::nullopt;
}

bool answersAreTheSame(std::string_view notes) {
    constexpr std::size_t kDigestBytes = sizeof(std::uint64_t);
    for (std::size_t at = 0; at < notes.size();) {
        const std::size_t subject = at + 1 + kDigestBytes;
        const std::size_t end = notes.find('\0', subject);
        if (subject >= notes.size() || end == std::string_view::npos) {
            return false;
        }
        std::uint64_t answer = 0;
        std::memcpy(&answer, notes.data() + at + 1, kDigestBytes);
        if (answerTo(static_cast<Question>(notes[at]), notes.data() + subject) != answer) {
            return false;
        }
        at = end + 1;
    }
    return true;
}

}  // namespace Vesk::platform
