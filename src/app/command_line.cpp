#include "app/command_line.h"

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <optional>
#include <stdexcept>
#include <utility>

#include "app/options.h"
#include "base/ci_string.h"
#include "base/exception.h"
#include "base/report.h"
#include "base/text.h"

namespace Vesk {
namespace {

bool beginsWithDigit(std::string_view text) noexcept {
    return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

bool beginsWithDash(std::string_view text) noexcept {
    return text.starts_with('-');
}

/// The arguments that have not been looked at yet.
class ArgumentReader {
  public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    bool atEnd() const noexcept { return next_ == arguments_.size(); }
    const std::string& take() { return arguments_[next_++]; }

    /// The argument of an option that has just been taken.
    std::string takeFor(ArgumentForm form) {
        switch (form) {
            case ArgumentForm::Path:
                return takePath();
            case ArgumentForm::Unit:
                return takeUnit();
            case ArgumentForm::Number:
            case ArgumentForm::AttachedNumber:
                return !atEnd() && beginsWithDigit(arguments_[next_]) ? take() : std::string();
            case ArgumentForm::Words:
                return takeWords();
            case ArgumentForm::Rest:
                next_ = arguments_.size();
                break;
            case ArgumentForm::None:
            case ArgumentForm::Attached:
            case ArgumentForm::AttachedIfAny:
                break;
        }
        return {};
    }

  private:
    const std::string& takePath() {
        if (atEnd()) {
            throw std::runtime_error("unknown switch");
        }
        return take();
    }

    const std::string& takeUnit() {
        if (atEnd() || beginsWithDash(arguments_[next_])) {
            throw std::invalid_argument("Option '-l' requires a unit.");
        }
        return take();
    }

    std::string takeWords() {
        std::string words;
        while (!atEnd()) {
            words += take();
            words += '\0';
        }
        return words;
    }

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
};

/// Whether the word is the option's name; that of an attached argument must have it.
bool names(std::string_view word, const Option& option) noexcept {
    return option.form != ArgumentForm::Attached &&
           (equalsIgnoringCase(word, option.longForm) ||
            (!word.empty() && equalsIgnoringCase(word, option.shortForm)));
}

/// Takes `start` off the word, whatever its case; false when the word begins with something else.
bool takeOff(std::string_view& word, std::string_view start) noexcept {
    const bool fits = equalsIgnoringCase(word.substr(0, start.size()), start);
    word.remove_prefix(fits ? start.size() : 0);
    return fits;
}

/// Whether the word is the option's name with an argument attached, which it is then reduced to.
bool takeAttached(std::string_view& word, const Option& option) noexcept {
    const bool isNumber = option.form == ArgumentForm::AttachedNumber;
    if (!isNumber && option.form != ArgumentForm::Attached &&
        option.form != ArgumentForm::AttachedIfAny) {
        return false;
    }
    std::string_view value = word;
    if ((takeOff(value, option.longForm) && takeOff(value, "=")) ||
        (isNumber && !option.shortForm.empty() && takeOff(value = word, option.shortForm))) {
        word = value;
        return !isNumber || beginsWithDigit(value);
    }
    return false;
}

std::string_view withoutDashes(std::string_view argument) noexcept {
    argument.remove_prefix(1);
    if (beginsWithDash(argument)) {
        argument.remove_prefix(1);
    }
    return argument;
}

struct FoundOption {
    const Option* option = nullptr;  ///< null: there is none of this name
    std::optional<std::string> attached;
};

FoundOption findOption(std::string_view word) {
    for (const Option& option : options()) {
        if (names(word, option)) {
            return {&option, std::nullopt};
        }
        if (std::string_view value = word; takeAttached(value, option)) {
            return {&option, std::string(value)};
        }
    }
    return {};
}

void applySwitch(const std::string& argument, Settings& settings, ArgumentReader& reader) {
    const std::string_view word = withoutDashes(argument);
    const auto [option, attached] = findOption(word);
    if (option != nullptr) {
        settings.given.push_back(option->longForm);
        option->apply(settings, attached ? *attached : reader.takeFor(option->form));
    } else if (!word.empty()) {  // "-" and "--" say nothing
        settings.unknownOptions.push_back(argument);
    }
}

/// A note that names the option that the word was probably meant to be; may be empty.
std::string intendedOption(std::string_view word) {
    std::vector<std::string> names;
    for (const Option& option : options()) {
        if (equalsIgnoringCase(word, option.longForm)) {
            return "it needs a value: " + synopsis(option);
        }
        if (!option.section.empty()) {
            names.push_back("--" + std::string(option.longForm));
        }
    }
    return didYouMean("--" + std::string(word.substr(0, word.find('='))), names);
}

bool isGiven(std::string_view longForm, const Settings& settings, std::size_t from) {
    const auto& given = settings.given;
    return std::find(given.begin() + static_cast<std::ptrdiff_t>(from), given.end(), longForm) !=
           given.end();
}

/// Whether the command line gives an option that does nothing, for want of another one.
bool lacksOther(const Option& option, const Settings& settings) {
    return !option.with.empty() && isGiven(option.longForm, settings, settings.givenForAll) &&
           !isGiven(option.with, settings, 0);
}

/// The words of the variable's text.
std::vector<std::string> wordsOf(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    std::vector<std::string> words;
    bool inWord = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (kBlanks.find(c) != std::string_view::npos) {
            inWord = false;
            continue;
        }
        if (!std::exchange(inWord, true)) {
            words.emplace_back();
        }
        if (c != '"' && c != '\'') {
            words.back() += c;
            continue;
        }
        const std::size_t end = text.find(c, at + 1);
        if (end == std::string_view::npos) {
            throw VeskException("A quote is not closed: " + std::string(text.substr(at)));
        }
        words.back() += text.substr(at + 1, end - at - 1);
        at = end;
    }
    return words;
}

void parseOptionsOnly(std::string_view text, Settings& settings) {
    const std::size_t before = settings.positionals.size();
    parseCommandLine(wordsOf(text), settings);
    for (std::size_t index = before; index < settings.positionals.size(); ++index) {
        reportWarning("'" + settings.positionals[index] + "' in the environment variable " +
                          kOptionsVariable + " is not an option and is ignored.",
                      {"targets, profiles and assignments are given on the command line"});
    }
    settings.positionals.resize(before);
}

void applyProjectSwitch(const std::string& argument, Settings& settings, ArgumentReader& reader) {
    const auto [option, attached] = findOption(withoutDashes(argument));
    if (option == nullptr) {
        reportDoubt(settings.doubts, "Unknown option '" + argument + "' of the project.",
                    {intendedOption(withoutDashes(argument))});
        return;
    }
    if (option->fromProject == FromProject::no) {
        VeskException error("A project cannot give the option '" + argument + "'.");
        error.addNote(std::string("give it on the command line or in ") + kOptionsVariable);
        throw error;
    }
    const std::string value = attached ? *attached : reader.takeFor(option->form);
    if (std::ranges::find(settings.given, option->longForm) == settings.given.end()) {
        option->apply(settings, value);
    }
}

}  // namespace

void parseCommandLine(const std::vector<std::string>& arguments, Settings& settings) {
    ArgumentReader reader(arguments);
    while (!reader.atEnd()) {
        const std::string& argument = reader.take();
        if (beginsWithDash(argument)) {
            applySwitch(argument, settings, reader);
        } else {
            settings.positionals.push_back(argument);
        }
    }
}

void reportDoubtfulOptions(const Settings& settings) {
    for (const std::string& argument : settings.unknownOptions) {
        reportDoubt(settings.doubts, "Unknown option '" + argument + "'.",
                    {intendedOption(withoutDashes(argument)), "vesk --options lists all options"});
    }
    for (const Option& option : options()) {
        if (lacksOther(option, settings)) {
            reportDoubt(settings.doubts,
                        fmt::format("Option '--{0}' does nothing without '--{1}'.", option.longForm,
                                    option.with),
                        {fmt::format("add --{}, or leave it out", option.with)});
        }
    }
}

void parseOptionsVariable(std::string_view text, Settings& settings) {
    try {
        parseOptionsOnly(text, settings);
    } catch (...) {
        rethrowWithNote(std::string("in the environment variable ") + kOptionsVariable);
    }
}

void parseProjectOptions(std::string_view text, Settings& settings) {
    const std::vector<std::string> words = wordsOf(text);
    const bool strictBefore = settings.doubts == Doubts::Refuse;
    ArgumentReader reader(words);
    while (!reader.atEnd()) {
        const std::string& word = reader.take();
        if (!beginsWithDash(word)) {
            VeskException error("'" + word + "' is not an option.");
            error.addNote("targets, profiles and assignments are given on the command line");
            throw error;
        }
        applyProjectSwitch(word, settings, reader);
    }
    if (settings.doubts == Doubts::Refuse && !strictBefore) {
        reportDoubtfulOptions(settings);
    }
}

}  // namespace Vesk
