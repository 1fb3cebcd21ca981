// The root of vesk's own exceptions.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Vesk {

/// An error that ends the current run: bad input, a failed build, a broken invariant. Deliberately
/// not a std::exception: whoever must catch everything catches both.
///
/// Only the application's entry catches it for good and prints `report()`. Code on the way up may
/// add notes that say where the failing thing was asked for.
class VeskException {
  public:
    explicit VeskException(std::string message = {}) : message_(std::move(message)) {}
    virtual ~VeskException() = default;

    /// The error's own text.
    virtual std::string message() const { return message_; }

    /// Adds a line such as "in variable 'x' of main::app"; the innermost is added first.
    void addNote(std::string note) { notes_.push_back(std::move(note)); }

    /// The text, then each note on an indented line of its own.
    std::string report() const;

  private:
    std::string message_;
    std::vector<std::string> notes_;
};

/// Rethrows the exception being handled with `note` added: to a VeskException as a note, to a
/// standard exception's text as a further line (it then continues as a std::runtime_error). Call
/// inside a catch block only.
[[noreturn]] void rethrowWithNote(const std::string& note);

}  // namespace Vesk
