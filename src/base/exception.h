// The root of vesk's own exceptions, and the notes that errors carry.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/source_place.h"

namespace Vesk {

/// Something that carries notes: lines below an error's text that say where the failing thing was
/// asked for, why it failed, or what may help. The text itself stays alone on its line.
class Noted {
  public:
    virtual ~Noted() = default;

    /// Adds a line such as "in variable 'x' of main::app". The innermost is added first. An empty
    /// note adds no line.
    void addNote(std::string note);

    /// The same with a line that is worked out only when the error is printed, because many errors
    /// are caught and never seen.
    void addNote(std::function<std::string()> makeNote);

    /// Shows where the error lies, with the line of the file. Only the first call counts, the
    /// innermost place.
    void addPlace(const SourcePlace& place);

    /// The lines, without indentation.
    std::vector<std::string> notes() const;

  private:
    bool hasPlace_ = false;
    std::vector<std::function<std::string()>> notes_;
};

/// An error that ends the current run: bad input, a failed build, a broken invariant. It
/// deliberately does not derive from std::exception; code that must catch everything catches both.
///
/// Only the application's entry catches it for good and prints `report()`. Code on the way up may
/// add notes.
class VeskException : public Noted {
  public:
    explicit VeskException(std::string message = {}) : message_(std::move(message)) {}

    /// The error's own text.
    virtual std::string text() const { return message_; }

    /// The text, then each note on an indented line of its own.
    std::string report() const;

  private:
    std::string message_;
};

/// A standard exception to which notes were added.
class NotedError : public std::runtime_error, public Noted {
    using std::runtime_error::runtime_error;
};

/// The text of a standard exception, followed by its notes, if any, as in `VeskException::report`.
std::string reportOf(const std::exception& error);

/// Rethrows the exception being handled with `note` added. A standard exception that cannot carry
/// notes continues as a NotedError. Call inside a catch block only.
[[noreturn]] void rethrowWithNote(const std::string& note);

/// The same with the place, which is shown before the note.
[[noreturn]] void rethrowWithNote(const SourcePlace& place, const std::string& note);

}  // namespace Vesk
